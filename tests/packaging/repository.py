"""Repositories in which the tests run what the pipeline files would run; the arguments are SOURCE_DIRECTORY KORVELCHECK."""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

import yaml

SOURCE, TOOL = (os.path.abspath(path) for path in sys.argv[1:3])

PROJECT_FILE = '[schemas]\npaths = ["schemas/*.xml"]\nagainst = {against}\n'

SCHEMA = """<metalib name="shop" version="{version}" protocol="QMX">
  <meta name="orders">
    <entry name="uid" type="{key}"/>
    {more}
    <primarykey entries="uid"/>
  </meta>
</metalib>
"""
OLD = SCHEMA.format(version=1, key="uint32", more="")
GROWN = SCHEMA.format(version=2, key="uint32", more='<entry name="zone" type="uint32" version="2"/>')
NEW = OLD.replace("shop", "mall")
WIDE_KEY = SCHEMA.format(version=2, key="uint64", more="")
REFUSAL = "The size of primarykey can't be modified! entry:'uid' metaname:'orders'"


def load(path):
    with open(os.path.join(SOURCE, path), encoding="utf-8") as file:
        return yaml.safe_load(file)


class Repository(unittest.TestCase):
    """A repository with one commit, in which schemas/my orders.xml is OLD."""

    SCHEMA_FILE = "schemas/my orders.xml"

    def setUp(self):
        self.directory = tempfile.mkdtemp()
        self.addCleanup(shutil.rmtree, self.directory)
        tools = self.path("tools")
        os.mkdir(tools)
        os.symlink(TOOL, os.path.join(tools, "korvelcheck"))
        self.environment = {
            "PATH": f"{tools}:/usr/bin:/bin",
            "HOME": self.directory,
            "LC_ALL": "C.UTF-8",
            "GIT_CONFIG_GLOBAL": "/dev/null",
            "GIT_AUTHOR_NAME": "A", "GIT_AUTHOR_EMAIL": "a@example.org",
            "GIT_COMMITTER_NAME": "A", "GIT_COMMITTER_EMAIL": "a@example.org",
        }  # fmt: skip
        self.repository = self.path("repository")
        self.git("init", "--quiet", "--initial-branch=main", self.repository, cwd=self.directory)
        self.commit(OLD)

    def path(self, name):
        return os.path.join(self.directory, name)

    def git(self, *arguments, cwd=None):
        done = self.run_in(cwd or self.repository, ["git", *arguments])
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout.strip()

    def run_in(self, directory, command, **environment):
        return subprocess.run(
            command, cwd=directory, env=self.environment | environment, capture_output=True, text=True, check=False
        )

    def log_calls(self):
        """From now on, each call of korvelcheck adds a line to the file calls."""
        tool = self.path("tools/korvelcheck")
        os.remove(tool)
        with open(tool, "w", encoding="utf-8") as file:
            file.write(f"#!/bin/sh\necho \"$1\" >>'{self.path('calls')}'\nexec '{TOOL}' \"$@\"\n")
        os.chmod(tool, 0o755)

    def write(self, text, file=SCHEMA_FILE):
        path = os.path.join(self.repository, file)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as stream:
            stream.write(text)

    def commit(self, text):
        self.write(text)
        self.git("add", "--all")
        self.git("commit", "--quiet", "-m", "schema")
        return self.git("rev-parse", "HEAD")

    def clone(self, *options):
        """A clone such as a pipeline works in."""
        self.git("config", "uploadpack.allowAnySHA1InWant", "true")
        clone = self.path("clone")
        self.git("clone", "--quiet", *options, f"file://{self.repository}", clone)
        return clone

    def release_and_force(self):
        """v1.9.0 and v1.10.0 are OLD; then WIDE_KEY was forced into main, and a branch grew. Returns the base of the branch."""
        self.git("tag", "v1.9.0")
        self.git("tag", "v1.10.0")
        self.write(PROJECT_FILE.format(against='["git-tag:v*", "git:origin/main..."]'), "korvelcheck.toml")
        base = self.commit(WIDE_KEY)
        self.git("checkout", "--quiet", "-b", "feature")
        self.commit(WIDE_KEY.replace("</metalib>", "</metalib>\n"))
        return base

    def read(self, name):
        with open(self.path(name), encoding="utf-8") as file:
            return file.read()
