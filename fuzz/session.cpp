// A whole session: the host's calls on up to four threads, the iPod's bytes, the cable and the
// platform, all as the input says. Whatever happens, every call ends in time with a result that it
// promises, the next session succeeds, and nothing stays open.
//
// The input: a seed for the order of the threads, and then the steps of a Script. The lane is the
// thread; an operation below 35 is an export, one from there on a disturbance.

#include <ipodctl.h>

#include <array>
#include <string>
#include <vector>

#include "session/disturbances.h"
#include "session/host_calls.h"
#include "session/hostile_cable.h"
#include "support/require.h"
#include "support/script.h"
#include "virtual/virtual_session.h"

namespace {

using std::chrono::milliseconds;
using virtual_platform::Time;
using virtual_session::VirtualSession;

using Steps = std::vector<Script::Step>;

constexpr size_t kLanes = 4;
constexpr size_t kMostSteps = 200;

/// What a call may last beside others. The group steps ask for a name of every track that they were
/// told of, a second for each when the answers do not come.
constexpr Time kLongestCall = milliseconds(200000);
constexpr Time kLongestGroupStep = milliseconds(10000000);
constexpr uint32_t kMostTracksOfAGroupStep = 300;

class Scenario {
 public:
  explicit Scenario(Script script) : session(script.byte()), cable(session.cable) {
    session.world.addDevice("IPD1:", cable);
    for (size_t i = 0; i < kMostSteps; ++i) {
      const auto step = script.step();
      if (!step) break;
      add(*step);
    }
    if (hasGroupStep) cable.limitCounts(kMostTracksOfAGroupStep);
  }

  void play() {
    const std::string failure = session.run([this] {
      for (size_t lane = 1; lane < kLanes; ++lane)
        start(lane);
      follow(lanes[0]);
      while (lanesRunning > 0)
        Sleep(10);
      playWell();
    });
    require(failure.empty(), failure);
  }

 private:
  static bool isExport(const Script::Step& step) {
    return step.operation % (kExports + kDisturbances) < kExports;
  }

  void add(Script::Step step) {
    step.operation = static_cast<uint8_t>(step.operation % (kExports + kDisturbances));
    if (isExport(step) && isGroupStep(step.operation, step.arguments)) hasGroupStep = true;
    lanes[step.lane].push_back(step);
  }

  void start(size_t lane) {
    if (lanes[lane].empty()) return;
    ++lanesRunning;
    session.world.spawn([this, lane] {
      follow(lanes[lane]);
      --lanesRunning;
    });
  }

  void follow(const Steps& steps) {
    for (const Script::Step& step : steps) {
      if (isExport(step)) {
        callInTime(step);
      } else {
        disturb(static_cast<uint8_t>(step.operation - kExports), step.arguments, session, cable);
      }
    }
  }

  void callInTime(const Script::Step& step) {
    const Time begin = session.world.now();
    callExport(step.operation, step.arguments);
    const Time took = session.world.now() - begin;
    require(took <= (hasGroupStep ? kLongestGroupStep : kLongestCall),
            std::string(exportName(step.operation)) + " lasted too long");
  }

  /// The platform works again, and an iPod that is well is plugged.
  void playWell() {
    cable.leave();
    session.mend();
    IpodDisconnect();
    IpodSetSameIpod(0);
    const virtual_session::Calls calls = session.play();
    require(virtual_session::findFault(calls).empty(), virtual_session::findFault(calls));
    for (size_t i = 0; i < calls.size(); ++i) {
      require(resultsOf(calls)[i] == virtual_session::resultsOfASession()[i],
              "afterwards, " + resultsOf(calls)[i]);
    }
  }

  VirtualSession session;
  HostileCable cable;
  std::array<Steps, kLanes> lanes;
  bool hasGroupStep = false;
  unsigned lanesRunning = 0;
};

/// Has everybody make what they keep for good.
bool begin() {
  prepareFailures();
  Scenario(Script{}).play();
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool hasBegun = begin();
  const virtual_session::OpenThings before = virtual_session::openThings();
  if (hasBegun) Scenario(Script(data, size)).play();
  const virtual_session::OpenThings after = virtual_session::openThings();
  require(after.handles == before.handles, "handles stay open");
  require(after.threads == before.threads, "threads stay");
  require(after.heapObjects == before.heapObjects, "memory stays");
  return 0;
}
