#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/program_outcome.h"

namespace program_run {

/// One fault of a run.
struct Misbehaviour {
  std::string name;   ///< as ipodsim has it, "lost@04:0018#1", or "pull-gone-from-ipod-120"
  std::string kind;   ///< "lost", "pull"
  bool happensOnce;   ///< it affects a single message
  bool isSurvivable;  ///< a repeated request gets its answer
  Disturb disturb;
};

/// Variants of one fault. Without VIRTUAL_ALL=1 one of each group is tried.
using Group = std::vector<Misbehaviour>;

/// Returns each kind of the simulator's faults in each command of a run like `whole`, once and each
/// time, and pulled cables at places all over the run.
std::vector<Group> misbehavioursOf(const Outcome& whole);

}  // namespace program_run
