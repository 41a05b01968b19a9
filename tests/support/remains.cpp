#include "support/remains.h"

#include <ostream>

namespace session {

Remains remains() { return {openThings(), liveObjects(), liveBytes()}; }

bool operator==(const Remains& left, const Remains& right) {
  return left.open == right.open && left.objects == right.objects && left.bytes == right.bytes;
}

std::ostream& operator<<(std::ostream& out, const Remains& remains) {
  return out << remains.open << ", " << remains.objects << " objects of " << remains.bytes
             << " bytes";
}

}  // namespace session
