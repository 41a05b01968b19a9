#include "virtual/virtual_session.h"

#include <desk.h>
#include <fcntl.h>
#include <ipodctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <ostream>

#include "session/counted_heap.h"
#include "simulator/small_library.h"
#include "virtual/failures.h"

namespace virtual_session {
namespace {

using std::chrono::milliseconds;

constexpr int kUntouched = -77;
constexpr uint32_t kNewSampleRate = 48000;
constexpr DWORD kRateMilliseconds = 200;

// Leaves out what is printed while it lives.
class SilentOutput {
 public:
  SilentOutput() : before(moveOutput()) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }
  ~SilentOutput() {
    std::fflush(stdout);
    dup2(before, STDOUT_FILENO);
    close(before);
  }
  SilentOutput(const SilentOutput&) = delete;
  SilentOutput& operator=(const SilentOutput&) = delete;

 private:
  static int moveOutput() {
    std::fflush(stdout);
    return dup(STDOUT_FILENO);
  }

  const int before;
};

/// What is known of an export.
struct Promise {
  const char* name;
  milliseconds longest;
  std::vector<int> results;
};

// A request waits for its reply for a second. IpodConnect makes three attempts, and behind them
// three requests when the iPod falls silent after the identification. When the choice of the artist
// is lost on the way, the songs are all five of the iPod.
const std::vector<Promise>& promises() {
  static const std::vector<Promise> known{
      {"IpodConnect", milliseconds(8000), {0, 1}},
      {"IpodGetFirstItem", milliseconds(4000), {0, 1}},
      {"IpodGetNextItem", milliseconds(4000), {0, 1}},
      {"IpodGetItemName", milliseconds(3000), {0}},
      {"IpodSongPlay", milliseconds(3000), {0}},
      {"IpodSongGetNumElem", milliseconds(1500), {0, 3, 5}},
      {"IpodGetCurrentPlayStatus", milliseconds(1500), {IPOD_STOPPED, IPOD_PLAYING, IPOD_PAUSED}},
      {"IpodDisconnect", milliseconds(2500), {0}},
      {"IpodIsConnect", milliseconds(1), {0, 1}}};
  return known;
}

bool isKept(const Promise& promise, const Call& call) {
  const auto& results = promise.results;
  return call.took <= promise.longest &&
         std::find(results.begin(), results.end(), call.result) != results.end();
}

int valueOf(int (*read)(int*)) {
  int value = kUntouched;
  read(&value);
  return value;
}

int nameOfItem() {
  unsigned short first[64] = {};
  unsigned short second[64] = {};
  return IpodGetItemName(0, first, second, 63);
}

}  // namespace

std::vector<std::string> resultsOf(const Calls& calls) {
  std::vector<std::string> results;
  for (const Call& call : calls)
    results.push_back(call.name + " " + std::to_string(call.result));
  return results;
}

VirtualSession::VirtualSession(std::uint64_t seed)
    : ipod(simulator::Personality{}, simulator::smallLibrary()), world(seed) {
  world.addDevice("IPD1:", cable);
}

std::string VirtualSession::run(const std::function<void()>& host) {
  const SilentOutput silence;
  return world.run(host);
}

Calls VirtualSession::play() {
  Calls calls;
  call(calls, "IpodConnect", IpodConnect);
  call(calls, "IpodGetFirstItem",
       [] { return IpodGetFirstItem(0, IPOD_ARTISTS, 0) != nullptr ? 1 : 0; });
  call(calls, "IpodGetNextItem", [] { return IpodGetNextItem() != nullptr ? 1 : 0; });
  call(calls, "IpodGetItemName", nameOfItem);
  call(calls, "IpodGetFirstItem",
       [] { return IpodGetFirstItem(1, IPOD_TRACKS, 1) != nullptr ? 1 : 0; });
  call(calls, "IpodSongPlay", [] { return IpodSongPlay(0); });
  call(calls, "IpodSongGetNumElem", [] { return valueOf(IpodSongGetNumElem); });
  ipod.announceSampleRate(world.now(), kNewSampleRate);
  Sleep(kRateMilliseconds);
  call(calls, "IpodGetCurrentPlayStatus", [] { return valueOf(IpodGetCurrentPlayStatus); });
  call(calls, "IpodDisconnect", IpodDisconnect);
  call(calls, "IpodIsConnect", IpodIsConnect);
  return calls;
}

void VirtualSession::mend() {
  virtual_platform::disarmAllFailures();
  ipod.faults().clear();
  cable.plug(world.now());
}

void VirtualSession::call(Calls& calls, const std::string& name,
                          const std::function<int()>& exported) {
  const Time start = world.now();
  const int result = exported();
  calls.push_back({name, result, world.now() - start});
}

std::vector<std::string> resultsOfASession() {
  return {"IpodConnect 1",        "IpodGetFirstItem 1",         "IpodGetNextItem 1",
          "IpodGetItemName 0",    "IpodGetFirstItem 1",         "IpodSongPlay 0",
          "IpodSongGetNumElem 3", "IpodGetCurrentPlayStatus 1", "IpodDisconnect 0",
          "IpodIsConnect 0"};
}

std::string findFault(const Calls& calls) {
  for (const Call& call : calls) {
    const auto& known = promises();
    const auto promise = std::find_if(known.begin(), known.end(), [&call](const Promise& each) {
      return each.name == call.name;
    });
    if (promise != known.end() && isKept(*promise, call)) continue;
    const auto took = std::chrono::duration_cast<milliseconds>(call.took).count();
    return call.name + " returned " + std::to_string(call.result) + " after " +
           std::to_string(took) + " ms";
  }
  return "";
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

void warmUp() {
  VirtualSession session(0);
  session.run([&] { findFault(session.play()); });
}

}  // namespace virtual_session
