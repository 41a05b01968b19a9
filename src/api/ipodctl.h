/*
 * ipodctl - control an iPod from a head unit's user interface
 *
 * The 35 functions of the library. Plain C (C89 and later) and C++.
 *
 * A first session:
 *
 *     unsigned short name[64] = {0};
 *
 *     if (IpodConnect()) {
 *       wait a second                                          see convention 9
 *       IpodGetFirstItem(0, IPOD_ARTISTS, 0);                  the list of artists
 *       if (IpodGetNextItem()) {                               it is not empty; past "play all"
 *         IpodDisableTabVisualizationActive();                 a long list: choose its first tab
 *         IpodGetItemName(0, name, 0, 63);                     the first artist's name
 *         IpodGetFirstItem(1, IPOD_TRACKS, 1);                 all tracks of this artist
 *         IpodSongPlay(0);                                     play them from the first
 *       }
 *       IpodDisconnect();
 *     }
 *
 * CONVENTIONS
 *
 *  1. Results. Most functions return 0 in every case; the text of a function says otherwise. The
 *     text also says what its outputs hold when the iPod does not answer.
 *
 *  2. Null pointers. A null output pointer is never written through. Apart from that the call does
 *     what it always does; only IpodGetTrackInfo does not ask for a text without a buffer.
 *
 *  3. Before the first IpodConnect no function that takes the library lock does anything: it
 *     returns 0 (or a null pointer) and writes nothing. Without an iPod the functions return after
 *     at most a second for each request that they make.
 *
 *  4. Threads. Every function may be called from every thread. Those marked "Lock: taken" wait for
 *     one another, so at most one of them sends requests to the iPod; a busy iPod can hold the lock
 *     for seconds. Those marked "Lock: none" never wait for it: they read or write the library's
 *     values and return. Without the lock, only isIpodAudioPresent calls the audio library, and
 *     only IpodGetNumberOfPlaylist sends a request to the iPod.
 *
 *  5. Texts. The iPod's text reaches the host as 16-bit units, one unit for each byte of the
 *     library's 8-bit text (Latin-1), so 0x00E9 is an e with an acute accent. A character that
 *     Latin-1 does not have arrives as a space. A character beyond the 16-bit range, or a sequence
 *     that is cut short, empties the text. A byte that begins no UTF-8 sequence arrives as its low
 *     seven bits, 0x80 as a zero unit. No terminator is written: clear the buffer before the call.
 *     A text is cut at `maxChars` units; with maxChars below 1 nothing is written.
 *
 *     A text must fit into a frame of 255 bytes. The longest that arrive have 251 bytes (title,
 *     artist and album of the playing track), 250 (its genre), 247 (an entry of a list) and 252
 *     (the iPod's name). A longer text loses the connection, as a pulled cable does.
 *
 *  6. Time is in milliseconds, sample rates are in Hz, all indexes count from 0.
 *
 *  7. Refresh. IpodSongPlay and the commands that IpodCommand names broadcast the window message
 *     WM_IPOD_NOTIFY with both parameters 0. IpodSongPlay and the commands 3, 4 and 14 do so even
 *     if the iPod did not obey. The message does not say what has changed: ask for what the screen
 * shows. What the iPod does by itself, such as going on to the next track, is not announced: ask
 * for it about once a second while it plays.
 *
 *  8. Selection. The iPod keeps one selection of its database, and lists, counts and names are what
 *     below it. Opening and leaving lists changes it. The text of a function says when the function
 *     changes it for another purpose.
 *
 *  9. Late answers. A request takes the first message that arrives for its answer. Many iPods
 *     acknowledge a connection twice: pending, and up to a second later done. If the second
 *     acknowledgement arrives after the next request was sent, that request fails, and each one
 *     that follows at once gets the answer of the one before. Leave the iPod alone for a second
 *     after IpodConnect. After a call that failed or whose answer is odd, make no call for a
 *     second, then ask again.
 *
 * 10. A lost iPod. After a pulled cable, or a frame with a wrong checksum, every call behaves as if
 *     the iPod did not answer, and IpodIsConnect still returns 1. The result 0 of
 *     IpodGetTrackIndex shows it. Call IpodDisconnect, then IpodConnect until it succeeds. After an
 * IpodConnect that failed because the iPod did not identify itself, the link is still open and the
 * calls still ask the iPod.
 */
