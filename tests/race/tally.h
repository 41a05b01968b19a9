#pragma once

#include <vector>

#include "support/export_calls.h"

namespace race {

/// What is kept of one thread's calls: they may be too many to be kept all.
struct Tally {
  int calls = 0;
  int connections = 0;
  MadeCall slowest;
  std::vector<MadeCall> broken;      ///< those that returned what they do not promise
  std::vector<MadeCall> unanswered;  ///< those that surely missed their answers

  void add(const MadeCall& made) {
    ++calls;
    if (made.call == &exportCalls().front()) connections += made.outcome.result;
    if (made.call != nullptr && made.took >= slowest.took) slowest = made;
    if (!made.outcome.promised) broken.push_back(made);
    if (!made.outcome.answered) unanswered.push_back(made);
  }
};

}  // namespace race
