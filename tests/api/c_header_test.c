/* The public header in a host's C program, linked to the shared library. */

#include "ipodctl.h"

#include <stdio.h>
#include <string.h>

#define CHECK(condition) check((condition) != 0, #condition, __LINE__)

static int failures = 0;

static void check(int holds, const char* condition, int line) {
  if (!holds) {
    printf("line %d: %s\n", line, condition);
    ++failures;
  }
}

/* Every function with its type, so that a change of one does not compile. */
static int(IPODCTL_CALL* const connectIpod)(void) = IpodConnect;
static int(IPODCTL_CALL* const disconnect)(void) = IpodDisconnect;
static int(IPODCTL_CALL* const isConnect)(void) = IpodIsConnect;
static int(IPODCTL_CALL* const audioPresent)(int, int, int, int) = isIpodAudioPresent;
static void(IPODCTL_CALL* const setSameIpod)(int) = IpodSetSameIpod;
static int(IPODCTL_CALL* const validateUpDownTree)(void) = IpodValidateUpDownTree;
static int(IPODCTL_CALL* const command)(int) = IpodCommand;
static int(IPODCTL_CALL* const songPlay)(int) = IpodSongPlay;
static int(IPODCTL_CALL* const songGetNumElem)(int*) = IpodSongGetNumElem;
static int(IPODCTL_CALL* const getTrackIndex)(int*) = IpodGetTrackIndex;
static int(IPODCTL_CALL* const setShuffleMode)(int) = IpodSetShuffleMode;
static int(IPODCTL_CALL* const getShuffleMode)(int*) = IpodGetShuffleMode;
static int(IPODCTL_CALL* const setRepeatMode)(int) = IpodSetRepeatMode;
static int(IPODCTL_CALL* const getRepeatMode)(int*) = IpodGetRepeatMode;
static int(IPODCTL_CALL* const getCurrentPlayStatus)(int*) = IpodGetCurrentPlayStatus;
static int(IPODCTL_CALL* const getCurrentTrackPosition)(int*) = IpodGetCurrentTrackPosition;
static const int*(IPODCTL_CALL* const getFirstItem)(int, int, int) = IpodGetFirstItem;
static const int*(IPODCTL_CALL* const getNextItem)(void) = IpodGetNextItem;
static const int*(IPODCTL_CALL* const getPrevItem)(void) = IpodGetPrevItem;
static const int*(IPODCTL_CALL* const getParentItem)(void) = IpodGetParentItem;
static int(IPODCTL_CALL* const curItemIsEmpty)(void) = IpodCurItemIsEmpty;
static int(IPODCTL_CALL* const isPlayAll)(void) = IpodIsPlayAll;
static int(IPODCTL_CALL* const isTrack)(void) = IpodIsTrack;
static int(IPODCTL_CALL* const getType)(void) = IpodGetType;
static int(IPODCTL_CALL* const isTabActive)(void) = IpodIsTabActive;
static int(IPODCTL_CALL* const isTabVisualizationActive)(void) = IpodIsTabVisualizationActive;
static int(IPODCTL_CALL* const disableTabs)(void) = IpodDisableTabVisualizationActive;
static int(IPODCTL_CALL* const enableTabs)(void) = IpodEnableTabVisualizationActive;
static int(IPODCTL_CALL* const getMediaFileCount)(int*) = IpodGetMediaFileCount;
static int(IPODCTL_CALL* const getNumberOfPlaylist)(void) = IpodGetNumberOfPlaylist;
static int(IPODCTL_CALL* const getItemName)(int, unsigned short*, unsigned short*,
                                            int) = IpodGetItemName;
static int(IPODCTL_CALL* const getParentUpDownName)(int, unsigned short*, unsigned short*,
                                                    int) = IpodGetParentUpDownName;
static int(IPODCTL_CALL* const getTrackInfo)(int*, unsigned short*, unsigned short*,
                                             unsigned short*, unsigned short*, unsigned short*,
                                             int) = IpodGetTrackInfo;
static int(IPODCTL_CALL* const getName)(unsigned short*, int) = IpodGetName;
static int(IPODCTL_CALL* const getSerialNumber)(unsigned short*, int) = IpodGetSerialNumber;

