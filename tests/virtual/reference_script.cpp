#include <ipodctl.h>
#include <windows.h>

#include "session/bitmap_file.h"
#include "virtual/reference_library.h"
#include "virtual/scripts.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

// Longer than an answer may be late that is still taken.
constexpr DWORD kPauseMilliseconds = 1200;
// "Previous" restarts a track from three seconds on.
constexpr DWORD kIntoATrackMilliseconds = 4000;
constexpr int kIntoATrack = 1000;

void connect(Host& host) {
  host.call("IpodIsConnect", IpodIsConnect);
  host.call("isIpodAudioPresent", [] { return isIpodAudioPresent(1, 2, 3, 4); });
  host.call("IpodConnect", IpodConnect);
  Sleep(kPauseMilliseconds);
  host.call("IpodConnect", IpodConnect);
  host.call("IpodIsConnect", IpodIsConnect);
  host.call("IpodGetType", IpodGetType);
  host.deviceText("IpodGetName", IpodGetName);
  host.deviceText("IpodGetSerialNumber", IpodGetSerialNumber);
}

void lookAtTheEntry(Host& host) {
  host.call("IpodIsPlayAll", IpodIsPlayAll);
  host.entryName("IpodGetItemName", IpodGetItemName);
}

void setModes(Host& host, int mode) {
  host.call("IpodSetShuffleMode", [mode] { return IpodSetShuffleMode(mode); });
  host.call("IpodSetRepeatMode", [mode] { return IpodSetRepeatMode(mode); });
}

/// Whatever the session before left.
void startAfresh(Host& host) {
  host.call("IpodSetSameIpod", [] {
    IpodSetSameIpod(0);
    return 0;
  });
  setModes(host, IPOD_MODE_OFF);
}

/// To the entry behind and the one before.
void moveAbout(Host& host) {
  host.move("IpodGetNextItem", IpodGetNextItem);
  lookAtTheEntry(host);
  host.move("IpodGetPrevItem", IpodGetPrevItem);
}

void goUp(Host& host) { host.move("IpodGetParentItem", IpodGetParentItem); }

void readTabs(Host& host) {
  host.call("IpodIsTabActive", IpodIsTabActive);
  host.call("IpodIsTabVisualizationActive", IpodIsTabVisualizationActive);
}

void chooseTab(Host& host) {
  host.call("IpodDisableTabVisualizationActive", IpodDisableTabVisualizationActive);
}

void remember(Host& host) { host.call("IpodValidateUpDownTree", IpodValidateUpDownTree); }

void play(Host& host, int track) {
  host.call("IpodSongPlay", [track] { return IpodSongPlay(track); });
}

void readParentName(Host& host) {
  host.entryName("IpodGetParentUpDownName", IpodGetParentUpDownName);
}

/// Plays the first one, and steps to the next one and back. The third one is empty.
void browsePlaylists(Host& host) {
  host.open(0, IPOD_PLAYLISTS);
  host.number("IpodGetMediaFileCount", IpodGetMediaFileCount);
  moveAbout(host);
  host.call("IpodCurItemIsEmpty", IpodCurItemIsEmpty);
  host.move("IpodGetPrevItem", IpodGetPrevItem);
  host.call("IpodCurItemIsEmpty", IpodCurItemIsEmpty);
  host.move("IpodGetNextItem", IpodGetNextItem);
  host.open(1, IPOD_TRACKS);
  host.call("IpodIsTrack", IpodIsTrack);
  host.call("IpodGetType", IpodGetType);
  host.number("IpodSongGetNumElem", IpodSongGetNumElem);
  remember(host);
  play(host, 1);
  readParentName(host);
  goUp(host);
  host.command(IPOD_NEXT_GROUP);
  host.command(IPOD_PREVIOUS_GROUP);
  host.call("IpodGetNumberOfPlaylist", IpodGetNumberOfPlaylist);
}

/// In tabs, in the items of one, and down to the tracks of an album and up again.
void browseArtists(Host& host) {
  host.open(0, IPOD_ARTISTS);
  readTabs(host);
  lookAtTheEntry(host);
  host.move("IpodGetNextItem", IpodGetNextItem);
  moveAbout(host);
  lookAtTheEntry(host);
  chooseTab(host);
  readTabs(host);
  moveAbout(host);
  goUp(host);  // to the tabs
  chooseTab(host);
  host.call("IpodEnableTabVisualizationActive", IpodEnableTabVisualizationActive);
  readTabs(host);
  chooseTab(host);
  host.open(1, IPOD_ALBUMS);
  moveAbout(host);
  host.move("IpodGetNextItem", IpodGetNextItem);
  host.open(1, IPOD_TRACKS);
  moveAbout(host);
  remember(host);
  play(host, -1);
  readParentName(host);
  goUp(host);
  goUp(host);
  host.command(IPOD_NEXT_GROUP);
}

/// With the artists themselves remembered, from the fourth track of all on.
void stepAmongArtists(Host& host) {
  host.open(0, IPOD_ARTISTS);
  remember(host);
  play(host, 3);
  host.command(IPOD_NEXT_GROUP);
  host.number("IpodGetTrackIndex", IpodGetTrackIndex);
  host.command(IPOD_PREVIOUS_GROUP);
  host.number("IpodGetTrackIndex", IpodGetTrackIndex);
}

