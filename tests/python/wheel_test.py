#!/usr/bin/env python3
"""Installs the wheel without network in a new environment, and uses it: wheel_test.py SOURCE_DIRECTORY KORVELCHECK LIBRARY"""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from support import LIBRARY, SOURCE

PROGRAM = """
import korvelcheck, pathlib
assert pathlib.Path(korvelcheck.__file__).with_name("py.typed").exists()
report = korvelcheck.check("old.xml", "new.xml", tables=["orders"])
print(report.verdict, [finding.rule for finding in report.findings])
"""


class Wheel(unittest.TestCase):
    def setUp(self):
        self.directory = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.directory)

    def run_in(self, *command, **variables):
        environment = {"PATH": "/usr/bin:/bin", "HOME": str(self.directory), "LC_ALL": "C.UTF-8"} | variables
        done = subprocess.run(command, cwd=self.directory, env=environment, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout

    def build(self, name):
        [wheel] = self.run_in(SOURCE / "scripts/wheel", LIBRARY, self.directory / name, GIT_CONFIG_COUNT="1",
                              GIT_CONFIG_KEY_0="safe.directory", GIT_CONFIG_VALUE_0="*").splitlines()
        return pathlib.Path(wheel)

    def test_works_in_a_new_environment(self):
        wheel = self.build("dist")
        self.assertRegex(wheel.name, r"^korvelcheck-[0-9.]+-py3-none-linux_[a-z0-9_]+\.whl$")
        self.run_in("/usr/bin/python3", "-m", "venv", "venv")
        self.run_in("venv/bin/pip", "install", "--no-index", "--no-deps", "--disable-pip-version-check", wheel)
        shutil.copy(SOURCE / "examples/shop/v6.xml", self.directory / "old.xml")
        shutil.copy(SOURCE / "examples/shop/v7-wider-key.xml", self.directory / "new.xml")
        self.assertEqual(self.run_in("venv/bin/python", "-c", PROGRAM), "refused ['primary-key.size']\n")

    def test_two_builds_are_identical(self):
        os.umask(0o022)
        first = self.build("first").read_bytes()
        os.umask(0o077)
        self.assertTrue(self.build("second/place").read_bytes() == first)


if __name__ == "__main__":
    unittest.main(argv=["wheel_test.py"])