static void checkNumbers(void) {
  CHECK(WM_IPOD_NOTIFY == 0x2400);
  CHECK(IPOD_PLAYLISTS == 1 && IPOD_ARTISTS == 2 && IPOD_ALBUMS == 3 && IPOD_GENRES == 4);
  CHECK(IPOD_TRACKS == 5 && IPOD_TYPE_6 == 6 && IPOD_TYPE_7 == 7 && IPOD_TYPE_8 == 8);
  CHECK(IPOD_TOGGLE_PLAY_PAUSE == 1 && IPOD_STOP == 2 && IPOD_NEXT_TRACK == 3);
  CHECK(IPOD_PREVIOUS_TRACK == 4 && IPOD_START_FAST_FORWARD == 5 && IPOD_START_REWIND == 6);
  CHECK(IPOD_END_SEEK == 7 && IPOD_NEXT == 8 && IPOD_PREVIOUS == 9 && IPOD_PLAY == 10);
  CHECK(IPOD_PAUSE == 11 && IPOD_PREVIOUS_GROUP == 12 && IPOD_NEXT_GROUP == 13);
  CHECK(IPOD_PREVIOUS_TRACK_NO_RESTART == 14);
  CHECK(IPOD_MODE_OFF == 1 && IPOD_MODE_TRACKS == 2 && IPOD_MODE_ALBUMS == 3);
  CHECK(IPOD_STOPPED == 0 && IPOD_PLAYING == 1 && IPOD_PAUSED == 2);
}

static void checkPlayback(void) {
  int value = -77;
  CHECK(command(IPOD_PLAY) == 0);
  CHECK(songPlay(0) == 0);
  CHECK(songGetNumElem(&value) == 0);
  CHECK(getTrackIndex(&value) == 0);
  CHECK(setShuffleMode(IPOD_MODE_OFF) == 0);
  CHECK(getShuffleMode(&value) == 0);
  CHECK(setRepeatMode(IPOD_MODE_OFF) == 0);
  CHECK(getRepeatMode(&value) == 0);
  CHECK(getCurrentPlayStatus(&value) == 0);
  CHECK(getCurrentTrackPosition(&value) == 0);
  CHECK(getMediaFileCount(&value) == 0);
  CHECK(value == -77);
}

static void checkBrowsing(void) {
  CHECK(getFirstItem(0, IPOD_ARTISTS, 0) == NULL);
  CHECK(getNextItem() == NULL);
  CHECK(getPrevItem() == NULL);
  CHECK(getParentItem() == NULL);
  CHECK(curItemIsEmpty() == 0);
  CHECK(isPlayAll() == 0);
  CHECK(isTrack() == 0);
  CHECK(getType() == 0);
  CHECK(isTabActive() == 0);
  CHECK(isTabVisualizationActive() == 0);
  CHECK(disableTabs() == 0);
  CHECK(enableTabs() == 0);
  CHECK(getNumberOfPlaylist() == 0);
}

static void checkTexts(void) {
  unsigned short text[8];
  unsigned short before[8];
  int index = -77;
  memset(text, 0xEE, sizeof text);
  memcpy(before, text, sizeof text);
  CHECK(getItemName(0, text, text, 8) == 0);
  CHECK(getParentUpDownName(0, text, text, 8) == 0);
  CHECK(getTrackInfo(&index, text, text, text, text, text, 8) == 0);
  CHECK(getName(text, 8) == 0);
  CHECK(getSerialNumber(text, 8) == 0);
  CHECK(memcmp(text, before, sizeof text) == 0);
  CHECK(index == -77);
}

/* Without an iPod: the test's environment names no device. */
static void checkConnection(void) {
  CHECK(isConnect() == 0);
  CHECK(disconnect() == 0);
  CHECK(validateUpDownTree() == 0);
  setSameIpod(0);
  CHECK(audioPresent(1, 2, 3, 4) == 1);
}

static void checkConnecting(void) {
  int tracks = -77;
  CHECK(connectIpod() == 0);
  CHECK(isConnect() == 0);
  CHECK(getType() == -1);
  CHECK(songGetNumElem(&tracks) == 0);
  CHECK(tracks == 0);
  CHECK(disconnect() == 0);
}

int main(void) {
  checkNumbers();
  checkConnection();
  checkPlayback();
  checkBrowsing();
  checkTexts();
  checkConnecting();
  return failures == 0 ? 0 : 1;
}
