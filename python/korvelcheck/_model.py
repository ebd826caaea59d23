"""Reports as immutable values, made from the JSON report."""

import dataclasses
import json
import os
from collections.abc import Callable
from typing import Any, Literal

from ._library import CReportInfo, decode


@dataclasses.dataclass(frozen=True)
class Location:
    """Where something is in a schema. Lines and columns count from 1; an image has none. The end is one past the last character."""

    file: str
    line: int | None
    column: int | None
    end_line: int | None = None
    end_column: int | None = None

    def __str__(self) -> str:
        return self.file if self.line is None else f"{self.file}:{self.line}:{self.column}"


@dataclasses.dataclass(frozen=True)
class Fix:
    """A part of a fix: `length` bytes of the new schema file from `offset` on become `text`."""

    offset: int
    length: int
    text: str


@dataclasses.dataclass(frozen=True)
class Affected:
    """Another table that contains the same finding, and the path of the element in it."""

    table: str
    path: str


@dataclasses.dataclass(frozen=True)
class Table:
    """The verdict about one table."""

    name: str
    status: Literal["allowed", "refused", "new"]
    code: int
    """The checker's result code: 0 for an allowed or new table, otherwise negative."""
    code_name: str
    rule: str | None
    """The rule that refused the change."""
    summary: str
    text: str
    """The checker's own text."""
    removed: bool
    """Whether the new schema has no such table."""
    location: Location


@dataclasses.dataclass(frozen=True)
class Finding:
    """A refused change, a warning or a note."""

    level: Literal["refused", "warning", "note"]
    table: str
    rule: str | None
    code: int
    """The checker's result code for this change alone; 0 for a warning or note."""
    summary: str
    """What is wrong, in plain words."""
    text: str
    """The checker's own text; empty for a warning or note."""
    changes: tuple[str, ...]
    """What changed."""
    path: str
    """The element, as in "orders.items[].price"."""
    old_location: Location | None
    """Of the element in the old schema, if it is there."""
    new_location: Location | None
    """Of the element in the new schema; of a removed one, that of its structure."""
    suggestion: str
    fix: tuple[Fix, ...]
    """Edits of the new schema file, in the order of the file, after which the checker allows the change. May be empty."""
    fingerprint: str
    """Identifies the finding across runs."""
    also: tuple[Affected, ...]

    location: Location | None
    """Where to report it: in the new schema, or in the old one for something that was removed."""


@dataclasses.dataclass(frozen=True)
class Report:
    """What a check found out."""

    verdict: Literal["allowed", "refused"]
    tables: tuple[Table, ...]
    findings: tuple[Finding, ...]
    """The refused changes."""
    warnings: tuple[Finding, ...]
    """Warnings and notes about changes that are allowed."""
    passes: bool
    """Whether nothing is refused; with the setting "fail-on" = "warning" also whether there is no warning."""
    left_out: int
    """The number of findings that are not listed, because there are more than the setting "max-findings" allows."""
    summary: str
    """The counts on one line."""
    json: str = dataclasses.field(repr=False)
    """The report in JSON, the same as `korvelcheck check OLD NEW --no-project --format json` prints; of `lint`, as that command."""
    _render: Callable[[str], str] = dataclasses.field(repr=False, compare=False)

    @property
    def allowed(self) -> bool:
        """Whether the checker allows the change of every table."""
        return self.verdict == "allowed"

    def render(self, format: str) -> str:
        """The report in another format: "text", "html", "sarif" and so on, as `--format` takes them. Raises ArgumentError."""
        return self._render(format)


def _location(data: Any) -> Location | None:
    # Later versions may have more members.
    return None if data is None else Location(**{name: data.get(name) for name in _LOCATION})


_LOCATION = [field.name for field in dataclasses.fields(Location)]


def _table(data: Any) -> Table:
    location = _location(data["location"])
    assert location is not None
    return Table(
        name=data["table"],
        status=data["status"],
        code=data.get("code", 0),
        code_name=data.get("code_name", ""),
        rule=data.get("rule"),
        summary=data.get("summary") or "",
        text=data.get("text") or "",
        removed=data.get("removed", False),
        location=location,
    )


def _is_removal(edit: Any) -> bool:
    if edit["kind"].endswith("-moved"):
        return False
    return edit["kind"].endswith("-removed") or bool(edit["before"] and not edit["after"])


def _in_other(known: str, other: str, path: str) -> str:
    """The path that corresponds to `path` as `other` does to `known`."""
    same = len(os.path.commonprefix([known[::-1], other[::-1]]))
    return other[: len(other) - same] + path[len(known) - same :]


class _Reader:
    """Reads the findings, or the warnings, of a report."""

    def __init__(self, data: Any, kind: str) -> None:
        self.tables = data["tables"]
        self.references = data.get(f"{kind}s", ())
        self.kind = kind

    def item(self, reference: Any) -> Any:
        table = self.tables[reference["table"]]
        return (table["changes"]["findings"] if self.kind == "finding" else table["warnings"])[reference[self.kind]]

    def also(self, reference: Any) -> tuple[Affected, ...]:
        """An item may refer to an earlier one, whose other paths differ from its own path in the same way."""
        leader = self.references[reference["also_as"]] if "also_as" in reference else reference
        known, path = self.item(leader)["path"], self.item(reference)["path"]
        return tuple(
            Affected(self.tables[other["table"]]["table"], _in_other(known, other["path"], path)) for other in leader.get("also", ())
        )

    def finding(self, reference: Any) -> Finding:
        table, data = self.tables[reference["table"]], self.item(reference)
        is_refusal = self.kind == "finding"
        edits = [table["changes"]["edits"][edit] for edit in data["edits"]] if is_refusal else [data]
        old, new = _location(data["old_location"]), _location(data["new_location"])
        is_removal = _is_removal(edits[0]) if edits else table.get("removed", False)
        return Finding(
            level="refused" if is_refusal else data["level"],
            table=table["table"],
            rule=data["rule"],
            code=data.get("code", 0),
            summary=data["summary"],
            text=data.get("text", ""),
            changes=tuple(edit["description"] for edit in edits),
            path=data["path"],
            old_location=old,
            new_location=new,
            suggestion=data["suggestion"],
            fix=tuple(Fix(edit["offset"], edit["length"], edit["text"]) for edit in data.get("fix", ())),
            fingerprint=data["fingerprint"],
            also=self.also(reference),
            location=old if old and (is_removal or not new) else new,
        )

    def read(self) -> tuple[Finding, ...]:
        return tuple(self.finding(reference) for reference in self.references)


def read_report(text: str, info: CReportInfo, render: Callable[[str], str]) -> Report:
    """The report in a JSON text."""
    data = json.loads(text)
    return Report(
        verdict=data["verdict"],
        tables=tuple(_table(table) for table in data["tables"]),
        findings=_Reader(data, "finding").read(),
        warnings=_Reader(data, "warning").read(),
        passes=info.passes == 1,
        left_out=info.left_out_count,
        summary=decode(info.summary),
        json=text,
        _render=render,
    )
