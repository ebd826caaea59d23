#!/usr/bin/env python3
"""Runs the commands of a page of the documentation, and compares what they print with what the page says.

    tests/documents/run_document.py PAGE KORVELCHECK [--install BUILD_TREE] [--update]

A block ```console has commands ("$ ..." with lines "> ..." that continue them), each followed by its output. The commands run one after
the other in one empty directory, on a terminal. Any other block below a line such as "Save this as `schemas/shop.xml`:" is written to
this file before the next command; below a line with "(not run)", a block ```console is not run. Below a line with "(output not
shown)", the commands must succeed, and may print anything. --install first installs a build tree to $HOME/korvelcheck, and puts the Python
wheel into $HOME. --update replaces the output in the page.
"""

import os
import pathlib
import pty
import re
import shutil
import subprocess
import sys
import tempfile

NAMED_FILE = re.compile(r"`([^`]+[.](?:xml|toml))`[^`]*:$")


class Terminal:
    """A directory, and a shell on a terminal in it."""

    def __init__(self, tool):
        self.home = pathlib.Path(tempfile.mkdtemp()).resolve()
        self.directory = self.home / "project"
        self.directory.mkdir()
        tools = self.home / "bin"
        tools.mkdir()
        (tools / "korvelcheck").symlink_to(pathlib.Path(tool).resolve())
        self.status = 0
        self.environment = {
            "PATH": f"{tools}:/usr/bin:/bin",
            "HOME": str(self.home),
            "LC_ALL": "C.UTF-8",
            "TERM": "dumb",
            "SOURCE_DATE_EPOCH": "1780272000",  # 2026-06-01
            "GIT_CONFIG_NOSYSTEM": "1",
            "GIT_PAGER": "cat",
            "GIT_AUTHOR_NAME": "A", "GIT_AUTHOR_EMAIL": "a@example.org", "GIT_AUTHOR_DATE": "2026-06-01T12:00:00Z",
            "GIT_COMMITTER_NAME": "A", "GIT_COMMITTER_EMAIL": "a@example.org", "GIT_COMMITTER_DATE": "2026-06-01T12:00:00Z",
        }  # fmt: skip

    def write(self, name, lines):
        path = self.directory / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("".join(line + "\n" for line in lines), encoding="utf-8")

    def run(self, command):
        """What the command prints. It sees the exit status and the directory that the previous one left."""
        state = self.home / "directory"
        script = f'(exit {self.status})\n{command}\nstatus=$?\npwd >"{state}"\nexit $status\n'
        ours, theirs = pty.openpty()
        process = subprocess.Popen(["bash", "-c", script], cwd=self.directory, env=self.environment,
                                   stdin=subprocess.DEVNULL, stdout=theirs, stderr=theirs)
        os.close(theirs)
        printed = b""
        while piece := read(ours):
            printed += piece
        os.close(ours)
        self.status = process.wait()
        self.directory = pathlib.Path(state.read_text(encoding="utf-8").strip())
        return printed.decode("utf-8").replace("\r\n", "\n").splitlines()

    def install(self, build_tree):
        """Installs elsewhere and moves the result: an installation contains no path of its own. Puts the Python wheel into $HOME."""
        subprocess.run(["cmake", "--install", build_tree, "--prefix", self.home / "elsewhere"], check=True, stdout=subprocess.DEVNULL)
        (self.home / "elsewhere").rename(self.home / "korvelcheck")
        wheel = pathlib.Path(__file__).resolve().parent.parent.parent / "scripts/wheel"
        library = pathlib.Path(build_tree, "src/capi/libkorvelcheck.so")
        subprocess.run([wheel, library, self.home], check=True, stdout=subprocess.DEVNULL)

    def remove(self):
        shutil.rmtree(self.home)


def read(terminal):
    """Bytes, or none after the process has closed its end."""
    try:
        return os.read(terminal, 65536)
    except OSError:
        return b""


def typed(block, terminal, shows_output):
    """The block with the current output of its commands, if it shows any."""
    lines = []
    commands = [i for i, line in enumerate(block) if line.startswith("$ ")]
    for i in commands:
        end = i + 1
        while end < len(block) and block[end].startswith("> "):
            end += 1
        output = terminal.run("\n".join(line[2:] for line in block[i:end]))
        if not shows_output and terminal.status != 0:
            sys.exit("\n".join(block[i:end] + output))
        lines += block[i:end] + (output if shows_output else [])
    return lines


def run(page, terminal):
    """The lines of the page with the current output of its commands, and the number of blocks that were run."""
    lines, block, title, language, blocks = [], None, "", None, 0
    for line in page:
        if block is None:
            lines.append(line)
            if line.startswith("```"):
                block, language = [], line[3:]
            elif line:
                title = line
        elif line != "```":
            block.append(line)
        else:
            if language == "console" and "(not run)" not in title:
                blocks += 1
                block = typed(block, terminal, "(output not shown)" not in title)
            elif named := NAMED_FILE.search(title):
                terminal.write(named[1], block)
            lines += block + [line]
            block = None
    return lines, blocks


def main():
    page, tool = pathlib.Path(sys.argv[1]), sys.argv[2]
    lines = page.read_text(encoding="utf-8").splitlines()
    terminal = Terminal(tool)
    try:
        if "--install" in sys.argv:
            terminal.install(sys.argv[sys.argv.index("--install") + 1])
        current, blocks = run(lines, terminal)
    finally:
        terminal.remove()
    if blocks == 0:
        sys.exit(f"{page}: no commands")
    if "--update" in sys.argv:
        page.write_text("".join(line + "\n" for line in current), encoding="utf-8")
    elif current != lines:
        subprocess.run(["diff", "-u", "--label", "page", "--label", "program", str(page), "-"], text=True, check=False,
                       input="".join(line + "\n" for line in current))
        sys.exit(f"{page}: the output differs; to update it, add --update")


main()