/// All tracks of the long one, in tabs.
void browseAlbums(Host& host) {
  host.open(0, IPOD_ALBUMS);
  moveAbout(host);
  host.move("IpodGetPrevItem", IpodGetPrevItem);
  host.open(1, IPOD_TRACKS, 1);
  readTabs(host);
  host.move("IpodGetNextItem", IpodGetNextItem);
  moveAbout(host);
  chooseTab(host);
  moveAbout(host);
}

void browseTheOthers(Host& host) {
  host.open(0, IPOD_GENRES);
  moveAbout(host);
  host.call("IpodCurItemIsEmpty", IpodCurItemIsEmpty);
  host.open(1, IPOD_ARTISTS);
  host.number("IpodGetMediaFileCount", IpodGetMediaFileCount);
  for (const int type : {IPOD_TYPE_6, IPOD_TYPE_7, IPOD_TYPE_8}) {
    host.open(0, type);
    lookAtTheEntry(host);
  }
  host.open(0, IPOD_TRACKS);
  moveAbout(host);
}

void readWhatPlays(Host& host) {
  host.number("IpodGetTrackIndex", IpodGetTrackIndex);
  host.number("IpodGetCurrentPlayStatus", IpodGetCurrentPlayStatus);
}

void pauseAndPlay(Host& host) {
  play(host, 0);
  readWhatPlays(host);
  host.trackTexts();
  host.command(IPOD_PAUSE);
  readWhatPlays(host);
  host.command(IPOD_PLAY);
  host.command(IPOD_TOGGLE_PLAY_PAUSE);
  readWhatPlays(host);
  host.command(IPOD_TOGGLE_PLAY_PAUSE);
}

/// Back from the first track, on from the last one, to the start of one, and to the one before.
void skip(Host& host) {
  play(host, 0);
  host.command(IPOD_PREVIOUS_TRACK);
  readWhatPlays(host);
  host.command(IPOD_NEXT_TRACK);
  readWhatPlays(host);
  host.command(IPOD_NEXT_TRACK);
  Sleep(kIntoATrackMilliseconds);
  host.position(kIntoATrack);
  host.command(IPOD_PREVIOUS_TRACK);
  readWhatPlays(host);
  Sleep(kIntoATrackMilliseconds);
  host.command(IPOD_PREVIOUS_TRACK_NO_RESTART);
  readWhatPlays(host);
  host.command(IPOD_PREVIOUS_TRACK_NO_RESTART);
  readWhatPlays(host);
}

void useEveryOtherCommand(Host& host) {
  for (const int code : {IPOD_START_FAST_FORWARD, IPOD_START_REWIND, IPOD_END_SEEK, IPOD_PREVIOUS,
                         IPOD_NEXT, IPOD_STOP})
    host.command(code);
  readWhatPlays(host);
  host.position(kIntoATrack);
}

void changeModes(Host& host) {
  for (const int mode : {IPOD_MODE_ALBUMS, IPOD_MODE_OFF}) {
    setModes(host, mode);
    host.number("IpodGetShuffleMode", IpodGetShuffleMode);
    host.number("IpodGetRepeatMode", IpodGetRepeatMode);
  }
}

/// What the iPod says unasked: a sample rate between the requests, the position before an answer.
void listen(VirtualSession& session, Host& host) {
  constexpr uint32_t kNewSampleRate = 32000;
  play(host, 2);
  session.ipod.announceSampleRate(session.world.now(), kNewSampleRate);
  Sleep(kPauseMilliseconds);
  session.ipod.tellPosition(session.world.now());
  host.command(IPOD_PAUSE);
  Sleep(kPauseMilliseconds);
  session.ipod.tellPosition(session.world.now());
  Sleep(kPauseMilliseconds);
  readWhatPlays(host);
}

/// The snapshot is gone, and with it the step.
void leave(Host& host) {
  for (const int same : {1, 0}) {
    host.call("IpodSetSameIpod", [same] {
      IpodSetSameIpod(same);
      return 0;
    });
    host.number("IpodGetTrackIndex", IpodGetTrackIndex);
  }
  host.command(IPOD_NEXT_GROUP);
  readParentName(host);
  host.call("IpodDisconnect", IpodDisconnect);
  host.call("IpodIsConnect", IpodIsConnect);
}

void playAll(VirtualSession& session, Host& host) {
  connect(host);
  startAfresh(host);
  browsePlaylists(host);
  browseArtists(host);
  stepAmongArtists(host);
  browseAlbums(host);
  browseTheOthers(host);
  pauseAndPlay(host);
  skip(host);
  useEveryOtherCommand(host);
  changeModes(host);
  listen(session, host);
  leave(host);
}

}  // namespace

const Script& referenceScript() {
  static const Script script{
      "reference",     "IPD1:", simulator::FrameKind::kUsb, referenceModel(), referenceLibrary(),
      referenceLogo(), playAll, referenceResults(),         exportPromises()};
  return script;
}

}  // namespace virtual_session
