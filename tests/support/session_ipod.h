#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <thread>
#include <vector>

#include "link/pty_ipod.h"
#include "music/built_in_library.h"
#include "support/desk_recorder.h"
#include "support/event_log.h"
#include "support/eventually.h"
#include "support/host_folder.h"
#include "support/pty_pair.h"

namespace session {

/// A simulated iPod on a cable that leads to the library, and the desk around the library. One at a
/// time.
class SessionIpod {
 public:
  explicit SessionIpod(simulator::Personality model = {},
                       simulator::MusicLibrary music = simulator::builtInLibrary(),
                       const std::string& deviceName = "IPD1:",
                       simulator::FrameKind frames = simulator::FrameKind::kUsb);

  /// Waits until `condition` holds of the iPod; false when it does not in time.
  bool waitUntil(const std::function<bool(const simulator::SimulatedIpod&)>& condition);

  /// Waits until the iPod has nothing more to say and the library, which is connected, has read all
  /// of it; false when that is not so in time.
  bool settle();

  /// What `look` says of the iPod.
  template <typename Look>
  auto look(Look look) {
    return cable.access(look);
  }

  /// Adds a fault as ipodsim's command line writes it.
  void addFault(const std::string& text);

  /// What the library told the audio library since the start or the last time.
  std::vector<std::string> takeAudioCalls();

  /// Which of the library's tracks the iPod plays or has paused; throws when there is none.
  simulator::Track playingTrack();

  simulator::PtyIpod& pty() { return cable; }

  const HostFolder folder;
  EventLog log;

 private:
  DeskRecorder desk{log};
  simulator::SimulatedIpod device;
  simulator::PtyIpod cable;
  const host_test::DeviceMapping devices;
};

/// How long a call takes.
template <class Call>
simulator::milliseconds durationOf(Call call) {
  const auto begin = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration_cast<simulator::milliseconds>(std::chrono::steady_clock::now() -
                                                             begin);
}

/// What this process has open, to be compared with what it has open later.
struct OpenThings {
  unsigned handles = 0;
  unsigned threads = 0;
  unsigned descriptors = 0;
};

OpenThings openThings();
bool operator==(const OpenThings& left, const OpenThings& right);
std::ostream& operator<<(std::ostream& out, const OpenThings& things);

}  // namespace session
