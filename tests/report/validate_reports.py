#!/usr/bin/env python3
"""Compares reports in every format with the schemas of the formats, with the sources that they refer to, and with each other.

Usage: validate_reports.py TOP DIRECTORY

TOP is the directory of the project, to which file names in reports are relative. DIRECTORY has a document NAME.FORMAT for each
format. Prints each fault as NAME.FORMAT: message; the exit status is 1 if there is one.
"""

import collections
import html.parser
import json
import pathlib
import re
import sys
import urllib.parse
import xml.etree.ElementTree

import jsonschema

# HTML elements without an end tag.
VOID = {"br", "input", "link", "meta"}
PROPERTY = r"[a-zA-Z]+=[^,:\n]+"
COMMAND = re.compile(rf"::(error|warning|notice) {PROPERTY}(,{PROPERTY})*::\S.*")


def validator_of(path):
    schema = json.loads(path.read_text(encoding="utf-8"))
    kind = jsonschema.validators.validator_for(schema)
    kind.check_schema(schema)
    return kind(schema)


class Tags(html.parser.HTMLParser):
    """Finds tags of a page that are not closed in reverse order."""

    def __init__(self):
        super().__init__()
        self.open, self.faults = [], []

    def handle_starttag(self, tag, attributes):
        names = [name for name, _ in attributes]
        if len(names) != len(set(names)):
            self.faults.append(f"<{tag}> has an attribute twice at {self.getpos()}")
        if tag not in VOID:
            self.open.append(tag)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.faults.append(f"</{tag}> at {self.getpos()} does not match the open tag")


