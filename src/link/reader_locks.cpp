#include "link/reader_locks.h"

namespace ipodctl {

void ReaderLocks::release() {
  for (uint32_t i = 0; i < count; ++i)
    locks[i]->give();
}

}  // namespace ipodctl
