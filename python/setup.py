"""Gives the wheel its version and its tag: any Python 3, and the machine that the library was built for. See scripts/wheel."""

import os
import platform

from setuptools import setup
from setuptools.dist import Distribution
from wheel.bdist_wheel import bdist_wheel


class BinaryDistribution(Distribution):
    def has_ext_modules(self):
        return True  # the wheel contains a library


class Wheel(bdist_wheel):
    def get_tag(self):
        return "py3", "none", f"linux_{platform.machine()}"


setup(version=os.environ["KORVELCHECK_VERSION"], distclass=BinaryDistribution, cmdclass={"bdist_wheel": Wheel})
