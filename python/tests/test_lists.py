"""The lists against the simulated iPod's music."""

import pytest

import ipodctl

NO_PAUSE = 0.05

# Forty artists A01 to A40, each with an album of two tracks; a long list that is easy to name.
FORTY = {"name": "Forty", "tracks": [
    {"title": f"T{artist:02}-{number}", "artist": f"A{artist:02}", "album": f"B{artist:02}",
     "genre": "Pop", "track": number, "lengthMs": 60000}
    for artist in range(1, 41) for number in (1, 2)]}
FEW = {"name": "Few", "tracks": FORTY["tracks"][:6]}


def connected():
    return ipodctl.Ipod(pause=NO_PAUSE)


@pytest.mark.ipod(library=FORTY)
def test_a_long_list_has_tabs_and_a_play_all_entry(ipod):
    with connected() as device:
        artists = device.artists()
        assert len(artists) == 40 and artists.has_tabs
        tabs = list(artists.tabs())
        assert [tab.label for tab in tabs] == ["A01 - A35", "A36 - A40"]
        assert [len(tab.entries) for tab in tabs] == [35, 5]
        assert [entry.name for entry in tabs[1].entries] == ["A36", "A37", "A38", "A39", "A40"]
        assert [entry.name for entry in artists] == [f"A{number:02}" for number in range(1, 41)]
        assert artists[-1].name == "A40" and artists[34].index == 34
        assert artists[0].opens is ipodctl.BrowseType.ALBUMS
        assert artists.play_all.is_play_all and artists.play_all.name == ""
        assert len(artists.play_all.tracks()) == 80


@pytest.mark.ipod(library=FORTY)
def test_lists_can_be_used_in_any_order(ipod):
    with connected() as device:
        artists = device.artists()
        found = [(artist.name, album.name, [track.name for track in album.tracks()])
                 for artist in artists[33:37] for album in artist.albums()]
        assert found == [(f"A{number}", f"B{number}", [f"T{number}-1", f"T{number}-2"])
                         for number in (34, 35, 36, 37)]


@pytest.mark.ipod(library=FORTY)
def test_counting_reads_no_names(ipod):
    with connected() as device:
        before = ipod.status()["messages"]["received"]
        assert len(device.artists()) == 40
        # The selection is reset, and the artists are counted.
        assert ipod.status()["messages"]["received"] - before == 2


@pytest.mark.ipod(library=FEW)
def test_a_short_list_has_no_tabs(ipod):
    with connected() as device:
        albums = device.albums()
        assert not albums.has_tabs and not list(albums.tabs())
        assert [album.name for album in albums] == ["B01", "B02", "B03"]
        assert [album.index for album in reversed(albums)] == [2, 1, 0]
        with pytest.raises(IndexError):
            albums[3]


@pytest.mark.ipod(library=FORTY)
def test_a_track_plays_within_its_list(ipod):
    with connected() as device:
        device.artists()[36].tracks()[1].play()
        status = ipod.wait_until(state="playing")
        assert status["track"]["title"] == "T37-2"
        assert (status["index"], status["tracks"]) == (1, 2)
        assert device.playing_from() == "A37"
        device.command(ipodctl.Command.NEXT_GROUP)
        assert ipod.wait_until(title="T38-1")["tracks"] == 2


@pytest.mark.ipod(library=FORTY)
def test_the_play_all_entry_plays_everything(ipod):
    with connected() as device:
        artists = device.artists()
        assert artists[39].name == "A40"  # the cursor is far away
        artists.play_all.play()
        assert ipod.wait_until(state="playing")["tracks"] == 80


@pytest.mark.ipod(library=FEW, tracks=0)
def test_an_empty_list_is_empty(ipod):
    with connected() as device:
        assert len(device.artists()) == 0


@pytest.mark.ipod(library=FEW, faults=["lost@04:0018"])
def test_a_list_that_is_not_counted_is_not_taken_for_an_empty_one(ipod):
    with connected() as device, pytest.raises(ipodctl.NoAnswer):
        device.artists()


@pytest.mark.ipod(library=FEW, faults=["lost@04:0018#1"])
def test_a_list_is_counted_again_after_a_lost_answer(ipod):
    with connected() as device:
        assert len(device.artists()) == 3
        assert ipod.status()["faults_struck"] == 1


@pytest.mark.ipod(library=FEW)
def test_the_cursor_moves_step_by_step(ipod):
    with connected() as device:
        artists = device.artists()
        cursor = device.cursor
        assert cursor.open(ipodctl.BrowseType.GENRES) == 0
        assert cursor.type is ipodctl.BrowseType.GENRES and cursor.count() == 1
        assert cursor.descend(ipodctl.BrowseType.TRACKS, True) == -1 and cursor.is_play_all
        assert cursor.is_in_tracks and cursor.count_tracks() == 6
        assert [cursor.next(), cursor.next(), cursor.previous()] == [0, 1, 0]
        assert cursor.parent() == 0
        assert artists[1].name == "A02"  # the list opens itself again
