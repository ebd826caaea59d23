#!/usr/bin/env python3
"""Runs what .pre-commit-hooks.yaml would run, in repositories made here.

pipelines_test.py SOURCE_DIRECTORY KORVELCHECK
"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

import yaml

SOURCE, TOOL = (os.path.abspath(path) for path in sys.argv[1:3])

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
WIDE_KEY = SCHEMA.format(version=2, key="uint64", more="")
REFUSAL = "The size of primarykey can't be modified! entry:'uid' metaname:'orders'"


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


@unittest.skipUnless(shutil.which("pre-commit"), "pre-commit is not installed")
class Hooks(Repository):
    """.pre-commit-hooks.yaml"""

    def setUp(self):
        super().setUp()
        hooks = self.path("hooks")
        os.mkdir(hooks)
        shutil.copy(os.path.join(SOURCE, ".pre-commit-hooks.yaml"), hooks)
        self.git("init", "--quiet", cwd=hooks)
        self.git("add", "--all", cwd=hooks)
        self.git("commit", "--quiet", "-m", "hooks", cwd=hooks)
        config = {"repos": [{"repo": hooks, "rev": self.git("rev-parse", "HEAD", cwd=hooks), "hooks": []}]}
        config["repos"][0]["hooks"] = [{"id": "korvelcheck"}, {"id": "korvelcheck-project"}]
        self.write(yaml.safe_dump(config), ".pre-commit-config.yaml")
        self.write('[schemas]\npaths = ["schemas/*.xml"]\n', "korvelcheck.toml")
        self.commit(OLD)

    def staged(self, hook):
        self.git("add", "--all")
        return self.run_in(self.repository, ["pre-commit", "run", hook])

    def test_allowed_change(self):
        self.write(GROWN)
        for hook in ("korvelcheck", "korvelcheck-project"):
            done = self.staged(hook)
            self.assertEqual(done.returncode, 0, done.stdout)
            self.assertIn("Passed", done.stdout)

    def test_refused_change(self):
        self.write(WIDE_KEY)
        for hook in ("korvelcheck", "korvelcheck-project"):
            done = self.staged(hook)
            self.assertEqual(done.returncode, 1, done.stdout)
            self.assertIn(REFUSAL, done.stdout)

    def test_other_files_are_left_alone(self):
        self.write("text\n", "notes.txt")
        for hook in ("korvelcheck", "korvelcheck-project"):
            self.assertIn("Skipped", self.staged(hook).stdout)

    def test_a_deleted_file_is_seen_by_the_project_hook(self):
        self.write(SCHEMA.format(version=1, key="uint32", more="").replace("shop", "mall"), "schemas/mall.xml")
        self.commit(OLD)
        os.remove(os.path.join(self.repository, "schemas/mall.xml"))
        self.write(GROWN)
        done = self.staged("korvelcheck-project")
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertIn("mall.xml", done.stdout)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
