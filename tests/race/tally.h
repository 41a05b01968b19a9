#pragma once

#include <vector>

#include "support/exports.h"

namespace race {

using exports::allExports;
using exports::Duration;
using exports::Export;
using exports::MadeCall;

/// What is kept of one thread's calls: they may be too many to be kept all.
struct Tally {
  int calls = 0;
  int connections = 0;
  MadeCall slowest;
  std::vector<MadeCall> broken;      ///< those that returned what they do not promise
  std::vector<MadeCall> unanswered;  ///< those that surely missed their answers

  void add(const MadeCall& made) {
    ++calls;
    if (made.exported == &allExports().front()) connections += made.effect.result;
    if (made.took >= slowest.took) slowest = made;
    if (!made.isPromised()) broken.push_back(made);
    if (made.surelyMissedItsAnswer()) unanswered.push_back(made);
  }
};

}  // namespace race
