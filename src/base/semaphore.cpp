#include "base/semaphore.h"

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

}  // namespace ipodctl
