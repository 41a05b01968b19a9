// A host program that makes one request again and again: requests COUNT. It plays a track of a
// simulated iPod and asks COUNT times whether the iPod plays.
#include <ipodctl.h>

#include <cstdio>
#include <cstdlib>

#include "support/session_ipod.h"

namespace {

/// Returns false when the iPod cannot be connected.
bool play(session::SessionIpod& ipod) {
  if (!IpodConnect() || !ipod.settle()) return false;
  IpodGetFirstItem(0, IPOD_TRACKS, 0);
  IpodSongPlay(0);
  return true;
}

/// Returns how many requests were answered wrongly.
int ask(int count) {
  int wrong = 0;
  for (int i = 0; i < count; ++i) {
    int status = IPOD_STOPPED;
    IpodGetCurrentPlayStatus(&status);
    if (status != IPOD_PLAYING) ++wrong;
  }
  return wrong;
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc == 2 ? std::atoi(argv[1]) : -1;
  if (count < 0) {
    std::fputs("usage: requests COUNT\n", stderr);
    return 2;
  }
  session::SessionIpod ipod;
  if (!play(ipod)) {
    std::fputs("requests: the simulated iPod is not connected. Run session_test to see why.\n",
               stderr);
    return 1;
  }
  const int wrong = ask(count);
  IpodDisconnect();
  if (wrong == 0) return 0;
  std::fprintf(stderr, "requests: %d of %d requests had a wrong answer. Run session_test.\n", wrong,
               count);
  return 1;
}
