#pragma once

#include <optional>
#include <string>

#include "link/pty_ipod.h"
#include "screen/live_screen.h"

namespace simulator {

/// What a program waits for. All of it must be true at the same moment.
struct WaitConditions {
  std::optional<PlayState> state;
  std::optional<bool> extended;
  std::optional<bool> accessory;
  std::optional<bool> plugged;
  std::optional<std::string> title;
  std::optional<Time> position;            ///< this one or a later one
  std::optional<uint64_t> screenRevision;  ///< this one or a later one
};

/// The result of a look at the conditions.
struct WaitLook {
  bool isTrue = false;
  /// When to look again, unless the iPod reports a change before.
  Time again{0};
};

/// Looks whether all conditions are true now.
WaitLook lookFor(const WaitConditions& conditions, const PtyIpod& pty, LiveScreen& screen);

}  // namespace simulator
