#pragma once

#include "base/growable_array.h"
#include "base/semaphore.h"

namespace ipodctl {

class Transport;

/// Every live transport of the process. A reader that fails closes them all.
class TransportRegistry {
 public:
  static TransportRegistry& instance();

  /// Enters a transport, once. False without memory or semaphore.
  bool add(Transport* transport);
  void remove(Transport* transport);
  void closeAll();

  /// Releases the registry's lock and the reader locks of all transports: see ReaderLocks.
  void releaseReaderLocks() IPODCTL_NOT_CHECKED;

 private:
  TransportRegistry();

  Semaphore registryGuard;
  GrowableArray<Transport*> transportRegistry IPODCTL_GUARDED_BY(registryGuard);
};

}  // namespace ipodctl
