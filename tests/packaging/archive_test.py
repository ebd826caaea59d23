#!/usr/bin/env python3
"""Tests the release archive and the wheel that scripts/dist has written: archive_test.py SOURCE_DIRECTORY DIST_DIRECTORY

Downloads the schemas of CycloneDX documents with npm, below build/.
"""

import hashlib
import json
import pathlib
import platform
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile
import time
import unittest
import zipfile

import counted
import jsonschema

SOURCE, DIST = (pathlib.Path(path).resolve() for path in sys.argv[1:3])


def run(*command, status=0, **options):
    done = subprocess.run(command, capture_output=True, text=True, check=False, **options)
    assert done.returncode == status, done
    return done.stdout


def schemas():
    """The directory of the schemas, by the version that package-lock.json names."""
    directory = SOURCE / "build/npm"
    directory.mkdir(parents=True, exist_ok=True)
    for name in ("package.json", "package-lock.json"):
        shutil.copy(SOURCE / "tests/packaging" / name, directory)
    run("npm", "ci", "--omit=optional", "--ignore-scripts", "--no-audit", "--no-fund", cwd=directory)
    return directory / "node_modules/@cyclonedx/cyclonedx-library/res/schema"


def validator(directory):
    def load(name):
        return json.loads((directory / name).read_text(encoding="utf-8"))
    bom = load("bom-1.5.SNAPSHOT.schema.json")
    others = {name: load(name) for name in ("spdx.SNAPSHOT.schema.json", "jsf-0.82.SNAPSHOT.schema.json")}
    base = bom["$id"].rsplit("/", 1)[0]
    resolver = jsonschema.RefResolver.from_schema(bom, store={f"{base}/{name}": schema for name, schema in others.items()})
    return jsonschema.Draft7Validator(bom, resolver=resolver)


