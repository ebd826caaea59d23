#!/usr/bin/env python3
"""Runs what action.yml would run: action_test.py SOURCE_DIRECTORY KORVELCHECK"""

import json
import os
import shutil
import subprocess
import sys
import unittest

from repository import GROWN, NEW, OLD, PROJECT_FILE, REFUSAL, SOURCE, WIDE_KEY, Repository, load
from stand_in import TOKEN, Github


class Action(Repository):
    """action.yml"""

    def steps(self):
        return {step["name"]: step for step in load("action.yml")["runs"]["steps"]}

    def step(self, directory=None, against="", base="", paths="schemas\n", project="", sarif="", review=""):
        """Runs the step Check as the runner does: with these inputs, after an event with this base."""
        step = self.steps()["Check"]
        self.assertEqual(step["working-directory"], "${{ inputs.working-directory }}")
        self.assertEqual(step["shell"], "bash")
        inputs = {"AGAINST": against, "BASE": base, "SCHEMA_PATHS": paths, "PROJECT": project, "SARIF": sarif, "REVIEW": review}
        self.assertEqual(set(step["env"]), set(inputs), "the variables of the step")
        script = self.path("step")
        with open(script, "w", encoding="utf-8") as file:
            file.write(step["run"])
        command = ["bash", "--noprofile", "--norc", "-eo", "pipefail", script]
        files = {name: self.path(name) for name in ("GITHUB_STEP_SUMMARY", "GITHUB_OUTPUT")}
        return self.run_in(directory or self.repository, command, GITHUB_ACTION_PATH=SOURCE, **files, **inputs)

    def check(self, text, paths="schemas\n", sarif=""):
        base = self.git("rev-parse", "HEAD")
        self.commit(text)
        return self.step(base=base, paths=paths, sarif=sarif)

    def assert_status(self, done, status):
        self.assertEqual(done.returncode, status, done.stdout + done.stderr)

    def assert_failed_with_reports(self, done, text):
        """The whole check failed: annotation, summary and SARIF say so."""
        self.assert_status(done, 2)
        self.assertIn(f"::error title=korvelcheck%3A check.failed::{text}", done.stdout)
        self.assertIn("korvelcheck: incomplete (the check failed)", self.read("GITHUB_STEP_SUMMARY"))
        run = json.loads(self.read("sarif"))["runs"][0]
        self.assertFalse(run["invocations"][0]["executionSuccessful"])
        self.assertEqual([result["ruleId"] for result in run["results"]], ["check.failed"])


class ActionSteps(Action):
    """The file itself."""

    def test_inputs_are_used(self):
        action = load("action.yml")
        text = json.dumps(action["runs"])
        for name in action["inputs"]:
            self.assertIn(f"inputs.{name}", text)

    def test_every_step_is_a_script_that_bash_understands(self):
        for step in self.steps().values():
            if "run" in step:
                done = subprocess.run(["bash", "-n"], input=step["run"], text=True, capture_output=True, check=False)
                self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_the_build_step_builds_what_is_there(self):
        words = self.steps()["Install korvelcheck"]["run"]
        with open(os.path.join(SOURCE, "CMakePresets.json"), encoding="utf-8") as file:
            presets = json.load(file)
        self.assertIn("release", [preset["name"] for preset in presets["buildPresets"]])
        self.assertIn("cmake --preset release\n", words)
        self.assertTrue(os.access(os.path.join(SOURCE, "scripts/install-deps"), os.X_OK))

    def test_base_of_each_event(self):
        """A merge group had no base."""
        base = self.steps()["Check"]["env"]["BASE"]
        for commit in ("pull_request.base.sha", "merge_group.base_sha", "before"):
            self.assertIn(f"github.event.{commit}", base)


