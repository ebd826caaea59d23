"""Comments on a pull request of GitHub."""

import urllib.parse

from blob import has_blob
from diff_lines import is_shown, lines_of
from review import GONE, Comment
from service_api import Api


class Github:
    """`environment` names the pull request, as action.yml sets it."""

    def __init__(self, environment, token, top, **options):
        headers = {
            "Accept": "application/vnd.github+json",
            "Authorization": f"Bearer {token}",
            "User-Agent": "korvelcheck",
            "X-GitHub-Api-Version": "2022-11-28",
        }
        self.api = Api(environment["GITHUB_API_URL"], headers, token, **options)
        self.graphql = environment["GITHUB_GRAPHQL_URL"]
        self.repository = "repos/" + urllib.parse.quote(environment["GITHUB_REPOSITORY"])
        self.number, self.commit, self.top = environment["PULL_REQUEST"], environment["HEAD_SHA"], top
        self.logins = self.files = None

    def path(self, rest):
        return f"{self.repository}/{rest}"

    def is_current(self):
        return self.api.get(self.path(f"pulls/{self.number}"))["head"]["sha"] == self.commit

    def is_own(self, comment):
        """The tokens of workflows may not ask for their user by any other way."""
        if self.logins is None:
            answer, _ = self.api.request("POST", self.graphql, {"query": "query { viewer { login } }"}, repeatable=True)
            login = answer["data"]["viewer"]["login"]
            self.logins = {login, login + "[bot]"}
        return (comment.get("user") or {}).get("login") in self.logins

    # --- The comment on the whole change ---

    def summaries(self):
        notes = self.api.get_all(self.path(f"issues/{self.number}/comments?per_page=100"))
        return [(note["id"], normal(note["body"])) for note in notes if self.is_own(note)]

    def create_summary(self, body):
        self.api.request("POST", self.path(f"issues/{self.number}/comments"), {"body": body})

    def update_summary(self, note, body):
        self.api.request("PATCH", self.path(f"issues/comments/{note}"), {"body": body})

    def delete_summary(self, note):
        self.api.delete(self.path(f"issues/comments/{note}"))

    # --- The comments on lines ---

    def lines(self, path):
        """Of a file whose checked bytes are those of the newest commit: the result of a merge may have other lines."""
        if self.files is None:
            files = self.api.get_all(self.path(f"pulls/{self.number}/files?per_page=100"))
            self.files = {file["filename"]: file for file in files}
        file = self.files.get(path, {})
        return lines_of(file.get("patch")) if has_blob(self.top, path, file.get("sha")) else {}

    def comments(self):
        posted = self.api.get_all(self.path(f"pulls/{self.number}/comments?per_page=100"))
        answered = {comment.get("in_reply_to_id") for comment in posted}
        return [self.comment_of(one, one["id"] in answered) for one in posted if self.is_own(one)]

    @staticmethod
    def comment_of(one, is_answered):
        """An outdated comment has no line."""
        line, body = one.get("line"), normal(one["body"])
        return Comment("", one["path"], one.get("start_line") or line, line, body, one["id"], is_answered, GONE in body)

    @staticmethod
    def place_of(_, suggestion, lines):
        """The lines of a comment with a suggestion: those that it replaces. None if the pull request does not show them."""
        first, last = suggestion["start_line"], suggestion["line"]
        return (first, last) if is_shown(lines, first, last) else None

    @staticmethod
    def is_at(old, comment):
        return (old.path, old.start_line, old.line) == (comment.path, comment.start_line, comment.line)

    def create_comment(self, comment):
        data = {"body": comment.body, "commit_id": self.commit, "path": comment.path, "line": comment.line, "side": "RIGHT"}
        if comment.start_line < comment.line:
            data |= {"start_line": comment.start_line, "start_side": "RIGHT"}
        self.api.request("POST", self.path(f"pulls/{self.number}/comments"), data)

    def update_comment(self, comment, body):
        self.api.request("PATCH", self.path(f"pulls/comments/{comment.id}"), {"body": body})

    hide_comment = update_comment

    def delete_comment(self, comment):
        self.api.delete(self.path(f"pulls/comments/{comment.id}"))


def normal(body):
    """As it was posted."""
    return (body or "").replace("\r\n", "\n")