class Archive(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = pathlib.Path(tempfile.mkdtemp())
        cls.addClassCleanup(shutil.rmtree, cls.directory)
        [cls.archive] = DIST.glob("korvelcheck-*.tar.gz")
        cls.name = cls.archive.name.removesuffix(".tar.gz")
        cls.version = cls.name.split("-")[1]
        with tarfile.open(cls.archive) as archive:
            cls.entries = archive.getmembers()
            archive.extractall(cls.directory)
        cls.tree = cls.directory / cls.name
        cls.program = cls.tree / "bin/korvelcheck"

    def test_checksums_cover_every_file(self):
        sums = dict(reversed(line.split("  ")) for line in (DIST / "SHA256SUMS").read_text().splitlines())
        found = {path.name: hashlib.sha256(path.read_bytes()).hexdigest() for path in DIST.iterdir() if path.name != "SHA256SUMS"}
        self.assertEqual(sums, found)
        wheel = f"korvelcheck-{self.version}-py3-none-linux_{platform.machine()}.whl"
        self.assertEqual(set(found), {"COMMIT", self.archive.name, f"{self.name}.cdx.json", wheel})

    def test_names_the_commit(self):
        commit = run("git", "describe", "--always", "--abbrev=40", "--exclude=*", "--dirty", cwd=SOURCE)
        self.assertEqual((DIST / "COMMIT").read_text(), commit)

    def test_entries_are_those_of_any_machine(self):
        time = int(run("git", "log", "-1", "--format=%ct", cwd=SOURCE))
        self.assertEqual([entry.name for entry in self.entries], sorted(entry.name for entry in self.entries))
        for entry in self.entries:
            self.assertTrue(entry.name == self.name or entry.name.startswith(self.name + "/"))
            self.assertTrue(entry.isdir() or entry.isreg(), entry.name)
            self.assertEqual((entry.mtime, entry.uid, entry.gid, entry.uname, entry.gname), (time, 0, 0, "", ""))
            self.assertIn(entry.mode, (0o755,) if entry.isdir() else (0o644, 0o755), entry.name)

    def test_contains_what_an_installation_has(self):
        for path in ("bin/korvelcheck", "share/man/man1/korvelcheck.1", "share/bash-completion/completions/korvelcheck",
                     "share/zsh/site-functions/_korvelcheck", "share/fish/vendor_completions.d/korvelcheck.fish",
                     "share/doc/korvelcheck/LICENSE", "share/doc/korvelcheck/sbom.cdx.json", "share/korvelcheck/review/post-review",
                     "share/korvelcheck/qmx.rng", "share/korvelcheck/qmx.rnc", "share/korvelcheck/korvelcheck.lua"):
            self.assertTrue((self.tree / path).is_file(), path)

    def test_program_runs_without_environment(self):
        self.assertEqual(run(self.program, "--version", env={}), f"korvelcheck {self.version}\n")
        shop = SOURCE / "examples/shop"
        refused = run(self.program, "check", "old.xml", "new.xml", env={}, status=1, cwd=self.copy(shop))
        self.assertIn("refused [primary-key.size]", refused)

    def copy(self, shop):
        directory = self.directory / "shop"
        directory.mkdir(exist_ok=True)
        shutil.copy(shop / "v6.xml", directory / "old.xml")
        shutil.copy(shop / "v7-wider-key.xml", directory / "new.xml")
        return directory

    def test_program_needs_no_shared_library_and_names_no_directory_of_the_build(self):
        self.assertNotIn("NEEDED", run("readelf", "-d", self.program))
        self.assertNotIn(bytes(SOURCE), self.program.read_bytes())

    def test_posts_reviews(self):
        post_review = self.tree / "share/korvelcheck/review/post-review"
        done = subprocess.run([post_review], env={"PATH": "/usr/bin:/bin"}, capture_output=True, text=True, check=False)
        self.assertRegex(done.stderr, "^Usage: post-review ")

    def test_list_of_contents_is_valid(self):
        document = json.loads((DIST / f"{self.name}.cdx.json").read_text())
        self.assertEqual((self.tree / "share/doc/korvelcheck/sbom.cdx.json").read_text(), (DIST / f"{self.name}.cdx.json").read_text())
        check = validator(schemas())
        self.assertEqual([error.message for error in check.iter_errors(document)], [])
        document["components"][0]["type"] = "unknown"
        self.assertTrue(list(check.iter_errors(document)), "the validator finds an error")

    def test_list_of_contents_names_each_library(self):
        document = json.loads((DIST / f"{self.name}.cdx.json").read_text())
        names = {component["name"] for component in document["components"]}
        # README.md names the packages that the program is built from.
        table = (SOURCE / "README.md").read_text()
        libraries = {name for name in re.findall(r"lib[a-z0-9]+-dev", table)}
        libraries -= {"libgtest-dev", "libgmock-dev", "libbenchmark-dev"}
        self.assertLessEqual(libraries, names)
        self.assertLessEqual({"libc6-dev", "libstdc++-12-dev"}, names)
        for name in names:
            self.assertTrue((self.tree / f"share/doc/korvelcheck/licenses/{name}.copyright").stat().st_size > 100, name)


# Prints the rule that refuses, and where the package is.
PROGRAM = """
import korvelcheck, sys
print([finding.rule for finding in korvelcheck.check(sys.argv[1], sys.argv[2], tables=["orders"]).findings], korvelcheck.__file__)
"""


class Wheel(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = pathlib.Path(tempfile.mkdtemp()).resolve()
        cls.addClassCleanup(shutil.rmtree, cls.directory)
        [wheel] = DIST.glob("korvelcheck-*.whl")
        with zipfile.ZipFile(wheel) as archive:
            cls.entries = archive.infolist()
            archive.extractall(cls.directory)
        cls.library = cls.directory / "korvelcheck/libkorvelcheck.so.0"

    def test_entries_are_those_of_any_machine(self):
        committed = int(run("git", "log", "-1", "--format=%ct", cwd=SOURCE))
        for entry in self.entries:
            self.assertEqual(entry.date_time, time.gmtime(committed - committed % 2)[:6], entry.filename)  # zip counts in steps of 2 s
            self.assertIn(entry.external_attr >> 16 & 0o777, (0o644, 0o755, 0o664), entry.filename)
        names = [entry.filename for entry in self.entries if ".dist-info/" not in entry.filename]
        self.assertEqual(names, sorted(names))
        self.assertIn("korvelcheck/libkorvelcheck.so.0", names)

    def test_library_needs_only_the_c_and_cpp_libraries(self):
        needed = re.findall(r"NEEDED.*\[(.*?)\.so", run("readelf", "-d", self.library))
        self.assertLessEqual(set(needed), {"libstdc++", "libm", "libgcc_s", "libc", "ld-linux-x86-64"})
        self.assertNotIn(bytes(SOURCE) + b"/", self.library.read_bytes())

    def test_contains_the_licenses_of_the_archive(self):
        [information] = self.directory.glob("*.dist-info")
        [archive] = DIST.glob("korvelcheck-*.tar.gz")
        with tarfile.open(archive) as files:
            licenses = {pathlib.Path(name).name for name in files.getnames() if "/licenses/" in name}
        self.assertGreater(len(licenses), 5)
        for name in licenses | {"LICENSE"}:
            self.assertGreater((information / name).stat().st_size, 100, name)

    def test_checks_a_change(self):
        shop = SOURCE / "examples/shop"
        output = run("/usr/bin/python3", "-B", "-c", PROGRAM, shop / "v6.xml", shop / "v7-wider-key.xml", cwd=self.directory,
                     env={"PYTHONPATH": str(self.directory)})
        self.assertEqual(output, f"['primary-key.size'] {self.directory}/korvelcheck/__init__.py\n")


if __name__ == "__main__":
    counted.main("archive_test.py")
