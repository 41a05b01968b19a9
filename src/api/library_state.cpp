#include "api/library_state.h"

#include "base/os_primitives.h"

namespace ipodctl {

// Destroyed in reverse: the lock goes last.
LibraryLock libraryLock;
IpodController ipodController(kUsbLink);
SharedValue<uint8_t> ipodConnected;
SharedValue<uint8_t> ipodHasPlayPause;
SharedValue<uint8_t> ipodPlayDelayFlag;
SharedValue<uint32_t> ipodSampleRate;

LibraryLock::~LibraryLock() {
  if (semaphore != nullptr) semMutexDelete(semaphore);
}

bool LibraryLock::create() {
  if (semaphore != nullptr) return true;
  HANDLE made = nullptr;
  if (!semMutexEnsure(made)) return false;
  HANDLE none = nullptr;
  if (!semaphore.compare_exchange_strong(none, made)) semMutexDelete(made);
  return true;
}

LibraryLockHold::LibraryLockHold() : semaphore(libraryLock.handle()) {
  if (semaphore != nullptr && semMutexTake(semaphore, 0, 0) != 0) semaphore = nullptr;
}

LibraryLockHold::~LibraryLockHold() { release(); }

int LibraryLockHold::release() {
  if (semaphore == nullptr) return 0;
  const int result = semMutexGive(semaphore);
  semaphore = nullptr;
  return result;
}

}  // namespace ipodctl
