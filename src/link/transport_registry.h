#pragma once

#include "base/growable_array.h"
#include "base/semaphore.h"

namespace ipodctl {

class Transport;

/// All live transports of the process. A reader that fails closes them.
class TransportRegistry {
 public:
  static TransportRegistry& instance();

  /// Adds a transport unless it is in the registry. Returns false without memory or semaphore.
  bool add(Transport* transport);
  void remove(Transport* transport);
  void closeAll();

  /// Releases the registry's lock and the reader locks of all transports: see ReaderLocks.
  /// Not checked: the locks are free or were taken by a thread that is gone.
  void releaseReaderLocks() IPODCTL_NOT_CHECKED;

 private:
  TransportRegistry();

  Semaphore registryGuard;
  GrowableArray<Transport*> transportRegistry IPODCTL_GUARDED_BY(registryGuard);
};

}  // namespace ipodctl
