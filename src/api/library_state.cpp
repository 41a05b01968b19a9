#include "api/library_state.h"

namespace ipodctl {

// Destroyed in reverse order: the lock last.
Semaphore libraryLock;
IpodController ipodController(kUsbLink);
SharedValue<uint8_t> ipodConnected;
SharedValue<uint8_t> ipodHasPlayPause;
SharedValue<uint8_t> ipodPlayDelayFlag;
SharedValue<uint32_t> ipodSampleRate;

LibraryLockHold::LibraryLockHold() : held(libraryLock.exists() && libraryLock.take(0, 0)) {}

LibraryLockHold::~LibraryLockHold() { release(); }

int LibraryLockHold::release() {
  if (!held) return 0;
  held = false;
  return libraryLock.give();
}

}  // namespace ipodctl
