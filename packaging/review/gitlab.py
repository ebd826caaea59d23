"""Comments on a merge request of GitLab."""

import urllib.parse

from blob import has_blob
from diff_lines import lines_of
from review import Comment
from service_api import Api


class Gitlab:
    """`environment` names the merge request, with the variables of a job."""

    def __init__(self, environment, token, top, **options):
        headers = {"PRIVATE-TOKEN": token, "User-Agent": "korvelcheck"}
        self.api = Api(environment["CI_API_V4_URL"], headers, token, **options)
        project = urllib.parse.quote(environment["CI_MERGE_REQUEST_PROJECT_ID"], safe="")
        number = environment["CI_MERGE_REQUEST_IID"]
        self.repository, self.request = f"projects/{project}/repository", f"projects/{project}/merge_requests/{number}"
        # The commit of a pipeline for merged results is not part of the merge request.
        self.commit = environment.get("CI_MERGE_REQUEST_SOURCE_BRANCH_SHA") or environment["CI_COMMIT_SHA"]
        self.top = top
        self.user = self.version = self.diffs = None
        self.places = {}

    def is_current(self):
        self.version = self.api.get(f"{self.request}/versions?per_page=1")[0]
        return self.version["head_commit_sha"] == self.commit

    def is_own(self, user):
        if self.user is None:
            self.user = self.api.get("user")["id"]
        return (user or {}).get("id") == self.user

    # --- The comment on the whole change ---

    def summaries(self):
        notes = self.api.get_all(f"{self.request}/notes?per_page=100&sort=asc&order_by=created_at")
        return [(note["id"], note["body"]) for note in notes if self.is_own(note.get("author")) and not note.get("position")]

    def create_summary(self, body):
        self.api.request("POST", f"{self.request}/notes", {"body": body})

    def update_summary(self, note, body):
        self.api.request("PUT", f"{self.request}/notes/{note}", {"body": body})

    def delete_summary(self, note):
        self.api.delete(f"{self.request}/notes/{note}")

    # --- The comments on lines ---

    def diff_of(self, path):
        if self.diffs is None:
            self.diffs = {diff["new_path"]: diff for diff in self.api.get_all(f"{self.request}/diffs?per_page=100")}
        return self.diffs.get(path, {})

    def lines(self, path):
        """Of a file whose checked bytes are those of the newest commit: the result of a merge may have other lines."""
        if path not in self.places:
            places = lines_of(self.diff_of(path).get("diff"))
            if places:
                file = self.api.get(f"{self.repository}/files/{urllib.parse.quote(path, safe='')}?ref={self.commit}")
                places = places if has_blob(self.top, path, file["blob_id"]) else {}
            self.places[path] = places
        return self.places[path]

    def comments(self):
        found = []
        for discussion in self.api.get_all(f"{self.request}/discussions?per_page=100"):
            note, *answers = discussion["notes"]
            position = note.get("position")
            if position and self.is_own(note.get("author")):
                is_hidden = bool(note.get("resolved")) and self.is_own(note.get("resolved_by"))
                line = position.get("new_line") if position.get("head_sha") == self.version["head_commit_sha"] else None
                ids = (discussion["id"], note["id"])
                found.append(Comment("", position.get("new_path"), line, line, note["body"], ids, bool(answers), is_hidden))
        return found

    @staticmethod
    def place_of(comment, suggestion, lines):
        """The line of a comment with a suggestion, which says how many lines above and below it replaces: also lines that the merge
        request does not show."""
        line = min(max(comment["line"], suggestion["start_line"]), suggestion["line"])
        return (line, line) if line in lines else None

    @staticmethod
    def is_at(old, comment):
        """A comment is on its last line."""
        return (old.path, old.line) == (comment.path, comment.line)

    def create_comment(self, comment):
        place, diff = self.lines(comment.path)[comment.line], self.diff_of(comment.path)
        position = {
            "position_type": "text",
            "base_sha": self.version["base_commit_sha"],
            "start_sha": self.version["start_commit_sha"],
            "head_sha": self.version["head_commit_sha"],
            "old_path": diff["old_path"],
            "new_path": diff["new_path"],
            "new_line": comment.line,
        }
        if place.old_line is not None:
            position["old_line"] = place.old_line
        self.api.request("POST", f"{self.request}/discussions", {"body": comment.body, "position": position})

    def update_comment(self, comment, body):
        discussion, note = comment.id
        if body != comment.body:
            self.api.request("PUT", f"{self.request}/discussions/{discussion}/notes/{note}", {"body": body})
        if comment.is_hidden:
            self.api.request("PUT", f"{self.request}/discussions/{discussion}", {"resolved": False})

    def hide_comment(self, comment, _):
        self.api.request("PUT", f"{self.request}/discussions/{comment.id[0]}", {"resolved": True})

    def delete_comment(self, comment):
        discussion, note = comment.id
        self.api.delete(f"{self.request}/discussions/{discussion}/notes/{note}")
