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

/// How long others can have kept the library lock from a call.
Time longestWait(const Call& call, const Calls& calls, const Promises& promises) {
  return std::accumulate(calls.begin(), calls.end(), Time(0), [&](Time sum, const Call& other) {
    const Promise* const promise = overlap(call, other) ? promiseOf(other, promises) : nullptr;
    return promise != nullptr ? sum + promise->longest : sum;
  });
}

bool isKept(const Call& call, const Calls& calls, const Promises& promises) {
  const Promise* const promise = promiseOf(call, promises);
  if (promise == nullptr || !promise->allows(call) || !call.isIntact) return false;
  return call.took <= promise->longest ||
         call.took <= promise->longest + longestWait(call, calls, promises);
}

std::string complaint(const Call& call) {
  const auto took = std::chrono::duration_cast<milliseconds>(call.took).count();
  return resultsOf({call}).front() + " after " + std::to_string(took) + " ms" +
         (call.isIntact ? "" : ", and wrote where it may not");
}

}  // namespace

std::string findFault(const Calls& calls, const Promises& promises) {
  const auto broken = std::find_if(
      calls.begin(), calls.end(), [&](const Call& call) { return !isKept(call, calls, promises); });
  return broken != calls.end() ? complaint(*broken) : "";
}

void keepLongest(LongestTimes& longest, const Calls& calls) {
  for (const Call& call : calls) {
    Time& known = longest[exportOf(call.name)];
    known = std::max(known, call.took);
  }
}

}  // namespace virtual_session
