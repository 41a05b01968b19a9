#pragma once

#include <functional>
#include <map>
#include <optional>

#include "simulated_time.h"

namespace simulator {

/// What is to be done at which moment. What is due at the same moment is done in the order in which
/// it was asked for.
class Timers {
 public:
  using Action = std::function<void()>;
  using Id = uint64_t;  ///< never 0

  Id at(Time moment, Action action);
  /// Nothing happens when the timer has run or there is none of this id.
  void cancel(Id id);
  void clear() { actions.clear(); }

  std::optional<Time> next() const;
  /// Does what is due at `now` or earlier, what is added meanwhile included.
  void run(Time now);

 private:
  std::map<std::pair<Time, Id>, Action> actions;
  Id lastId = 0;
};

}  // namespace simulator