class Reports:
    """One report in all formats."""

    def __init__(self, top, directory, name, validators):
        self.top, self.name, self.validators, self.faults = top, name, validators, []
        self.documents = {path.suffix[1:]: path.read_text(encoding="utf-8") for path in directory.glob(name + ".*")}
        report = json.loads(self.documents["json"])
        tables = report["tables"]
        self.findings = [tables[at["table"]]["changes"]["findings"][at["finding"]] for at in report["findings"]]
        self.warnings = [tables[at["table"]]["warnings"][at["warning"]] for at in report.get("warnings", [])]
        self.all = self.findings + self.warnings
        self.report = report

    def expect(self, holds, name, what):
        if not holds:
            self.faults.append(f"{self.name}.{name}: {what}")
        return holds

    def check(self):
        for name in self.documents:
            getattr(self, "check_" + name.replace("-", "_"))(self.documents[name])
        return self.faults

    def is_valid(self, name, document):
        for fault in self.validators[name].iter_errors(document):
            self.expect(False, name, f"{'.'.join(map(str, fault.absolute_path))}: {fault.message[:500]}")

    def has_all_findings(self, name, fingerprints):
        """Each finding once. Fingerprints are unique in a document: repeated ones have a number appended."""
        self.expect(len(fingerprints) == len(set(fingerprints)), name, "a fingerprint occurs twice")
        found = collections.Counter(fingerprint.split("-")[0] for fingerprint in fingerprints)
        self.expect(found == collections.Counter(finding["fingerprint"] for finding in self.all), name, "other findings than json")

    def has_all_summaries(self, name, summaries):
        """Each message begins with the plain summary of a finding."""
        expected = {finding["summary"] for finding in self.all}
        for summary in summaries:
            self.expect(any(summary == plain or summary.startswith(plain + ": ") for plain in expected), name, f"no summary: {summary}")

    def mentions_all_findings(self, name, text):
        """Identifiers of each finding, which no format escapes."""
        for finding in self.all:
            for word in (finding["fingerprint"], finding["rule"], finding.get("code_name")):
                self.expect(not word or word in text, name, f"{word} is missing")

    def check_text(self, text):
        self.mentions_all_findings("text", text)
        has_warning = any(warning["level"] == "warning" for warning in self.warnings)
        remark = " (with warnings)" if has_warning and self.report["verdict"] == "allowed" else ""
        self.expect(text.startswith(f"verdict: {self.report['verdict']}{remark}\n"), "text", "another verdict")
        lines = re.findall(r"^\S.*: (?:refused|waived|warning|note) (?:\[\S+\] )?(.*)$", text, re.MULTILINE)
        for finding in self.all:
            self.expect(finding["summary"] in lines, "text", f"no line starts with {finding['summary']}")
        for finding in self.findings:
            self.expect(f"  checker: {finding['text'] or '(no text)'}\n" in text or not finding["text"].isprintable(), "text", f"{finding['text']} is missing")
        carets = len(re.findall(r"^ +\| [ \t]*\^~*$", text, re.MULTILINE))
        self.expect(carets >= len(self.all), "text", f"{carets} carets for {len(self.all)} findings")

    def check_json(self, text):
        self.is_valid("json", json.loads(text))
        summary = self.report["summary"]
        self.expect(summary["findings"] == len(self.findings), "json", "the summary counts other findings")
        statuses = collections.Counter(table["status"] for table in self.report["tables"])
        for status in ("allowed", "refused", "new"):
            self.expect(summary[status] == statuses[status], "json", f"the summary counts other {status} tables")
        for position, table in enumerate(self.report["tables"]):
            self.check_changes(position, table.get("changes"), table["status"])
            self.check_warnings(position, table)
        for level, name in (("warning", "warnings"), ("note", "notes")):
            number = sum(warning["level"] == level for warning in self.warnings)
            self.expect(summary.get(name, {"all": 0})["all"] == number, "json", f"the summary counts other {name}")

    def check_changes(self, position, changes, status):
        """A table has changes and findings of its own or refers to those of an earlier table; a refused one has a finding."""
        if changes is None:
            return
        findings = len(changes["findings"]) + changes.get("left_out", 0)
        for kind in ("edits", "findings"):
            for shared in changes.get("shared_" + kind, []):
                items = self.report["tables"][shared["table"]]["changes"][kind]
                self.expect(shared["table"] < position, "json", "a table shares with a later one")
                self.expect(shared["first"] + shared["count"] <= len(items), "json", "a table shares more than there is")
                findings += shared["count"] if kind == "findings" else 0
        self.expect((findings > 0) == (status == "refused"), "json", "a refused table without findings, or an allowed one with some")

    def check_warnings(self, position, table):
        """A table has warnings of its own or refers to those of an earlier table."""
        for shared in table.get("shared_warnings", []):
            self.expect(shared["table"] < position, "json", "a table shares with a later one")
            items = self.report["tables"][shared["table"]]["warnings"]
            self.expect(shared["first"] + shared["count"] <= len(items), "json", "a table shares more than there is")

    def check_sarif(self, text):
        log = json.loads(text)
        self.is_valid("sarif", log)
        run = log["runs"][0]
        rules = run["tool"]["driver"]["rules"]
        self.has_all_findings("sarif", [result["partialFingerprints"]["korvelcheck/v1"] for result in run["results"]])
        self.has_all_summaries("sarif", [result["message"]["text"].split("\n")[0] for result in run["results"]])
        for result in run["results"]:
            rule = rules[result["ruleIndex"]]
            self.expect(rule["id"] == result["ruleId"], "sarif", "a rule at another index")
            self.expect(rule["defaultConfiguration"]["level"] == result["level"], "sarif", "another level than the rule")
            for location in result["locations"] + result.get("relatedLocations", []):
                self.check_region(location["physicalLocation"])
            for fix in result.get("fixes", []):
                for change in fix["artifactChanges"]:
                    self.check_fix(change)

    def source_of(self, location):
        return (self.top / urllib.parse.unquote(location["uri"])).read_bytes()

    def piece(self, source, region):
        """The text between the lines and columns of a region."""
        lines = source.decode().splitlines(keepends=True) + [""]
        def offset(line, column):
            return sum(map(len, lines[:line - 1])) + column - 1
        begin, end = (offset(region[side + "Line"], region[side + "Column"]) for side in ("start", "end"))
        return source.decode()[begin:end]

    def check_region(self, place):
        found = self.piece(self.source_of(place["artifactLocation"]), place["region"])
        snippet = place["region"].get("snippet", {"text": found})["text"]
        self.expect(found == snippet, "sarif", f"{place} is {found!r}")

    def check_fix(self, change):
        source = self.source_of(change["artifactLocation"])
        for part in change["replacements"]:
            region = part["deletedRegion"]
            piece = source[region["byteOffset"]:region["byteOffset"] + region["byteLength"]].decode()
            self.expect(self.piece(source, region) == piece, "sarif", f"{region} has different text by lines and by bytes")

    def rules_of_failures(self):
        """The rule of each finding, and one of each group that is listed with an earlier table."""
        for table in self.report["tables"]:
            changes = table.get("changes", {"findings": []})
            yield from (finding["rule"] for finding in changes["findings"])
            for shared in changes.get("shared_findings", []):
                yield self.report["tables"][shared["table"]]["changes"]["findings"][shared["first"]]["rule"]

    def check_junit(self, text):
        root = xml.etree.ElementTree.fromstring(text)
        for suite in [root, *root]:
            for count, path in (("tests", ".//testcase"), ("failures", ".//testcase[failure]"), ("skipped", ".//testcase[skipped]")):
                self.expect(int(suite.get(count)) == len(suite.findall(path)), "junit", f"{count} of {suite.get('name')}")
        types = collections.Counter(failure.get("type") for failure in root.iter("failure"))
        self.expect(types == collections.Counter(self.rules_of_failures()), "junit", "other failures than json has findings")
        self.has_all_summaries("junit", [failure.get("message") for failure in root.iter("failure")])
        self.expect(len(root.findall(".//testcase")) == len(self.report["tables"]), "junit", "other tests than json has tables")

    def check_github(self, text):
        lines = text.splitlines()
        self.expect(len(lines) == 1 + len(self.all), "github", f"{len(lines)} commands")
        for line in lines:
            self.expect(COMMAND.fullmatch(line), "github", f"not a command: {line}")
        self.has_all_summaries("github", [urllib.parse.unquote(line.split("::", 2)[2]).split("\n")[0] for line in lines[1:]])

    def check_gitlab(self, text):
        entries = json.loads(text)
        self.is_valid("gitlab", entries)
        self.has_all_findings("gitlab", [entry["fingerprint"] for entry in entries])
        self.has_all_summaries("gitlab", [entry["description"] for entry in entries])

    def check_markdown(self, text):
        rows = [line for line in text.splitlines() if line.startswith("| ")][1:]
        self.expect(len(rows) == len(self.all), "markdown", f"{len(rows)} rows")
        for row in rows:
            self.expect(row.count("|") == 5, "markdown", f"not four cells: {row}")
        if len(self.all) <= 50:
            self.mentions_all_findings("markdown", text)

    def check_github_review(self, text):
        self.check_review("github-review", text, lambda first, line, last: "suggestion")

    def check_gitlab_review(self, text):
        self.check_review("gitlab-review", text, lambda first, line, last: f"suggestion:-{line - first}+{last - line}")

    def check_review(self, name, text, language_of):
        review = json.loads(text)
        self.is_valid(name, review)
        self.expect(review["verdict"] == self.report["verdict"], name, "another verdict")
        self.expect(len(review["body"].encode()) <= 50100, name, "a long summary")
        fingerprints = [comment["fingerprint"] for comment in review["comments"]]
        self.expect(len(fingerprints) == len(set(fingerprints)), name, "a fingerprint occurs twice")
        fixes = collections.defaultdict(list)  # files may have findings with the same fingerprint
        for finding in self.all:
            fixes[finding["fingerprint"]].append(finding.get("fix", []))
        if len(self.all) <= 20:
            for finding in self.all:
                waive = f"korvelcheck waive {finding['fingerprint']} "
                self.expect(waive in review["body"], name, f"{waive} is missing")
        for comment in review["comments"]:
            self.expect(len(comment["body"].encode()) <= 10000, name, "a long comment")
            fingerprint = comment["fingerprint"].split("-")[0]
            if self.expect(fingerprint in fixes, name, f"unknown finding {fingerprint}"):
                self.check_block(name, comment, fixes[fingerprint], language_of)

    def check_block(self, name, comment, fixes, language_of):
        """The lines of the suggestion give the bytes of a fix."""
        suggestion = comment["suggestion"]
        if suggestion is None:
            self.expect([] in fixes or "The fix is not shown" in comment["body"], name, "a fix is missing")
            return
        source = self.source_of({"uri": urllib.parse.quote(comment["path"])})
        first, last = suggestion["start_line"], suggestion["line"]
        language, block, rest = lines_of_block(suggestion["block"])
        line = min(max(comment["line"], first), last)
        self.expect(language == language_of(first, line, last) and block and not rest, name, f"no block of this language: {language}")
        lines = source.decode().splitlines(keepends=True)
        self.expect("".join(lines[:first - 1] + block + lines[last:]).encode() in [fixed(source, fix) for fix in fixes], name, f"another fix of {comment['fingerprint']}")

    def check_html(self, text):
        tags = Tags()
        tags.feed(text)
        self.expect(not tags.open and not tags.faults, "html", f"{tags.open} {tags.faults[:3]}")
        self.mentions_all_findings("html", text)


