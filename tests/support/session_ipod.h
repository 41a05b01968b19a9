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

/// A simulated iPod on a cable to the library, and a recorder of what the library does to its host.
/// One at a time.
class SessionIpod {
 public:
  explicit SessionIpod(simulator::Personality model = {},
                       simulator::MusicLibrary music = simulator::builtInLibrary(),
                       const std::string& deviceName = "IPD1:",
                       simulator::FrameKind frames = simulator::FrameKind::kUsb);

  /// Waits until `condition` holds for the iPod. Returns false if it does not hold in time.
  bool waitUntil(const std::function<bool(const simulator::SimulatedIpod&)>& condition);

  /// Waits until the iPod has nothing more to send and the connected library has read everything.
  /// Returns false if that does not happen in time.
  bool settle();

  /// Returns what `look` returns for the iPod.
  template <typename Look>
  auto look(Look look) {
    return cable.access(look);
  }

  /// Adds a fault as ipodsim's command line writes it.
  void addFault(const std::string& text);

  /// Returns the calls of the audio library since the start or the last time.
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

/// Returns how long a call takes.
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
