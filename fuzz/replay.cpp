// A trace, its iPod for a host that errs, its host for an iPod that answers anything, and the model
// that it shows.

#include <algorithm>
#include <string>

#include "device/personality_file.h"
#include "iaptrace/replayed_host.h"
#include "iaptrace/replayed_ipod.h"
#include "iaptrace/shown_personality.h"
#include "support/require.h"
#include "trace/trace_parser.h"

namespace {

using namespace iaptrace;
using simulator::seconds;
using simulator::Time;

constexpr int kMostWakes = 20000;

/// What the host does in addition, or leaves out: a new choice at each call.
class Errors {
 public:
  explicit Errors(uint8_t seed) : state(seed) {}

  unsigned next(unsigned count) {
    state = state * 1103515245 + 12345;
    return state >> 16 & 0x7FFF ? (state >> 16) % count : 0;
  }

 private:
  uint32_t state;
};

/// Plays the iPod. The host does what the trace has, and errs now and then.
class Game {
 public:
  Game(const Plan& steps, uint8_t mode, uint8_t seed)
      : plan(steps), ipod(steps, settingsOf(mode)), errors(seed), isExact(seed == 0) {}

  void play() {
    for (const Step& step : plan) {
      const unsigned error = isExact ? 0 : errors.next(16);
      if (error != 1) doStep(step);
      if (error == 2) doStep(step);
      if (error == 3) ipod.receive(now, Bytes{0x55, 0x02, 0x00, 0x07, 0xF7});
      if (error == 4) ipod.hostCloses(now);
      if (error == 5) ipod.receive(now, simulator::ByteView(step.bytes).prefix(3));
      wait(seconds(error == 6 ? 20 : 2));
    }
    wait(std::chrono::hours(10));
    require(ipod.state() != ReplayedIpod::State::kPlaying, "a replay that does not end");
    const bool isPlayed = ipod.state() == ReplayedIpod::State::kEnded;
    require(isPlayed || !ipod.failure().empty(), "a failure without a reason");
  }

 private:
  static ReplayedIpod::Settings settingsOf(uint8_t mode) {
    ReplayedIpod::Settings settings;
    settings.accuracy = mode % 2 == 0 ? Accuracy::kTolerant : Accuracy::kStrict;
    settings.speed = mode / 2 % 8;
    return settings;
  }

  void doStep(const Step& step) {
    switch (step.kind) {
      case Step::Kind::kHostOpens:
        return ipod.hostOpens(now);
      case Step::Kind::kHostCannotOpen:
        return ipod.hostFailsToOpen(now);
      case Step::Kind::kHostCloses:
        return ipod.hostCloses(now);
      case Step::Kind::kHostSends:
        return ipod.receive(now, step.bytes);
      case Step::Kind::kIpodSends:
      case Step::Kind::kCablePulled:
        return;
    }
  }

  void wait(Time span) {
    const Time end = now + span;
    ipod.takeActions(now);
    for (int wakes = 0; wakes < kMostWakes; ++wakes) {
      const auto wake = ipod.nextWake();
      if (!wake || *wake > end) break;
      now = std::max(now, *wake);
      ipod.takeActions(now);
      const auto next = ipod.nextWake();
      require(!next || *next > now, "a replay whose events do not end");
    }
    now = end;
  }

  const Plan& plan;
  ReplayedIpod ipod;
  Errors errors;
  const bool isExact;
  Time now{0};
};

/// Plays the host. The iPod answers with what it said in the trace, at any time.
void playHost(const Conversation& items, uint8_t mode) {
  ReplayedHost host(items, {static_cast<double>(mode % 4), seconds(2)});
  Time now{0};
  for (const Item& item : items) {
    host.takeActions(now);
    if (item.isFrom(Sender::kIpod)) host.receive(now, item.bytes);
    now += seconds(1);
  }
  for (int wakes = 0; !host.isOver(); ++wakes) {
    require(wakes < kMostWakes, "a host that does not end");
    now = std::max(now, host.nextWake().value_or(now));
    host.takeActions(now);
  }
  host.differences();
}

void showModel(const Conversation& items) {
  const std::string json = personalityJson(shownPersonality(items));
  try {
    simulator::parsePersonality(json);
  } catch (const std::invalid_argument& refused) {
    require(false, refused.what() + std::string(" in ") + json);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
  trace::Trace records;
  try {
    records = trace::parseTrace("# ipodctl-trace 1\n" + text);
  } catch (const trace::ParseError&) {
    return 0;
  }
  for (const std::string& device : trace::devicesOf(records)) {
    const Conversation items = conversationOf(records, device);
    Game(planOf(records, device), data[0], data[1]).play();
    playHost(items, data[0]);
    showModel(items);
  }
  return 0;
}
