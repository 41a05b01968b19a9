// Replays that a test writes by hand.
#pragma once

#include <string>
#include <vector>

#include "iaptrace/replayed_ipod.h"
#include "support/hex.h"
#include "typed_trace.h"

namespace iaptrace {

using simulator::hex;
using simulator::milliseconds;
using simulator::seconds;
using simulator::Time;
using simulator::toHex;

/// RequestiPodName and RequestRemoteUIMode, and their answers.
constexpr char kAskName[] = "55 02 00 07 F7";
constexpr char kName[] = "55 06 00 08 5A 6F 65 00 C4";
constexpr char kAskMode[] = "55 02 00 03 FB";
constexpr char kMode[] = "55 03 00 04 00 F9";

using Doings = std::vector<std::string>;

/// The iPod of a typed trace and its host, with their own time.
class TypedReplay {
 public:
  explicit TypedReplay(const std::string& lines, Accuracy accuracy = Accuracy::kTolerant,
                       double speed = 0)
      : ipod(planOf(trace::parseTrace(traceText(lines)), "IPD1:"), {accuracy, speed, seconds(10)}) {
  }

  /// Returns what the iPod does without time passing.
  Doings take() {
    Doings all;
    for (const ReplayedIpod::Action& action : ipod.takeActions(now))
      all.push_back(textOf(action));
    return all;
  }
  Doings open() {
    ipod.hostOpens(now);
    return take();
  }
  Doings close() {
    ipod.hostCloses(now);
    return take();
  }
  Doings failToOpen() {
    ipod.hostFailsToOpen(now);
    return take();
  }
  Doings say(const std::string& bytes) {
    ipod.receive(now, hex(bytes));
    return take();
  }
  /// Lets the time pass, at each moment at which the iPod has something to do.
  Doings wait(Time span) {
    Doings all;
    const Time end = now + span;
    for (auto wake = ipod.nextWake(); wake && *wake <= end; wake = ipod.nextWake()) {
      now = std::max(now, *wake);
      for (const std::string& one : take())
        all.push_back(one);
    }
    now = end;
    return all;
  }

  Time now{0};
  ReplayedIpod ipod;

 private:
  static std::string textOf(const ReplayedIpod::Action& action) {
    switch (action.kind) {
      case ReplayedIpod::Action::Kind::kOffer:
        return "offer";
      case ReplayedIpod::Action::Kind::kRefuse:
        return "refuse";
      case ReplayedIpod::Action::Kind::kPull:
        return "pull";
      case ReplayedIpod::Action::Kind::kSend:
        break;
    }
    return toHex(action.bytes);
  }
};

}  // namespace iaptrace
