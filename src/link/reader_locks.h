#pragma once

#include <cstdint>

#include "base/semaphore.h"

namespace ipodctl {

/// The locks of one transport that a reader thread can hold, for the case that the reader is
/// killed.
///
/// When a process ends, the system ends all other threads before it detaches the libraries. A
/// reader can be anywhere then, also where it holds a lock, and the destruction of the transports
/// needs the locks. A reader holds its own queue's and handler table's lock for a few steps. A
/// reader that fails closes all live transports: it holds the registry's lock and, one after the
/// other, each transport's queue lock and device lock. It can hold the senders' lock, too, but
/// senders give up after a second.
///
/// Therefore the destruction of a transport starts with Transport::releaseLocksOfKilledReader,
/// which releases the registry's lock and the locks of all live transports. Nothing else runs then.
/// A lock that is free stays free.
class ReaderLocks {
 public:
  void add(Semaphore& lock) { locks[count++] = &lock; }

  /// Not checked: another thread has taken the locks.
  void release() IPODCTL_NOT_CHECKED;

 private:
  static constexpr uint32_t kMostLocks = 3;  ///< of the queue, the handler table and the device

  Semaphore* locks[kMostLocks] = {};
  uint32_t count = 0;
};

}  // namespace ipodctl
