"""Stand-ins for the APIs of GitHub and GitLab on the loopback interface. They accept only requests that the services accept, and
keep a list of all others: `violations`."""

import base64
import json
import re
import subprocess
import threading
import urllib.parse
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

TOKEN = "token-abcdef0123456789"
PAGE = 2  # elements of a page, however many are requested


class Reply(Exception):
    """Ends the handling of a request."""

    def __init__(self, status, value=None, headers=None):
        super().__init__(status)
        self.status, self.value, self.headers = status, value, headers or {}


class StandIn:
    """One pull request. `routes` maps method and path to a function of (match, query, data)."""

    def __init__(self, repository, base, head):
        self.repository, self.base, self.head = repository, base, head
        self.requests, self.violations, self.faults = [], [], []
        self.notes, self.lines, self.next_id = [], [], 100
        self.released = threading.Event()
        stand_in = self

        class Handler(BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def handle_one(self):
                stand_in.handle(self)

            do_GET = do_POST = do_PUT = do_PATCH = do_DELETE = handle_one

            def log_message(self, *_):
                pass

        self.server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.server.daemon_threads = True
        self.url = f"http://127.0.0.1:{self.server.server_port}{self.PREFIX}"
        self.thread = threading.Thread(target=self.server.serve_forever, kwargs={"poll_interval": 0.01})
        self.thread.start()

    def close(self):
        self.released.set()
        self.server.shutdown()
        self.thread.join()
        self.server.server_close()

    # --- What tests use ---

    def fail_once(self, method, path, fault, times=1):
        """The next requests with this method and a path that ends like this get another reply: a Reply, or a word (reply)."""
        self.faults += [(method, path, fault)] * times

    def writes(self):
        return [request for request in self.requests if request[0] != "GET" and not request[1].endswith("graphql")]

    def number(self):
        self.next_id += 1
        return self.next_id

    def git(self, *arguments):
        return subprocess.run(["git", *arguments], cwd=self.repository, capture_output=True, check=True).stdout

    def changed(self):
        """Each changed file with its diff."""
        for path in self.git("diff", "--name-only", "-z", self.base, self.head).decode().split("\0")[:-1]:
            diff = self.git("diff", "-U3", self.base, self.head, "--", path).decode()
            yield path, diff[diff.index("@@") :]

    def hunks(self, path):
        """The lines of the new file in each hunk."""
        heads = re.findall(r"^@@ -\S+ \+(\d+)(?:,(\d+))? @@", dict(self.changed())[path], re.MULTILINE)
        return [range(int(first), int(first) + int(count or 1)) for first, count in heads]

    def blob(self, path):
        return self.git("rev-parse", f"{self.head}:{path}").decode().strip()

    # --- Requests ---

    def require(self, holds, what):
        if not holds:
            self.violations.append(what)
            raise Reply(422, {"message": f"Validation Failed: {what}"})

    def fields(self, data, **types):
        """The data is an object with exactly these members."""
        self.require(isinstance(data, dict) and set(data) == set(types), f"members {data}")
        for name, kind in types.items():
            self.require(isinstance(data[name], kind) and not (kind is int and data[name] is True), f"{name} is {data[name]!r}")
            self.require(name != "body" or 0 < len(data[name]) <= 65536, "the length of the body")

    def page(self, elements, path, query):
        number = int(query.get("page", ["1"])[0])
        self.require(int(query.get("per_page", ["20"])[0]) <= 100, "per_page")
        following = f'<{self.url}/{path}?page={number + 1}>; rel="next", <{self.url}/x>; rel="last"'
        headers = {"Link": following if number * PAGE < len(elements) else f'<{self.url}/x>; rel="first"'}
        raise Reply(200, elements[(number - 1) * PAGE : number * PAGE], headers)

    def fault_of(self, method, path):
        for fault in self.faults:
            if fault[0] == method and path.endswith(fault[1]):
                self.faults.remove(fault)
                return fault[2]
        return None

    def handle(self, handler):
        length = int(handler.headers.get("Content-Length", 0))
        raw = handler.rfile.read(length)
        parts = urllib.parse.urlsplit(handler.path)
        fault = self.fault_of(handler.command, parts.path)
        if fault == "silence":
            self.released.wait()
        if fault in ("silence", "disconnect"):
            handler.close_connection = True
            return
        try:
            raise fault if isinstance(fault, Reply) else self.reply(handler, parts, raw)
        except Reply as reply:
            self.send(handler, reply, fault)

    def send(self, handler, reply, fault):
        """Words: the request is carried out, but the answer is 'truncated' or is 'garbage', or the connection ends ('lost')."""
        body = b"" if reply.value is None else json.dumps(reply.value).encode()
        body = b"<html>" if fault == "garbage" else body
        if fault == "lost":
            handler.close_connection = True
            return
        handler.send_response(reply.status)
        for name, value in reply.headers.items():
            handler.send_header(name, value)
        handler.send_header("Content-Length", str(len(body)))
        handler.end_headers()
        if fault == "truncated":
            handler.close_connection = True
            body = b""
        handler.wfile.write(body)

    def reply(self, handler, parts, raw):
        try:
            data = json.loads(raw) if raw else None
            self.require(TOKEN not in handler.path, "a token in the address")
            self.require(not raw or handler.headers["Content-Type"] == "application/json", "the type of the data")
            for name, value in self.HEADERS.items():
                if handler.headers.get(name) != value:
                    self.violations.append(f"header {name}")
                    return Reply(401, {"message": "Bad credentials"})
            path = parts.path.removeprefix(self.PREFIX).lstrip("/")
            self.requests.append((handler.command, path, data))
            for (method, pattern), route in self.routes().items():
                match = re.fullmatch(pattern, path)
                if match and method == handler.command:
                    return route(match, urllib.parse.parse_qs(parts.query), data) or Reply(204)
            self.require(False, f"no such operation: {handler.command} {path}")
        except Reply as reply:
            return reply
        return None


def element(elements, number):
    for one in elements:
        if str(one["id"]) == str(number):
            return one
    raise Reply(404, {"message": "Not Found"})


class Github(StandIn):
    """GitHub."""

    PREFIX = ""
    HEADERS = {"Authorization": f"Bearer {TOKEN}", "Accept": "application/vnd.github+json", "X-GitHub-Api-Version": "2022-11-28"}
    OWN, OTHER = {"login": "github-actions[bot]"}, {"login": "mallory"}

    def routes(self):
        top = "repos/korvel/shop"
        return {
            ("POST", "graphql"): self.viewer,
            ("GET", f"{top}/pulls/7"): lambda *_: Reply(200, {"number": 7, "head": {"sha": self.head}}),
            ("GET", f"{top}/pulls/7/files"): lambda m, q, d: self.page(self.files(), m[0], q),
            ("GET", f"{top}/issues/7/comments"): lambda m, q, d: self.page(self.notes, m[0], q),
            ("POST", f"{top}/issues/7/comments"): self.create_note,
            ("PATCH", f"{top}/issues/comments/([0-9]+)"): lambda m, q, d: self.update(self.notes, m[1], d),
            ("DELETE", f"{top}/issues/comments/([0-9]+)"): lambda m, q, d: self.notes.remove(element(self.notes, m[1])),
            ("GET", f"{top}/pulls/7/comments"): lambda m, q, d: self.page(self.lines, m[0], q),
            ("POST", f"{top}/pulls/7/comments"): self.create_line,
            ("PATCH", f"{top}/pulls/comments/([0-9]+)"): lambda m, q, d: self.update(self.lines, m[1], d),
            ("DELETE", f"{top}/pulls/comments/([0-9]+)"): lambda m, q, d: self.lines.remove(element(self.lines, m[1])),
        }

    def viewer(self, _, __, data):
        self.require(data == {"query": "query { viewer { login } }"}, "another query")
        return Reply(200, {"data": {"viewer": {"login": "github-actions[bot]"}}})

    def files(self):
        return [{"filename": path, "sha": self.blob(path), "patch": patch} for path, patch in self.changed()]

    def create_note(self, _, __, data):
        self.fields(data, body=str)
        self.notes.append({"id": self.number(), "user": self.OWN, "body": data["body"].replace("\n", "\r\n")})
        return Reply(201, self.notes[-1])

    def update(self, elements, number, data):
        self.fields(data, body=str)
        element(elements, number).update(data)
        return Reply(200, element(elements, number))

    def create_line(self, _, __, data):
        several = {"start_line": int, "start_side": str} if isinstance(data, dict) and "start_line" in data else {}
        self.fields(data, body=str, commit_id=str, path=str, line=int, side=str, **several)
        self.require(data["side"] == "RIGHT" and data.get("start_side", "RIGHT") == "RIGHT", "the side")
        self.require(data["commit_id"] == self.head, "the commit")
        self.require(data["path"] in dict(self.changed()), "the path")
        first = data.get("start_line", data["line"])
        self.require(any(first in hunk and data["line"] in hunk for hunk in self.hunks(data["path"])), "a line outside of the diff")
        self.require("start_line" not in data or first < data["line"], "the first line")
        self.lines.append({"id": self.number(), "user": self.OWN, "start_line": None, **data})
        return Reply(201, self.lines[-1])

    # --- What tests use ---

    def add_note(self, user, body):
        self.notes.append({"id": self.number(), "user": user, "body": body})

    def answer(self, comment):
        self.lines.append({**comment, "id": self.number(), "user": self.OTHER, "in_reply_to_id": comment["id"], "body": "Why?"})

    def own_lines(self):
        return [one for one in self.lines if one["user"] == self.OWN]

    def bodies(self):
        return [note["body"].replace("\r\n", "\n") for note in self.notes if note["user"] == self.OWN]

    def line_bodies(self):
        return [line["body"] for line in self.own_lines()]

    @staticmethod
    def is_hidden(comment):
        return "no longer reported" in comment["body"]

    @staticmethod
    def hide(comment):
        comment["body"] = comment["body"].replace("\n", "\n_This finding is no longer reported._\n\n", 1)

    @staticmethod
    def applied(comment, text):
        """The file after a person has applied the suggestion."""
        block = re.search(r"^```suggestion\n(.*?)^```$", comment["body"], re.MULTILINE | re.DOTALL)[1]
        lines = text.splitlines(keepends=True)
        first = comment["start_line"] or comment["line"]
        return "".join(lines[: first - 1]) + block + "".join(lines[comment["line"] :])


class Gitlab(StandIn):
    """GitLab."""

    PREFIX = "/api/v4"
    HEADERS = {"PRIVATE-TOKEN": TOKEN}
    OWN, OTHER = {"id": 41, "username": "project_9_bot"}, {"id": 5, "username": "mallory"}

    def routes(self):
        top = "projects/9/merge_requests/7"
        note = "([0-9]+)/notes/([0-9]+)"
        return {
            ("GET", "user"): lambda *_: Reply(200, self.OWN),
            ("GET", f"{top}/versions"): lambda m, q, d: self.page([self.version(), {"id": 1}], m[0], q),
            ("GET", f"{top}/diffs"): lambda m, q, d: self.page(self.diffs(), m[0], q),
            ("GET", "projects/9/repository/files/([^/]+)"): self.file,
            ("GET", f"{top}/notes"): lambda m, q, d: self.page(self.notes, m[0], q),
            ("POST", f"{top}/notes"): self.create_note,
            ("PUT", f"{top}/notes/([0-9]+)"): lambda m, q, d: self.update(self.notes, m[1], d),
            ("DELETE", f"{top}/notes/([0-9]+)"): lambda m, q, d: self.notes.remove(element(self.notes, m[1])),
            ("GET", f"{top}/discussions"): lambda m, q, d: self.page(self.traced(), m[0], q),
            ("POST", f"{top}/discussions"): self.create_line,
            ("PUT", f"{top}/discussions/([0-9]+)"): self.resolve,
            ("PUT", f"{top}/discussions/{note}"): lambda m, q, d: self.update(element(self.lines, m[1])["notes"], m[2], d),
            ("DELETE", f"{top}/discussions/{note}"): self.delete_line,
        }

    def traced(self):
        """GitLab moves the positions of comments to the newest commit if it still shows their lines."""
        version = self.version()
        for note in (discussion["notes"][0] for discussion in self.lines):
            position = note["position"]
            is_changed = position["new_path"] in dict(self.changed())
            if is_changed and any(position["new_line"] in hunk for hunk in self.hunks(position["new_path"])):
                position |= {f"{name}_sha": version[f"{name}_commit_sha"] for name in ("base", "start", "head")}
        return self.lines

    def version(self):
        return {"id": 2, "base_commit_sha": self.base, "head_commit_sha": self.head, "start_commit_sha": self.base}

    def diffs(self):
        return [{"old_path": path, "new_path": path, "diff": diff} for path, diff in self.changed()]

    def file(self, match, query, _):
        self.require(query.get("ref") == [self.head], "the commit")
        path = urllib.parse.unquote(match[1])
        content = base64.b64encode(self.git("show", f"{self.head}:{path}")).decode()
        return Reply(200, {"file_path": path, "blob_id": self.blob(path), "content": content})

    def create_note(self, _, __, data):
        self.fields(data, body=str)
        self.notes.append({"id": self.number(), "author": self.OWN, "body": data["body"], "system": False})
        return Reply(201, self.notes[-1])

    def update(self, elements, number, data):
        self.fields(data, body=str)
        element(elements, number).update(data)
        return Reply(200, element(elements, number))

    def create_line(self, _, __, data):
        self.fields(data, body=str, position=dict)
        position, version = data["position"], self.version()
        is_added = "old_line" not in position
        names = {"position_type", "base_sha", "start_sha", "head_sha", "old_path", "new_path", "new_line"}
        self.require(set(position) == names | ({"old_line"} if not is_added else set()), f"members {position}")
        self.require(position["position_type"] == "text", "the type of the position")
        for name in ("base", "start", "head"):
            self.require(position[name + "_sha"] == version[name + "_commit_sha"], name)
        self.require(position["new_path"] in dict(self.changed()), "the path")
        hunks = self.hunks(position["new_path"])
        self.require(any(position["new_line"] in hunk for hunk in hunks), "a line outside of the diff")
        lines = self.git("show", f"{self.head}:{position['new_path']}").decode().splitlines()
        added = "+" + lines[position["new_line"] - 1] in dict(self.changed())[position["new_path"]].splitlines()
        self.require(is_added == added, "old_line of an added line, or none of an unchanged one")
        note = {"id": self.number(), "author": self.OWN, "position": position, "resolved": False, "body": data["body"]}
        self.lines.append({"id": str(self.number()), "notes": [note]})
        return Reply(201, self.lines[-1])

    def resolve(self, match, _, data):
        self.fields(data, resolved=bool)
        note = element(self.lines, match[1])["notes"][0]
        note["resolved"], note["resolved_by"] = data["resolved"], self.OWN if data["resolved"] else None
        return Reply(200, element(self.lines, match[1]))

    def delete_line(self, match, *_):
        discussion = element(self.lines, match[1])
        discussion["notes"].remove(element(discussion["notes"], match[2]))
        if not discussion["notes"]:
            self.lines.remove(discussion)

    # --- What tests use ---

    def add_note(self, user, body):
        self.notes.append({"id": self.number(), "author": user, "body": body})

    @staticmethod
    def answer(comment):
        comment["notes"].append({"id": 99, "author": Gitlab.OTHER, "body": "Why?"})

    def own_lines(self):
        return self.lines

    def bodies(self):
        return [note["body"] for note in self.notes if note["author"] == self.OWN]

    def line_bodies(self):
        return [line["notes"][0]["body"] for line in self.lines]

    @staticmethod
    def is_hidden(comment):
        return comment["notes"][0]["resolved"]

    def hide(self, comment):
        comment["notes"][0] |= {"resolved": True, "resolved_by": self.OWN}

    @staticmethod
    def applied(comment, text):
        """The file after a person has applied the suggestion."""
        note = comment["notes"][0]
        match = re.search(r"^```suggestion:-(\d+)\+(\d+)\n(.*?)^```$", note["body"], re.MULTILINE | re.DOTALL)
        lines, line = text.splitlines(keepends=True), note["position"]["new_line"]
        return "".join(lines[: line - int(match[1]) - 1]) + match[3] + "".join(lines[line + int(match[2]) :])
