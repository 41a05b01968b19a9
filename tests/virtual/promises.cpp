#include "virtual/promises.h"

#include <algorithm>
#include <numeric>

namespace virtual_session {
namespace {

using std::chrono::milliseconds;

const Promise* promiseOf(const Call& call, const Promises& promises) {
  const auto found = std::find_if(promises.begin(), promises.end(),
                                  [&](const Promise& each) { return each.name == call.name; });
  return found != promises.end() ? &*found : nullptr;
}

bool overlap(const Call& one, const Call& other) {
  return one.thread != other.thread && one.start < other.start + other.took &&
         other.start < one.start + one.took;
}

/// Returns how long other calls can have kept the library lock from a call.
Time longestWait(const Call& call, const Calls& calls, const Promises& promises) {
  return std::accumulate(calls.begin(), calls.end(), Time(0), [&](Time sum, const Call& other) {
    const Promise* const promise = overlap(call, other) ? promiseOf(other, promises) : nullptr;
    return promise != nullptr ? sum + promise->longest : sum;
  });
}

bool isKept(const Call& call, const Calls& calls, const Promises& promises, Time stall) {
  const Promise* const promise = promiseOf(call, promises);
  if (promise == nullptr || !promise->allows(call) || !call.isIntact) return false;
  const Time longest = promise->longest + stall;
  return call.took <= longest ||
         (promise->waitsForOthers && call.took <= longest + longestWait(call, calls, promises));
}

std::string complaint(const Call& call) {
  const auto took = std::chrono::duration_cast<milliseconds>(call.took).count();
  return resultsOf({call}).front() + " after " + std::to_string(took) + " ms" +
         (call.isIntact ? "" : ", and wrote where it may not");
}

/// A connection exists from the call that reports it to the next one that closes it. The state
/// before the first such call is unknown.
const Call* contradiction(const Calls& calls) {
  int isConnected = -1;
  for (const Call& call : calls) {
    if (call.name == "IpodDisconnect") isConnected = 0;
    if (call.name == "IpodConnect" && call.result == 1) isConnected = 1;
    if (call.name != "IpodIsConnect") continue;
    if (isConnected != -1 && call.result != isConnected) return &call;
    isConnected = call.result;
  }
  return nullptr;
}

bool isOneThreads(const Calls& calls) {
  return std::all_of(calls.begin(), calls.end(),
                     [&](const Call& call) { return call.thread == calls.front().thread; });
}

}  // namespace

std::string findFault(const Calls& calls, const Promises& promises, Time stall) {
  const auto broken = std::find_if(calls.begin(), calls.end(), [&](const Call& call) {
    return !isKept(call, calls, promises, stall);
  });
  if (broken != calls.end()) return complaint(*broken);
  const Call* const wrong = isOneThreads(calls) ? contradiction(calls) : nullptr;
  return wrong != nullptr ? complaint(*wrong) + ", against the calls before" : "";
}

Time longestWithAQuickIpod(const Call& call) {
  const bool pauses = call.name == "IpodConnect" || call.name == "IpodDisconnect";
  return milliseconds(pauses ? 101 : 1);
}

void keepLongest(LongestTimes& longest, const Calls& calls) {
  for (const Call& call : calls) {
    Time& known = longest[exportOf(call.name)];
    known = std::max(known, call.took);
  }
}

}  // namespace virtual_session
