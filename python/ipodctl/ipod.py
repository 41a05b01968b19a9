"""A connected iPod."""

from __future__ import annotations

import ctypes
import dataclasses
import threading
import time
import types as python_types
import typing

from . import raw, texts
from .cursor import Cursor, member_of, number_of
from .errors import IpodError, Lost, NoAnswer, NoIpod, NotConnected
from .lists import Entry, ItemList
from .types import BrowseType, Command, PlayMode, PlayStatus

_Answer = typing.TypeVar("_Answer")
_UNWRITTEN = -2


@dataclasses.dataclass(frozen=True)
class TrackInfo:
    """The texts of the playing track. A text is empty when the iPod does not send it."""

    index: int
    title: str
    artist: str
    album: str
    genre: str


def _positive(name: str, value: typing.Any, least: float) -> float:
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        raise TypeError(f"{name} takes a number, not {type(value).__name__}")
    if not least <= value < 86400:
        raise ValueError(f"{name} takes a number from {least} to 86400, not {value}")
    return value


class Ipod:
    """The iPod on the device "IPD1:". IPODCTL_DEVICES says which terminal that is.

        with Ipod() as ipod:
            for artist in ipod.artists():
                print(artist.name)

    The library has one connection for the whole process. Every method may be called from every
    thread. Requests wait for one another; a silent iPod costs a second for each request. While a
    method waits, other Python threads run. connect() does not wait for another thread's request: it
    fails.

    A method raises Lost when the iPod gives no usable answer, also after a pause. Then call
    reconnect(), or leave the `with` block and begin again.
    """

    def __init__(self, *, attempts: int = 2, pause: float = 1.0) -> None:
        """`attempts` is how often connect() tries. `pause` is in seconds: how long the iPod is left
        alone after a connection and after a failure. Many iPods need a second."""
        self._attempts = int(_positive("attempts", attempts, 1))
        self._pause_seconds = _positive("pause", pause, 0)
        self._cursor = Cursor()
        self._lock = threading.RLock()
        self._current: typing.Optional[ItemList] = None

    # ---------------------------------------------------------------- connection

    def connect(self) -> None:
        """Connects, and leaves the iPod alone for the pause. Raises NoIpod."""
        if self.is_connected:
            raise IpodError("An iPod is connected already: disconnect it first.")
        self._current = None
        for attempt in range(self._attempts):
            if attempt > 0:
                self._pause()
            if raw.IpodConnect() == 1:
                self._pause()
                return
        raw.IpodDisconnect()  # a failed attempt leaves the link open
        raise NoIpod("No iPod could be connected on IPD1:. Check the cable and IPODCTL_DEVICES, "
                     "then connect again.")

    def disconnect(self) -> None:
        """Ends the connection. Harmless without one."""
        self._current = None
        raw.IpodDisconnect()

    def reconnect(self, timeout: float = 30.0) -> None:
        """Disconnects, then connects until it succeeds. Raises NoIpod after the timeout."""
        end = time.monotonic() + _positive("timeout", timeout, 0)
        self.disconnect()
        while True:
            try:
                self.connect()
                return
            except NoIpod:
                if time.monotonic() >= end:
                    raise
            self._pause()

    def __enter__(self) -> Ipod:
        self.connect()
        return self

    def __exit__(self, kind: typing.Optional[typing.Type[BaseException]],
                 error: typing.Optional[BaseException],
                 trace: typing.Optional[python_types.TracebackType]) -> None:
        self.disconnect()

    @property
    def is_connected(self) -> bool:
        """Whether there is a connection. A pulled cable does not end it: see is_lost()."""
        return raw.IpodIsConnect() == 1

    def is_lost(self) -> bool:
        """Asks the iPod, and again after a pause. Returns True when it does not answer."""
        try:
            self._check()
        except Lost:
            return True
        return False

    def audio_present(self, first: int, second: int, third: int, fourth: int) -> int:
        """Hands four words to the audio library and returns its result."""
        return raw.isIpodAudioPresent(first, second, third, fourth)

    # ---------------------------------------------------------------- asking

    def _pause(self) -> None:
        time.sleep(self._pause_seconds)

    @staticmethod
    def _answers() -> bool:
        return raw.IpodGetTrackIndex(None) == 1

    def _check(self, pause_always: bool = False) -> None:
        """Raises Lost when the iPod does not answer, also after a pause."""
        if not self.is_connected:
            raise NotConnected("There is no connection: use `with Ipod() as ipod`, or connect().")
        if self._answers():
            if pause_always:
                self._pause()
            return
        self._pause()
        if not self._answers():
            self._current = None
            raise Lost("The iPod gives no usable answer: plug it in again, then reconnect().")

    def _ask(self, question: typing.Callable[[], _Answer],
             is_sure: typing.Callable[[_Answer], bool]) -> _Answer:
        """Asks once, and again after a pause if the answer can mean that there was none."""
        if not self.is_connected:
            self._check()
        answer = question()
        if is_sure(answer):
            return answer
        self._check(pause_always=True)
        return question()

    def _ask_member(self, enumeration: typing.Any, function: typing.Any) -> typing.Any:
        number = self._ask(lambda: number_of(function, _UNWRITTEN), lambda value: value >= 0)
        if number not in list(enumeration):
            raise NoAnswer("The iPod does not answer this question: ask again later.")
        return enumeration(number)

    def _ask_text(self, function: typing.Any) -> str:
        def question() -> str:
            units = texts.buffer()
            function(units, texts.SIZE)
            return texts.text_of(units)

        return self._ask(question, bool)

    @property
    def name(self) -> str:
        """The iPod's name; empty when it does not send one."""
        return self._ask_text(raw.IpodGetName)

    @property
    def serial_number(self) -> str:
        """The serial number; empty when the iPod does not send one."""
        return self._ask_text(raw.IpodGetSerialNumber).rstrip("\0")

    # ---------------------------------------------------------------- what plays

    @staticmethod
    def _read_index() -> typing.Optional[int]:
        index = ctypes.c_int(-1)
        return index.value if raw.IpodGetTrackIndex(index) == 1 else None

    @property
    def track_index(self) -> typing.Optional[int]:
        """The playing track's index in the playing list; None when nothing plays."""
        index = self._ask(self._read_index, lambda value: value is not None)
        if index is None:
            raise NoAnswer("The iPod does not say which track plays: ask again later.")
        return index if index >= 0 else None

    @property
    def status(self) -> PlayStatus:
        """Whether the iPod plays."""

        def question() -> int:
            return number_of(raw.IpodGetCurrentPlayStatus, PlayStatus.STOPPED)

        # The status is "stopped" also without an answer; then no track plays, either.
        status = self._ask(question, lambda value: value != PlayStatus.STOPPED
                           or self._read_index() == -1)
        if status not in list(PlayStatus):
            raise NoAnswer(f"The iPod answers with the unknown status {status}: ask again later.")
        return PlayStatus(status)

    @property
    def position(self) -> int:
        """Milliseconds from the start of the playing track; 0 when nothing plays."""
        return self._ask(lambda: number_of(raw.IpodGetCurrentTrackPosition, 0),
                         lambda value: value > 0 or self._read_index() == -1)

    def track_info(self) -> typing.Optional[TrackInfo]:
        """Reads the texts of the playing track; None when nothing plays."""
        info = self._ask(self._read_info,
                         lambda value: value is not None and (value.index < 0 or value.title != ""))
        if info is None:
            raise NoAnswer("The iPod does not say which track plays: ask again later.")
        return info if info.index >= 0 else None

    @staticmethod
    def _read_info() -> typing.Optional[TrackInfo]:
        index = ctypes.c_int(-1)
        artist, album, title, genre = (texts.buffer() for _ in range(4))
        if raw.IpodGetTrackInfo(index, artist, album, title, genre, None, texts.SIZE) != 0:
            return None
        # The genre begins with the type of the information.
        return TrackInfo(index.value, texts.text_of(title), texts.text_of(artist),
                         texts.text_of(album), texts.text_of(genre)[1:])

    @property
    def shuffle(self) -> PlayMode:
        """The shuffle mode. To set it sends it to the iPod, which may refuse it."""
        return typing.cast(PlayMode, self._ask_member(PlayMode, raw.IpodGetShuffleMode))

    @shuffle.setter
    def shuffle(self, mode: PlayMode) -> None:
        self._act(raw.IpodSetShuffleMode, member_of(PlayMode, mode))

    @property
    def repeat(self) -> PlayMode:
        """The repeat mode: off, one track (TRACKS) or all (ALBUMS). It can be set."""
        return typing.cast(PlayMode, self._ask_member(PlayMode, raw.IpodGetRepeatMode))

    @repeat.setter
    def repeat(self, mode: PlayMode) -> None:
        self._act(raw.IpodSetRepeatMode, member_of(PlayMode, mode))

    # ---------------------------------------------------------------- actions

    def _act(self, action: typing.Callable[[int], int], value: int) -> None:
        """Sends something. The library does not say whether the iPod obeyed, only if it is there."""
        if not self.is_connected:
            self._check()
        action(value)
        self._check()

    def command(self, command: Command) -> None:
        """Presses a button. Ask for the status to see whether the iPod obeyed."""
        self._act(raw.IpodCommand, member_of(Command, command))

    def play(self, entry: typing.Optional[Entry] = None) -> None:
        """Plays an entry of a list; without one, goes on playing."""
        if entry is None:
            self.command(Command.PLAY)
        elif isinstance(entry, Entry):
            entry.play()
        else:
            raise TypeError(f"play takes an entry of a list, not {type(entry).__name__}")

    def pause(self) -> None:
        """Pauses."""
        self.command(Command.PAUSE)

    def stop(self) -> None:
        """Stops."""
        self.command(Command.STOP)

    def next(self) -> None:
        """Plays the next track, after the last one the first."""
        self.command(Command.NEXT_TRACK)

    def previous(self) -> None:
        """Plays the track before; more than three seconds into a track, its start."""
        self.command(Command.PREVIOUS_TRACK)

    # ---------------------------------------------------------------- lists

    def list(self, kind: BrowseType) -> ItemList:
        """Opens a list of the whole iPod."""
        if not self.is_connected:
            self._check()
        return ItemList(self, member_of(BrowseType, kind), None)

    def playlists(self) -> ItemList:
        """Opens the playlists. The library passes over the first and the last one."""
        return self.list(BrowseType.PLAYLISTS)

    def artists(self) -> ItemList:
        """Opens the artists."""
        return self.list(BrowseType.ARTISTS)

    def albums(self) -> ItemList:
        """Opens the albums."""
        return self.list(BrowseType.ALBUMS)

    def genres(self) -> ItemList:
        """Opens the genres."""
        return self.list(BrowseType.GENRES)

    def tracks(self) -> ItemList:
        """Opens all tracks."""
        return self.list(BrowseType.TRACKS)

    @property
    def cursor(self) -> Cursor:
        """The library's place in its browse tree, to move it step by step."""

        def forget() -> None:
            self._current = None

        return Cursor(forget)

    # ---------------------------------------------------------------- the list that plays

    def take_snapshot(self) -> None:
        """Makes the open list the one to which NEXT_GROUP and playing_from() refer."""
        raw.IpodValidateUpDownTree()

    def set_same_ipod(self, is_same: bool) -> None:
        """Says whether this is the iPod of the connection before. False forgets the snapshot."""
        raw.IpodSetSameIpod(int(bool(is_same)))

    def playing_from(self) -> str:
        """Reads the name of the entry whose tracks play, such as an album; empty when there is none.

        It changes the iPod's selection."""
        with self._lock:
            self._current = None
            units = texts.buffer()
            raw.IpodGetParentUpDownName(0, units, None, texts.SIZE)
            return texts.text_of(units)

    def count_snapshot(self) -> int:
        """Counts the items of the type of the snapshot's first list; 0 without an answer.

        The library does not take its lock for this: call it while no other thread asks the iPod."""
        return raw.IpodGetNumberOfPlaylist()
