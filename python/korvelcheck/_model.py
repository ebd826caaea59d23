"""Reports as immutable values, made from the JSON report."""

import dataclasses
import json
from collections.abc import Callable
from typing import Any, Literal


@dataclasses.dataclass(frozen=True)
class Location:
    """A place in a schema. Lines and columns count from 1; an image has none. The end is behind the last character."""

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
class Place:
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
    new_location: Location | None
    suggestion: str
    fix: tuple[Fix, ...]
    """Edits of the new schema file, in the order of the file, after which the checker allows the change. May be empty."""
    fingerprint: str
    """Identifies the finding across runs."""
    also: tuple[Place, ...]

    @property
    def location(self) -> Location | None:
        """Where to show the finding: in the new schema, or in the old one for something that was removed."""
        return self.new_location or self.old_location


@dataclasses.dataclass(frozen=True)
class Report:
    """What a check found out."""

    verdict: Literal["allowed", "refused"]
    tables: tuple[Table, ...]
    findings: tuple[Finding, ...]
    """The refused changes."""
    warnings: tuple[Finding, ...]
    """Warnings and notes about changes that are allowed."""
    json: str = dataclasses.field(repr=False)
    """The report in JSON, the same as `korvelcheck check --format json` prints."""
    _render: Callable[[str], str] = dataclasses.field(repr=False, compare=False)

    @property
    def allowed(self) -> bool:
        """Whether the checker allows the change of every table."""
        return self.verdict == "allowed"

    def render(self, format: str) -> str:
        """The report in another format: "text", "html", "sarif" and so on, as `--format` takes them. Raises ArgumentError."""
        return self._render(format)


def _location(data: Any) -> Location | None:
    return None if data is None else Location(**data)


def _table(data: Any) -> Table:
    return Table(
        name=data["table"],
        status=data["status"],
        code=data.get("code", 0),
        code_name=data.get("code_name", ""),
        rule=data.get("rule"),
        summary=data.get("summary") or "",
        text=data.get("text") or "",
        removed=data.get("removed", False),
        location=Location(**data["location"]),
    )


def _places(reference: Any, tables: Any) -> tuple[Place, ...]:
    return tuple(Place(tables[place["table"]]["table"], place["path"]) for place in reference.get("also", ()))


def _finding(reference: Any, tables: Any) -> Finding:
    table = tables[reference["table"]]
    changes = table["changes"]
    data = changes["findings"][reference["finding"]]
    return Finding(
        level="refused",
        table=table["table"],
        rule=data["rule"],
        code=data["code"],
        summary=data["summary"],
        text=data["text"],
        changes=tuple(changes["edits"][edit]["description"] for edit in data["edits"]),
        path=data["path"],
        old_location=_location(data["old_location"]),
        new_location=_location(data["new_location"]),
        suggestion=data["suggestion"],
        fix=tuple(Fix(**edit) for edit in data["fix"]),
        fingerprint=data["fingerprint"],
        also=_places(reference, tables),
    )


def _warning(reference: Any, tables: Any) -> Finding:
    table = tables[reference["table"]]
    data = table["warnings"][reference["warning"]]
    return Finding(
        level=data["level"],
        table=table["table"],
        rule=data["rule"],
        code=0,
        summary=data["summary"],
        text="",
        changes=(data["description"],),
        path=data["path"],
        old_location=_location(data["old_location"]),
        new_location=_location(data["new_location"]),
        suggestion=data["suggestion"],
        fix=(),
        fingerprint=data["fingerprint"],
        also=_places(reference, tables),
    )


def read_report(text: str, render: Callable[[str], str]) -> Report:
    """The report in a JSON text."""
    data = json.loads(text)
    tables = data["tables"]
    return Report(
        verdict=data["verdict"],
        tables=tuple(_table(table) for table in tables),
        findings=tuple(_finding(reference, tables) for reference in data["findings"]),
        warnings=tuple(_warning(reference, tables) for reference in data.get("warnings", ())),
        json=text,
        _render=render,
    )