class ActionReports(Action):
    """The results of a check."""

    def test_allowed_change(self):
        done = self.check(GROWN)
        self.assert_status(done, 0)
        self.assertNotIn("::error", done.stdout)
        self.assertIn("korvelcheck: allowed", self.read("GITHUB_STEP_SUMMARY"))

    def test_refused_change(self):
        done = self.check(WIDE_KEY, sarif=self.path("sarif"))
        self.assert_status(done, 1)
        self.assertIn("::error file=schemas/my orders.xml,line=3,", done.stdout)
        self.assertIn(REFUSAL, done.stdout)
        self.assertIn("primary-key.size", self.read("GITHUB_STEP_SUMMARY"))
        results = json.loads(self.read("sarif"))["runs"][0]["results"]
        self.assertEqual([result["ruleId"] for result in results], ["primary-key.size"])

    def test_checks_once(self):
        """Each format was a check of its own."""
        self.log_calls()
        done = self.check(WIDE_KEY, sarif=self.path("sarif"))
        self.assert_status(done, 1)
        self.assertEqual(self.read("calls"), "check\n")

    def test_summary_of_earlier_commands_stays(self):
        with open(self.path("GITHUB_STEP_SUMMARY"), "w", encoding="utf-8") as file:
            file.write("before\n")
        self.check(GROWN)
        self.assertRegex(self.read("GITHUB_STEP_SUMMARY"), "^before\n.*korvelcheck: allowed")

    def test_a_new_file_alone_passes(self):
        base = self.git("rev-parse", "HEAD")
        self.write(NEW, "schemas/mall.xml")
        self.commit(OLD)
        self.assert_status(self.step(base=base, paths="schemas/mall.xml", sarif=self.path("sarif")), 0)
        self.assertIn("nothing-compared (all tables are new)", self.read("GITHUB_STEP_SUMMARY"))
        self.assertEqual(json.loads(self.read("sarif"))["runs"][0]["results"], [])

    def test_path_with_a_blank(self):
        self.assert_status(self.check(WIDE_KEY, paths="\n  \nschemas/my orders.xml\n"), 1)

    def test_failed_check_has_reports(self):
        done = self.check(GROWN, paths="scheams", sarif=self.path("sarif"))
        self.assertIn("scheams: no schema file in either state", done.stderr)
        self.assert_failed_with_reports(done, "scheams: no schema file in either state")

    def test_broken_file_is_reported_with_the_others(self):
        """One broken file left the job without a summary and without SARIF."""
        self.write("<metalib>\n", "schemas/mall.xml")
        done = self.check(WIDE_KEY, sarif=self.path("sarif"))
        self.assert_status(done, 2)
        self.assertIn("::error file=schemas/mall.xml,line=", done.stdout)
        self.assertIn("::error file=schemas/my orders.xml,line=3,", done.stdout)
        summary = self.read("GITHUB_STEP_SUMMARY")
        self.assertIn("korvelcheck: incomplete (1 file was not checked)", summary)
        self.assertIn("primary-key.size", summary)
        run = json.loads(self.read("sarif"))["runs"][0]
        self.assertFalse(run["invocations"][0]["executionSuccessful"])
        rules = {result["ruleId"] for result in run["results"]}
        self.assertIn("primary-key.size", rules)
        self.assertTrue(rules & {"schema.syntax", "schema.invalid"}, rules)

    def test_other_directory_and_project_file(self):
        self.write('[defaults]\nserver-version = "3.29.0"\n', "config/strict.toml")
        long_field = GROWN.replace('type="uint32" version="2"', 'type="string" size="300000" version="2"')
        base = self.git("rev-parse", "HEAD")
        self.commit(long_field)
        directory = os.path.join(self.repository, "schemas")
        for project, status in (("", 0), ("../config/strict.toml", 1)):
            done = self.step(directory, base=base, project=project, paths="my orders.xml")
            self.assert_status(done, status)
        self.assertIn("::error file=schemas/my orders.xml,", done.stdout)

    def test_path_that_looks_like_an_option(self):
        base = self.git("rev-parse", "HEAD")
        self.write(NEW, "--output=x.xml")
        self.commit(OLD)
        self.assert_status(self.step(base=base, paths="--output=x.xml"), 0)
        self.assertIn("--output=x.xml", self.read("GITHUB_STEP_SUMMARY"))
        self.assertFalse(os.path.exists(os.path.join(self.repository, "x.xml")))


