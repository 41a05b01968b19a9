// The process's open handles.
#pragma once

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

/// An object lives while its handle is open or a call is in it.
class HandleTable {
 public:
  /// Returns a new handle. Throws std::bad_alloc.
  HANDLE open(std::shared_ptr<KernelObject> object);

  /// Returns null when the handle is not open.
  std::shared_ptr<KernelObject> find(HANDLE handle) const;

  /// Removes the handle and returns its object; null when it is not open.
  std::shared_ptr<KernelObject> remove(HANDLE handle);

  std::size_t size() const;

 private:
  mutable std::mutex mutex;
  /// Values only increase, so that a stale handle never refers to another object. Guarded by mutex.
  std::uintptr_t nextValue = 0x100;
  std::unordered_map<HANDLE, std::shared_ptr<KernelObject>> objects;
};

/// The table is never destroyed: threads may still use it while the process ends.
HandleTable& handles();

/// Returns the handle's object. Returns null, with the last error set, when there is none or it is
/// of another kind.
template <typename Kind>
std::shared_ptr<Kind> objectOf(HANDLE handle) {
  auto object = std::dynamic_pointer_cast<Kind>(handles().find(handle));
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}

/// Returns the handle that `make` returns. Returns `failure`, with the last error set, when `make`
/// has no memory.
template <typename Make>
HANDLE newHandle(HANDLE failure, Make make) noexcept {
  try {
    return make();
  } catch (const std::bad_alloc&) {
    return fail(ERROR_NOT_ENOUGH_MEMORY, failure);
  }
}

}  // namespace coredll
