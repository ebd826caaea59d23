"""The functions of libkorvelcheck.so, declared as korvelcheck/korvelcheck.h declares them."""

import ctypes
import os
import pathlib
from ctypes import POINTER, c_char_p, c_int, c_int32, c_size_t, c_uint64, c_void_p

SONAME = "libkorvelcheck.so.0"

KC_OK, KC_ERROR_ARGUMENT, KC_ERROR_INPUT, KC_ERROR_MEMORY, KC_ERROR_INTERNAL, KC_END = range(6)


class CLocation(ctypes.Structure):
    """kc_location"""

    _fields_ = [
        ("file", c_char_p),
        ("line", c_uint64),
        ("column", c_uint64),
        ("end_line", c_uint64),
        ("end_column", c_uint64),
    ]


class CSchemaInfo(ctypes.Structure):
    """kc_schema_info"""

    _fields_ = [
        ("name", c_char_p),
        ("library", c_char_p),
        ("version", c_int32),
        ("is_image", c_int32),
        ("table_count", c_uint64),
    ]


class CReportInfo(ctypes.Structure):
    """kc_report_info"""

    _fields_ = [
        ("verdict", c_int32),
        ("passes", c_int32),
        ("table_count", c_uint64),
        ("finding_count", c_uint64),
        ("left_out_count", c_uint64),
        ("summary", c_char_p),
    ]


class CFault(ctypes.Structure):
    """kc_fault"""

    _fields_ = [
        ("rule", c_char_p),
        ("text", c_char_p),
        ("allowed", c_char_p),
        ("message", c_char_p),
        ("location", CLocation),
    ]


_HANDLE = POINTER(c_void_p)

# The result and the arguments of each function that this package calls.
_FUNCTIONS = {
    "kc_schema_load": (c_int, c_char_p, c_char_p, c_size_t, _HANDLE, _HANDLE),
    "kc_schema_load_file": (c_int, c_char_p, _HANDLE, _HANDLE),
    "kc_schema_get": (c_int, c_void_p, POINTER(CSchemaInfo), c_size_t),
    "kc_schema_table": (c_char_p, c_void_p, c_size_t),
    "kc_schema_image": (c_int, c_void_p, _HANDLE, POINTER(c_size_t), _HANDLE),
    "kc_schema_free": (None, c_void_p),
    "kc_settings_new": (c_int, _HANDLE, _HANDLE),
    "kc_settings_set": (c_int, c_void_p, c_char_p, c_char_p, c_char_p, _HANDLE),
    "kc_settings_free": (None, c_void_p),
    "kc_check": (c_int, c_void_p, c_void_p, POINTER(c_char_p), c_size_t, c_void_p, _HANDLE, _HANDLE),
    "kc_lint": (c_int, c_void_p, c_void_p, _HANDLE, _HANDLE),
    "kc_report_get": (c_int, c_void_p, POINTER(CReportInfo), c_size_t),
    "kc_report_text": (c_int, c_void_p, c_char_p, _HANDLE, POINTER(c_size_t), _HANDLE),
    "kc_report_free": (None, c_void_p),
    "kc_error_message": (c_char_p, c_void_p),
    "kc_error_fault": (c_int, c_void_p, c_size_t, POINTER(CFault), c_size_t),
    "kc_error_free": (None, c_void_p),
    "kc_version": (c_char_p,),
    "kc_build_info": (c_char_p,),
    "kc_explain": (c_int, c_char_p, POINTER(c_char_p), _HANDLE),
}


def _load() -> ctypes.CDLL:
    """The library next to this file, as in a wheel, or the installed one. CDLL releases the interpreter lock during each call."""
    bundled = pathlib.Path(__file__).with_name(SONAME)
    library = ctypes.CDLL(str(bundled) if bundled.exists() else SONAME)
    for name, (result, *arguments) in _FUNCTIONS.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
    return library


library = _load()


def decode(text: bytes | None) -> str:
    """A string of the library. Bytes that are not UTF-8, which names in images may contain, become surrogates, as in os.fsdecode."""
    return (text or b"").decode("utf-8", "surrogateescape")


def encode(text: str) -> bytes:
    """The inverse of decode."""
    if not isinstance(text, str):
        raise TypeError(f"expected a string, not {text!r}")
    return _terminated(text.encode("utf-8", "surrogateescape"))


def encode_path(path: str | os.PathLike[str]) -> bytes:
    """A path as the library takes it."""
    return _terminated(os.fsencode(path))


def _terminated(encoded: bytes) -> bytes:
    if b"\0" in encoded:
        raise ValueError(f"a string with a zero byte: {encoded!r}")
    return encoded
