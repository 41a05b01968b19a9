"""The connection, what plays, and the errors."""

import threading

import pytest

import ipodctl
from ipodctl import Command, PlayMode, PlayStatus

NO_PAUSE = 0.05
SONGS = {"name": "Jos\u00e9's iPod", "tracks": [
    {"title": "Caf\u00e9", "artist": "Ann", "album": "One", "genre": "Pop", "lengthMs": 60000},
    {"title": "Sea", "artist": "Ann", "album": "One", "genre": "Pop", "lengthMs": 60000}]}


def connected():
    return ipodctl.Ipod(pause=NO_PAUSE)


@pytest.mark.ipod(library=SONGS)
def test_properties_are_what_the_ipod_has(ipod):
    with connected() as device:
        assert device.name == "Jos\u00e9's iPod"
        assert device.serial_number == "8K821D0ZY5N"
        assert (device.status, device.position) == (PlayStatus.STOPPED, 0)
        assert device.track_index is None and device.track_info() is None
        device.play(device.tracks()[0])
        ipod.wait_until(state="playing", position_ms=1)
        assert device.status is PlayStatus.PLAYING and 0 < device.position < 60000
        assert device.track_info() == ipodctl.TrackInfo(0, "Caf\u00e9", "Ann", "One", "Pop")
        assert device.is_connected and not device.is_lost()
    assert not device.is_connected


@pytest.mark.ipod(library=SONGS)
def test_buttons_and_modes_reach_the_ipod(ipod):
    with connected() as device:
        device.tracks()[0].play()
        device.next()
        assert ipod.wait_until(title="Sea")["index"] == 1
        device.pause()
        assert ipod.status()["state"] == "paused" and device.status is PlayStatus.PAUSED
        device.play()
        assert ipod.status()["state"] == "playing"
        device.previous()
        assert ipod.wait_until(title="Caf\u00e9")["index"] == 0
        device.shuffle, device.repeat = PlayMode.ALBUMS, PlayMode.TRACKS
        assert (ipod.status()["shuffle"], ipod.status()["repeat"]) == ("albums", "track")
        assert (device.shuffle, device.repeat) == (PlayMode.ALBUMS, PlayMode.TRACKS)
        device.command(Command.STOP)
        assert ipod.status()["state"] == "stopped" and device.status is PlayStatus.STOPPED


@pytest.mark.ipod(library=SONGS)
def test_the_person_with_the_ipod_presses_next(ipod):
    with connected() as device:
        device.tracks()[0].play()
        ipod.press("next")
        ipod.wait_until(title="Sea")
        assert device.track_info().title == "Sea"


def test_no_ipod_is_an_error_that_does_not_last(ipod):
    ipod.unplug()
    with pytest.raises(ipodctl.NoIpod, match="Check the cable"):
        connected().connect()
    ipod.plug()
    with connected() as device:
        assert device.is_connected


@pytest.mark.ipod(faults=["lost@*:*"])
def test_a_silent_ipod_is_left_after_the_last_attempt(ipod):
    with pytest.raises(ipodctl.NoIpod):
        ipodctl.Ipod(attempts=1).connect()
    assert ipod.status()["messages"]["received"] > 0
    ipod.wait_until(accessory=False)


def test_without_a_connection_methods_say_so(ipod):
    device = connected()
    for question in (lambda: device.name, lambda: device.status, device.artists, device.next,
                     device.track_info, device.is_lost):
        with pytest.raises(ipodctl.NotConnected):
            question()
    assert ipod.status()["messages"]["received"] == 0


def test_a_second_connection_is_refused(ipod):
    with connected() as device:
        with pytest.raises(ipodctl.IpodError, match="connected already"):
            connected().connect()
        assert device.is_connected and ipod.status()["extended"]


def test_after_a_pulled_cable_everything_is_lost_until_reconnect(ipod):
    with connected() as device:
        artists = device.artists()
        ipod.unplug()
        for question in (lambda: device.name, lambda: device.status, lambda: device.position,
                         lambda: device.shuffle, lambda: device.track_index, device.track_info,
                         device.artists, device.next, lambda: artists[1].name, artists[0].play):
            with pytest.raises(ipodctl.Lost):
                question()
        assert device.is_connected and device.is_lost()
        ipod.plug()
        device.reconnect(timeout=20)
        assert artists[0].name == "Aalto Varispeed"


@pytest.mark.ipod(faults=["lost@04:001C#1"])
def test_a_lost_answer_is_not_taken_for_stopped(ipod):
    with connected() as device:
        device.artists()[0].play()
        ipod.wait_until(state="playing")
        assert device.status is PlayStatus.PLAYING
        assert ipod.status()["faults_struck"] == 1


@pytest.mark.ipod(faults=["lost@04:002C"])
def test_a_question_that_is_never_answered_is_an_error_of_its_own(ipod):
    with connected() as device, pytest.raises(ipodctl.NoAnswer):
        device.shuffle


def test_threads_may_ask_at_the_same_time(ipod):
    answers = []
    with connected() as device:
        artists = device.artists()
        device.artists()[0].play()

        def work():
            answers.append(([entry.name for entry in artists[:40]], device.track_info().artist))

        threads = [threading.Thread(target=work) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(timeout=30)
    assert len(answers) == 4 and answers[0][0][0] == "Aalto Varispeed"
    assert answers.count(answers[0]) == 4


@pytest.mark.ipod(personality="nano", serial=True)
def test_the_marker_chooses_the_model_and_the_line(ipod):
    assert ipod.status()["personality"] == "nano"
    with connected() as device:
        assert device.is_connected
    ipod.unplug()
    ipod.plug("mini")
    assert ipod.status()["personality"] == "mini"
