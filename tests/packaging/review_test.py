#!/usr/bin/env python3
"""Posts reviews to stand-ins for GitHub and GitLab: review_test.py SOURCE_DIRECTORY KORVELCHECK"""

import contextlib
import io
import json
import os
import sys
import unittest

from repository import GROWN, OLD, SOURCE, WIDE_KEY, Repository
from stand_in import TOKEN, Github, Gitlab, Reply

sys.path.insert(0, os.path.join(SOURCE, "packaging", "review"))
import post_review  # noqa: E402
import service_api  # noqa: E402
from diff_lines import lines_of  # noqa: E402

# REFUSED is fixed on one line. The other change of REFUSED_TWICE is fixed on lines that are far apart.
FIELDS = '<entry name="code" type="string" size="16"/>\n' + "".join(f'    <entry name="f{i}" type="uint32"/>\n' for i in range(30)).rstrip()
LONG = OLD.replace('<primarykey entries="uid"/>', FIELDS + '\n    <primarykey entries="uid"/>')
REFUSED = LONG.replace('version="1"', 'version="2"').replace('size="16"', 'size="12"')
REFUSED_TWICE = REFUSED.replace('"f20" type="uint32"', '"f20" type="uint64"')
ALLOWED = LONG.replace('version="1"', 'version="2"').replace("</meta>", "</meta>\n")


class Clock:
    """Time that passes only while the program waits."""

    def __init__(self):
        self.now, self.waits = 1_800_000_000.0, []

    def time(self):
        return self.now

    def sleep(self, seconds):
        self.waits.append(seconds)
        self.now += seconds


class Review(Repository):
    """Common to both services: subclasses set SERVICE, KIND and HEADERS."""

    SCHEMA_FILE = "schemas/my orders.xml"

    def setUp(self):
        super().setUp()
        os.environ["no_proxy"] = "127.0.0.1"
        self.base = self.commit(LONG)
        self.clock, self.output = Clock(), ""
        self.server = self.SERVICE(self.repository, self.base, self.base)
        self.addCleanup(self.server.close)

    def environment_of(self, status, name="schemas"):
        return {
            "REVIEW_TOKEN": TOKEN, "REVIEW_STATUS": status, "REVIEW_NAME": name,
            "GITHUB_API_URL": self.server.url, "GITHUB_GRAPHQL_URL": self.server.url + "/graphql",
            "GITHUB_REPOSITORY": "korvel/shop", "PULL_REQUEST": "7", "HEAD_SHA": self.checked,
            "CI_API_V4_URL": self.server.url, "CI_MERGE_REQUEST_PROJECT_ID": "9", "CI_MERGE_REQUEST_IID": "7",
            "CI_COMMIT_SHA": self.checked, "CI_MERGE_REQUEST_SOURCE_BRANCH_SHA": "",
        }  # fmt: skip

    def check(self, text):
        """Commits a schema, checks it, and returns the exit code as the action passes it on."""
        self.write(text)
        if self.git("status", "--porcelain"):
            self.commit(text)
        self.checked = self.server.head = self.git("rev-parse", "HEAD")
        done = self.run_in(
            self.repository, ["korvelcheck", "check", "--against", f"git:{self.base}", "--format", f"{self.KIND}-review",
                              "-o", self.path("review.json"), "schemas"]
        )  # fmt: skip
        return str(done.returncode)

    def post(self, status, name="schemas", timeout=5, **changes):
        """The exit code of the program."""
        environment = self.environment_of(status, name) | changes
        output = io.StringIO()
        with contextlib.redirect_stderr(output), contextlib.redirect_stdout(output):
            code = post_review.main([self.KIND, self.path("review.json")], environment, self.clock, self.repository, timeout)
        self.output = output.getvalue()
        self.assertNotIn(TOKEN, self.output)
        return code

    def review(self, text, code=0, **options):
        status = self.check(text)
        self.assertEqual(self.post(status, **options), code, self.output)
        self.assertEqual(self.server.violations, [])

    def assert_one_summary(self, text):
        self.assertEqual(len(self.server.bodies()), 1, self.server.bodies())
        self.assertIn(text, self.server.bodies()[0])

    def current(self):
        return self.read(f"repository/{self.SCHEMA_FILE}")

    def head_text(self):
        return self.git("show", f"{self.checked}:{self.SCHEMA_FILE}") + "\n"


