"""Schema libraries."""

import os
from ctypes import byref, c_size_t, c_void_p, sizeof, string_at

from ._errors import check_result
from ._handles import Handle
from ._library import CSchemaInfo, decode, encode, encode_path, library


class Schema:
    """A schema library: tables and the structures that they contain. Never changes; threads may share it.

    >>> schema = Schema("examples/shop/v6.xml")
    >>> schema.library, schema.version
    ('shop', 6)
    >>> schema.tables
    ('customers', 'products', 'stock', 'carts', 'orders', 'payments', 'reviews')
    """

    def __init__(self, path: str | os.PathLike[str]) -> None:
        """Reads the schema file (XML) or image at `path`; the first bytes decide. Raises SchemaError with all of its faults."""
        handle, error = c_void_p(), c_void_p()
        self._take(library.kc_schema_load_file(encode_path(path), byref(handle), byref(error)), handle, error)

    @classmethod
    def parse(cls, name: str, data: bytes) -> "Schema":
        """The schema in `data`. `name` stands for the path of a file in messages, locations and fingerprints."""
        data = bytes(memoryview(data))
        schema = cls.__new__(cls)
        handle, error = c_void_p(), c_void_p()
        schema._take(library.kc_schema_load(encode(name), data, len(data), byref(handle), byref(error)), handle, error)
        return schema

    def _take(self, result: int, handle: c_void_p, error: c_void_p) -> None:
        check_result(result, error)
        self._handle = Handle(handle, library.kc_schema_free)

    @property
    def pointer(self) -> c_void_p:
        """For calls of the library."""
        return self._handle.pointer

    def _info(self) -> CSchemaInfo:
        info = CSchemaInfo()
        check_result(library.kc_schema_get(self.pointer, byref(info), sizeof(info)), c_void_p())
        return info

    @property
    def name(self) -> str:
        """The path, or the name given to `parse`."""
        return decode(self._info().name)

    @property
    def library(self) -> str:
        """The name of the schema library."""
        return decode(self._info().library)

    @property
    def version(self) -> int:
        """The version of the schema library."""
        return int(self._info().version)

    @property
    def is_image(self) -> bool:
        """Whether it was loaded from an image, rather than from a schema file."""
        return bool(self._info().is_image)

    @property
    def tables(self) -> tuple[str, ...]:
        """The names of the tables, in the order of their declaration."""
        return tuple(decode(library.kc_schema_table(self.pointer, index)) for index in range(self._info().table_count))

    def image(self) -> bytes:
        """The schema as an image: the bytes that `korvelcheck compile` writes."""
        data, size, error = c_void_p(), c_size_t(), c_void_p()
        check_result(library.kc_schema_image(self.pointer, byref(data), byref(size), byref(error)), error)
        return string_at(data, size.value)

    def __repr__(self) -> str:
        return f"<Schema {self.name!r}: library {self.library!r}, version {self.version}>"
