#!/usr/bin/env python3
"""Runs what .pre-commit-hooks.yaml would run: pre_commit_test.py SOURCE_DIRECTORY KORVELCHECK"""

import os
import shutil
import sys
import unittest

import yaml

from repository import GROWN, NEW, OLD, REFUSAL, SOURCE, WIDE_KEY, Repository


@unittest.skipUnless(shutil.which("pre-commit"), "pre-commit is not installed")
class Hooks(Repository):
    """.pre-commit-hooks.yaml"""

    def setUp(self):
        super().setUp()
        hooks = self.path("hooks")
        os.mkdir(hooks)
        shutil.copy(os.path.join(SOURCE, ".pre-commit-hooks.yaml"), hooks)
        shutil.copytree(os.path.join(SOURCE, "packaging"), os.path.join(hooks, "packaging"))
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
        self.assertIn("Skipped", self.staged("korvelcheck").stdout)
        self.assertIn("Passed", self.staged("korvelcheck-project").stdout)

    def test_a_new_file_alone_passes(self):
        self.write(NEW, "schemas/mall.xml")
        for hook in ("korvelcheck", "korvelcheck-project"):
            done = self.staged(hook)
            self.assertEqual(done.returncode, 0, done.stdout)
            self.assertIn("Passed", done.stdout)

    def test_a_moved_file_is_compared_with_its_old_place(self):
        os.remove(os.path.join(self.repository, self.SCHEMA_FILE))
        self.write(WIDE_KEY, "schemas/orders.xml")
        for hook in ("korvelcheck", "korvelcheck-project"):
            done = self.staged(hook)
            self.assertEqual(done.returncode, 1, done.stdout)
            self.assertIn(REFUSAL, done.stdout)

    def committed(self, *options):
        """Runs the hooks in a pipeline: everything is committed."""
        return self.run_in(self.repository, ["pre-commit", "run", *options])

    def test_from_ref_is_the_baseline(self):
        base = self.git("rev-parse", "HEAD")
        self.commit(WIDE_KEY)
        done = self.committed("--from-ref", base, "--to-ref", "HEAD")
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertIn(REFUSAL, done.stdout)

    def test_from_ref_does_not_replace_the_baselines_of_the_project(self):
        # Regression: what differs from the released schema passed if the branch did not change it.
        self.git("tag", "v1")
        self.write('[schemas]\npaths = ["schemas/*.xml"]\nagainst = "git-tag:v*"\n', "korvelcheck.toml")
        self.commit(WIDE_KEY)
        base = self.git("rev-parse", "HEAD")
        self.write("text\n", "notes.txt")
        self.git("add", "--all")
        self.git("commit", "--quiet", "-m", "notes")
        done = self.committed("korvelcheck-project", "--from-ref", base, "--to-ref", "HEAD")
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertIn(REFUSAL, done.stdout)

    def test_a_branch_that_is_not_checked_out_is_not_checked(self):
        # Regression: the files of the branch that was checked out were checked instead.
        self.git("checkout", "--quiet", "-b", "feature")
        self.commit(WIDE_KEY)
        self.git("checkout", "--quiet", "main")
        options = ["--from-ref", "main", "--to-ref", "feature"]
        done = self.committed(*options)
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertIn("exit code: 2", done.stdout)
        self.assertIn("is not checked out; check out feature to check it", done.stdout)
        self.git("checkout", "--quiet", "feature")
        self.assertIn(REFUSAL, self.committed(*options).stdout)

    def test_all_files_are_compared_with_the_baseline_of_the_project(self):
        self.git("tag", "v1")
        self.write('[schemas]\npaths = ["schemas/*.xml"]\nagainst = "git-tag:v*"\n', "korvelcheck.toml")
        self.commit(WIDE_KEY)
        done = self.committed("--all-files")
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertIn(REFUSAL, done.stdout)

    def test_a_commit_compared_with_itself_is_named(self):
        self.commit(WIDE_KEY)
        done = self.committed("--all-files")
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertEqual(done.stdout.count("git:HEAD (the commit that is checked out: no selected file differs from it)"), 2)

    def test_file_that_looks_like_an_option(self):
        self.write(NEW, "--output=x.xml")
        self.git("add", "--all")
        done = self.staged("korvelcheck")
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertIn("--output=x.xml", done.stdout)
        self.assertFalse(os.path.exists(os.path.join(self.repository, "x.xml")))

    def test_a_deleted_file_is_seen_by_the_project_hook(self):
        self.write(NEW, "schemas/mall.xml")
        self.commit(OLD)
        os.remove(os.path.join(self.repository, "schemas/mall.xml"))
        done = self.staged("korvelcheck-project")
        self.assertEqual(done.returncode, 1, done.stdout)
        self.assertIn("mall.xml", done.stdout)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
