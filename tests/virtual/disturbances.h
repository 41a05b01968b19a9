#pragma once

#include <functional>
#include <string>
#include <vector>

#include "virtual/virtual_session.h"

/// Single faults at places all over a script: a selection of what the other sweeps try everywhere.
namespace virtual_session {

constexpr int kStallOfADisturbance = 500;  // ms; how long a writer waits in a stall

struct Disturbance {
  std::string name;
  std::string slot;  ///< a session can have only one fault of each slot
  std::function<void(VirtualSession&)> strike;
  std::function<bool(VirtualSession&)> hasStruck;  ///< since the fault was set
};

std::vector<Disturbance> disturbancesOf(const Script& script);

}  // namespace virtual_session
