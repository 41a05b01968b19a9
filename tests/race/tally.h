#pragma once

#include <vector>

#include "support/exports.h"

namespace race {

using exports::allExports;
using exports::Duration;
using exports::Export;
using exports::MadeCall;

/// A summary of one thread's calls, which may be too many to keep.
struct Tally {
  int calls = 0;
  int connections = 0;
  MadeCall slowest;
  std::vector<MadeCall> broken;      ///< with an effect that is not promised
  std::vector<MadeCall> unanswered;  ///< those that surely missed their answer

  void add(const MadeCall& made) {
    ++calls;
    if (made.exported == &allExports().front()) connections += made.effect.result;
    if (made.took >= slowest.took) slowest = made;
    if (!made.isPromised()) broken.push_back(made);
    if (made.surelyMissedItsAnswer()) unanswered.push_back(made);
  }
};

}  // namespace race
