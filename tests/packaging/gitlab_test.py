#!/usr/bin/env python3
"""Runs what packaging/gitlab/korvelcheck.yml would run: gitlab_test.py SOURCE_DIRECTORY KORVELCHECK"""

import json
import os
import sys
import unittest

from repository import GROWN, NEW, OLD, PROJECT_FILE, REFUSAL, SOURCE, WIDE_KEY, Repository, load
from stand_in import TOKEN, Gitlab


class Template(Repository):
    """packaging/gitlab/korvelcheck.yml"""

    job_id = "41"

    def job(self):
        return load("packaging/gitlab/korvelcheck.yml")["korvelcheck"]

    def run_job(self, base, paths="schemas", directory=None, against="", shell="bash", **variables):
        lines = self.job()["before_script"] + self.job()["script"]
        script = "set -e\n" + "\n".join(lines)
        variables |= {"KORVELCHECK_AGAINST": against, "KORVELCHECK_PATHS": paths, "CI_MERGE_REQUEST_DIFF_BASE_SHA": base}
        variables |= {"CI_JOB_ID": self.job_id}
        return self.run_in(directory or self.repository, [shell, "-c", script], **variables)

    def report(self):
        return json.loads(self.read("repository/" + self.job()["artifacts"]["reports"]["codequality"]))

    def test_variables_are_used(self):
        script = "\n".join(self.job()["before_script"] + self.job()["script"] + self.job()["after_script"])
        for name in self.job()["variables"]:
            self.assertIn(f"${name}", script)

    def test_allowed_change(self):
        base = self.git("rev-parse", "HEAD")
        self.commit(GROWN)
        done = self.run_job(base)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("verdict: allowed\n", done.stdout)
        self.assertEqual(self.report(), [])

    def test_refused_change(self):
        base = self.git("rev-parse", "HEAD")
        self.commit(WIDE_KEY)
        done = self.run_job(base)
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn(REFUSAL, done.stdout)
        self.assertEqual([finding["check_name"] for finding in self.report()], ["primary-key.size"])
        self.assertEqual(self.report()[0]["location"]["path"], self.SCHEMA_FILE)

    def test_checks_once(self):
        """The text for the log was a check of its own."""
        base = self.git("rev-parse", "HEAD")
        self.commit(WIDE_KEY)
        self.log_calls()
        self.assertEqual(self.run_job(base).returncode, 1)
        self.assertEqual(self.read("calls"), "check\n")

    def test_a_new_file_alone_passes(self):
        base = self.git("rev-parse", "HEAD")
        self.write(NEW, "schemas/mall.xml")
        self.commit(OLD)
        done = self.run_job(base, paths="schemas/mall.xml")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("nothing-compared (all tables are new)", done.stdout)

    def test_path_that_looks_like_an_option(self):
        base = self.git("rev-parse", "HEAD")
        self.write(NEW, "--output=x.xml")
        self.commit(OLD)
        for paths in ("--output=x.xml", "*.xml"):
            done = self.run_job(base, paths=paths)
            self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
            self.assertIn("added: --output=x.xml", done.stdout)
            self.assertFalse(os.path.exists(os.path.join(self.repository, "x.xml")))

    def test_failed_check_has_a_report(self):
        """An earlier report without findings stayed in place."""
        self.write("[]", self.job()["artifacts"]["reports"]["codequality"])
        done = self.run_job(self.git("rev-parse", "HEAD"), paths="scheams")
        self.assertEqual(done.returncode, 2)
        self.assertIn("scheams: no schema file in either state", done.stderr)
        self.assertEqual([finding["check_name"] for finding in self.report()], ["check.failed"])

    def test_broken_file_is_reported_with_the_others(self):
        base = self.git("rev-parse", "HEAD")
        self.write("<metalib>\n", "schemas/mall.xml")
        self.commit(WIDE_KEY)
        done = self.run_job(base)
        self.assertEqual(done.returncode, 2)
        self.assertIn("verdict: incomplete (1 file was not checked)", done.stdout)
        self.assertIn(REFUSAL, done.stdout)
        rules = {finding["check_name"] for finding in self.report()}
        self.assertIn("primary-key.size", rules)
        self.assertTrue(rules & {"schema.syntax", "schema.invalid"}, rules)

    def test_baselines_of_the_project_file_are_compared_too(self):
        """The job compared with the base of the merge request only, and allowed what had been forced into main."""
        base = self.release_and_force()
        clone = self.clone("--depth=1", "--branch=feature")
        done = self.run_job(base, "", clone)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        self.assertIn("against git:v1.10.0", done.stdout)
        self.assertEqual(self.run_job(base, "", clone, f"\ngit:{base}\n").returncode, 0)
        done = self.run_job(base, "", clone, "git-tag:v1.9*\ngit:origin/main...")
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        self.assertIn("against git:v1.9.0", done.stdout)

    def test_base_of_the_merge_request_is_compared_too(self):
        self.git("tag", "v1")
        self.write(PROJECT_FILE.format(against='"git-tag:v*"'), "korvelcheck.toml")
        base = self.commit(GROWN)
        self.commit(OLD)
        self.assertEqual(self.run_job(base, "", self.clone("--depth=1")).returncode, 1)

    def test_missing_tags_fail(self):
        base = self.release_and_force()
        clone = self.clone("--depth=1", "--branch=feature")
        self.git("tag", "v3", cwd=clone)
        self.git("remote", "set-url", "origin", "file:///nowhere", cwd=clone)
        self.assertEqual(self.run_job(base, "", clone, "git-tag:v*").returncode, 2)

    def test_base_that_a_shallow_clone_lacks(self):
        base = self.git("rev-parse", "HEAD")
        self.commit(WIDE_KEY)
        done = self.run_job(base, directory=self.clone("--depth=1"))
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)

    def test_merged_result_is_compared_with_the_target_branch(self):
        """Each merge request was refused for what had been forced into the target branch."""
        base = self.git("rev-parse", "HEAD")
        self.git("checkout", "--quiet", "-b", "feature")
        self.write(NEW, "schemas/mall.xml")
        self.commit(OLD)
        self.git("checkout", "--quiet", "main")
        target = self.commit(WIDE_KEY)
        self.git("merge", "--quiet", "-m", "result", "feature")
        self.assertEqual(self.run_job(base).returncode, 1)
        self.assertEqual(self.run_job(base, CI_MERGE_REQUEST_TARGET_BRANCH_SHA=target).returncode, 0)

    def test_base_that_does_not_exist_has_a_report(self):
        gone = "12345678" * 5
        self.assertEqual(self.run_job(gone, directory=self.clone()).returncode, 2)
        with open(self.path("clone/gl-code-quality.json"), encoding="utf-8") as file:
            self.assertEqual([finding["check_name"] for finding in json.load(file)], ["check.failed"])

    def post(self, server, token=TOKEN):
        """Runs what the job runs after its script, in a shell of its own."""
        done = self.run_in(
            self.repository, ["dash", "-c", "\n".join(self.job()["after_script"])], CI_JOB_ID=self.job_id, CI_JOB_NAME="korvelcheck",
            KORVELCHECK_POST_REVIEW=os.path.join(SOURCE, "packaging/review/post-review"), KORVELCHECK_REVIEW_TOKEN=token,
            CI_API_V4_URL=server.url, CI_MERGE_REQUEST_PROJECT_ID="9", CI_MERGE_REQUEST_IID="7", CI_COMMIT_SHA=server.head,
        )  # fmt: skip
        self.assertNotIn(TOKEN, done.stdout + done.stderr)
        return done

    def test_review(self):
        base = self.git("rev-parse", "HEAD")
        server = Gitlab(self.repository, base, self.commit(WIDE_KEY))
        self.addCleanup(server.close)
        self.assertEqual(self.run_job(base, KORVELCHECK_REVIEW_TOKEN=TOKEN).returncode, 1)
        done = self.post(server)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        self.assertIn("### korvelcheck: refused", server.bodies()[0])
        self.assertIn("```suggestion:-", server.line_bodies()[0])
        self.assertEqual(server.violations, [])

    def test_job_that_ends_early_has_a_review(self):
        """The comment of an earlier commit said 'allowed'."""
        base = self.git("rev-parse", "HEAD")
        server = Gitlab(self.repository, base, self.commit(GROWN))
        self.addCleanup(server.close)
        self.assertEqual(self.run_job(base, KORVELCHECK_REVIEW_TOKEN=TOKEN).returncode, 0)
        self.post(server)
        self.assertIn("### korvelcheck: allowed", server.bodies()[0])
        self.job_id = "42"
        self.assertEqual(self.post(server).returncode, 1)
        self.assertEqual(len(server.bodies()), 1)
        self.assertIn("### korvelcheck: the check failed", server.bodies()[0])

    def test_no_review_without_a_token(self):
        base = self.git("rev-parse", "HEAD")
        server = Gitlab(self.repository, base, base)
        self.addCleanup(server.close)
        self.assertEqual(self.run_job(base).returncode, 0)
        self.assertEqual(self.post(server, "").returncode, 0)
        self.assertEqual((server.requests, os.path.exists(self.path("repository/.git/korvelcheck-41.json"))), ([], False))

    def test_runs_in_a_shell_without_arrays(self):
        """An image may have no bash."""
        base = self.release_and_force()
        clone = self.clone("--depth=1", "--branch=feature")
        for against, status in (("", 1), (f"git:{base}", 0)):
            done = self.run_job(base, "", clone, against, shell="dash")
            self.assertEqual(done.returncode, status, done.stdout + done.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
