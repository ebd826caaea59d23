#!/usr/bin/env python3
"""Runs packaging/install-release against a server with releases: release_test.py SOURCE_DIRECTORY KORVELCHECK

Also runs the steps of the action and of the GitLab job that call it.
"""

import functools
import hashlib
import http.server
import io
import os
import pathlib
import re
import shutil
import subprocess
import tarfile
import tempfile
import threading
import unittest

from repository import SOURCE, TOOL, load

VERSION = re.search(r"^project\(korvelcheck VERSION ([0-9.]+) ", pathlib.Path(SOURCE, "CMakeLists.txt").read_text(), re.M)[1]
TAG = f"v{VERSION}"
COMMIT = "0123456789abcdef0123456789abcdef01234567"
ARCHIVE = f"korvelcheck-{VERSION}-linux-{os.uname().machine}.tar.gz"
INSTALLED, DAMAGED, NO_RELEASE = 0, 1, 3


class Handler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):
        pass


class Releases(unittest.TestCase):
    """A server with one release, whose program only prints its version."""

    def setUp(self):
        self.directory = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.directory)
        self.release = self.directory / "releases/download" / TAG
        self.release.mkdir(parents=True)
        self.publish()
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), functools.partial(Handler, directory=self.directory))
        thread = threading.Thread(target=server.serve_forever, kwargs={"poll_interval": 0.01})
        thread.start()
        self.addCleanup(server.server_close)
        self.addCleanup(thread.join)
        self.addCleanup(server.shutdown)
        self.server = f"http://127.0.0.1:{server.server_port}"
        self.target = self.directory / "installed"

    def publish(self, program=None):
        with tarfile.open(self.release / ARCHIVE, "w:gz") as archive:
            entry = tarfile.TarInfo(f"{ARCHIVE.removesuffix('.tar.gz')}/bin/korvelcheck")
            data = program or f"#!/bin/sh\necho korvelcheck {VERSION}\n".encode()
            entry.size, entry.mode = len(data), 0o755
            archive.addfile(entry, io.BytesIO(data))
        (self.release / "COMMIT").write_text(COMMIT + "\n")
        self.sign()

    def sign(self, *names):
        sums = [f"{hashlib.sha256((self.release / name).read_bytes()).hexdigest()}  {name}\n" for name in names or ("COMMIT", ARCHIVE)]
        (self.release / "SHA256SUMS").write_text("".join(sums))

    def run_script(self, *command, **variables):
        environment = {"PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "TMPDIR": str(self.directory)} | variables
        return subprocess.run(command, env=environment, capture_output=True, text=True, check=False, cwd=SOURCE)

    def install(self, ref=TAG, url=None):
        url = url or f"{self.server}/releases/download/{{tag}}"
        return self.run_script(f"{SOURCE}/packaging/install-release", url, ref, str(self.target))

    def assert_ends(self, done, status, text):
        self.assertEqual(done.returncode, status, done.stderr)
        self.assertIn(text, done.stdout + done.stderr)
        if status != INSTALLED:
            self.assertFalse(self.target.exists(), "nothing is installed")


class InstallRelease(Releases):
    def test_installs_the_release_of_a_tag(self):
        self.publish(pathlib.Path(TOOL).read_bytes())
        self.assert_ends(self.install(), INSTALLED, f"installed korvelcheck {VERSION}, commit {COMMIT}\n")
        version = subprocess.run([self.target / "bin/korvelcheck", "--version"], capture_output=True, text=True, check=True).stdout
        self.assertEqual(version, f"korvelcheck {VERSION}\n")

    def test_installs_the_release_of_a_commit(self):
        self.assert_ends(self.install(ref=COMMIT), INSTALLED, "installed")

    def test_does_not_take_a_release_for_another_commit(self):
        other = COMMIT[::-1]
        self.assert_ends(self.install(ref=other), NO_RELEASE, f"was built from commit {COMMIT}, not from {other}")

    def test_branches_and_other_tags_have_no_release(self):
        for ref in ("main", "", "v99.0.0", COMMIT[:12], COMMIT + "0", COMMIT.upper()):
            self.assert_ends(self.install(ref=ref), NO_RELEASE, "is neither the tag")

    def test_missing_release(self):
        self.assert_ends(self.install(url=f"{self.server}/nothing/{{tag}}"), NO_RELEASE, "no release")

    def test_missing_archive_for_this_machine(self):
        (self.release / ARCHIVE).unlink()
        self.assert_ends(self.install(), NO_RELEASE, f"with {ARCHIVE}")

    def test_unreachable_server(self):
        self.assert_ends(self.install(url="http://127.0.0.1:1/{tag}"), NO_RELEASE, "no release")

    def test_changed_archive(self):
        with open(self.release / ARCHIVE, "ab") as file:
            file.write(b"more")
        self.assert_ends(self.install(), DAMAGED, "checksums of v" + VERSION + " are wrong")

    def test_changed_commit(self):
        (self.release / "COMMIT").write_text(COMMIT[::-1] + "\n")
        self.assert_ends(self.install(), DAMAGED, "are wrong")

    def test_checksums_that_do_not_cover_the_archive(self):
        self.sign("COMMIT")
        self.assert_ends(self.install(), DAMAGED, f"does not contain {ARCHIVE}")

    def test_empty_checksums(self):
        (self.release / "SHA256SUMS").write_text("")
        self.assert_ends(self.install(), DAMAGED, "does not contain COMMIT")

    def test_program_of_another_version(self):
        self.publish(b"#!/bin/sh\necho korvelcheck 99\n")
        done = self.install()
        self.assertEqual(done.returncode, DAMAGED, done.stderr)
        self.assertIn("does not run", done.stderr)

    def test_leaves_no_temporary_files(self):
        before = sorted(os.listdir(self.directory))
        self.install(ref=COMMIT[::-1])
        self.assertEqual(sorted(os.listdir(self.directory)), before)


class Pipelines(Releases):
    """The steps that install the program. Without a release they would call cmake; here, a script takes its place."""

    def setUp(self):
        super().setUp()
        tools = self.directory / "tools"
        tools.mkdir()
        for name, text in {"cmake": "echo cmake >>$CALLS", "dpkg-query": "printf ' installed '", "apt-get": "exit 0"}.items():
            (tools / name).write_text(f"#!/bin/sh\n{text}\n")
            (tools / name).chmod(0o755)
        self.variables = {"PATH": f"{tools}:{os.environ['PATH']}", "CALLS": str(self.directory / "calls")}

    def calls(self):
        calls = self.directory / "calls"
        return calls.read_text() if calls.exists() else ""

    def action(self, ref):
        step = next(step for step in load("action.yml")["runs"]["steps"] if step["name"] == "Install korvelcheck")
        self.assertEqual(step["working-directory"], "${{ github.action_path }}")
        self.assertEqual(step["env"], {
            "REF": "${{ github.action_ref }}",
            "RELEASES": "${{ github.server_url }}/${{ github.action_repository }}/releases/download/{tag}",
        })  # fmt: skip
        return self.run_script("bash", "-e", "-c", step["run"], REF=ref, RELEASES=f"{self.server}/releases/download/{{tag}}",
                               RUNNER_TEMP=str(self.directory), GITHUB_PATH=str(self.directory / "path"), **self.variables)

    def test_action_uses_the_release(self):
        self.assertEqual(self.action(TAG).returncode, 0)
        self.assertEqual((self.directory / "path").read_text(), f"{self.directory}/korvelcheck/bin\n")
        self.assertEqual(self.calls(), "")

    def test_action_builds_without_a_release(self):
        self.assertEqual(self.action("main").returncode, 0)
        self.assertEqual((self.directory / "path").read_text(), f"{SOURCE}/build/release/src/tool\n")
        self.assertEqual(self.calls(), "cmake\ncmake\n")

    def test_action_fails_if_the_release_is_damaged(self):
        (self.release / "SHA256SUMS").write_text("")
        self.assertEqual(self.action(TAG).returncode, 1)
        self.assertFalse((self.directory / "path").exists())
        self.assertEqual(self.calls(), "")

    def gitlab(self, ref):
        """Runs before_script, with the directories of the job in this test's directory."""
        script = "\n".join(load("packaging/gitlab/korvelcheck.yml")["korvelcheck"]["before_script"])
        self.assertIn("/opt/korvelcheck", script)
        script = script.replace("/opt/", f"{self.directory}/opt/").replace("command -v korvelcheck", "false")
        script = script.replace("git clone", f"mkdir {self.directory}/opt; ln -s {SOURCE} {self.directory}/opt/korvelcheck; true git clone")
        releases = self.directory / "group/korvelcheck/-/releases" / TAG
        releases.mkdir(parents=True)
        shutil.move(self.release, releases / "downloads")
        return self.run_script("bash", "-e", "-c", script + '\necho "$PATH"', KORVELCHECK_REF=ref,
                               KORVELCHECK_REPOSITORY=f"{self.server}/group/korvelcheck.git", **self.variables)

    def test_gitlab_job_uses_the_release(self):
        done = self.gitlab(TAG)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.splitlines()[-1].startswith(f"{self.directory}/opt/release/bin:"))
        self.assertEqual(self.calls(), "")

    def test_gitlab_job_builds_without_a_release(self):
        done = self.gitlab("main")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(done.stdout.splitlines()[-1].endswith("/opt/korvelcheck/build/release/src/tool"))
        self.assertEqual(self.calls(), "cmake\ncmake\n")


if __name__ == "__main__":
    unittest.main(argv=["release_test.py"])
