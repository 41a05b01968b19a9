"""Finds the shared library and loads it."""

from __future__ import annotations

import ctypes
import os
import pathlib

SONAME = "libipodctl.so.1"
_IN_WHEEL = pathlib.Path(__file__).parent / "native" / "lib" / SONAME


def place() -> str:
    """Returns the library's path, or its name if the system is to find it."""
    if _IN_WHEEL.exists():
        return str(_IN_WHEEL)
    return os.environ.get("IPODCTL_LIBRARY") or SONAME


def load() -> ctypes.CDLL:
    """Loads the library. Raises ImportError with a sentence that says what to do."""
    path = place()
    try:
        return ctypes.CDLL(path)
    except OSError as error:
        raise ImportError(
            f"ipodctl cannot load its library {path} ({error}): install the wheel that contains "
            f"it, or set IPODCTL_LIBRARY to the path of a {SONAME}."
        ) from None
