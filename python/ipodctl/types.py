"""The enumerations of the library."""

from __future__ import annotations

import enum


class BrowseType(enum.IntEnum):
    """What a list holds. Types 6 to 8 are counted as other categories at the top: see raw."""

    PLAYLISTS = 1
    ARTISTS = 2
    ALBUMS = 3
    GENRES = 4
    TRACKS = 5
    TYPE_6 = 6
    TYPE_7 = 7
    TYPE_8 = 8


class Command(enum.IntEnum):
    """What Ipod.command() does."""

    TOGGLE_PLAY_PAUSE = 1
    STOP = 2
    NEXT_TRACK = 3
    PREVIOUS_TRACK = 4
    START_FAST_FORWARD = 5
    START_REWIND = 6
    END_SEEK = 7
    NEXT = 8
    PREVIOUS = 9
    PLAY = 10
    PAUSE = 11
    PREVIOUS_GROUP = 12
    NEXT_GROUP = 13
    PREVIOUS_TRACK_NO_RESTART = 14


class PlayStatus(enum.IntEnum):
    """Whether the iPod plays."""

    STOPPED = 0
    PLAYING = 1
    PAUSED = 2


class PlayMode(enum.IntEnum):
    """A mode of shuffle or repeat. TRACKS means one track for repeat, ALBUMS means all."""

    OFF = 1
    TRACKS = 2
    ALBUMS = 3