class Scenarios:
    """What happens to the comments of a pull request."""

    def test_allowed_change_has_one_comment(self):
        self.review(ALLOWED)
        self.assert_one_summary("### korvelcheck: allowed")
        self.assertIn(f"Checked: {self.checked}", self.server.bodies()[0])
        self.assertEqual(self.server.own_lines(), [])

    def test_applied_suggestion_is_allowed(self):
        self.review(REFUSED)
        self.assert_one_summary("### korvelcheck: refused")
        self.assertIn("korvelcheck waive ", self.server.bodies()[0])
        (comment,) = self.server.own_lines()
        fixed = self.server.applied(comment, self.head_text())
        self.assertNotEqual(fixed, self.head_text())
        self.write(fixed)
        done = self.run_in(self.repository, ["korvelcheck", "check", "--against", f"git:{self.base}", "schemas"])
        self.assertEqual(done.returncode, 0, done.stdout)

    def test_second_call_changes_nothing(self):
        self.review(REFUSED)
        before = len(self.server.writes())
        self.assertEqual(self.post("1"), 0, self.output)
        self.assertEqual(self.server.writes()[before:], [])

    def test_comment_is_updated_not_repeated(self):
        self.review(REFUSED_TWICE)
        self.assertEqual(len(self.server.own_lines()), 2)
        kept = self.server.line_bodies()[0]
        self.review(REFUSED)
        self.assert_one_summary("1 finding")
        self.assertEqual(self.server.line_bodies(), [kept])
        self.review(ALLOWED)
        self.assert_one_summary("### korvelcheck: allowed")
        self.assertEqual(self.server.own_lines(), [])

    def test_answers_of_people_stay(self):
        self.review(REFUSED)
        self.server.answer(self.server.own_lines()[0])
        self.review(ALLOWED)
        (comment,) = self.server.own_lines()
        self.assertTrue(self.server.is_hidden(comment))
        before = len(self.server.writes())
        self.assertEqual(self.post("0"), 0, self.output)
        self.assertEqual(self.server.writes()[before:], [])
        self.review(REFUSED)
        self.assertFalse(self.server.is_hidden(self.server.own_lines()[-1]))

    def test_finding_that_is_reported_again_is_shown_again(self):
        self.review(REFUSED)
        (comment,) = self.server.own_lines()
        self.server.answer(comment)
        self.server.hide(comment)
        self.assertEqual(self.post("1"), 0, self.output)
        self.assertEqual([self.server.is_hidden(one) for one in self.server.own_lines()], [False])

    def test_comments_of_others_are_left_alone(self):
        marker = "<!-- korvelcheck in schemas -->\nmine"
        for _ in range(5):
            self.server.add_note(self.server.OTHER, marker)
        self.review(ALLOWED)
        self.assertEqual([note["body"] for note in self.server.notes[:5]], [marker] * 5)
        self.assert_one_summary("### korvelcheck: allowed")
        self.review(REFUSED)
        self.assert_one_summary("### korvelcheck: refused")

    def test_reviews_with_other_names_are_left_alone(self):
        self.review(REFUSED, name="job/a -- b>")
        self.assertEqual(self.post("1", name="other"), 0, self.output)
        self.assertEqual(len(self.server.bodies()), 2)
        self.assertEqual(len(self.server.own_lines()), 2)
        self.assertNotIn("-- b", self.server.bodies()[0].split("\n")[0])
        self.check(ALLOWED)
        self.assertEqual(self.post("0", name="other"), 0, self.output)
        self.assertEqual(sum("### korvelcheck: refused" in body for body in self.server.bodies()), 1)
        self.assertEqual(len(self.server.own_lines()), 1)

    def test_repeated_comments_become_one(self):
        for _ in range(2):
            self.server.add_note(self.server.OWN, "<!-- korvelcheck in schemas -->\nold")
        self.review(ALLOWED)
        self.assert_one_summary("### korvelcheck: allowed")

    def test_lines_outside_of_the_diff_get_no_comment(self):
        self.write('[schemas]\npaths = ["schemas/*.xml"]\n[[waivers]]\nfingerprint = "0123456789abcdef"\n', "korvelcheck.toml")
        self.server.base = self.base = self.commit(LONG)
        self.review(REFUSED)
        self.assertIn("waiver.malformed", self.server.bodies()[0])
        self.assertEqual(len(self.server.own_lines()), 1)

    def test_result_of_a_merge_gets_no_comments_on_lines(self):
        """Lines of the result of a merge were taken for lines of the pull request."""
        status = self.check(REFUSED)
        self.write("\n".join(["<!-- of the base -->", REFUSED]))
        self.assertEqual(self.post(status), 0, self.output)
        self.assert_one_summary("### korvelcheck: refused")
        self.assertEqual(self.server.own_lines(), [])

    def test_review_of_an_older_commit_is_not_posted(self):
        self.review(REFUSED)
        before = len(self.server.writes())
        newest, self.checked = self.checked, self.base
        self.assertEqual(self.post("1"), 0, self.output)
        self.assertIn("no longer the newest commit", self.output)
        self.assertEqual(self.server.writes()[before:], [])
        self.checked = newest

    def test_many_findings_get_few_comments(self):
        old = "".join(f'    <entry name="g{i}" type="uint32"/>\n' for i in range(100))
        self.server.base = self.base = self.commit(OLD.replace("<primarykey", old + "    <primarykey"))
        self.review(OLD.replace("<primarykey", old.replace("uint32", "uint16") + "    <primarykey"))
        self.assert_one_summary("100 findings")
        self.assertEqual(len(self.server.own_lines()), 30)


    def test_more_findings_delete_no_comment(self):
        """A comment that was no longer among the first was deleted, although its finding was not fixed."""
        fields = "".join(f'    <entry name="g{i}" type="uint32"/>\n' for i in range(40))
        old = OLD.replace("<primarykey", fields + "    <primarykey")
        self.server.base = self.base = self.commit(old)
        one = old.replace('"g39" type="uint32"', '"g39" type="uint16"')
        self.review(one)
        (body,) = self.server.line_bodies()
        self.review(one.replace('type="uint32"/>\n    <entry name="g', 'type="uint16"/>\n    <entry name="g'))
        self.assertIn(body.split("\n")[0], "\n".join(self.server.line_bodies()))
        self.assertGreater(len(self.server.own_lines()), 30)


