"""Controls an iPod from a head unit's user interface: the library ipodctl in Python.

    import ipodctl

    with ipodctl.Ipod() as ipod:
        ipod.artists()[0].play()
        print(ipod.track_info())
"""

from .cursor import Cursor
from .errors import IpodError, Lost, NoAnswer, NoIpod, NotConnected
from .ipod import Ipod, TrackInfo
from .lists import Entry, ItemList, Tab
from .types import BrowseType, Command, PlayMode, PlayStatus

__all__ = [
    "BrowseType", "Command", "Cursor", "Entry", "Ipod", "IpodError", "ItemList", "Lost",
    "NoAnswer", "NoIpod", "NotConnected", "PlayMode", "PlayStatus", "Tab", "TrackInfo",
]
