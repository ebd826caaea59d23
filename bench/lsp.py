#!/usr/bin/env python3
"""Measures the language server while a schema file of a git repository is edited.

lsp.py KORVELCHECK [--entries N]... [--changes N]        default: --entries 1000 --entries 100000 --changes 11

Creates a repository whose last commit has a project file and a schema file with one table of N entries of about 80 bytes. Runs
`korvelcheck lsp` there, opens the file and types in it, as an editor does: each change makes the type of an entry smaller, which is
refused, or undoes that. Prints one line for each number of entries:

open     from the notification that the file is open until its first diagnostics
pause    from a change until its diagnostics, without the 150 ms for which the server waits
request  the same in a session of an editor that requests the diagnostics, at once after each change
idle MB  resident memory of the server afterwards, with the file open

`open` is one measurement. The others are medians with the highest in brackets: of changes that are refused, and of their undoing,
after which the text is that of the commit. A first line has the memory of a server without a file.
"""

import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

PAUSE = 0.150
PROJECT = '[schemas]\npaths = ["*.xml"]\nagainst = ["git:HEAD"]\n'
OLD, NEW = "uint64", "uint32"


def schema(entries):
    fields = "".join(f'    <entry name="field_{i}" id="{i + 2}" type="{OLD}" desc="field {i} of a table"/>\n' for i in range(entries - 1))
    return (
        '<metalib name="bench" version="1" protocol="QMX">\n  <meta name="table">\n    <entry name="uid" id="1" type="uint64"/>\n'
        f'{fields}    <primarykey entries="uid"/>\n  </meta>\n</metalib>\n'
    )


def commit(directory, entries):
    who = ["-c", "user.name=bench", "-c", "user.email=bench@example.org"]
    (directory / "korvelcheck.toml").write_text(PROJECT, encoding="utf-8")
    (directory / "schema.xml").write_text(schema(entries), encoding="utf-8")
    for arguments in (["init", "--quiet"], ["add", "--all"], [*who, "commit", "--quiet", "-m", "old"]):
        subprocess.run(["git", "-C", directory, *arguments], check=True)


class Server:
    def __init__(self, tool, directory, capabilities):
        self.process = subprocess.Popen([tool, "lsp"], cwd=directory, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.requests = 0
        self.request("initialize", {"capabilities": capabilities})
        self.notify("initialized", {})

    def send(self, message):
        body = json.dumps({"jsonrpc": "2.0", **message}).encode()
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n" % len(body) + body)
        self.process.stdin.flush()

    def notify(self, method, params):
        self.send({"method": method, "params": params})

    def receive(self):
        length = 0
        while line := self.process.stdout.readline().strip():
            length = int(line.partition(b":")[2])
        if not length:
            sys.exit("the server has ended")
        return json.loads(self.process.stdout.read(length))

    def request(self, method, params):
        self.requests += 1
        self.send({"id": self.requests, "method": method, "params": params})
        while (message := self.receive()).get("id") != self.requests:
            pass
        return message["result"]

    def diagnostics(self, version):
        while (message := self.receive()).get("params", {}).get("version") != version:
            pass
        return message["params"]["diagnostics"]

    def memory(self):
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text(encoding="utf-8")
        return int(status.partition("VmRSS:")[2].split()[0]) / 1000

    def end(self):
        self.request("shutdown", None)
        self.notify("exit", None)
        if self.process.wait() != 0:
            sys.exit(f"exit code {self.process.returncode} of the server")


class Editor:
    """Edits one file. Stops the program if the diagnostics are not those of the text."""

    def __init__(self, server, directory, entries):
        self.server = server
        self.uri = (directory / "schema.xml").as_uri()
        self.version = 1
        text = schema(entries)
        self.line = 3 + entries // 2
        self.column = text.split("\n")[self.line].index(OLD)
        document = {"uri": self.uri, "languageId": "xml", "version": 1, "text": text}
        self.open_message = {"textDocument": document}

    def open(self):
        start = time.monotonic()
        self.server.notify("textDocument/didOpen", self.open_message)
        self.require(self.server.diagnostics(1))
        return (time.monotonic() - start) * 1000

    def type(self):
        self.version += 1
        ends = ({"line": self.line, "character": self.column + end} for end in (0, len(OLD)))
        change = {"range": dict(zip(("start", "end"), ends)), "text": OLD if self.version % 2 else NEW}
        document = {"uri": self.uri, "version": self.version}
        self.server.notify("textDocument/didChange", {"textDocument": document, "contentChanges": [change]})

    def require(self, diagnostics):
        expected = [] if self.version % 2 else ["field.size"]
        codes = [one["code"] for one in diagnostics]
        if codes != expected:
            sys.exit(f"diagnostics {codes}, not {expected}")

    def pause(self):
        start = time.monotonic()
        self.type()
        self.require(self.server.diagnostics(self.version))
        return (time.monotonic() - start - PAUSE) * 1000

    def ask(self):
        start = time.monotonic()
        self.type()
        self.require(self.server.request("textDocument/diagnostic", {"textDocument": {"uri": self.uri}})["items"])
        return (time.monotonic() - start) * 1000


def summary(times):
    """The measurements alternate between refused changes and their undoing."""
    return " | ".join(f"{statistics.median(some):.1f} ({max(some):.1f})" for some in (times[::2], times[1::2]))


def measure(tool, directory, entries, changes):
    commit(directory, entries)
    server = Server(tool, directory, {})
    editor = Editor(server, directory, entries)
    first = editor.open()
    pauses = [editor.pause() for _ in range(2 * changes)]
    memory = server.memory()
    server.end()
    server = Server(tool, directory, {"textDocument": {"diagnostic": {}}})
    editor = Editor(server, directory, entries)
    server.notify("textDocument/didOpen", editor.open_message)
    requests = [editor.ask() for _ in range(2 * changes)]
    server.end()
    print(f"| {entries} | {first:.1f} | {summary(pauses)} | {summary(requests)} | {memory:.1f} |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tool", metavar="KORVELCHECK", type=os.path.abspath)
    parser.add_argument("--entries", type=int, action="append", metavar="N")
    parser.add_argument("--changes", type=int, default=11, metavar="N")
    arguments = parser.parse_args()
    columns = ("entries", "open ms", "pause ms, refused", "undone", "request ms, refused", "undone", "idle MB")
    print("| " + " | ".join(columns) + " |\n" + "| --- " * len(columns) + "|")
    with tempfile.TemporaryDirectory() as directory:
        server = Server(arguments.tool, directory, {})
        print(f"| none | | | | | | {server.memory():.1f} |", flush=True)
        server.end()
    for entries in arguments.entries or [1000, 100000]:
        with tempfile.TemporaryDirectory() as directory:
            measure(arguments.tool, pathlib.Path(directory), entries, arguments.changes)


main()
