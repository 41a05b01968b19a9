#pragma once

#include <cstdint>

#include "device/simulated_ipod.h"
#include "music/built_in_library.h"
#include "support/program_outcome.h"

/// Runs of the programs that use the library, on the deterministic platform.
namespace headunit_test {

using program_run::Disturb;
using program_run::Outcome;
using program_run::Time;

enum class HostProgram { kHeadUnit, kFirstSession };

struct Trial {
  HostProgram program = HostProgram::kHeadUnit;
  simulator::Personality model;
  Disturb disturb;
  std::uint64_t seed = 1;
  simulator::MusicLibrary library = simulator::builtInLibrary();
  /// What a person does with the iPod ten times a second; null: nothing.
  void (simulator::SimulatedIpod::*handle)(Time now) = nullptr;
};

Outcome run(const Trial& trial);

}  // namespace headunit_test
