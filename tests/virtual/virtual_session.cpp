#include "virtual/virtual_session.h"

#include <desk.h>
#include <unistd.h>
#include <windows.h>

#include <fstream>
#include <ostream>

#include "support/counted_heap.h"
#include "virtual/failures.h"
#include "virtual/recorded_console.h"

namespace virtual_session {
namespace {

constexpr const char* kLogoFile = "logo_zel.bmp";

void putLogo(const std::string& content) {
  if (content.empty()) {
    unlink(kLogoFile);
  } else {
    std::ofstream(kLogoFile, std::ios::binary) << content;
  }
}

}  // namespace

VirtualSession::VirtualSession(std::uint64_t seed, const Script& played)
    : script(played),
      ipod(script.model, script.library),
      cable(ipod, script.frames),
      world(seed),
      watch(world) {
  world.addDevice(script.device, cable);
  putLogo(script.logo);
}

std::string VirtualSession::run(const std::function<void()>& host) {
  const RecordedConsole console;
  return world.run(host);
}

Calls VirtualSession::play() {
  Host host(world);
  script.play(*this, host);
  return host.calls();
}

void VirtualSession::spawn(const std::function<void(Host&)>& others) {
  ++running;
  world.spawn([this, others, thread = ++spawned] {
    Host host(world, thread);
    others(host);
    meanwhile.insert(meanwhile.end(), host.calls().begin(), host.calls().end());
    --running;
  });
}

void VirtualSession::awaitOthers() {
  constexpr DWORD kPollMilliseconds = 10;
  while (running > 0)
    Sleep(kPollMilliseconds);
}

void VirtualSession::mend() {
  virtual_platform::disarmAllFailures();
  ipod.faults().clear();
  cable.plug(world.now());
}

OpenThings openThings() {
  return {deskOpenHandles(), deskRunningThreads(), session::liveObjects()};
}

bool operator==(const OpenThings& left, const OpenThings& right) {
  return left.handles == right.handles && left.threads == right.threads &&
         left.heapObjects == right.heapObjects;
}

std::ostream& operator<<(std::ostream& out, const OpenThings& things) {
  return out << things.handles << " handles, " << things.threads << " threads, "
             << things.heapObjects << " objects";
}

void warmUp(const Script& script) {
  VirtualSession session(0, script);
  session.run([&] { findFault(session.play(), script.promises); });
}

}  // namespace virtual_session
