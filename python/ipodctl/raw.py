"""The 35 C functions under their C names.

Outputs are ctypes objects of the caller: a c_int, or an array of c_ushort for a text, or None for a
null pointer. A wrong type is a TypeError. A number that does not fit 32 bits, or a text that is
longer than its buffer, is a ValueError. Functions that move in the browse tree return a pointer to
the index, which is false when it is null.

Every function may be called from every thread, and Python's other threads run meanwhile. Those that
take the library lock wait for one another.
"""

from __future__ import annotations

import ctypes
import typing

from . import _library

IntPointer = ctypes.POINTER(ctypes.c_int)
_TextPointer = ctypes.POINTER(ctypes.c_ushort)


class _Kind(typing.NamedTuple):
    """A kind of parameter: its C type, and the function that checks and converts an argument."""

    c_type: typing.Any
    convert: typing.Callable[[str, typing.Any], typing.Any]


def _number(name: str, value: typing.Any) -> int:
    if isinstance(value, bool) or not isinstance(value, int):
        raise TypeError(f"{name} takes a whole number, not {type(value).__name__}")
    if not -(2**31) <= value < 2**31:
        raise ValueError(f"{name} takes a number of 32 bits, not {value}")
    return int(value)


def _number_output(name: str, value: typing.Any) -> typing.Any:
    if value is None:
        return None
    if not isinstance(value, ctypes.c_int):
        raise TypeError(f"{name} writes to a ctypes.c_int or None, not {type(value).__name__}")
    return ctypes.pointer(value)


def _text_output(name: str, value: typing.Any) -> typing.Any:
    is_array = isinstance(value, ctypes.Array) and value._type_ is ctypes.c_ushort
    if value is not None and not is_array:
        raise TypeError(f"{name} writes to an array of ctypes.c_ushort or None, "
                        f"not {type(value).__name__}")
    return value


_INT = _Kind(ctypes.c_int, _number)
_OUT = _Kind(IntPointer, _number_output)
_TEXT = _Kind(_TextPointer, _text_output)
_SIZE = _Kind(ctypes.c_int, _number)  # of each text among the arguments

_LIBRARY = _library.load()


def _check_sizes(name: str, kinds: tuple[_Kind, ...], arguments: list[typing.Any]) -> None:
    """The library writes as many units as the size says, so no text may be shorter."""
    sizes = [value for kind, value in zip(kinds, arguments) if kind is _SIZE]
    texts = [value for kind, value in zip(kinds, arguments) if kind is _TEXT and value is not None]
    for text in texts:
        if len(text) < sizes[0]:
            raise ValueError(f"{name} would write {sizes[0]} units to a text of {len(text)}")


def _function(name: str, *kinds: _Kind, result: typing.Any = ctypes.c_int) -> typing.Any:
    try:
        exported = getattr(_LIBRARY, name)
    except AttributeError:
        raise ImportError(f"The library {_library.place()} has no function {name}: "
                          f"install the {_library.SONAME} of this package.") from None
    exported.argtypes = [kind.c_type for kind in kinds]
    exported.restype = result

    def call(*arguments: typing.Any) -> typing.Any:
        if len(arguments) != len(kinds):
            raise TypeError(f"{name} takes {len(kinds)} arguments, not {len(arguments)}")
        converted = [kind.convert(name, value) for kind, value in zip(kinds, arguments)]
        _check_sizes(name, kinds, converted)
        return exported(*converted)

    call.__name__ = call.__qualname__ = name
    call.__doc__ = f"The C function {name}; ipodctl.h describes it."
    return call


_Plain = typing.Callable[[], int]
_Takes = typing.Callable[[int], int]
_Writes = typing.Callable[[typing.Optional[ctypes.c_int]], int]
_Moves = typing.Callable[[], typing.Any]
_Any = typing.Callable[..., int]

IpodConnect: _Plain = _function("IpodConnect")
IpodDisconnect: _Plain = _function("IpodDisconnect")
IpodIsConnect: _Plain = _function("IpodIsConnect")
isIpodAudioPresent: _Any = _function("isIpodAudioPresent", _INT, _INT, _INT, _INT)
IpodSetSameIpod: typing.Callable[[int], None] = _function("IpodSetSameIpod", _INT, result=None)
IpodValidateUpDownTree: _Plain = _function("IpodValidateUpDownTree")
IpodCommand: _Takes = _function("IpodCommand", _INT)
IpodSongPlay: _Takes = _function("IpodSongPlay", _INT)
IpodSongGetNumElem: _Writes = _function("IpodSongGetNumElem", _OUT)
IpodGetTrackIndex: _Writes = _function("IpodGetTrackIndex", _OUT)
IpodSetShuffleMode: _Takes = _function("IpodSetShuffleMode", _INT)
IpodGetShuffleMode: _Writes = _function("IpodGetShuffleMode", _OUT)
IpodSetRepeatMode: _Takes = _function("IpodSetRepeatMode", _INT)
IpodGetRepeatMode: _Writes = _function("IpodGetRepeatMode", _OUT)
IpodGetCurrentPlayStatus: _Writes = _function("IpodGetCurrentPlayStatus", _OUT)
IpodGetCurrentTrackPosition: _Writes = _function("IpodGetCurrentTrackPosition", _OUT)
IpodGetFirstItem: typing.Callable[[int, int, int], typing.Any] = _function(
    "IpodGetFirstItem", _INT, _INT, _INT, result=IntPointer)
IpodGetNextItem: _Moves = _function("IpodGetNextItem", result=IntPointer)
IpodGetPrevItem: _Moves = _function("IpodGetPrevItem", result=IntPointer)
IpodGetParentItem: _Moves = _function("IpodGetParentItem", result=IntPointer)
IpodCurItemIsEmpty: _Plain = _function("IpodCurItemIsEmpty")
IpodIsPlayAll: _Plain = _function("IpodIsPlayAll")
IpodIsTrack: _Plain = _function("IpodIsTrack")
IpodGetType: _Plain = _function("IpodGetType")
IpodIsTabActive: _Plain = _function("IpodIsTabActive")
IpodIsTabVisualizationActive: _Plain = _function("IpodIsTabVisualizationActive")
IpodDisableTabVisualizationActive: _Plain = _function("IpodDisableTabVisualizationActive")
IpodEnableTabVisualizationActive: _Plain = _function("IpodEnableTabVisualizationActive")
IpodGetMediaFileCount: _Writes = _function("IpodGetMediaFileCount", _OUT)
IpodGetNumberOfPlaylist: _Plain = _function("IpodGetNumberOfPlaylist")
IpodGetItemName: _Any = _function("IpodGetItemName", _INT, _TEXT, _TEXT, _SIZE)
IpodGetParentUpDownName: _Any = _function("IpodGetParentUpDownName", _INT, _TEXT, _TEXT, _SIZE)
IpodGetTrackInfo: _Any = _function(
    "IpodGetTrackInfo", _OUT, _TEXT, _TEXT, _TEXT, _TEXT, _TEXT, _SIZE)
IpodGetName: _Any = _function("IpodGetName", _TEXT, _SIZE)
IpodGetSerialNumber: _Any = _function("IpodGetSerialNumber", _TEXT, _SIZE)