class Failures:
    """A check that fails never looks like one without findings."""

    def assert_failed(self, code=1):
        self.assert_one_summary("### korvelcheck: the check failed")
        self.assertNotIn("allowed", self.server.bodies()[0])
        self.assertEqual(code, 1, self.output)
        self.assertEqual(self.server.violations, [])

    def test_missing_truncated_and_wrong_reviews(self):
        self.review(ALLOWED)
        whole = self.read("review.json")
        damaged = [whole[:-10], "", "[]", "{}", "null", "7", "\udcff", whole.replace('"version": 1,', '"version": 2,', 1)]
        for member in ("body", "comments", "exit_code"):
            damaged.append(json.dumps({name: value for name, value in json.loads(whole).items() if name != member}))
        damaged.append(json.dumps(json.loads(whole) | {"comments": [{"fingerprint": "0123456789abcdef", "body": 7}]}))
        for text in damaged:
            self.server.notes.clear()
            with open(self.path("review.json"), "w", encoding="utf-8", errors="surrogateescape") as file:
                file.write(text)
            with self.subTest(text=text[:40]):
                self.assert_failed(self.post("0"))
        os.remove(self.path("review.json"))
        self.assert_failed(self.post("0"))

    def test_status_decides(self):
        """The review of an earlier check, or of another one, is not taken for the result."""
        self.check(ALLOWED)
        for status in ("", "1", "2", "3", "137", "-1", "x"):
            self.server.notes.clear()
            with self.subTest(status=status):
                self.assert_failed(self.post(status))

    def test_failure_replaces_an_allowed_result(self):
        self.review(REFUSED)
        self.assertEqual(len(self.server.own_lines()), 1)
        self.assert_failed(self.post(""))
        self.assertEqual(len(self.server.own_lines()), 1, "nothing is known about the finding")

    def test_fault_of_a_file_removes_no_comment(self):
        self.review(REFUSED)
        status = self.check("<metalib>\n")
        self.assertEqual(status, "2")
        self.assertEqual(self.post(status), 0, self.output)
        self.assert_one_summary("### korvelcheck: incomplete (1 file was not checked)")
        self.assertEqual(sum("field" in body or "key" in body for body in self.server.line_bodies()), 1)