#ifndef IPODCTL_H
#define IPODCTL_H

/* The platform's standard calling convention: stdcall where there is one (32-bit x86 Windows). */
#if defined(_WIN32) && (defined(_M_IX86) || defined(__i386__))
#define IPODCTL_CALL __stdcall
#else
#define IPODCTL_CALL
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The broadcast window message: WM_USER + 0x2000. */
#define WM_IPOD_NOTIFY 0x2400

/* What a list holds: the browse type of IpodGetFirstItem and of IpodGetType. */
enum IpodBrowseType {
  IPOD_PLAYLISTS = 1, /* the first one, the whole library, is passed over: see IpodGetFirstItem */
  IPOD_ARTISTS = 2,
  IPOD_ALBUMS = 3,
  IPOD_GENRES = 4,
  IPOD_TRACKS = 5,
  IPOD_TYPE_6 = 6, /* counted as category 7 when a new tree opens, category 6 from then on */
  IPOD_TYPE_7 = 7, /* counted as category 8 when a new tree opens, category 7 from then on */
  IPOD_TYPE_8 = 8  /* counted as category 6 when a new tree opens, category 8 from then on */
};

/* What IpodCommand does. */
enum IpodCommandCode {
  IPOD_TOGGLE_PLAY_PAUSE = 1,
  IPOD_STOP = 2,
  IPOD_NEXT_TRACK = 3,     /* after the last track: the first one */
  IPOD_PREVIOUS_TRACK = 4, /* more than three seconds into a track: its start */
  IPOD_START_FAST_FORWARD = 5,
  IPOD_START_REWIND = 6,
  IPOD_END_SEEK = 7,
  IPOD_NEXT = 8,     /* the next chapter of a track that has chapters, else the next track */
  IPOD_PREVIOUS = 9, /* the chapter before, else the track before, as the iPod chooses */
  IPOD_PLAY = 10,
  IPOD_PAUSE = 11,
  IPOD_PREVIOUS_GROUP = 12, /* the artist, album, ... before: see IpodCommand */
  IPOD_NEXT_GROUP = 13,
  IPOD_PREVIOUS_TRACK_NO_RESTART = 14 /* the track before, however far into this one */
};

/* Shuffle and repeat modes of the host. For repeat: off, one track, all. */
enum IpodPlayMode { IPOD_MODE_OFF = 1, IPOD_MODE_TRACKS = 2, IPOD_MODE_ALBUMS = 3 };

/* What IpodGetCurrentPlayStatus writes. */
enum IpodPlayStatus { IPOD_STOPPED = 0, IPOD_PLAYING = 1, IPOD_PAUSED = 2 };

/* ================================================================ connection and state */

/*
 * Connects to the iPod on "IPD1:": opens the link, identifies the head unit, shows the logo, enters
 * the Extended Interface mode and starts the audio stream at the iPod's sample rate. Whether or not
 * an iPod answers, the browse tree is closed; the up-down snapshot stays.
 *
 * The logo is "logo_zel.bmp" in the current directory, a 24-bit uncompressed bitmap whose width is
 * a multiple of 4. Without it, or when it is larger than the iPod's screen, the connection is made
 * anyway.
 *
 * Result: 1 when a new connection was made; 0 when there is no iPod, when a connection exists
 *         already (it is kept), when the audio stream does not start, or when another call holds
 *         the lock: a connect never waits for another call.
 * Time:   a fraction of a second with an iPod, about three seconds with a silent one, and the time
 *         of the logo: one acknowledged packet for each of its rows and for each empty row above it
 *         (half of the rows that it leaves free). From an iPod that falls silent meanwhile each of
 *         these packets costs a second.
 * Then:   leave the iPod alone for a second: see convention 9.
 * Lock:   tried, not waited for.
 */
int IPODCTL_CALL IpodConnect(void);

/*
 * Stops the audio stream, leaves the Extended Interface mode and closes the link. Harmless without
 * a connection. The browse tree and the snapshot keep their values.
 *
 * Result: 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodDisconnect(void);

/*
 * Result: 1 between a successful IpodConnect and the next IpodDisconnect, else 0. A pulled cable
 *         does not change it: call IpodDisconnect when the iPod has gone.
 * Lock:   none.
 */
