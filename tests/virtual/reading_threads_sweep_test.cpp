// The exports that take no lock, at the same time as the others, in many orders of the threads.
#include <ipodctl.h>

#include <cstdlib>

#include "virtual/sweep.h"

namespace virtual_session {
namespace {

std::uint64_t seeds() { return std::getenv("VIRTUAL_ALL") != nullptr ? 5000 : 100; }

constexpr int kLooks = 40;
constexpr DWORD kLookMilliseconds = 7;

/// All exports that only read.
void look(Host& host) {
  for (int i = 0; i < kLooks; ++i) {
    host.call("IpodIsConnect", IpodIsConnect);
    host.call("IpodIsPlayAll", IpodIsPlayAll);
    host.call("IpodIsTabActive", IpodIsTabActive);
    host.call("IpodIsTabVisualizationActive", IpodIsTabVisualizationActive);
    host.call("isIpodAudioPresent", [] { return isIpodAudioPresent(1, 2, 3, 4); });
    Sleep(kLookMilliseconds);
  }
}

using ReadingThreadsSweep = Sweep;

TEST_F(ReadingThreadsSweep, OfReadingThreadsLeavesTheSessionUnchanged) {
  for (std::uint64_t seed = 1; seed <= seeds(); ++seed) {
    tryCase({shortScript(), "reading-threads", seed,
             [](VirtualSession& session) { session.spawn(look); },
             [](VirtualSession&) { return true; }, Outcome::kFullSession});
  }
}

}  // namespace
}  // namespace virtual_session
