#pragma once

#include <functional>
#include <string>
#include <vector>

#include "virtual/virtual_session.h"

/// Single faults at places all over a script, a choice of what the other sweeps try everywhere.
namespace virtual_session {

constexpr int kStallOfADisturbance = 500;  // ms; how long a writer waits in one of them

struct Disturbance {
  std::string name;
  std::string slot;  ///< of two with the same one a session can have one only
  std::function<void(VirtualSession&)> strike;
  std::function<bool(VirtualSession&)> hasStruck;  ///< since then
};

std::vector<Disturbance> disturbancesOf(const Script& script);

}  // namespace virtual_session
