"""Errors of the library as exceptions."""

import dataclasses
from ctypes import byref, c_void_p, sizeof

from ._library import KC_ERROR_ARGUMENT, KC_ERROR_INPUT, KC_ERROR_MEMORY, KC_OK, CFault, decode, library


@dataclasses.dataclass(frozen=True)
class Fault:
    """One reason why a call failed."""

    rule: str
    """Of a fault of a schema: "schema.invalid", for example. Otherwise empty."""
    text: str
    """What is wrong."""
    allowed: str
    """What would be right; may be empty."""
    message: str
    """The whole fault on one line, with its location."""
    file: str
    line: int | None
    """From 1, or None for a fault that is not about a line."""
    column: int | None

    def __str__(self) -> str:
        return self.message


class Error(Exception):
    """A call failed. `str()` gives all lines of the error, and `faults` each of them."""

    def __init__(self, message: str, faults: tuple[Fault, ...]) -> None:
        super().__init__(message, faults)
        self.faults = faults

    def __str__(self) -> str:
        return str(self.args[0])


class SchemaError(Error):
    """A schema cannot be read or is not valid, a table is unknown, or nothing can be compared."""


class ArgumentError(Error, ValueError):
    """An argument is wrong: an unknown setting, value, format or rule."""


class InternalError(Error):
    """A fault of the library."""


_CLASSES: dict[int, type[Error]] = {KC_ERROR_ARGUMENT: ArgumentError, KC_ERROR_INPUT: SchemaError}


def _fault(error: c_void_p, index: int) -> Fault | None:
    fault = CFault()
    if library.kc_error_fault(error, index, byref(fault), sizeof(fault)) != KC_OK:
        return None
    place = fault.location
    return Fault(
        rule=decode(fault.rule),
        text=decode(fault.text),
        allowed=decode(fault.allowed),
        message=decode(fault.message),
        file=decode(place.file),
        line=place.line or None,
        column=place.column or None,
    )


def check_result(result: int, error: c_void_p) -> None:
    """Raises the exception for a result, and frees the error."""
    if result == KC_OK:
        return
    try:
        if result == KC_ERROR_MEMORY:
            raise MemoryError
        faults: list[Fault] = []
        while (fault := _fault(error, len(faults))) is not None:
            faults.append(fault)
        raise _CLASSES.get(result, InternalError)(decode(library.kc_error_message(error)), tuple(faults))
    finally:
        library.kc_error_free(error)
