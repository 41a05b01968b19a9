"""A small head unit, driven through a pulled cable."""

import ipodctl


class HeadUnit:
    """Plays an artist, and goes on with it after the cable was pulled."""

    def __init__(self):
        self.ipod = ipodctl.Ipod()
        self.artist = 0
        self.screen = "no iPod"

    def start(self):
        self.ipod.connect()
        self.play()

    def play(self):
        self.ipod.artists()[self.artist].play()

    def skip_artist(self):
        self.artist += 1
        self.play()

    def refresh(self):
        """Called about once a second."""
        try:
            info = self.ipod.track_info()
            self.screen = f"{info.artist}: {info.title}" if info else "nothing plays"
        except ipodctl.Lost:
            self.screen = "no iPod"
            self.ipod.reconnect(timeout=20)
            self.play()


def test_head_unit_goes_on_after_a_pulled_cable(ipod):
    head_unit = HeadUnit()
    head_unit.start()
    head_unit.skip_artist()
    playing = ipod.wait_until(state="playing", extended=True)["track"]
    head_unit.refresh()
    assert head_unit.screen == f"{playing['artist']}: {playing['title']}"

    ipod.unplug()
    ipod.plug()
    assert ipod.status()["state"] == "paused"
    head_unit.refresh()
    assert head_unit.screen == "no iPod"
    again = ipod.wait_until(state="playing", extended=True)["track"]
    head_unit.refresh()
    assert head_unit.screen == f"{again['artist']}: {again['title']}"
    assert again["artist"] == playing["artist"] != ""