int IPODCTL_CALL IpodIsConnect(void);

/*
 * Hands four words to the audio library's function IpodAudioPresent.
 *
 * Result: that function's result, unchanged.
 * Lock:   none.
 */
int IPODCTL_CALL isIpodAudioPresent(int first, int second, int third, int fourth);

/*
 * Says whether the iPod is the one that was connected before.
 *
 * sameIpod: 0 clears the up-down snapshot, which is about another iPod's lists; any other value
 *           does nothing.
 * Lock:     none.
 */
void IPODCTL_CALL IpodSetSameIpod(int sameIpod);

/*
 * Takes the up-down snapshot: a copy of the whole browse tree. The host calls it when
 * playback starts from a list, so that IPOD_NEXT_GROUP, IPOD_PREVIOUS_GROUP and
 * IpodGetParentUpDownName refer to that list while the user browses on.
 *
 * Result: 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodValidateUpDownTree(void);

/* ================================================================ playback and play modes */

/*
 * Carries out one command of the transport buttons.
 *
 * The group commands, 12 and 13, go by the up-down snapshot (IpodValidateUpDownTree):
 *   - taken in a list of level 1: for artists and albums they play the first track, in the playing
 *     list, of the artist or album before or after the playing track's. Tracks without a name are a
 *     group, too, and a name that the iPod does not send is none. The search ends without a step
 *     after one round; in a group without a name also when the iPod does not answer for a second.
 *     For other lists they do nothing.
 *   - taken deeper: they play the record before or after the one that was opened in the list of
 *     level 1 from its first track, round at the ends, and the snapshot moves on to it. They begin
 *     a new selection of the iPod's database in any case. Below the play-all entry they play
 *     nothing. Below the play-all tab, if the host reached it by moving, its index is -35, and they
 *     do play: 12 the last record, 13 whatever the iPod then has selected.
 *   - never taken: they do nothing.
 *
 * Commands 8 and 9 are sent to the iPod as they are: they neither wrap at the ends of the list nor
 * restart a track.
 *
 * command: an IpodCommandCode, 1 to 14; other values do nothing.
 * Result:  0, whether or not the iPod obeyed.
 * Refresh: WM_IPOD_NOTIFY after commands 3, 4 and 14; after command 10 only when the iPod
 *          acknowledged it (an iPod without a play command is left alone when it plays); after
 *          commands 12 and 13 only when a step was made.
 * Time:    several requests; 12 and 13 ask for every track's name until the group changes.
 * Lock:    taken.
 */
int IPODCTL_CALL IpodCommand(int command);

/*
 * Plays the tracks of the current selection from one of them and broadcasts WM_IPOD_NOTIFY. It
 * belongs in a list of tracks, whose item is the track; in every other list of level 2 and deeper
 * the index still counts the tracks of what was opened. At level 1, where nothing has been opened,
 * the selection is the whole library.
 *
 * index:  the track to play, from 0; -1 for the current item's index. An index below the list's
 *         count is played as it is, even if the selection has fewer tracks. Any other index at or
 *         beyond the number of tracks, one below -1, and the play-all entry play from the first
 *         track.
 * Result: 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodSongPlay(int index);

/*
 * Counts the tracks of the current selection.
 *
 * count:  receives the number of tracks, 0 when the iPod does not answer.
 * Result: 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodSongGetNumElem(int* count);

/*
 * Reads the playing track's index in the playing list.
 *
 * index:  receives the index, -1 when nothing plays; untouched when the iPod does not answer.
 * Result: 1 when the iPod answered, else 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodGetTrackIndex(int* index);

/*
 * Sets the shuffle mode.
 *
 * mode:   an IpodPlayMode, 1 to 3; other values do nothing.
 * Result: 0, whether or not the iPod obeyed.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodSetShuffleMode(int mode);

/*
 * Reads the shuffle mode.
 *
 * mode:   receives an IpodPlayMode; untouched when the iPod does not answer or answers with a mode
 *         that is none of the three.
 * Result: 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodGetShuffleMode(int* mode);

/* Sets the repeat mode; as IpodSetShuffleMode. */
int IPODCTL_CALL IpodSetRepeatMode(int mode);

