#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "virtual/host.h"

namespace virtual_session {

/// What is known of a call, whatever the iPod does.
struct Promise {
  std::string name;                   ///< as a Call's
  std::chrono::milliseconds longest;  ///< with an iPod that falls silent at any moment
  bool (*allows)(const Effect&);      ///< whether it can have such an effect
  bool waitsForOthers = true;         ///< for the calls of other threads that hold the lock
};

using Promises = std::vector<Promise>;

/// Those of the 35 exports.
const Promises& exportPromises();

/// Those of the controller's operations.
const Promises& operationPromises();

/// Empty, or what a call did that it may not: took too long, returned or wrote what it never does,
/// touched what it was not given, or contradicted the calls before about the connection. A call may
/// wait besides for those of other threads that were made meanwhile, and for so long as the device
/// keeps it waiting.
std::string findFault(const Calls& calls, const Promises& promises, Time stall = Time(0));

/// How long an export may take with an iPod that answers at once: a connection pauses, and a
/// disconnection looks every tenth of a second whether the reader has ended.
Time longestWithAQuickIpod(const Call& call);

/// The longest time for each export.
using LongestTimes = std::map<std::string, Time>;
void keepLongest(LongestTimes& longest, const Calls& calls);

}  // namespace virtual_session
