#include <ipodctl.h>
#include <windows.h>

#include "support/small_library.h"
#include "virtual/scripts.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

constexpr uint32_t kNewSampleRate = 48000;
constexpr DWORD kRateMilliseconds = 200;

void play(VirtualSession& session, Host& host) {
  host.call("IpodConnect", IpodConnect);
  host.open(0, IPOD_ARTISTS);
  host.move("IpodGetNextItem", IpodGetNextItem);
  host.entryName("IpodGetItemName", IpodGetItemName);
  host.open(1, IPOD_TRACKS, 1);
  host.play(0);
  host.number("IpodSongGetNumElem", IpodSongGetNumElem);
  session.ipod.announceSampleRate(session.world.now(), kNewSampleRate);
  Sleep(kRateMilliseconds);
  host.number("IpodGetCurrentPlayStatus", IpodGetCurrentPlayStatus);
  host.call("IpodDisconnect", IpodDisconnect);
  host.call("IpodIsConnect", IpodIsConnect);
}

}  // namespace

const Script& shortScript() {
  static const Script script{
      "short",
      "IPD1:",
      simulator::FrameKind::kUsb,
      {},
      simulator::smallLibrary(),
      "",
      play,
      {"IpodConnect 1", "IpodGetFirstItem 1 -1", "IpodGetNextItem 1 0", "IpodGetItemName 0 Anna -",
       "IpodGetFirstItem 1 -1", "IpodSongPlay 0", "IpodSongGetNumElem 0 3",
       "IpodGetCurrentPlayStatus 0 1", "IpodDisconnect 0", "IpodIsConnect 0"},
      exportPromises(),
      kLatestOnUsb};
  return script;
}

}  // namespace virtual_session
