#include "base/semaphore.h"

#include "base/os_primitives.h"

namespace ipodctl {

Semaphore::~Semaphore() {
  if (exists()) semMutexDelete(semaphore);
}

bool Semaphore::ensure() {
  if (exists()) return true;
  HANDLE made = nullptr;
  if (!semMutexEnsure(made)) return false;
  HANDLE none = nullptr;
  if (!semaphore.compare_exchange_strong(none, made)) semMutexDelete(made);
  return true;
}

void Semaphore::releaseAndClose() {
  semMutexGive(semaphore);
  semMutexDelete(semaphore);
  semaphore = nullptr;
}

bool Semaphore::take(uint32_t nanoseconds, uint32_t seconds) {
  return semMutexTake(semaphore, nanoseconds, seconds) == 0;
}

bool Semaphore::tryTake() { return semMutexTryLock(semaphore) == 0; }

int Semaphore::give() { return semMutexGive(semaphore); }

bool Semaphore::await(uint32_t nanoseconds, uint32_t seconds) {
  return semMutexTake(semaphore, nanoseconds, seconds) == 0;
}

void Semaphore::signal() { semMutexGive(semaphore); }

void Semaphore::reset() { semMutexTryLock(semaphore); }

SemaphoreHold::SemaphoreHold(Semaphore& lock) : held(lock) { semMutexTake(held.handle(), 0, 0); }

SemaphoreHold::~SemaphoreHold() { held.give(); }

}  // namespace ipodctl
