#include "ipodctl/doctor_session.h"

#include <ipodctl.h>
#include <isochplay_desk.h>

#include <chrono>
#include <thread>

namespace tool {
namespace {

/// Many iPods acknowledge a connection twice. What arrives meanwhile does not disturb the requests.
void leaveTheIpodAlone() { std::this_thread::sleep_for(std::chrono::seconds(1)); }

/// The calls are in the trace; on the console they would be between the steps.
void silenceAudioLibrary() {
  isochplaySetSink([](void*, const IsochplayCall*) {}, nullptr);
}

void askForNames() {
  constexpr int kMost = 64;
  unsigned short text[kMost] = {};
  IpodGetName(text, kMost - 1);
  IpodGetSerialNumber(text, kMost - 1);
}

void openArtists() {
  IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  IpodGetNextItem();
}

void askWhatPlays() {
  int status = IPOD_STOPPED;
  int index = -1;
  IpodGetCurrentPlayStatus(&status);
  IpodGetTrackIndex(&index);
}

}  // namespace

void runShortSession() {
  silenceAudioLibrary();
  if (IpodConnect()) {
    leaveTheIpodAlone();
    askForNames();
    openArtists();
    askWhatPlays();
  }
  IpodDisconnect();
}

}  // namespace tool
