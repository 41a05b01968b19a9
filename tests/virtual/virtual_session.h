#pragma once

#include <functional>
#include <iosfwd>
#include <string>

#include "device/simulated_ipod.h"
#include "virtual/library_watch.h"
#include "virtual/scripts.h"
#include "virtual/virtual_ipod.h"
#include "virtual/virtual_world.h"

/// Sessions of a host with a simulated iPod on the deterministic platform.
namespace virtual_session {

/// The iPod of a script, plugged at its device. What the library prints is in the world's trace.
/// The script's logo is written to the current directory, which belongs to the host.
class VirtualSession {
 public:
  explicit VirtualSession(std::uint64_t seed, const Script& played = shortScript());
  VirtualSession(const VirtualSession&) = delete;
  VirtualSession& operator=(const VirtualSession&) = delete;

  /// As VirtualWorld's.
  std::string run(const std::function<void()>& host);

  /// In the run: does what the script says, and returns the calls.
  Calls play();

  /// In the run: starts another thread of the host. Its calls are in `meanwhile` when it has ended.
  void spawn(const std::function<void(Host&)>& others);
  void awaitOthers();
  Calls meanwhile;

  /// In the run: plugs the iPod without faults, and ends the failures of the platform.
  void mend();

  const Script& script;
  simulator::SimulatedIpod ipod;
  virtual_platform::VirtualIpod cable;
  virtual_platform::VirtualWorld world;

 private:
  LibraryWatch watch;
  int spawned = 0;
  int running = 0;
};

/// What a run must release.
struct OpenThings {
  unsigned handles = 0;
  unsigned threads = 0;
  long heapObjects = 0;
};

OpenThings openThings();
bool operator==(const OpenThings& left, const OpenThings& right);
std::ostream& operator<<(std::ostream& out, const OpenThings& things);

/// Makes the library and the platform create their permanent objects.
void warmUp(const Script& script = shortScript());

}  // namespace virtual_session
