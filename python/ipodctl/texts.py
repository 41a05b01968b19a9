"""Texts of the library: 16-bit units, one for each Latin-1 character, without a terminator."""

from __future__ import annotations

import ctypes
import typing

# More than the longest text that an iPod can send in a frame.
SIZE = 256
# No text has this unit, so it shows how much the library has written.
_UNWRITTEN = 0xFFFE


def buffer() -> ctypes.Array[ctypes.c_ushort]:
    """Returns a buffer of SIZE units."""
    return (ctypes.c_ushort * SIZE)(*[_UNWRITTEN] * SIZE)


def text_of(units: typing.Iterable[int]) -> str:
    """Returns what was written to a buffer; an empty text when nothing was."""
    text = ""
    for unit in units:
        if unit == _UNWRITTEN:
            break
        text += chr(unit)
    return text
