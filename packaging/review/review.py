"""What to post: the review that korvelcheck has written, or that it is missing; and how it replaces what was posted before."""

import json
import re
from dataclasses import dataclass

from diff_lines import is_shown
from service_api import ApiError

MAX_COMMENTS = 30  # on lines; the comment on the whole change has the numbers of all findings
MARKER = "<!-- korvelcheck -->\n"
FINGERPRINT = "[0-9a-f]{16}(?:-[0-9]+)?"
GONE = "_This finding is no longer reported._\n\n"
ELSEWHERE = "\nThe fix changes lines that this review does not show; `korvelcheck suggest` prints it.\n"


class Unusable(Exception):
    """There is no review: the check failed, or its review is not what it should be."""


@dataclass
class Comment:
    """A comment on lines of a file. `id` and the others are of comments that were posted before."""

    fingerprint: str
    path: str
    start_line: int
    line: int
    body: str
    id: object = None
    is_answered: bool = False  # by anybody
    is_hidden: bool = False  # by this program


@dataclass
class Review:
    """`is_complete`: a finding that is missing is fixed."""

    body: str
    comments: list
    is_complete: bool


def require(holds, what):
    if not holds:
        raise Unusable(f"the review is damaged: {what}")


def check_comment(comment):
    require(isinstance(comment, dict), "a comment is no object")
    require(re.fullmatch(FINGERPRINT, str(comment.get("fingerprint"))), "no fingerprint")
    first_line = f"<!-- korvelcheck {comment['fingerprint']} -->\n"
    require(isinstance(comment.get("body"), str) and comment["body"].startswith(first_line), "no text of a comment")
    require(isinstance(comment.get("path"), str) and comment["path"], "no path")
    suggestion = comment.get("suggestion")
    require(suggestion is None or (isinstance(suggestion, dict) and isinstance(suggestion.get("block"), str)), "no suggestion")
    for lines in (comment, suggestion or comment):
        first, last = lines.get("start_line"), lines.get("line")
        require(type(first) is int and type(last) is int and 1 <= first <= last, "no lines")


def load(path, status):
    """The review in a file, of a check that ended with this status. Raises Unusable."""
    if status not in ("0", "1", "2"):
        raise Unusable("the check did not end as it should" + (f": exit code {status}" if status.isdigit() else ""))
    try:
        with open(path, encoding="utf-8") as file:
            review = json.load(file)
    except (OSError, UnicodeDecodeError, ValueError) as error:
        raise Unusable("the check wrote no review, or only a part of it") from error
    require(isinstance(review, dict) and review.get("version") == 1, "another version")
    require(isinstance(review.get("body"), str) and review["body"].startswith(MARKER), "no text")
    require(isinstance(review.get("comments"), list), "no comments")
    for comment in review["comments"]:
        check_comment(comment)
    if str(review.get("exit_code")) != status:
        raise Unusable(f"the check ended with exit code {status}, but its review is about exit code {review.get('exit_code')}")
    return Review(review["body"], review["comments"], status != "2")


def failure(reason):
    """What a person has to see instead of a review."""
    text = f"### korvelcheck: the check failed\n\nNothing is known about the schema changes of this commit: {reason}. See the log.\n"
    return Review(MARKER + text, [], False)


class Publisher:
    """Makes the comments of this program on a service those of a review, with as few changes as possible.

    Running it again after an error repeats nothing: it begins with what is there. `name` tells the reviews of one pull request
    apart, such as those of several jobs.
    """

    def __init__(self, service, name, footer):
        self.service, self.footer, self.problems = service, footer, []
        self.name = re.sub(r"[^A-Za-z0-9._/ -]", "_", name).replace("--", "-_")

    def publish(self, review):
        """False if the review is of a commit that is no longer the newest."""
        if not self.service.is_current():
            return False
        self.problems = []
        self.post_summary(self.marker() + review.body.removeprefix(MARKER) + self.footer)
        self.post_comments(review)
        return True

    def marker(self, fingerprint=""):
        return f"<!-- korvelcheck {fingerprint + ' ' if fingerprint else ''}in {self.name} -->\n"

    def post_summary(self, body):
        posted = [(note, text) for note, text in self.service.summaries() if text.startswith(self.marker())]
        if not posted:
            self.service.create_summary(body)
            return
        (first, text), *others = posted
        if text != body:
            self.service.update_summary(first, body)
        for note, _ in others:
            self.service.delete_summary(note)

    def post_comments(self, review):
        posted = self.posted()
        reported = {comment["fingerprint"] for comment in review.comments}
        wanted = {comment.fingerprint: comment for comment in self.placed(review.comments)}
        for old in posted:
            comment = wanted.get(old.fingerprint)
            if comment is not None and self.service.is_at(old, comment):
                del wanted[old.fingerprint]
                if comment.body != old.body or old.is_hidden:
                    self.service.update_comment(old, comment.body)
            elif comment is not None or (review.is_complete and old.fingerprint not in reported):
                self.retire(old)
        for comment in wanted.values():
            self.create(comment)

    def posted(self):
        first_line = re.compile(rf"<!-- korvelcheck ({FINGERPRINT}) in {re.escape(self.name)} -->\n")
        own = []
        for comment in self.service.comments():
            if match := first_line.match(comment.body):
                comment.fingerprint = match[1]
                own.append(comment)
        return own

    def placed(self, comments):
        """Those that the service can show, at most MAX_COMMENTS."""
        placed = []
        for comment in comments:
            if len(placed) == MAX_COMMENTS:
                break
            if one := self.placed_one(comment, self.service.lines(comment["path"])):
                placed.append(one)
        return placed

    def placed_one(self, comment, lines):
        suggestion = comment["suggestion"]
        body = self.marker(comment["fingerprint"]) + comment["body"].split("\n", 1)[1]
        if suggestion is not None:
            if place := self.service.place_of(comment, suggestion, lines):
                return Comment(comment["fingerprint"], comment["path"], *place, body + "\n" + suggestion["block"])
            body += ELSEWHERE
        first, last = comment["start_line"], comment["line"]
        if not is_shown(lines, first, last):
            first = last
        return Comment(comment["fingerprint"], comment["path"], first, last, body) if last in lines else None

    def retire(self, old):
        """Answers of people stay readable."""
        if not old.is_answered:
            self.service.delete_comment(old)
        elif not old.is_hidden and GONE not in old.body:
            first, rest = old.body.split("\n", 1)
            self.service.hide_comment(old, f"{first}\n{GONE}{rest}")

    def create(self, comment):
        """One that the service refuses does not withhold the others."""
        try:
            self.service.create_comment(comment)
        except ApiError as error:
            if error.status not in (400, 422):
                raise
            self.problems.append(str(error))