class ActionReview(Action):
    """The review of a pull request."""

    def setUp(self):
        super().setUp()
        self.server = Github(self.repository, self.git("rev-parse", "HEAD"), "")
        self.addCleanup(self.server.close)

    def post(self, token=TOKEN):
        """Runs the step as the runner does, also after a failed step."""
        step = self.steps()["Post the review"]
        self.assertTrue(step["if"].startswith("${{ always() && "), "a comment of an earlier commit would stay after a failure")
        output = self.path("GITHUB_OUTPUT")
        outputs = dict(line.split("=", 1) for line in self.read("GITHUB_OUTPUT").splitlines()) if os.path.exists(output) else {}
        inputs = {
            "HEAD_SHA": self.server.head, "PULL_REQUEST": "7", "REVIEW": self.path("review"), "REVIEW_NAME": "w/j/.",
            "REVIEW_STATUS": outputs.get("status", ""), "REVIEW_TOKEN": token,
        }  # fmt: skip
        self.assertEqual(set(step["env"]), set(inputs), "the variables of the step")
        command = ["bash", "--noprofile", "--norc", "-eo", "pipefail", "-c", step["run"]]
        done = self.run_in(
            self.repository, command, GITHUB_ACTION_PATH=SOURCE, GITHUB_API_URL=self.server.url,
            GITHUB_GRAPHQL_URL=self.server.url + "/graphql", GITHUB_REPOSITORY="korvel/shop", **inputs
        )  # fmt: skip
        self.assertNotIn(TOKEN, done.stdout + done.stderr)
        return done

    def check_and_post(self, text, status, **options):
        base = self.git("rev-parse", "HEAD")
        self.server.head = self.commit(text)
        self.assert_status(self.step(base=base, review=self.path("review"), **options), status)
        done = self.post()
        self.assertEqual(self.server.violations, [])
        return done

    def test_refused_change(self):
        done = self.check_and_post(WIDE_KEY, 1)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        self.assertIn("### korvelcheck: refused", self.server.bodies()[0])
        self.assertIn("```suggestion\n", self.server.line_bodies()[0])

    def test_failed_check(self):
        done = self.check_and_post(GROWN, 2, paths="scheams")
        self.assertEqual((done.returncode, done.stdout), (0, ""), done.stderr)
        self.assertIn("### korvelcheck: incomplete (the check failed)", self.server.bodies()[0])

    def test_baselines_that_cannot_be_fetched(self):
        """The check exits with 2, although its report knows nothing of this."""
        self.release_and_force()
        clone = self.clone("--depth=1", "--branch=feature")
        self.git("tag", "v3", cwd=clone)
        self.git("remote", "set-url", "origin", "file:///nowhere", cwd=clone)
        self.server.head = self.git("rev-parse", "HEAD")
        self.assert_status(self.step(clone, against="git-tag:v*", paths="", review=self.path("review")), 2)
        self.assertIn("::warning::korvelcheck: the review is not complete", self.post().stdout)
        self.assertIn("### korvelcheck: the check failed", self.server.bodies()[0])

    def test_step_that_was_never_reached(self):
        """The build failed: the comment of an earlier commit said 'allowed'."""
        self.check_and_post(GROWN, 0)
        self.assertIn("### korvelcheck: allowed", self.server.bodies()[0])
        os.remove(self.path("GITHUB_OUTPUT"))
        done = self.post()
        self.assertEqual(done.returncode, 0)
        self.assertIn("::warning::korvelcheck: the review is not complete", done.stdout)
        self.assertEqual(len(self.server.bodies()), 1)
        self.assertIn("### korvelcheck: the check failed", self.server.bodies()[0])

    def test_review_that_cannot_be_posted_changes_no_result(self):
        self.check_and_post(GROWN, 0)
        for token in ("wrong", ""):
            done = self.post(token)
            self.assertEqual(done.returncode, 0)
            self.assertIn("::warning::korvelcheck: the review is not complete, or could not be posted", done.stdout)


