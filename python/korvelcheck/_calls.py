"""The calls of the library."""

import json
import os
from collections.abc import Iterable, Mapping
from ctypes import byref, c_char_p, c_size_t, c_void_p, sizeof, string_at
from typing import Any

from ._errors import check_result
from ._handles import Handle
from ._library import CReportInfo, decode, encode, library
from ._model import Report, read_report
from ._schema import Schema

AnySchema = Schema | str | os.PathLike[str]


def _settings(settings: Mapping[str, str], table_settings: Mapping[str, Mapping[str, str]]) -> Handle:
    pointer, error = c_void_p(), c_void_p()
    check_result(library.kc_settings_new(byref(pointer), byref(error)), error)
    handle = Handle(pointer, library.kc_settings_free)
    for table, values in [(None, settings), *((encode(name), values) for name, values in table_settings.items())]:
        for key, value in values.items():
            error = c_void_p()
            check_result(library.kc_settings_set(pointer, table, encode(key), encode(value), byref(error)), error)
    return handle


class _Renderer:
    """A report of the library."""

    def __init__(self, pointer: c_void_p) -> None:
        self._handle = Handle(pointer, library.kc_report_free)

    def __call__(self, name: str) -> str:
        text, size, error = c_void_p(), c_size_t(), c_void_p()
        check_result(library.kc_report_text(self._handle.pointer, encode(name), byref(text), byref(size), byref(error)), error)
        return decode(string_at(text, size.value))

    def info(self) -> CReportInfo:
        info = CReportInfo()
        check_result(library.kc_report_get(self._handle.pointer, byref(info), sizeof(info)), c_void_p())
        return info

    def __reduce__(self) -> tuple[Any, ...]:
        return _LostRenderer, ()


class _LostRenderer:
    """Of a report that was sent to another process."""

    def __call__(self, name: str) -> str:
        raise RuntimeError("a report from another process has no other formats; render them there")


def _load(schema: AnySchema) -> Schema:
    return schema if isinstance(schema, Schema) else Schema(schema)


def _report(result: int, handle: c_void_p, error: c_void_p) -> Report:
    check_result(result, error)
    render = _Renderer(handle)
    return read_report(render("json"), render.info(), render)


def check(
    old: AnySchema,
    new: AnySchema,
    *,
    tables: Iterable[str] | None = None,
    settings: Mapping[str, str] | None = None,
    table_settings: Mapping[str, Mapping[str, str]] | None = None,
) -> Report:
    """Checks whether the tables of `old` may become those of `new`: the named ones, or all tables of both.

    Schemas are paths of schema files or images, or Schema objects. A refused change is a report, not an exception. `settings` has keys
    and values of the project file, such as {"created-as": "tlv"}; `table_settings` has settings for single tables by their names.

    Raises SchemaError if a schema cannot be read or is not valid, if a table of `tables` or `table_settings` is in neither schema, or if
    there is nothing to compare.
    Raises ArgumentError for an unknown setting or value.
    """
    if isinstance(tables, str):
        raise TypeError("tables must be a list of names, not one name")
    names = None if tables is None else [encode(table) for table in tables]
    if names == []:
        raise ValueError("tables must not be empty; leave it out to check all tables")
    array = None if names is None else (c_char_p * len(names))(*names)
    old_schema, new_schema = _load(old), _load(new)
    chosen = _settings(settings or {}, table_settings or {})
    handle, error = c_void_p(), c_void_p()
    result = library.kc_check(
        old_schema.pointer, new_schema.pointer, array, len(names or ()), chosen.pointer, byref(handle), byref(error)
    )
    return _report(result, handle, error)


def lint(schema: AnySchema, *, settings: Mapping[str, str] | None = None) -> Report:
    """Checks whether the checker accepts every table of a schema as it is. A table that it does not accept can never be changed."""
    loaded = _load(schema)
    chosen = _settings(settings or {}, {})
    handle, error = c_void_p(), c_void_p()
    return _report(library.kc_lint(loaded.pointer, chosen.pointer, byref(handle), byref(error)), handle, error)


def explain(rule: str) -> str:
    """The page about a rule, in Markdown: what it protects, an example, and what is allowed instead.

    >>> explain("primary-key.size").splitlines()[0]
    '# primary-key.size'
    """
    page, error = c_char_p(), c_void_p()
    check_result(library.kc_explain(encode(rule), byref(page), byref(error)), error)
    return decode(page.value)


def version() -> str:
    """The version of the library."""
    return decode(library.kc_version())


def build_info() -> dict[str, Any]:
    """Version and build of the library."""
    info: dict[str, Any] = json.loads(decode(library.kc_build_info()))
    return info
