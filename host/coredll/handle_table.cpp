#include "handle_table.h"

#include <desk.h>

#include <utility>

namespace coredll {

HANDLE HandleTable::open(std::shared_ptr<KernelObject> object) {
  constexpr std::uintptr_t kStep = 4;
  const std::lock_guard lock(mutex);
  HANDLE handle = reinterpret_cast<HANDLE>(nextValue);
  objects.emplace(handle, std::move(object));
  nextValue += kStep;
  return handle;
}

std::shared_ptr<KernelObject> HandleTable::find(HANDLE handle) const {
  const std::lock_guard lock(mutex);
  const auto found = objects.find(handle);
  return found == objects.end() ? nullptr : found->second;
}

std::shared_ptr<KernelObject> HandleTable::remove(HANDLE handle) {
  const std::lock_guard lock(mutex);
  const auto node = objects.extract(handle);
  return node ? std::move(node.mapped()) : nullptr;
}

std::size_t HandleTable::size() const {
  const std::lock_guard lock(mutex);
  return objects.size();
}

HandleTable& handles() {
  static HandleTable& table = *new HandleTable;
  return table;
}

}  // namespace coredll

BOOL WINAPI CloseHandle(HANDLE object) {
  const auto closed = coredll::handles().remove(object);
  if (!closed) return coredll::fail(ERROR_INVALID_HANDLE, FALSE);
  closed->close();
  return TRUE;
}

unsigned deskOpenHandles() { return static_cast<unsigned>(coredll::handles().size()); }
