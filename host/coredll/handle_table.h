// The process's open handles.
#ifndef COREDLL_HANDLE_TABLE_H
#define COREDLL_HANDLE_TABLE_H

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <unordered_map>

#include "kernel_object.h"
#include "last_error.h"

namespace coredll {

// An object lives while its handle is open or a call is in it.
class HandleTable {
 public:
  // May throw std::bad_alloc.
  HANDLE open(std::shared_ptr<KernelObject> object);

  // Null when the handle is not open.
  std::shared_ptr<KernelObject> find(HANDLE handle) const;

  // Takes the handle out and returns its object; null when it is not open.
  std::shared_ptr<KernelObject> remove(HANDLE handle);

  std::size_t size() const;

 private:
  mutable std::mutex mutex;
  // Values only ever go up, so that a stale handle never meets another object. Guarded by mutex.
  std::uintptr_t nextValue = 0x100;
  std::unordered_map<HANDLE, std::shared_ptr<KernelObject>> objects;
};

// The table is never destroyed: threads may still use it while the process ends.
HandleTable& handles();

// The handle's object; null, with the last error set, when there is none or it is of another kind.
template <typename Kind>
std::shared_ptr<Kind> objectOf(HANDLE handle) {
  auto object = std::dynamic_pointer_cast<Kind>(handles().find(handle));
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}

// The handle that `make` returns; `failure`, with the last error set, when memory runs out in it.
template <typename Make>
HANDLE newHandle(HANDLE failure, Make make) noexcept {
  try {
    return make();
  } catch (const std::bad_alloc&) {
    return fail(ERROR_NOT_ENOUGH_MEMORY, failure);
  }
}

}  // namespace coredll

#endif
