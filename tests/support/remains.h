#pragma once

#include <iosfwd>

#include "support/counted_heap.h"
#include "support/session_ipod.h"

namespace session {

/// What a program holds after it has used the library: for programs with the counted heap.
struct Remains {
  OpenThings open;
  long objects = 0;
  long bytes = 0;
};

Remains remains();
bool operator==(const Remains& left, const Remains& right);
std::ostream& operator<<(std::ostream& out, const Remains& remains);

}  // namespace session
