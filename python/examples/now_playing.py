#!/usr/bin/env python3
"""Plays an artist and shows for some seconds what plays: now_playing.py [SECONDS]

Start an iPod first, for example: ipodsim --link /tmp/ipod
"""

import sys
import time

import ipodctl


def show(ipod: ipodctl.Ipod) -> None:
    """Prints a line with the track and its position."""
    info = ipod.track_info()
    if info is None:
        print("nothing plays")
        return
    minutes, seconds = divmod(ipod.position // 1000, 60)
    print(f"{info.artist}: {info.title}, {ipod.status.name.lower()} at {minutes}:{seconds:02}")


def follow(ipod: ipodctl.Ipod, seconds: int) -> None:
    """Asks once a second: the iPod does not say by itself that it goes on to another track."""
    for _ in range(seconds):
        try:
            show(ipod)
        except ipodctl.Lost as lost:
            print(lost)
            ipod.reconnect()
        time.sleep(1)


def main() -> int:
    """Returns the exit status."""
    seconds = int(sys.argv[1]) if len(sys.argv) > 1 else 10
    try:
        with ipodctl.Ipod() as ipod:
            artists = ipod.artists()
            if not artists:
                print("The iPod has no music. Put some on it, then start again.")
                return 1
            print(f"{ipod.name}: {len(artists)} artists")
            artists[0].play()
            follow(ipod, seconds)
    except ipodctl.IpodError as error:
        print(error)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
