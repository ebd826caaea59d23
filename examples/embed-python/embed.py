"""Checks whether the tables of one schema file may become those of another, and prints what is refused: embed.py OLD NEW"""

import sys

import korvelcheck

try:
    report = korvelcheck.check(sys.argv[1], sys.argv[2])
except korvelcheck.Error as error:
    sys.exit(str(error))
for finding in report.findings:
    print(f"{finding.location}: {finding.summary}\n  suggestion: {finding.suggestion}")
sys.exit(0 if report.allowed else 1)
