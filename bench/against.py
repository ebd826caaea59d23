#!/usr/bin/env python3
"""Measures the check of a project against its last commit.

against.py KORVELCHECK [--files N]...        default: --files 10000 --files 100000

Creates a repository of N schema files, each of one table of a key and 20 fields, whose second commit changes some of them. Runs
`korvelcheck check --against git:HEAD~1 schemas` in it. Prints one line for each number of files and kind of change: the medians of
the processor time of korvelcheck, of that of git, and of the wall time, and the highest peak of resident memory. With several
numbers of files, prints the lines that fit the figures of each kind of change: what no file and what a thousand files take.
"""

import argparse
import os
import statistics
import subprocess
import sys
import tempfile
import time

RUNS = 3
TICKS = os.sysconf("SC_CLK_TCK")
# Name -> (N, type): one in N files is changed, and its key then has this type.
CHANGES = {
    "none": (0, "uint64"),
    "1 in 100, allowed": (100, "uint64"),
    "1 in 100, refused": (100, "uint32"),
    "all, allowed": (1, "uint64"),
}
FIGURES = ("cpu ms", "git cpu ms", "wall ms", "peak MB")


def schema(number, version, key_type):
    fields = "".join(f'    <entry name="f{i}" type="uint64"/>\n' for i in range(20))
    return (
        f'<metalib name="lib{number}" version="{version}" protocol="QMX">\n  <meta name="t{number}">\n'
        f'    <entry name="uid" type="{key_type}"/>\n{fields}    <primarykey entries="uid"/>\n  </meta>\n</metalib>\n'
    )


def write(directory, number, text):
    path = os.path.join(directory, "schemas", str(number // 100), f"t{number}.xml")
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def git(directory, *arguments):
    who = ["-c", "user.name=bench", "-c", "user.email=bench@example.org", "-c", "gc.auto=0"]
    subprocess.run(["git", "-C", directory, *who, *arguments], check=True, stdout=subprocess.DEVNULL)


def commit(directory, files):
    git(directory, "init", "--quiet")
    for number in range(files):
        write(directory, number, schema(number, 1, "uint64"))
    git(directory, "add", "--all")
    git(directory, "commit", "--quiet", "-m", "old")
    git(directory, "tag", "old")


def change(directory, files, step, key_type):
    """Replaces the second commit by one that changes one in `step` files."""
    git(directory, "checkout", "--quiet", "--force", "--detach", "old")
    for number in range(0, files, step) if step else ():
        write(directory, number, schema(number, 2, key_type))
    git(directory, "commit", "--quiet", "--all", "--allow-empty", "-m", "new")


def processor_times(process):
    """Processor seconds of an ended process that was not waited for: its own, and those of processes that it waited for."""
    with open(f"/proc/{process}/stat", encoding="utf-8") as file:
        fields = file.read().rpartition(")")[2].split()
    user, system, children_user, children_system = (int(field) for field in fields[11:15])
    return (user + system) / TICKS, (children_user + children_system) / TICKS


def run(tool, directory):
    """Returns the figures of one run, and the exit code."""
    start = time.monotonic()
    call = [tool, "check", "--no-project", "--against", "git:HEAD~1", "schemas"]
    with subprocess.Popen(call, cwd=directory, stdout=subprocess.DEVNULL) as process:
        os.waitid(os.P_PID, process.pid, os.WEXITED | os.WNOWAIT)
        wall = time.monotonic() - start
        own, of_git = processor_times(process.pid)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    return (own * 1000, of_git * 1000, wall * 1000, usage.ru_maxrss / 1024), process.returncode


def measure(tool, directory, key_type):
    results, codes = zip(*(run(tool, directory) for _ in range(RUNS)))
    expected = 0 if key_type == "uint64" else 1
    if set(codes) != {expected}:
        sys.exit(f"exit codes {codes}, not {expected}")
    *times, peaks = zip(*results)
    return [*(statistics.median(values) for values in times), max(peaks)]


def print_lines(sizes, figures):
    """`figures`: name of the change -> the figures for each size."""
    print("\n| changed | files | " + " | ".join(FIGURES) + " |\n" + "| --- " * (2 + len(FIGURES)) + "|")
    for name, rows in figures.items():
        fits = [statistics.linear_regression(sizes, values) for values in zip(*rows)]
        print(f"| {name} | 0 | " + " | ".join(f"{fit.intercept:.0f}" for fit in fits) + " |")
        print(f"| {name} | each 1000 | " + " | ".join(f"{fit.slope * 1000:.2f}" for fit in fits) + " |")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("tool", metavar="KORVELCHECK")
    parser.add_argument("--files", type=int, action="append", metavar="N")
    arguments = parser.parse_args()
    tool, sizes = os.path.abspath(arguments.tool), arguments.files or [10000, 100000]
    figures = {name: [] for name in CHANGES}
    print("| files | changed | " + " | ".join(FIGURES) + " |\n" + "| --- " * (2 + len(FIGURES)) + "|")
    for files in sizes:
        with tempfile.TemporaryDirectory() as directory:
            commit(directory, files)
            for name, (step, key_type) in CHANGES.items():
                change(directory, files, step, key_type)
                figures[name].append(measure(tool, directory, key_type))
                print(f"| {files} | {name} | " + " | ".join(f"{value:.0f}" for value in figures[name][-1]) + " |", flush=True)
    if len(sizes) > 1:
        print_lines(sizes, figures)


main()
