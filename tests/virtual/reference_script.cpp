#include <ipodctl.h>
#include <windows.h>

#include "virtual/reference_browsing.h"
#include "virtual/reference_library.h"
#include "virtual/scripts.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

// Longer than the delay of an answer that is still accepted.
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

void setModes(Host& host, int mode) {
  host.call("IpodSetShuffleMode", [mode] { return IpodSetShuffleMode(mode); });
  host.call("IpodSetRepeatMode", [mode] { return IpodSetRepeatMode(mode); });
}

/// Resets what the previous session left.
void startAfresh(Host& host) {
  host.call("IpodSetSameIpod", [] {
    IpodSetSameIpod(0);
    return 0;
  });
  setModes(host, IPOD_MODE_OFF);
}

void readWhatPlays(Host& host) {
  host.number("IpodGetTrackIndex", IpodGetTrackIndex);
  host.number("IpodGetCurrentPlayStatus", IpodGetCurrentPlayStatus);
}

void pauseAndPlay(Host& host) {
  host.play(0);
  readWhatPlays(host);
  host.trackTexts();
  host.command(IPOD_PAUSE);
  readWhatPlays(host);
  host.command(IPOD_PLAY);
  host.command(IPOD_TOGGLE_PLAY_PAUSE);
  readWhatPlays(host);
  host.command(IPOD_TOGGLE_PLAY_PAUSE);
}

/// Skips back from the first track, forward from the last one, to the start of one, and to the
/// previous one.
void skip(Host& host) {
  host.play(0);
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

/// The last one stops, so that in the end nothing plays and no track has an index.
void useEveryOtherCommand(Host& host) {
  for (const int code : {IPOD_START_FAST_FORWARD, IPOD_START_REWIND, IPOD_END_SEEK, IPOD_PREVIOUS,
                         IPOD_NEXT, IPOD_STOP})
    host.command(code);
  readWhatPlays(host);
  host.trackTexts();
  host.position(kIntoATrack);
}

void changeModes(Host& host) {
  for (const int mode : {IPOD_MODE_ALBUMS, IPOD_MODE_OFF}) {
    setModes(host, mode);
    host.number("IpodGetShuffleMode", IpodGetShuffleMode);
    host.number("IpodGetRepeatMode", IpodGetRepeatMode);
  }
}

/// The iPod sends unsolicited messages: a sample rate between the requests, the position before an
/// answer.
void listen(VirtualSession& session, Host& host) {
  constexpr uint32_t kNewSampleRate = 32000;
  host.play(2);
  session.ipod.announceSampleRate(session.world.now(), kNewSampleRate);
  Sleep(kPauseMilliseconds);
  session.ipod.tellPosition(session.world.now());
  host.command(IPOD_PAUSE);
  Sleep(kPauseMilliseconds);
  session.ipod.tellPosition(session.world.now());
  Sleep(kPauseMilliseconds);
  readWhatPlays(host);
}

/// Clears the snapshot, so that the step does nothing.
void leave(Host& host) {
  for (const int same : {1, 0}) {
    host.call("IpodSetSameIpod", [same] {
      IpodSetSameIpod(same);
      return 0;
    });
    host.number("IpodGetTrackIndex", IpodGetTrackIndex);
  }
  host.command(IPOD_NEXT_GROUP);
  host.entryName("IpodGetParentUpDownName", IpodGetParentUpDownName);
  host.call("IpodDisconnect", IpodDisconnect);
  host.call("IpodIsConnect", IpodIsConnect);
}

void playAll(VirtualSession& session, Host& host) {
  connect(host);
  startAfresh(host);
  browseEverything(host);
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
      referenceLogo(), playAll, referenceResults(),         exportPromises(), kLatestOnUsb};
  return script;
}

}  // namespace virtual_session
