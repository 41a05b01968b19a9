#include "device/timers.h"

#include <algorithm>

namespace simulator {

Timers::Id Timers::at(Time moment, Action action) {
  ++lastId;
  actions.emplace(std::pair(moment, lastId), std::move(action));
  return lastId;
}

void Timers::cancel(Id id) {
  const auto found = std::find_if(actions.begin(), actions.end(),
                                  [id](const auto& each) { return each.first.second == id; });
  if (found != actions.end()) actions.erase(found);
}

std::optional<Time> Timers::next() const {
  if (actions.empty()) return std::nullopt;
  return actions.begin()->first.first;
}

void Timers::run(Time now) {
  while (!actions.empty() && actions.begin()->first.first <= now) {
    const Action action = std::move(actions.begin()->second);
    actions.erase(actions.begin());
    action();
  }
}

}  // namespace simulator
