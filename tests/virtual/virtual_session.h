#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "device/simulated_ipod.h"
#include "virtual/virtual_ipod.h"
#include "virtual/virtual_world.h"

/// Sessions of a host with a simulated iPod in a virtual world.
namespace virtual_session {

using virtual_platform::Time;

/// A call of an export.
struct Call {
  std::string name;
  int result = 0;
  Time took{0};
};

using Calls = std::vector<Call>;

/// "IpodConnect 1", one for each call.
std::vector<std::string> resultsOf(const Calls& calls);

/// An iPod with a small library, plugged at "IPD1:". What the library prints is not shown.
class VirtualSession {
 public:
  explicit VirtualSession(std::uint64_t seed);
  VirtualSession(const VirtualSession&) = delete;
  VirtualSession& operator=(const VirtualSession&) = delete;

  /// As VirtualWorld's.
  std::string run(const std::function<void()>& host);

  /// In the run: connects, looks at the artists, plays the tracks of one, follows a new sample rate
  /// and disconnects. Returns the calls.
  Calls play();

  /// In the run: plugs an iPod that is well into a platform that works.
  void mend();

  simulator::SimulatedIpod ipod;
  virtual_platform::VirtualIpod cable{ipod, simulator::FrameKind::kUsb};
  virtual_platform::VirtualWorld world;

 private:
  void call(Calls& calls, const std::string& name, const std::function<int()>& exported);
};

/// The results of play() with an iPod that answers.
std::vector<std::string> resultsOfASession();

/// Empty, or which call took longer than it may or returned what it never returns.
std::string findFault(const Calls& calls);

/// What a run must give back.
struct OpenThings {
  unsigned handles = 0;
  unsigned threads = 0;
  long heapObjects = 0;
};

OpenThings openThings();
bool operator==(const OpenThings& left, const OpenThings& right);
std::ostream& operator<<(std::ostream& out, const OpenThings& things);

/// Has everybody make what they keep for good.
void warmUp();

}  // namespace virtual_session