/* Reads the repeat mode; as IpodGetShuffleMode. */
int IPODCTL_CALL IpodGetRepeatMode(int* mode);

/*
 * Reads whether the iPod plays.
 *
 * status: receives an IpodPlayStatus; IPOD_STOPPED also when the iPod does not answer.
 * Result: 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodGetCurrentPlayStatus(int* status);

/*
 * Reads the position in the playing track.
 *
 * position: receives milliseconds from the track's start, 0 when the iPod does not answer.
 * Result:   0.
 * Lock:     taken.
 */
int IPODCTL_CALL IpodGetCurrentTrackPosition(int* position);

/* ================================================================ browse tree */

/*
 * The tree has levels: level 0 means that no list is open, level 1 is the list opened first, each
 * descent adds one, up to level 7. Every list has one current entry.
 *
 * Tabs. Lists of playlists, artists, albums and genres, and track lists opened with
 * tracksOfSelection, with more than 35 items start in tab mode: their entries are tabs of 35 items.
 * IpodDisableTabVisualizationActive chooses the current tab, whose items are then the entries.
 *
 * Play all. Lists of artists and albums, and track lists opened with tracksOfSelection, begin with
 * a play-all entry, index -1. In tab mode it is the play-all tab, on which such a list opens.
 *
 * Playlists. The first playlist is the whole library. A list of playlists in a new tree counts one
 * less and opens on the second playlist; moving about in it reaches neither the first playlist nor
 * the last. In tab mode it opens on tab 1, the tabs count from the whole library, and the first tab
 * does reach it; the last playlist is not reached. A list of playlists below another list has all
 * of them.
 *
 * Functions that return a pointer return the address of the level's current index, valid until the
 * library is unloaded; read it at once, the next call that moves in the tree changes it.
 */

/*
 * Opens a list: a new tree, or what is below the current entry.
 *
 * descend:           0 closes the tree and opens a top list; any other value opens the record at
 *                    the current index as the next level. In tab mode that is the tab's first item:
 *                    choose a tab first. Before the first move in a tabbed list it is the entry
 *                    that the list opened on: "all" in a list with a play-all tab, the first item
 *                    of genres, the second one of playlists. After a move the play-all tab has the
 *                    index -35, which is not a record.
 * type:              what the new list holds, an IpodBrowseType, 1 to 8.
 * tracksOfSelection: with descend, not 0 opens all tracks below the current entry, whatever the
 *                    type, with a play-all entry. Ignored in a new tree.
 * Result:            the address of the new level's index; null when the type is out of range, for
 *                    a descent from level 7, or before the first IpodConnect (nothing changes).
 *                    A list that the iPod does not count opens empty: IpodGetNextItem returns null.
 *                    A list of playlists then has the count -1 and is in tab mode.
 * Lock:              taken.
 */
const int* IPODCTL_CALL IpodGetFirstItem(int descend, int type, int tracksOfSelection);

/*
 * Moves to the next entry, after the last one to the first. In tab mode it moves by tabs and the
 * index is the first index of the tab (-35 for the play-all tab); among the items of a chosen tab
 * it stays in that tab.
 *
 * Result: the address of the index; null when the list is empty or no list is open.
 * Lock:   taken.
 */
const int* IPODCTL_CALL IpodGetNextItem(void);

/* Moves to the entry before, before the first one to the last; otherwise as IpodGetNextItem. */
const int* IPODCTL_CALL IpodGetPrevItem(void);

/*
 * Goes back: from a chosen tab's items to the tabs, else to the level above.
 *
 * Result: the address of the index of the level above; null when the tabs are shown again or when
 *         the tree was left (level 0).
 * Lock:   taken.
 */
const int* IPODCTL_CALL IpodGetParentItem(void);

/*
 * Asks whether the current entry leads to no tracks. Afterwards no record of the list's type is
 * selected.
 *
 * Result: 1 when it leads to none or the list is empty; 0 when it leads to some, in tab mode and in
 *         track lists.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodCurItemIsEmpty(void);

/*
 * Result: 1 when the current entry is the play-all entry (or the play-all tab), else 0.
 * Lock:   none.
 */
int IPODCTL_CALL IpodIsPlayAll(void);

