#include "handle_table.h"

#include <desk.h>

#include <type_traits>

namespace coredll {

HandleTable processHandles;
static_assert(std::is_trivially_destructible_v<HandleTable>, "the table is never destroyed");

HANDLE HandleTable::open(std::shared_ptr<KernelObject> object) {
  HandleSlot& slot = takeFree();
  ++openHandles;
  return reinterpret_cast<HANDLE>(slot.open(std::move(object)));
}

HandleSlot* HandleTable::enter(HANDLE handle, unsigned kinds) {
  const auto bits = reinterpret_cast<HandleBits>(handle);
  HandleSlot* const slot = slotOf(bits);
  if (!slot || !slot->enter(bits)) return nullptr;
  return slot->held().isOneOf(kinds) ? slot : refuse(*slot);
}

HandleSlot* HandleTable::refuse(HandleSlot& slot) {
  leave(slot);
  return nullptr;
}

Use<KernelObject> HandleTable::close(HANDLE handle) {
  const auto bits = reinterpret_cast<HandleBits>(handle);
  HandleSlot* const slot = slotOf(bits);
  if (!slot || !slot->close(bits)) return Use<KernelObject>();
  --openHandles;
  return Use<KernelObject>(slot);
}

/// Makes slots and adds them to the free ones. The first handle with the index 0 is not used: the
/// lower half of a handle is a thread's id, which is never 0.
void HandleTable::addChunk() {
  if (chunkCount == chunks.size()) throw std::bad_alloc();
  Chunk* const chunk = new Chunk;
  for (std::size_t i = kChunkSize; i-- > (chunkCount == 0 ? 1 : 0);) {
    (*chunk)[i].index = chunkCount * kChunkSize + i;
    (*chunk)[i].nextFree = std::exchange(firstFree, &(*chunk)[i]);
  }
  chunks[chunkCount++].store(chunk, std::memory_order_release);
}

HandleSlot& HandleTable::takeFree() {
  const std::lock_guard lock(mutex);
  if (firstFree == nullptr) addChunk();
  HandleSlot& slot = *firstFree;
  firstFree = slot.nextFree;
  return slot;
}

void HandleTable::recycle(HandleSlot& slot) {
  // Destroyed after the lock is released: the object's destructor may take time.
  const std::shared_ptr<KernelObject> object = slot.removeObject();
  if (!slot.canBeReused()) return;
  const std::lock_guard lock(mutex);
  slot.nextFree = std::exchange(firstFree, &slot);
}

}  // namespace coredll

BOOL WINAPI CloseHandle(HANDLE object) {
  const auto closed = coredll::handles().close(object);
  if (!closed) return coredll::fail(ERROR_INVALID_HANDLE, FALSE);
  closed->close();
  return TRUE;
}

unsigned deskOpenHandles() { return static_cast<unsigned>(coredll::handles().size()); }