class Faults:
    """Faults of the service and of the network."""

    def test_waits_as_long_as_the_service_asks(self):
        reset = {"X-RateLimit-Remaining": "0", "X-RateLimit-Reset": str(int(self.clock.time()) + 40)}
        for status, headers, seconds in ((429, {"Retry-After": "7"}, 7), (403, {"Retry-After": "5"}, 5), (403, reset, 40)):
            self.clock.waits.clear()
            self.clock.now = 1_800_000_000.0
            self.server.notes.clear()
            self.server.fail_once("POST", self.NOTES, Reply(status, {"message": "slow down"}, headers))
            self.review(ALLOWED)
            self.assert_one_summary("allowed")
            self.assertEqual(self.clock.waits, [seconds])

    def test_does_not_wait_for_long(self):
        self.server.fail_once("POST", self.NOTES, Reply(429, {}, {"Retry-After": "3600"}))
        self.review(ALLOWED, 1)
        self.assertEqual(self.clock.waits, [])
        self.assertIn("status 429; the next attempt would be in 3600 s, which is too late", self.output)
        self.server.fail_once("GET", self.NOTES, Reply(429, {}, {"Retry-After": "50"}), times=9)
        self.review(ALLOWED, 1)
        self.assertEqual(self.clock.waits, [50, 50])

    def test_repeats_reading(self):
        for fault in (Reply(502), Reply(500, {"message": "oops"}), "truncated", "garbage", "disconnect", "lost"):
            self.server.notes.clear()
            self.server.fail_once("GET", self.NOTES, fault)
            with self.subTest(fault=str(fault)):
                self.review(ALLOWED)
                self.assert_one_summary("allowed")
        self.assertEqual(self.server.faults, [])

    def test_repeats_deleting(self):
        """The first attempt was carried out, but its answer was lost."""
        self.review(REFUSED)
        self.server.fail_once("DELETE", "", "lost")
        self.review(ALLOWED)
        self.assertEqual((self.server.own_lines(), self.server.faults), ([], []))

    def test_repeats_no_comment_after_an_unclear_answer(self):
        """The first attempt was carried out, but its answer was lost; the second one repeated the comment."""
        for fault in ("truncated", "garbage", "lost", "disconnect", Reply(502)):
            for path, count in ((self.NOTES, "bodies"), (self.LINES, "own_lines")):
                self.server.notes.clear()
                self.server.lines.clear()
                self.server.fail_once("POST", path, fault)
                with self.subTest(fault=str(fault), path=path):
                    self.review(REFUSED)
                    self.assertEqual(len(getattr(self.server, count)()), 1)
                    self.assertIn("looking for what was posted", self.output)
        self.assertEqual(self.server.faults, [])

    def test_gives_up(self):
        self.server.fail_once("GET", self.NOTES, Reply(503), times=99)
        self.review(ALLOWED, 1)
        self.assertIn("status 503, 4 times", self.output)
        self.server.faults.clear()
        self.server.fail_once("POST", self.NOTES, Reply(503), times=99)
        self.review(ALLOWED, 1)
        self.assertIn("the review is not posted", self.output)
        self.assertEqual(self.server.bodies(), [])

    def test_silence_ends_the_call(self):
        self.server.fail_once("GET", self.NOTES, "silence", times=4)
        self.review(ALLOWED, 1, timeout=0.02)
        self.assertIn("the review is not posted", self.output)

    def test_refusals_are_explained(self):
        for status, text in ((401, "the token is not valid"), (403, "a pull request from a fork"), (404, "may not see it")):
            message = f"::error::no\n##[error]{TOKEN}"
            self.server.fail_once("POST", self.NOTES, Reply(status, {"message": message}))
            self.review(ALLOWED, 1)
            self.assertIn(f"status {status}; ", self.output)
            self.assertIn(text, self.output)
            self.assertNotIn("##[", self.output)
            self.assertEqual(self.output.count("\n"), 1)
            self.assertEqual(self.clock.waits, [])

    def test_wrong_token(self):
        self.check(ALLOWED)
        self.assertEqual(self.post("0", REVIEW_TOKEN="wrong"), 1)
        self.assertIn("status 401", self.output)
        self.assertNotIn("wrong", self.output)

    def test_one_refused_line_does_not_withhold_the_others(self):
        self.server.fail_once("POST", self.LINES, Reply(422, {"message": "line must be part of the diff"}))
        self.review(REFUSED_TWICE, 1)
        self.assertIn("line must be part of the diff", self.output)
        self.assertEqual(len(self.server.own_lines()), 1)
        self.assert_one_summary("2 findings")

    def test_redirect_within_the_host_is_followed(self):
        self.server.fail_once("GET", self.NOTES, Reply(301, None, {"Location": "../moved"}))
        self.check(ALLOWED)
        self.assertEqual(self.post("0"), 1)
        self.assertIn("merge_requests/moved" if self.KIND == "gitlab" else "issues/moved", self.output)

    def test_token_is_sent_to_no_other_host(self):
        other = self.SERVICE(self.repository, self.base, self.base)
        self.addCleanup(other.close)
        redirect = Reply(307, None, {"Location": other.url + "/user"})
        following = Reply(200, [], {"Link": f'<{other.url}/user>; rel="next"'})
        for method, reply in (("GET", redirect), ("POST", redirect), ("GET", following)):
            self.server.fail_once(method, self.NOTES, reply)
            self.review(ALLOWED, 1)
            self.assertIn("another host", self.output)
        self.assertEqual((other.requests, other.violations), ([], []))

    def test_lists_end(self):
        path = {"github": "/repos/korvel/shop/issues/7/comments"}.get(self.KIND, "/api/v4/projects/9/merge_requests/7/notes")
        for link, text in (("http://[", "not as expected"), (path, "more than 100 pages")):
            self.server.fail_once("GET", self.NOTES, Reply(200, [], {"Link": f'<{link}>; rel="next"'}), times=100)
            self.review(ALLOWED, 1)
            self.assertIn(text, self.output)
            self.server.faults.clear()

    def test_address_without_tls(self):
        self.check(ALLOWED)
        for url in ("http://example.org", "ftp://127.0.0.1", "127.0.0.1", ""):
            with self.assertRaises(service_api.ApiError):
                service_api.Api(url, {}, TOKEN)
            self.assertNotEqual(self.post("0", GITHUB_API_URL=url, CI_API_V4_URL=url), 0)

    def test_unexpected_answers(self):
        for value in ({}, [], 7, None, [7], {"head": 7}):
            self.server.fail_once("GET", self.HEAD, Reply(200, value))
            self.review(ALLOWED, 1)
            self.assertIn("post-review: ", self.output)
            self.assertEqual(self.server.bodies(), [])