/*
 * Result: 1 when the current list holds tracks, else 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodIsTrack(void);

/*
 * Result: the IpodBrowseType of the current list; -1 at level 0 of a connected tree.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodGetType(void);

/*
 * Result: 1 when the current list is split into tabs (whether or not they are shown), else 0.
 * Lock:   none.
 */
int IPODCTL_CALL IpodIsTabActive(void);

/*
 * Result: 1 when the current list shows its tabs, 0 when it shows items.
 * Lock:   none.
 */
int IPODCTL_CALL IpodIsTabVisualizationActive(void);

/*
 * Chooses the current tab: from now on the list shows that tab's items.
 *
 * Result: 0.
 * Lock:   none.
 */
int IPODCTL_CALL IpodDisableTabVisualizationActive(void);

/*
 * Shows the tabs again; does nothing when the list is not split into tabs.
 *
 * Result: 0.
 * Lock:   none.
 */
int IPODCTL_CALL IpodEnableTabVisualizationActive(void);

/*
 * Counts the items of the current list's type under the iPod's present selection.
 *
 * count:  receives the count; for playlists 2 less, when it is not 0 (so -1 of a single one); 0
 *         when no list is open or the iPod does not answer.
 * Result: 0.
 * Lock:   taken.
 */
int IPODCTL_CALL IpodGetMediaFileCount(int* count);

/*
 * Counts the items of the type of the up-down snapshot's first list under the iPod's present
 * selection.
 *
 * Result: the count, 0 when the iPod does not answer.
 * Lock:   none, although it asks the iPod. During another call's request either of the two may take
 *         the other's answer or lose its own: call it while no other call is in progress.
 */
int IPODCTL_CALL IpodGetNumberOfPlaylist(void);

/*
 * Reads the current entry's name. For a tab it is a label: the first four characters of the tab's
 * first name, " - ", and the first four of its last name. A list of playlists that opens on tab 1
 * is labelled with the last name of tab 0 until the first move. For a play-all entry the name is
 * four units 0xFFFF: the host shows its own text.
 *
 * unused:   not used.
 * first:    receives the name's first maxChars units.
 * second:   receives the next maxChars units of a longer name.
 * maxChars: the size of each buffer in units.
 * Result:   0. Without a current item, or when the iPod does not answer, nothing is written; a tab
 *           whose names are not received is labelled " - ".
 * Lock:     taken.
 */
int IPODCTL_CALL IpodGetItemName(int unused, unsigned short* first, unsigned short* second,
                                 int maxChars);

/*
 * Reads the name of the entry from which the up-down snapshot's list was opened: the album, artist
 * or playlist that the playing tracks come from. Afterwards that entry is the iPod's selection.
 * Arguments, result and lock as IpodGetItemName; writes nothing when the snapshot has no parent
 * level.
 */
int IPODCTL_CALL IpodGetParentUpDownName(int unused, unsigned short* first, unsigned short* second,
                                         int maxChars);

/* ================================================================ names and information */

/*
 * Reads the playing track's texts. Each buffer has maxChars units and may be null.
 *
 * trackIndex: receives the playing track's index in the playing list, -1 when nothing plays.
 * artist, album, title, genre: receive the texts; untouched when the iPod does not send them. The
 *             genre's first unit is the iPod's information type, 5, and the text follows.
 * fifth:      receives the fixed text "UnKnown".
 * maxChars:   the size of each buffer in units.
 * Result:     0 when the index was read, -1 when it was not (then nothing is written); 0 before the
 *             first IpodConnect.
 * Lock:       taken.
 */
int IPODCTL_CALL IpodGetTrackInfo(int* trackIndex, unsigned short* artist, unsigned short* album,
                                  unsigned short* title, unsigned short* genre,
                                  unsigned short* fifth, int maxChars);

/*
 * Reads the iPod's name.
 *
 * name:     receives the name; untouched when the iPod does not answer.
 * maxChars: the size of the buffer in units.
 * Result:   0.
 * Lock:     taken.
 */
int IPODCTL_CALL IpodGetName(unsigned short* name, int maxChars);

/*
 * Reads the iPod's serial number; as IpodGetName. Its bytes are not converted: each becomes one
 * unit, the final zero byte that iPods send too when it fits.
 */
int IPODCTL_CALL IpodGetSerialNumber(unsigned short* serial, int maxChars);

#ifdef __cplusplus
}
#endif

#endif
