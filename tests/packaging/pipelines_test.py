#!/usr/bin/env python3
"""Runs what .pre-commit-hooks.yaml, action.yml and packaging/gitlab/korvelcheck.yml would run, in repositories made here.

pipelines_test.py SOURCE_DIRECTORY KORVELCHECK
"""

import json
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

    def read(self, name):
        with open(self.path(name), encoding="utf-8") as file:
            return file.read()


class Action(Repository):
    """action.yml"""

    def steps(self):
        return {step["name"]: step for step in load("action.yml")["runs"]["steps"]}

    def step(self, name, directory=None, **environment):
        """Runs the shell of a step as the runner does; its variables are given by name."""
        step = self.steps()[name]
        self.assertEqual(set(step["env"]), set(environment), "the variables of the step")
        self.assertEqual(step["shell"], "bash")
        script = self.path("step")
        with open(script, "w", encoding="utf-8") as file:
            file.write(step["run"])
        command = ["bash", "--noprofile", "--norc", "-eo", "pipefail", script]
        files = {name: self.path(name) for name in ("GITHUB_OUTPUT", "GITHUB_STEP_SUMMARY")}
        return self.run_in(directory or self.repository, command, **files, **environment)

    def check(self, text, paths="schemas\n", sarif=""):
        base = self.git("rev-parse", "HEAD")
        self.commit(text)
        return self.step("Check", AGAINST=f"git:{base}", PROJECT="", SCHEMA_PATHS=paths, SARIF=sarif)

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
        words = self.steps()["Build korvelcheck"]["run"]
        with open(os.path.join(SOURCE, "CMakePresets.json"), encoding="utf-8") as file:
            presets = json.load(file)
        self.assertIn("release", [preset["name"] for preset in presets["buildPresets"]])
        self.assertIn("cmake --preset release\n", words)
        self.assertTrue(os.access(os.path.join(SOURCE, "scripts/install-deps"), os.X_OK))

    def test_allowed_change(self):
        done = self.check(GROWN)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertNotIn("::error", done.stdout)
        self.assertIn("korvelcheck: allowed", self.read("GITHUB_STEP_SUMMARY"))

    def test_refused_change(self):
        done = self.check(WIDE_KEY, sarif=self.path("sarif"))
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertIn("::error file=schemas/my orders.xml,line=3,", done.stdout)
        self.assertIn(REFUSAL, done.stdout)
        self.assertIn("primary-key.size", self.read("GITHUB_STEP_SUMMARY"))
        results = json.loads(self.read("sarif"))["runs"][0]["results"]
        self.assertEqual([result["ruleId"] for result in results], ["primary-key.size"])

    def test_a_new_file_alone_passes(self):
        base = self.git("rev-parse", "HEAD")
        self.write(NEW, "schemas/mall.xml")
        self.commit(OLD)
        done = self.step("Check", AGAINST=f"git:{base}", PROJECT="", SCHEMA_PATHS="schemas/mall.xml", SARIF=self.path("sarif"))
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("nothing-compared (all tables are new)", self.read("GITHUB_STEP_SUMMARY"))
        self.assertEqual(json.loads(self.read("sarif"))["runs"][0]["results"], [])

    def test_path_with_a_blank(self):
        done = self.check(WIDE_KEY, paths="\n  \nschemas/my orders.xml\n")
        self.assertEqual(done.returncode, 1, done.stderr)

    def test_failed_check_has_reports(self):
        done = self.check(GROWN, paths="scheams", sarif=self.path("sarif"))
        self.assertEqual(done.returncode, 2)
        self.assertIn("scheams: no schema file in either state", done.stderr)
        self.assertIn("::error title=korvelcheck%3A check.failed::scheams: no schema file in either state", done.stdout)
        self.assertIn("korvelcheck: incomplete (the check failed)", self.read("GITHUB_STEP_SUMMARY"))
        run = json.loads(self.read("sarif"))["runs"][0]
        self.assertFalse(run["invocations"][0]["executionSuccessful"])
        self.assertEqual([result["ruleId"] for result in run["results"]], ["check.failed"])

    def test_broken_file_is_reported_with_the_others(self):
        """One broken file left the job without a summary and without SARIF."""
        self.write("<metalib>\n", "schemas/mall.xml")
        done = self.check(WIDE_KEY, sarif=self.path("sarif"))
        self.assertEqual(done.returncode, 2)
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

    def test_base_that_is_here(self):
        base = self.git("rev-parse", "HEAD")
        for against in (base, "main"):
            done = self.step("Find the base commit", AGAINST=against)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(self.read("GITHUB_OUTPUT").splitlines()[-1], f"against=git:{base}")

    def test_base_that_a_shallow_clone_lacks(self):
        base = self.git("rev-parse", "HEAD")
        self.commit(WIDE_KEY)
        self.git("config", "uploadpack.allowAnySHA1InWant", "true")
        clone = self.path("clone")
        self.git("clone", "--quiet", "--depth=1", f"file://{self.repository}", clone)
        done = self.step("Find the base commit", clone, AGAINST=base)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.read("GITHUB_OUTPUT"), f"against=git:{base}\n")
        done = self.step("Check", clone, AGAINST=f"git:{base}", PROJECT="", SCHEMA_PATHS="schemas", SARIF="")
        self.assertEqual(done.returncode, 1, done.stderr)

    def test_merge_base_in_a_shallow_clone(self):
        """main has changed a key since the branch began; the branch has not."""
        self.git("branch", "feature")
        main = self.commit(WIDE_KEY)
        self.git("checkout", "--quiet", "feature")
        self.commit(GROWN)
        clone = self.path("clone")
        self.git("config", "uploadpack.allowAnySHA1InWant", "true")
        self.git("clone", "--quiet", "--depth=1", "--branch=feature", f"file://{self.repository}", clone)
        for against, status in ((main, 1), (f"{main}...", 0)):
            done = self.step("Find the base commit", clone, AGAINST=against)
            self.assertEqual(done.returncode, 0, done.stderr)
            found = self.read("GITHUB_OUTPUT").splitlines()[-1].removeprefix("against=")
            done = self.step("Check", clone, AGAINST=found, PROJECT="", SCHEMA_PATHS="schemas", SARIF="")
            self.assertEqual(done.returncode, status, done.stdout + done.stderr)

    def test_other_directory_and_project_file(self):
        self.assertEqual(self.steps()["Check"]["working-directory"], "${{ inputs.working-directory }}")
        self.write('[defaults]\nserver-version = "3.29.0"\n', "config/strict.toml")
        long_field = GROWN.replace('type="uint32" version="2"', 'type="string" size="300000" version="2"')
        base = self.git("rev-parse", "HEAD")
        self.commit(long_field)
        directory = os.path.join(self.repository, "schemas")
        for project, status in (("", 0), ("../config/strict.toml", 1)):
            done = self.step("Check", directory, AGAINST=f"git:{base}", PROJECT=project, SCHEMA_PATHS="my orders.xml", SARIF="")
            self.assertEqual(done.returncode, status, done.stdout + done.stderr)
        self.assertIn("::error file=schemas/my orders.xml,", done.stdout)

    def test_path_that_looks_like_an_option(self):
        base = self.git("rev-parse", "HEAD")
        self.write(NEW, "--output=x.xml")
        self.commit(OLD)
        done = self.step("Check", AGAINST=f"git:{base}", PROJECT="", SCHEMA_PATHS="--output=x.xml", SARIF="")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("--output=x.xml", self.read("GITHUB_STEP_SUMMARY"))
        self.assertFalse(os.path.exists(os.path.join(self.repository, "x.xml")))

    def test_no_base(self):
        for against in ("", "0" * 40):
            done = self.step("Find the base commit", AGAINST=against)
            self.assertEqual(done.returncode, 2)
            self.assertIn("::error::korvelcheck: there is nothing to compare with", done.stdout)


class Template(Repository):
    """packaging/gitlab/korvelcheck.yml"""

    def job(self):
        return load("packaging/gitlab/korvelcheck.yml")["korvelcheck"]

    def run_job(self, base, paths="schemas"):
        lines = self.job()["before_script"] + self.job()["script"]
        script = "set -eo pipefail\n" + "\n".join(lines)
        return self.run_in(
            self.repository, ["bash", "-c", script], CI_MERGE_REQUEST_DIFF_BASE_SHA=base, KORVELCHECK_PATHS=paths
        )

    def report(self):
        return json.loads(self.read("repository/" + self.job()["artifacts"]["reports"]["codequality"]))

    def test_variables_are_used(self):
        script = "\n".join(self.job()["before_script"] + self.job()["script"])
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

    def test_a_new_file_alone_passes(self):
        base = self.git("rev-parse", "HEAD")
        self.write(NEW, "schemas/mall.xml")
        self.commit(OLD)
        done = self.run_job(base, paths="schemas/mall.xml")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("nothing-compared (all tables are new)", done.stdout)

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
