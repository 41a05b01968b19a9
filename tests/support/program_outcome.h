// What a run of a host's program on the deterministic platform shows.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "device/simulated_ipod.h"
#include "virtual/virtual_ipod.h"

namespace program_run {

using virtual_platform::Time;

/// Makes an iPod or its cable misbehave, before a run.
using Disturb = std::function<void(simulator::SimulatedIpod&, virtual_platform::VirtualIpod&)>;

struct Outcome {
  std::string failure;             ///< why the run did not end; empty: it ended
  int status = -1;                 ///< the program's exit status
  Time took{0};                    ///< until the program's end
  std::vector<std::string> lines;  ///< what the program and the library printed
  /// Whether the iPod answered a question of the test after the last one of the program.
  bool answersAtTheEnd = false;
  std::size_t struck = 0;         ///< how often a fault happened
  std::size_t bytes[2] = {0, 0};  ///< that passed, by direction
  std::vector<simulator::Traffic> traffic;

  std::size_t bytesFrom(virtual_platform::Direction direction) const {
    return bytes[static_cast<std::size_t>(direction)];
  }
};

}  // namespace program_run
