#pragma once

#include <functional>
#include <string>
#include <vector>

#include "headunit/trial.h"

namespace headunit_test {

/// One thing that goes wrong in a run.
struct Misbehaviour {
  std::string name;   ///< as ipodsim has it, "lost@04:0018#1", or "pull-gone-from-ipod-120"
  std::string kind;   ///< "lost", "pull"
  bool happensOnce;   ///< to a single message
  bool isSurvivable;  ///< whoever asks again gets what was asked for
  Disturb disturb;
};

/// Ways in which the same thing goes wrong. Of each group a slice tries one.
using Group = std::vector<Misbehaviour>;

/// Each kind of fault that the simulator has, in each command of a run like `whole`: once, and each
/// time. And the cable pulled at places all over the run.
std::vector<Group> misbehavioursOf(const Outcome& whole);

}  // namespace headunit_test
