#pragma once

#include <functional>
#include <map>
#include <optional>

#include "simulated_time.h"

namespace simulator {

/// Actions with their times. Actions of the same time run in the order in which they were added.
class Timers {
 public:
  using Action = std::function<void()>;
  using Id = uint64_t;  ///< never 0

  Id at(Time moment, Action action);
  /// Removes a timer. Does nothing when it has run or there is none of this id.
  void cancel(Id id);
  void clear() { actions.clear(); }

  std::optional<Time> next() const;
  /// Runs what is due at `now` or earlier, including what is added meanwhile.
  void run(Time now);

 private:
  std::map<std::pair<Time, Id>, Action> actions;
  Id lastId = 0;
};

}  // namespace simulator