class GithubReview(Scenarios, Failures, Faults, Review):
    """GitHub."""

    SERVICE, KIND = Github, "github"
    HEAD, NOTES, LINES = "/pulls/7", "/issues/7/comments", "/pulls/7/comments"

    def test_fix_outside_of_the_diff_is_named(self):
        self.review(REFUSED_TWICE)
        bodies = self.server.line_bodies()
        self.assertEqual(["The fix changes lines that this review does not show" in body for body in bodies], [False, True])
        self.assertEqual(["```suggestion" in body for body in bodies], [True, False])

    def test_outdated_comment_is_replaced(self):
        self.review(REFUSED)
        self.server.lines[0]["line"] = None
        number = self.server.lines[0]["id"]
        self.assertEqual(self.post("1"), 0, self.output)
        (comment,) = self.server.own_lines()
        self.assertNotEqual(comment["id"], number)


class GitlabReview(Scenarios, Failures, Faults, Review):
    """GitLab."""

    SERVICE, KIND = Gitlab, "gitlab"
    HEAD, NOTES, LINES = "/versions", "/merge_requests/7/notes", "/discussions"

    def test_fix_outside_of_the_diff_can_be_applied(self):
        self.review(REFUSED_TWICE)
        far, near = sorted(self.server.own_lines(), key=lambda comment: "+0\n" in comment["notes"][0]["body"])
        self.assertRegex(far["notes"][0]["body"], r"```suggestion:-\d+\+[1-9]")
        for comment in (far, near):  # from the end, so that line numbers stay
            self.write(self.server.applied(comment, self.current()))
        done = self.run_in(self.repository, ["korvelcheck", "check", "--against", f"git:{self.base}", "schemas"])
        self.assertEqual(done.returncode, 0, done.stdout)

    def test_thread_that_a_person_resolved_stays_resolved(self):
        self.review(REFUSED)
        self.server.lines[0]["notes"][0] |= {"resolved": True, "resolved_by": self.server.OTHER}
        before = len(self.server.writes())
        self.assertEqual(self.post("1"), 0, self.output)
        self.assertEqual(self.server.writes()[before:], [])

    def test_pipeline_for_merged_results(self):
        status = self.check(REFUSED)
        merged = {"CI_COMMIT_SHA": "0" * 40, "CI_MERGE_REQUEST_SOURCE_BRANCH_SHA": self.checked}
        self.assertEqual(self.post(status, **merged), 0, self.output)
        self.assertEqual(len(self.server.own_lines()), 1)


