#!/usr/bin/env python3
"""Runs scripts/compare-builds on two builds that differ, or do not: compare_test.py SOURCE_DIRECTORY"""

import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

COMPARE = pathlib.Path(sys.argv[1]).resolve() / "scripts/compare-builds"
CONTROL = """Package: example
Version: 1
Architecture: all
Maintainer: Korvel developers <korvel@example.org>
Description: an example
"""


class CompareBuilds(unittest.TestCase):
    def setUp(self):
        self.directory = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.directory)
        for build in ("first", "second"):
            self.write(f"{build}/archive.tar.gz", "archive")
            self.package(build, "built anywhere")

    def write(self, name, text):
        path = self.directory / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def package(self, build, text):
        self.write("tree/DEBIAN/control", CONTROL)
        self.write("tree/usr/share/example/text", text)
        self.write("tree/usr/share/example/same", "the same")
        subprocess.run(["dpkg-deb", "--root-owner-group", "--build", "tree", f"{build}/example_1_all.deb"], cwd=self.directory,
                       env={"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "SOURCE_DATE_EPOCH": "1700000000"}, check=True, capture_output=True)

    def compare(self):
        done = subprocess.run([COMPARE, "first", "second"], cwd=self.directory, capture_output=True, text=True, check=False)
        return done.returncode, done.stdout + done.stderr

    def test_identical_builds(self):
        self.assertEqual(self.compare(), (0, ""))

    def test_file_that_differs(self):
        self.write("second/archive.tar.gz", "Archive")
        self.assertEqual(self.compare(), (1, "Files first/archive.tar.gz and second/archive.tar.gz differ\n"))

    def test_file_that_differs_in_a_package(self):
        self.package("second", "built in /somewhere")
        status, output = self.compare()
        self.assertEqual(status, 1)
        self.assertIn("Files first/example_1_all.deb and second/example_1_all.deb differ\n", output)
        inside = "example_1_all.deb/usr/share/example/text"
        self.assertIn(f"Files first/{inside} and second/{inside} differ\n", output)
        self.assertNotIn("same", output)

    def test_missing_package(self):
        (self.directory / "second/example_1_all.deb").unlink()
        self.assertEqual(self.compare(), (1, "Only in first: example_1_all.deb\n"))

    def test_missing_build(self):
        shutil.rmtree(self.directory / "second")
        self.assertEqual(self.compare()[0], 2)


if __name__ == "__main__":
    unittest.main(argv=["compare_test.py"])