class ActionBaselines(Action):
    """What the step compares with, and what it fetches."""

    def test_commit_that_a_shallow_clone_lacks(self):
        base = self.git("rev-parse", "HEAD")
        self.commit(WIDE_KEY)
        done = self.step(self.clone("--depth=1"), base=base)
        self.assert_status(done, 1)
        self.assertIn(REFUSAL, done.stdout)

    def test_merge_base_in_a_shallow_clone(self):
        """main has changed a key since the branch began; the branch has not."""
        self.git("branch", "feature")
        main = self.commit(WIDE_KEY)
        self.git("checkout", "--quiet", "feature")
        self.commit(GROWN)
        clone = self.clone("--depth=1", "--branch=feature")
        for against, status in ((main, 1), ("main", 1), ("origin/main", 1), (f"{main}...", 0), ("main...", 0), ("git:main...", 0)):
            self.assert_status(self.step(clone, against=against), status)

    def test_directory_of_an_earlier_state(self):
        self.write(WIDE_KEY, "released/schemas/my orders.xml")
        self.assert_status(self.step(against="./released"), 1)

    def test_baselines_of_the_project_file_are_compared_too(self):
        """The action compared with the base of the pull request only, and allowed what had been forced into main."""
        base = self.release_and_force()
        clone = self.clone("--depth=1", "--branch=feature")
        done = self.step(clone, base=base, paths="")
        self.assert_status(done, 1)
        self.assertIn(REFUSAL, done.stdout)
        self.assertIn("against git:v1.10.0", done.stdout)
        self.assert_status(self.step(clone, against=base, paths=""), 0)

    def test_base_of_the_event_is_compared_too(self):
        self.git("tag", "v1")
        self.write(PROJECT_FILE.format(against='"git-tag:v*"'), "korvelcheck.toml")
        base = self.commit(GROWN)
        self.commit(OLD)
        clone = self.clone("--depth=1")
        for given, status in ((base, 1), ("", 0), ("0" * 40, 0)):
            self.assert_status(self.step(clone, base=given, paths=""), status)

    def test_input_is_a_list(self):
        """A pattern of tags ended the step with 'invalid refspec'."""
        base = self.release_and_force()
        clone = self.clone("--depth=1", "--branch=feature")
        done = self.step(clone, against=f"\n  git-tag:v1.9*\n{base}\n", paths="")
        self.assert_status(done, 1)
        self.assertIn("against git:v1.9.0", done.stdout)
        self.assertNotIn("against git:v1.10.0", done.stdout)

    def test_branch_of_the_remote_is_newer_than_the_local_one(self):
        clone = self.clone()
        self.commit(WIDE_KEY)
        self.git("fetch", "--quiet", cwd=clone)
        self.assert_status(self.step(clone, against="main"), 1)
        self.assert_status(self.step(clone, against="HEAD"), 0)

    def test_full_clone_stays_complete(self):
        """'git fetch --depth=1' made a full clone shallow."""
        self.git("checkout", "--quiet", "-b", "feature")
        self.commit(WIDE_KEY)
        clone = self.clone("--single-branch")
        for against in ("main", "main..."):
            self.assert_status(self.step(clone, against=against), 1)
        self.assertEqual(self.git("rev-parse", "--is-shallow-repository", cwd=clone), "false")

    def test_checkout_in_a_subdirectory(self):
        """The base was looked for at the top of the workspace, which was no repository."""
        base = self.git("rev-parse", "HEAD")
        self.commit(WIDE_KEY)
        clone = self.clone("--depth=1")
        self.assert_status(self.step(os.path.join(clone, "schemas"), base=base, paths="."), 1)

    def test_commit_that_does_not_exist_has_reports(self):
        """After a force push, the step ended with 'fatal:' and without a report."""
        gone = "12345678" * 5
        done = self.step(self.clone(), base=gone, sarif=self.path("sarif"))
        self.assertIn(f"::error::korvelcheck: cannot find or fetch the baseline '{gone}'", done.stdout)
        self.assert_failed_with_reports(done, f"git:{gone}: commit {gone} is not in this clone")

    def test_missing_tags_fail_in_a_shallow_clone_only(self):
        """The newest tag of the clone may not be the newest one."""
        self.release_and_force()
        for options, status, command in ((["--depth=1"], 2, "error"), ([], 0, "warning")):
            clone = self.clone(*options, "--branch=feature")
            self.git("tag", "v3", cwd=clone)
            self.git("remote", "set-url", "origin", "file:///nowhere", cwd=clone)
            done = self.step(clone, against="git-tag:v*", paths="")
            self.assert_status(done, status)
            self.assertIn(f"::{command}::korvelcheck: cannot fetch", done.stdout)
            shutil.rmtree(clone)

    def test_nothing_to_compare_with_has_reports(self):
        for base in ("", "0" * 40):
            done = self.step(base=base, sarif=self.path("sarif"))
            self.assertIn("::error::korvelcheck: there is nothing to compare with", done.stdout)
            self.assert_failed_with_reports(done, "git:: the revision is missing")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
