"""Makes the package of the source tree importable, with the library under test: the arguments are SOURCE_DIRECTORY KORVELCHECK LIBRARY."""

import os
import pathlib
import shutil
import sys
import tempfile

SOURCE, TOOL, LIBRARY = (pathlib.Path(path).resolve() for path in sys.argv[1:4])


def package_directory():
    """A directory with the package, as a wheel would install it."""
    directory = pathlib.Path(tempfile.mkdtemp())
    shutil.copytree(SOURCE / "python/korvelcheck", directory / "korvelcheck", ignore=shutil.ignore_patterns("__pycache__"))
    os.symlink(LIBRARY, directory / "korvelcheck/libkorvelcheck.so.0")
    return directory
