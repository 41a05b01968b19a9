#pragma once

#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "virtual/host.h"

namespace virtual_session {

/// What a call promises, whatever the iPod does.
struct Promise {
  std::string name;                   ///< as a Call's
  std::chrono::milliseconds longest;  ///< with an iPod that falls silent at any moment
  bool (*allows)(const Effect&);      ///< whether it can have such an effect
  bool waitsForOthers = true;         ///< for the calls of other threads that hold the lock
};

using Promises = std::vector<Promise>;

/// Returns the promises of the 35 exports.
const Promises& exportPromises();

/// Returns the promises of the controller's operations.
const Promises& operationPromises();

/// Returns "", or what a call did against its promise: it took too long, returned or wrote an
/// illegal value, wrote outside its buffers, or contradicted earlier calls about the connection. A
/// call may also wait for simultaneous calls of other threads, and for `stall` as long as the
/// device makes it wait.
std::string findFault(const Calls& calls, const Promises& promises, Time stall = Time(0));

/// Returns how long an export may take with an iPod that answers at once: a connection pauses, and
/// a disconnection checks every tenth of a second whether the reader has ended.
Time longestWithAQuickIpod(const Call& call);

/// The longest time for each export.
using LongestTimes = std::map<std::string, Time>;
void keepLongest(LongestTimes& longest, const Calls& calls);

}  // namespace virtual_session