def fixed(source, fix):
    """The bytes after a fix."""
    text, at = b"", 0
    for part in fix:
        text += source[at:part["offset"]] + part["text"].encode()
        at = part["offset"] + part["length"]
    return text + source[at:]


def lines_of_block(block):
    """The language of a fenced block of code, and the lines in it with their ends, as CommonMark defines them."""
    begin, *lines = block.splitlines(keepends=True)
    fence = re.match("`+", begin)[0]
    end = next(i for i, line in enumerate(lines) if re.fullmatch("`{%d,}\\s*" % len(fence), line))
    return begin[len(fence):].strip(), lines[:end], lines[end + 1:]


def main():
    top, directory = map(pathlib.Path, sys.argv[1:])
    schemas = top / "tests/report/schemas"
    validators = {
        "json": validator_of(top / "docs/report.schema.json"),
        "sarif": validator_of(schemas / "sarif-2.1.0.json"),
        "gitlab": validator_of(schemas / "gitlab-code-quality.json"),
        "github-review": validator_of(top / "docs/review.schema.json"),
        "gitlab-review": validator_of(top / "docs/review.schema.json"),
    }
    faults = []
    for path in sorted(directory.glob("*.json")):
        faults += Reports(top, directory, path.stem, validators).check()
    print("".join(fault + "\n" for fault in faults), end="")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
