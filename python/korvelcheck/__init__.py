"""Checks changes of the schemas of Korvel tables: is a record that was written under the old schema readable under the new one?

>>> import korvelcheck
>>> report = korvelcheck.check("examples/shop/v6.xml", "examples/shop/v7-wider-key.xml", tables=["orders"])
>>> report.verdict
'refused'
>>> [finding] = report.findings
>>> print(f"{finding.location}: {finding.rule}: {finding.summary}")
examples/shop/v7-wider-key.xml:70:41: primary-key.size: the size of a primary key field changed
>>> print(finding.suggestion)
keep order_no as it is; add a new field order_no_2 (uint64, id 9, version 7) for the new values; the key does not change

Every function may be called from several threads at once. A call releases the interpreter lock while it checks.
"""

from ._errors import ArgumentError, Error, Fault, InternalError, SchemaError
from ._model import Affected, Finding, Fix, Location, Report, Table
from ._schema import Schema
from ._calls import build_info, check, explain, lint, version

__all__ = [
    "Affected",
    "ArgumentError",
    "Error",
    "Fault",
    "Finding",
    "Fix",
    "InternalError",
    "Location",
    "Report",
    "Schema",
    "SchemaError",
    "Table",
    "build_info",
    "check",
    "explain",
    "lint",
    "version",
]
