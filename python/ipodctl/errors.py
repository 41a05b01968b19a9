"""The errors of the package."""

from __future__ import annotations


class IpodError(Exception):
    """Something that an iPod or its connection did not do. The message says what to do next."""


class NotConnected(IpodError):
    """There is no connection."""


class NoIpod(IpodError):
    """No iPod could be connected."""


class Lost(IpodError):
    """The iPod was there and gives no usable answer any more, for example after a pulled cable."""


class NoAnswer(IpodError):
    """The iPod is there and did not answer one question."""
