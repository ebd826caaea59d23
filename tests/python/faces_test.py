#!/usr/bin/env python3
"""Compares the answers of the program and of the Python package, byte for byte: faces_test.py SOURCE_DIRECTORY KORVELCHECK LIBRARY

Checks every case of tests/cases, and every pair of schemas of an example, in each direction.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from support import SOURCE, TOOL, package_directory

PACKAGE = package_directory()
sys.path.insert(0, str(PACKAGE))
import korvelcheck  # noqa: E402


def settings_of(case):
    path = case / "settings"
    lines = path.read_text().splitlines() if path.exists() else []
    return dict(line.split(": ", 1) for line in lines)


def pairs():
    """(name, old, new, settings)"""
    for path in sorted(SOURCE.glob("tests/cases/*/*/old.xml")):
        yield str(path.parent.relative_to(SOURCE)), path, path.with_name("new.xml"), settings_of(path.parent)
    for directory in sorted(path for path in (SOURCE / "examples").iterdir() if path.is_dir()):
        files = sorted(directory.glob("*.xml"))
        for old in files:
            for new in files:
                yield f"{old.name} {new.name}", old, new, {}


class Faces(unittest.TestCase):
    def test_program_and_package_agree(self):
        compared, verdicts = 0, set()
        with tempfile.TemporaryDirectory() as directory:
            os.chdir(directory)
            for name, old, new, settings in pairs():
                shutil.copy(old, "old.xml")
                shutil.copy(new, "new.xml")
                verdicts.add(self.compare(name, settings))
                compared += 1
            os.chdir("/")
        self.assertGreater(compared, 300)
        self.assertEqual(verdicts, {"allowed", "refused", "error"})

    def compare(self, name, settings):
        options = [word for key, value in settings.items() for word in (f"--{key}", value)]
        program = subprocess.run([TOOL, "check", "old.xml", "new.xml", "--format", "json", *options], capture_output=True, check=False)
        tables = [settings["table"]] if "table" in settings else None
        given = {key: value for key, value in settings.items() if key != "table"}
        try:
            report = korvelcheck.check("old.xml", "new.xml", tables=tables, settings=given)
        except korvelcheck.SchemaError:
            self.assertEqual(program.returncode, 2, name)
            return "error"
        self.assertEqual(report.json.encode("utf-8", "surrogateescape"), program.stdout, name)
        self.assertEqual(program.returncode, 0 if report.allowed else 1, name)
        return report.verdict


if __name__ == "__main__":
    ran = unittest.main(argv=["faces_test.py"], exit=False)
    shutil.rmtree(PACKAGE)
    sys.exit(0 if ran.result.wasSuccessful() else 1)
