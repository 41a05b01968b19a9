#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "control/wait_conditions.h"
#include "link/replaceable_ipod.h"

namespace simulator {

using SteadyTime = std::chrono::steady_clock::time_point;

/// A request that is answered later.
struct PendingWait {
  WaitConditions conditions;
  SteadyTime deadline;
};

/// The answer to a request line, without the line end; or what it waits for.
struct ControlAnswer {
  std::string line;
  std::optional<PendingWait> wait;
};

/// What programs can say to a simulated iPod: each line is a JSON object whose key "do" names the
/// verb. It is not safe for use by two threads at once.
class ControlVerbs {
 public:
  ControlVerbs(PtyIpod& running, ReplaceableIpod& ipods, LiveScreen& shown)
      : pty(running), replaceable(ipods), screen(shown) {}

  ControlAnswer answer(const std::string& line);
  /// Returns the answer to a request that waits, when there is one; else when to ask again.
  std::optional<std::string> answer(const PendingWait& wait, SteadyTime now, SteadyTime& again);
  /// Returns the answer to a line that is too long.
  static std::string refusalOfLongLine(size_t limit);
  /// Returns the line for a program that cannot connect because too many are connected.
  static std::string refusalOfClient(size_t limit);

 private:
  ControlAnswer run(const std::string& line);

  PtyIpod& pty;
  ReplaceableIpod& replaceable;
  LiveScreen& screen;
};

}  // namespace simulator
