#include "base/semaphore.h"

namespace ipodctl {

Semaphore::~Semaphore() {
  if (exists()) semMutexDelete(handle());
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
  semMutexGive(handle());
  semMutexDelete(handle());
  semaphore = nullptr;
}

}  // namespace ipodctl
