"""The iPod's lists, with tabs and play-all entries."""

from __future__ import annotations

import typing

from .cursor import Cursor, member_of
from .errors import IpodError, NoAnswer
from .types import BrowseType

if typing.TYPE_CHECKING:
    from .ipod import Ipod

_ITEMS_OF_A_TAB = 35
_PLAY_ALL = -1

_OPENS = {
    BrowseType.PLAYLISTS: BrowseType.TRACKS,
    BrowseType.GENRES: BrowseType.ARTISTS,
    BrowseType.ARTISTS: BrowseType.ALBUMS,
    BrowseType.ALBUMS: BrowseType.TRACKS,
    BrowseType.TYPE_6: BrowseType.TRACKS,
    BrowseType.TYPE_7: BrowseType.TRACKS,
    BrowseType.TYPE_8: BrowseType.TRACKS,
}


class Entry:
    """An item of a list, or its play-all entry."""

    def __init__(self, items: ItemList, index: int) -> None:
        self.list = items
        self.index = index
        self._name: typing.Optional[str] = None

    def __repr__(self) -> str:
        return f"<{self.list.type.name.lower()} entry {self.index}>"

    @property
    def is_play_all(self) -> bool:
        """Whether this is the entry that means all items of the list."""
        return self.index == _PLAY_ALL

    @property
    def name(self) -> str:
        """The name, asked once. Empty for the play-all entry: show your own text."""
        if self._name is None:
            self._name = "" if self.is_play_all else self.list._name_of(self.index)
        return self._name

    @property
    def opens(self) -> typing.Optional[BrowseType]:
        """What is usually shown below the entry; None for a track."""
        return _OPENS.get(self.list.type)

    def open(self, kind: BrowseType) -> ItemList:
        """Opens what is below the entry."""
        return ItemList(self.list._ipod, member_of(BrowseType, kind), self)

    def artists(self) -> ItemList:
        """Opens the artists below the entry."""
        return self.open(BrowseType.ARTISTS)

    def albums(self) -> ItemList:
        """Opens the albums below the entry."""
        return self.open(BrowseType.ALBUMS)

    def tracks(self) -> ItemList:
        """Opens all tracks below the entry."""
        return ItemList(self.list._ipod, BrowseType.TRACKS, self, all_tracks=True)

    def is_empty(self) -> bool:
        """Asks whether the entry leads to no tracks."""
        return self.list._is_empty(self.index)

    def play(self) -> None:
        """Plays the list from this track; of another entry, all tracks below it from the first.

        The list becomes the one to which Command.NEXT_GROUP and playing_from() refer.
        """
        if self.list.type is not BrowseType.TRACKS:
            self.tracks()._play(0)
        elif self.is_play_all:
            self.list._play(0)
        else:
            self.list._play(self.index)


class Tab(typing.NamedTuple):
    """Up to 35 items of a long list."""

    label: str
    entries: typing.List[Entry]


