#!/usr/bin/env python3
"""Measures the check of a project against its last commit.

against.py KORVELCHECK [FILES]

Creates a repository of FILES schema files, each of one table of 20 fields, whose second commit changes some of them. Runs
`korvelcheck check --against git:HEAD~1 schemas` in it. Prints one line for each kind of change: the medians of wall and processor
time over the runs, and the highest peak of resident memory. Processor time and memory do not include those of git.
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time

RUNS = 5
# Name -> (N, type): one in N files is changed, and its key then has this type.
CHANGES = {
    "none": (0, "uint64"),
    "1 in 100, allowed": (100, "uint64"),
    "1 in 100, refused": (100, "uint32"),
    "all, allowed": (1, "uint64"),
}


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


def run(tool, directory):
    """Returns wall and processor seconds, peak MB and exit code of one run."""
    start = time.monotonic()
    call = [tool, "check", "--no-project", "--against", "git:HEAD~1", "schemas"]
    with subprocess.Popen(call, cwd=directory, stdout=subprocess.DEVNULL) as process:
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
    return time.monotonic() - start, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, process.returncode


def measure(tool, files, step, key_type):
    with tempfile.TemporaryDirectory() as directory:
        git(directory, "init", "--quiet")
        for number in range(files):
            write(directory, number, schema(number, 1, "uint64"))
        git(directory, "add", "--all")
        git(directory, "commit", "--quiet", "-m", "old")
        for number in range(0, files, step) if step else ():
            write(directory, number, schema(number, 2, key_type))
        git(directory, "commit", "--quiet", "--all", "--allow-empty", "-m", "new")
        results = [run(tool, directory) for _ in range(RUNS)]
    walls, processors, peaks, codes = zip(*results)
    expected = 0 if key_type == "uint64" else 1
    if set(codes) != {expected}:
        sys.exit(f"exit codes {codes}, not {expected}")
    return statistics.median(walls), statistics.median(processors), max(peaks)


def main():
    tool, files = os.path.abspath(sys.argv[1]), int(sys.argv[2]) if len(sys.argv) > 2 else 10000
    print("| files | changed | wall ms | cpu ms | peak MB |\n| --- | --- | --- | --- | --- |")
    for name, (step, key_type) in CHANGES.items():
        wall, processor, peak = measure(tool, files, step, key_type)
        print(f"| {files} | {name} | {wall * 1000:.0f} | {processor * 1000:.0f} | {peak:.0f} |", flush=True)


main()