class Program(Repository):
    """The program itself."""

    def run_program(self, *arguments, **environment):
        return self.run_in(self.repository, [os.path.join(SOURCE, "packaging/review/post-review"), *arguments], **environment)

    def test_wrong_usage(self):
        for arguments in ((), ("github",), ("svn", "x"), ("github", "x", "y")):
            done = self.run_program(*arguments)
            self.assertEqual(done.returncode, 2)
            self.assertTrue(done.stderr.startswith("Usage: "), done.stderr)

    def test_missing_variables(self):
        done = self.run_program("github", "review.json")
        self.assertEqual((done.returncode, done.stderr), (2, "post-review: the variable REVIEW_TOKEN is not set\n"))
        done = self.run_program("gitlab", "review.json", REVIEW_TOKEN=TOKEN)
        self.assertEqual((done.returncode, done.stderr), (2, "post-review: the variable CI_API_V4_URL is not set\n"))
        done = self.run_program("gitlab", "review.json", REVIEW_TOKEN="", CI_API_V4_URL="https://127.0.0.1/", **{
            "CI_MERGE_REQUEST_PROJECT_ID": "1", "CI_MERGE_REQUEST_IID": "1", "CI_COMMIT_SHA": "0"})
        self.assertEqual(done.returncode, 2)
        self.assertIn("the token is empty; a pull request from a fork gets no secrets", done.stderr)

    def test_lines_of_a_diff(self):
        patch = "@@ -2,3 +2,4 @@ <meta>\n a\n-@@ -1 +1 @@\n+b\n+c\n d\n\\ No newline at end of file\n@@ -9 +10 @@\n-x\n\\ No newline at end of file\n+y"
        found = {line: (place.hunk, place.old_line) for line, place in lines_of(patch).items()}
        self.assertEqual(found, {2: (1, 2), 3: (1, None), 4: (1, None), 5: (1, 4), 10: (2, None)})
        self.assertEqual(lines_of(None), {})
        self.assertEqual({line: place.old_line for line, place in lines_of("@@ -0,0 +1,2 @@\n+a\n+b").items()}, {1: None, 2: None})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