class ItemList(typing.Sequence[Entry]):
    """A list of the iPod. Opening it counts its items and reads no names.

    The library has one place in its lists. When a list is used again after another one was opened,
    it is opened again, which costs a few requests. Several threads may use lists; each use is one
    step for the others. The play-all entry is not among the items: see play_all.
    """

    def __init__(self, ipod: Ipod, kind: BrowseType, parent: typing.Optional[Entry],
                 all_tracks: bool = False) -> None:
        self.type = kind
        self._ipod = ipod
        self._parent = parent
        self._all_tracks = all_tracks
        self._cursor: Cursor = ipod._cursor
        self._at = _PLAY_ALL
        self._tab: typing.Optional[int] = None  # the first index of the chosen tab
        self._tabs: typing.List[int] = []  # the first indexes of all tabs
        self._range = range(0)
        self._has_play_all = False
        with ipod._lock:
            self._open_surely()

    def __repr__(self) -> str:
        return f"<list of {len(self)} {self.type.name.lower()}>"

    def __len__(self) -> int:
        return len(self._range)

    def __iter__(self) -> typing.Iterator[Entry]:
        return (Entry(self, index) for index in self._range)

    def __getitem__(self, position: typing.Any) -> typing.Any:
        if isinstance(position, slice):
            return [Entry(self, index) for index in self._range[position]]
        return Entry(self, self._range[position])

    @property
    def play_all(self) -> typing.Optional[Entry]:
        """The entry that means all items; None when the list has none."""
        return Entry(self, _PLAY_ALL) if self._has_play_all else None

    @property
    def has_tabs(self) -> bool:
        """Whether the list is long enough for tabs."""
        return bool(self._tabs)

    def tabs(self) -> typing.Iterator[Tab]:
        """Yields the tabs; a list without tabs has none. Each label costs two requests."""
        for first in self._tabs:
            items = range(first, first + _ITEMS_OF_A_TAB)
            entries = [Entry(self, index) for index in items if index in self._range]
            yield Tab(self._label_of(first), entries)

    # ---------------------------------------------------------------- opening

    def _make_current(self) -> None:
        if self._ipod._current is not self:
            self._open_surely()

    def _open_surely(self) -> None:
        """Opens the list. Asks again when it seems to be empty: a list without an answer does."""
        if self._open():
            return
        self._ipod._check(pause_always=True)
        if self._open():
            return
        self._ipod._check()
        if not self._is_surely_empty():
            raise NoAnswer("The iPod does not say how long this list is: open it again.")
        self._range = range(0)

    def _open(self) -> bool:
        """Opens the list and learns its range without requests. Returns False for an empty one."""
        self._ipod._current = None
        self._tab, self._tabs = None, []
        index = self._open_here()
        if index is None:
            raise IpodError("The library opens no list here: at most seven can be open.")
        self._at = index
        self._has_play_all = self._cursor.is_play_all
        if self._cursor.next() is None:
            return False
        self._cursor.previous()
        first = max(index, 0)
        self._range = range(first, self._last() + 1)
        self._ipod._current = self
        return True

    def _open_here(self) -> typing.Optional[int]:
        if self._parent is None:
            return self._cursor.open(self.type)
        self._parent.list._go_to(self._parent.index)
        return self._cursor.descend(self.type, self._all_tracks)

    def _last(self) -> int:
        """Returns the last index. The moves to it send nothing to the iPod."""
        if self._cursor.shows_tabs:
            self._find_tabs()
            self._choose_tab(self._tabs[-1])
        return self._step_back_to_end()

    def _find_tabs(self) -> None:
        found: typing.Set[int] = set()
        at = self._step(self._cursor.next)
        while at not in found:
            found.add(at)
            at = self._step(self._cursor.next)
        self._tabs = sorted(first for first in found if first >= 0)

    def _step_back_to_end(self) -> int:
        """Goes back from the first entry, or from that of a tab, which leads to the last one."""
        return self._step(self._cursor.previous)

    def _is_surely_empty(self) -> bool:
        """Asks other questions, with pauses: a late answer must not be taken for another's."""
        count = self._cursor.count()
        self._ipod._pause()
        self._cursor.open(BrowseType.PLAYLISTS)
        counts_playlists = not self._cursor.has_tabs or self._cursor.next() is not None
        return count <= 0 and counts_playlists

    # ---------------------------------------------------------------- moving

    def _step(self, move: typing.Callable[[], typing.Optional[int]]) -> int:
        index = move()
        if index is None:
            self._ipod._current = None
            raise IpodError("The list was closed meanwhile: open it again.")
        self._at = index
        return index

    def _move_to(self, index: int, most: int) -> None:
        """Moves on in the shorter direction, at most so many steps."""
        move = self._cursor.next if index > self._at else self._cursor.previous
        for _ in range(most):
            if self._at == index:
                return
            self._step(move)
        if self._at != index:
            self._ipod._current = None
            raise IpodError(f"The list has no entry {index} any more: open it again.")

    def _choose_tab(self, first: int) -> None:
        self._cursor.show_tabs()
        self._move_to_tab(first)
        self._cursor.choose_tab()
        self._tab = first

    def _move_to_tab(self, first: int) -> None:
        """The tab on which a list opens has another index before the first move."""
        self._step(self._cursor.next)
        self._move_to(first, len(self._tabs) + 2)

    def _go_to(self, index: int) -> None:
        """Makes the entry the current one."""
        self._make_current()
        if index == _PLAY_ALL:
            self._go_to_play_all()
            return
        if index not in self._range:
            raise IpodError(f"The list has no entry {index} any more: open it again.")
        first = index - index % _ITEMS_OF_A_TAB
        if self._tabs and self._tab != first:
            self._choose_tab(first)
        self._move_to(index, len(self._range) + 2)

    def _go_to_play_all(self) -> None:
        """After a move the play-all tab cannot be opened, so a list with tabs is opened again."""
        if not self._tabs:
            self._move_to(_PLAY_ALL, len(self._range) + 2)
            return
        self._open_here_again()

    def _open_here_again(self) -> None:
        index = self._open_here()
        self._tab = None
        if index != _PLAY_ALL:
            raise IpodError("The list has no play-all entry any more: open it again.")
        self._at = index
        self._ipod._current = self

    # ---------------------------------------------------------------- what entries do

    def _name_of(self, index: int) -> str:
        def question() -> str:
            self._go_to(index)
            return self._cursor.name()

        with self._ipod._lock:
            return self._ipod._ask(question, bool)

    def _label_of(self, first: int) -> str:
        def question() -> str:
            self._make_current()
            self._tab = None
            self._cursor.show_tabs()
            self._move_to_tab(first)
            return self._cursor.name()

        with self._ipod._lock:
            return self._ipod._ask(question, lambda label: len(label) > len(" - "))

    def _is_empty(self, index: int) -> bool:
        with self._ipod._lock:
            self._go_to(index)
            is_empty = self._cursor.is_empty()
            if is_empty:
                self._ipod._check()
            return is_empty

    def _play(self, index: int) -> None:
        from . import raw

        with self._ipod._lock:
            self._make_current()
            self._cursor.play(index)
            raw.IpodValidateUpDownTree()
            self._ipod._check()
