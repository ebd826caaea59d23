"""Ownership of what the library gives out."""

import weakref
from collections.abc import Callable
from ctypes import c_void_p
from typing import Any, NoReturn


class Handle:
    """A handle of the library, which is freed with this object. What it stands for never changes, so a copy is the object itself."""

    def __init__(self, pointer: c_void_p, free: Callable[[c_void_p], Any]) -> None:
        self.pointer = pointer
        # Not when the interpreter exits: other threads and functions may still use the handle then, and the process ends anyway.
        weakref.finalize(self, free, pointer).atexit = False

    def __copy__(self) -> "Handle":
        return self

    def __deepcopy__(self, memo: Any) -> "Handle":
        return self

    def __reduce__(self) -> NoReturn:
        raise TypeError("a schema of this process cannot be sent to another one; send its path or its image")
