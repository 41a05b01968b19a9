#pragma once

#include "support/patience.h"

namespace session {

/// Calls `condition` until it holds. Returns false if it does not hold in time.
template <class Condition>
bool eventually(Condition condition) {
  for (const host_test::Patience patience; !patience.isOver(); host_test::Patience::pause()) {
    if (condition()) return true;
  }
  return false;
}

}  // namespace session
