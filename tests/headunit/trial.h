#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "device/simulated_ipod.h"
#include "music/built_in_library.h"
#include "virtual/virtual_ipod.h"

/// Runs of the programs that use the library, on the deterministic platform.
namespace headunit_test {

using virtual_platform::Time;

enum class HostProgram { kHeadUnit, kFirstSession };

/// Makes an iPod or its cable misbehave, before a run.
using Disturb = std::function<void(simulator::SimulatedIpod&, virtual_platform::VirtualIpod&)>;

struct Trial {
  HostProgram program = HostProgram::kHeadUnit;
  simulator::Personality model;
  Disturb disturb;
  std::uint64_t seed = 1;
  simulator::MusicLibrary library = simulator::builtInLibrary();
  /// What a person does with the iPod ten times a second; null: nothing.
  void (simulator::SimulatedIpod::*handle)(Time now) = nullptr;
};

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

Outcome run(const Trial& trial);

}  // namespace headunit_test
