"""The library's one place in its browse tree, moved step by step."""

from __future__ import annotations

import ctypes
import typing

from . import raw, texts
from .types import BrowseType


def member_of(enumeration: typing.Any, value: typing.Any) -> typing.Any:
    """Returns the enumerator. Raises TypeError for a wrong type, ValueError for a wrong number."""
    if isinstance(value, bool) or not isinstance(value, int):
        raise TypeError(f"{enumeration.__name__} or its number is needed, "
                        f"not {type(value).__name__}")
    return enumeration(value)


def number_of(function: typing.Callable[[ctypes.c_int], int], before: int) -> int:
    """Returns what a function writes to its output; `before` when it writes nothing."""
    output = ctypes.c_int(before)
    function(output)
    return output.value


def _index_at(pointer: typing.Any) -> typing.Optional[int]:
    return int(pointer.contents.value) if pointer else None


class Cursor:
    """Moves in the browse tree as the C functions do. Each step is one of them.

    All cursors of a process move the same place, so use one in one thread. Entry and ItemList move
    it for you. Steps return the index of the entry that they reach, or None.
    """

    def __init__(self, on_move: typing.Callable[[], None] = lambda: None) -> None:
        self._on_move = on_move

    def open(self, kind: BrowseType) -> typing.Optional[int]:
        """Closes the tree and opens a list of the whole iPod."""
        self._on_move()
        return _index_at(raw.IpodGetFirstItem(0, member_of(BrowseType, kind), 0))

    def descend(self, kind: BrowseType, all_tracks: bool = False) -> typing.Optional[int]:
        """Opens what is below the current entry. Returns None below the seventh level."""
        self._on_move()
        return _index_at(raw.IpodGetFirstItem(1, member_of(BrowseType, kind), int(all_tracks)))

    def next(self) -> typing.Optional[int]:
        """Moves to the next entry or tab. Returns None when there is none."""
        self._on_move()
        return _index_at(raw.IpodGetNextItem())

    def previous(self) -> typing.Optional[int]:
        """Moves to the entry or tab before. Returns None when there is none."""
        self._on_move()
        return _index_at(raw.IpodGetPrevItem())

    def parent(self) -> typing.Optional[int]:
        """Goes back. Returns None when the tabs are shown again or the tree was left."""
        self._on_move()
        return _index_at(raw.IpodGetParentItem())

    def choose_tab(self) -> None:
        """Shows the items of the current tab."""
        self._on_move()
        raw.IpodDisableTabVisualizationActive()

    def show_tabs(self) -> None:
        """Shows the tabs again."""
        self._on_move()
        raw.IpodEnableTabVisualizationActive()

    def play(self, index: int = -1) -> None:
        """Plays the tracks of the selection from one of them; -1 is the current entry."""
        raw.IpodSongPlay(index)

    @property
    def has_tabs(self) -> bool:
        """Whether the list is split into tabs."""
        return raw.IpodIsTabActive() != 0

    @property
    def shows_tabs(self) -> bool:
        """Whether the list shows its tabs, not items."""
        return raw.IpodIsTabVisualizationActive() != 0

    @property
    def is_play_all(self) -> bool:
        """Whether the current entry is the play-all entry or tab."""
        return raw.IpodIsPlayAll() != 0

    @property
    def is_in_tracks(self) -> bool:
        """Whether the list holds tracks."""
        return raw.IpodIsTrack() != 0

    @property
    def type(self) -> typing.Optional[BrowseType]:
        """What the list holds; None when no list is open."""
        number = raw.IpodGetType()
        return BrowseType(number) if number > 0 else None

    def is_empty(self) -> bool:
        """Asks whether the current entry leads to no tracks."""
        return raw.IpodCurItemIsEmpty() != 0

    def count(self) -> int:
        """Counts the items of the list's type in the selection; 0 without an answer."""
        return number_of(raw.IpodGetMediaFileCount, 0)

    def count_tracks(self) -> int:
        """Counts the tracks of the selection; 0 without an answer."""
        return number_of(raw.IpodSongGetNumElem, 0)

    def name(self) -> str:
        """Reads the name of the current entry, or the label of the tab; empty without an answer."""
        units = texts.buffer()
        raw.IpodGetItemName(0, units, None, texts.SIZE)
        return texts.text_of(units)
