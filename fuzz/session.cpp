// A whole session: the input decides about the host's calls on up to four threads, the iPod's
// bytes, the cable and the platform. In any case every call ends in time with a promised result,
// the next session succeeds, and nothing stays open.
//
// The input: a seed for the order of the threads, and then the steps of a Script. The lane is the
// thread; an operation below 35 is an export, one from there on a disturbance.

#include <desk.h>
#include <ipodctl.h>

#include <array>
#include <string>
#include <vector>

#include "session/disturbances.h"
#include "session/host_calls.h"
#include "session/scene.h"
#include "support/counted_heap.h"
#include "support/require.h"
#include "support/script.h"
#include "virtual/call.h"

namespace {

using std::chrono::milliseconds;
using virtual_platform::Time;

using Steps = std::vector<Script::Step>;

constexpr size_t kLanes = 4;
constexpr size_t kMostSteps = 200;

/// The longest time of a call during other calls. The group steps request a name of every track, a
/// second for each when the iPod does not answer.
constexpr Time kLongestCall = milliseconds(200000);
constexpr Time kLongestGroupStep = milliseconds(10000000);
constexpr uint32_t kMostTracksOfAGroupStep = 300;

/// Plays a session without disturbances.
void playWell() {
  IpodDisconnect();
  IpodSetSameIpod(0);
  require(IpodConnect() == 1, "afterwards there is no connection");
  require(IpodGetFirstItem(0, IPOD_ARTISTS, 0) != nullptr, "afterwards there is no list");
  require(IpodGetNextItem() != nullptr, "afterwards the list is empty");
  unsigned short name[4] = {};
  IpodGetItemName(0, name, nullptr, 4);
  require(name[0] == 'A' && name[3] == 'a', "afterwards the first artist has another name");
  require(IpodGetFirstItem(1, IPOD_TRACKS, 1) != nullptr, "afterwards there are no tracks");
  IpodSongPlay(0);
  int tracks = -1;
  IpodSongGetNumElem(&tracks);
  require(tracks == 3, "afterwards there are other tracks");
  int status = -1;
  IpodGetCurrentPlayStatus(&status);
  require(status == IPOD_PLAYING, "afterwards nothing plays");
  IpodDisconnect();
  require(IpodIsConnect() == 0, "afterwards the connection stays");
}

class Scenario {
 public:
  explicit Scenario(Script script) : scene(script.byte()) {
    for (size_t i = 0; i < kMostSteps; ++i) {
      const auto step = script.step();
      if (!step) break;
      add(*step);
    }
    if (hasGroupStep) scene.hostile.limitCounts(kMostTracksOfAGroupStep);
  }

  void play() {
    const std::string failure = scene.world.run([this] {
      for (size_t lane = 1; lane < kLanes; ++lane)
        start(lane);
      follow(lanes[0]);
      virtual_platform::await([] { return std::string("the other lanes"); }, std::nullopt,
                              [this] { return lanesRunning == 0; });
      mend(scene);
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
    scene.world.spawn([this, lane] {
      follow(lanes[lane]);
      --lanesRunning;
    });
  }

  void follow(const Steps& steps) {
    for (const Script::Step& step : steps) {
      if (isExport(step)) {
        callInTime(step);
      } else {
        disturb(static_cast<uint8_t>(step.operation - kExports), step.arguments, scene);
      }
    }
  }

  void callInTime(const Script::Step& step) {
    const Time begin = scene.world.now();
    callExport(step.operation, step.arguments);
    const Time took = scene.world.now() - begin;
    require(took <= (hasGroupStep ? kLongestGroupStep : kLongestCall),
            [&] { return std::string(exportName(step.operation)) + " lasted too long"; });
  }

  Scene scene;
  std::array<Steps, kLanes> lanes;
  bool hasGroupStep = false;
  unsigned lanesRunning = 0;
};

/// Runs a first session, after which all permanent objects exist.
bool begin() {
  prepareFailures();
  Scenario(Script{}).play();
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool hasBegun = begin();
  const unsigned handles = deskOpenHandles();
  const unsigned threads = deskRunningThreads();
  const long objects = session::liveObjects();
  if (hasBegun) Scenario(Script(data, size)).play();
  require(deskOpenHandles() == handles, "handles stay open");
  require(deskRunningThreads() == threads, "threads stay");
  require(session::liveObjects() == objects, "memory stays");
  return 0;
}
