#!/usr/bin/env python3
"""Packages the extension for VS Code as docs/editors.md says: vscode_test.py SOURCE_DIRECTORY KORVELCHECK

Exits with 77 if the npm packages cannot be installed.
"""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

from editors_test import SOURCE, blocks

SKIPPED = 77


def package(directory):
    """The status of the first line of the page, which packages the extension."""
    line = blocks("shell")[0].splitlines()[0].replace("build/korvelcheck.vsix", f"{directory}/korvelcheck.vsix")
    done = subprocess.run(["sh", "-c", line], cwd=SOURCE, capture_output=True, text=True, check=False)
    if done.returncode not in (0, SKIPPED):
        raise AssertionError(done.stdout + done.stderr)
    return done.returncode


class Extension(unittest.TestCase):
    DIRECTORY = tempfile.mkdtemp()

    def setUp(self):
        self.tree = os.path.join(self.DIRECTORY, "extension")
        with zipfile.ZipFile(os.path.join(self.DIRECTORY, "korvelcheck.vsix")) as archive:
            archive.extractall(self.DIRECTORY)
        with open(os.path.join(self.tree, "package.json"), encoding="utf-8") as file:
            self.manifest = json.load(file)

    def test_contains_what_it_needs_and_nothing_else(self):
        self.assertEqual(set(os.listdir(self.tree)), {"LICENSE.txt", "README.md", "extension.js", "node_modules", "package.json"})
        packages = {os.path.relpath(path, self.tree).split("node_modules/")[-1] for path, _, files in os.walk(self.tree)
                    if "package.json" in files and "node_modules" in path and "LICENSE" in " ".join(files).upper()}
        self.assertEqual(packages, {
            "balanced-match", "brace-expansion", "minimatch", "semver", "vscode-jsonrpc", "vscode-languageclient",
            "vscode-languageserver-protocol", "vscode-languageserver-types",
        })  # fmt: skip

    def test_starts_with_its_own_libraries(self):
        """Loads the extension beside a stand-in for the editor, which has every class."""
        stand_in = """
            const Module = require('node:module');
            const load = Module._load;
            const any = new Proxy(class {}, { get: (target, name) => (name in target ? target[name] : any), apply: () => any });
            Module._load = (name, ...rest) => (name === 'vscode' ? any : load(name, ...rest));
            console.log(Object.keys(require('./extension.js')).join(' '));"""
        done = subprocess.run(["node", "-e", stand_in], cwd=self.tree, capture_output=True, text=True, check=False)
        self.assertEqual(done.stdout, "activate deactivate\n", done.stderr)

    def test_has_the_version_of_the_program(self):
        with open(os.path.join(SOURCE, "CMakeLists.txt"), encoding="utf-8") as file:
            self.assertEqual(self.manifest["version"], re.search(r"project\(korvelcheck VERSION (\S+)", file.read())[1])

    def test_has_the_problem_matcher_of_the_page(self):
        [matcher] = self.manifest["contributes"]["problemMatchers"]
        self.assertEqual(matcher.pop("name"), "korvelcheck")
        self.assertEqual(matcher, json.loads(blocks("json")[0])["tasks"][0]["problemMatcher"])

    def test_has_a_setting_for_the_program(self):
        setting = self.manifest["contributes"]["configuration"]["properties"]["korvelcheck.path"]
        self.assertEqual((setting["type"], setting["default"]), ("string", "korvelcheck"))
        self.assertEqual(self.manifest["main"], "./extension.js")


if __name__ == "__main__":
    try:
        if package(Extension.DIRECTORY) == SKIPPED:
            sys.exit(SKIPPED)
        unittest.main(argv=["vscode_test"])
    finally:
        shutil.rmtree(Extension.DIRECTORY)
