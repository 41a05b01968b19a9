// The process's open handles.
#pragma once

#include <windows.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "handle_slot.h"
#include "kernel_object.h"
#include "last_error.h"

namespace coredll {

template <typename Kind>
class Use;

/// An object lives while its handle is open or a call is in it.
class HandleTable {
 public:
  constexpr HandleTable() = default;
  HandleTable(const HandleTable&) = delete;
  HandleTable& operator=(const HandleTable&) = delete;

  /// Returns a new handle. Throws std::bad_alloc, also when as many handles are open as can be.
  HANDLE open(std::shared_ptr<KernelObject> object);

  /// Begins a use of the handle's object. Returns null when the handle is not open or its object is
  /// not one of these kinds.
  HandleSlot* enter(HANDLE handle, unsigned kinds);

  /// Closes the handle and returns its object; none when it is not open.
  Use<KernelObject> close(HANDLE handle);

  /// Ends a use.
  void leave(HandleSlot& slot) {
    if (slot.leave()) recycle(slot);
  }

  std::size_t size() const { return openHandles; }

 private:
  static constexpr std::size_t kChunkSize = 256;
  using Chunk = std::array<HandleSlot, kChunkSize>;

  /// Returns null for a value that cannot be a handle.
  HandleSlot* slotOf(HandleBits handle) const {
    if (handle % (1u << kIndexShift) != 0) return nullptr;
    const std::size_t index = handle >> kIndexShift & kIndexMask;
    Chunk* const chunk = chunks[index / kChunkSize].load(std::memory_order_acquire);
    return chunk ? &(*chunk)[index % kChunkSize] : nullptr;
  }

  HandleSlot* refuse(HandleSlot& slot);
  void addChunk();
  HandleSlot& takeFree();
  void recycle(HandleSlot& slot);

  /// Chunks are never freed, so that a stale handle can be looked up at any time.
  std::array<std::atomic<Chunk*>, (kIndexMask + 1) / kChunkSize> chunks{};
  std::atomic<std::size_t> openHandles{0};
  std::mutex mutex;
  std::size_t chunkCount = 0;       ///< guarded by mutex
  HandleSlot* firstFree = nullptr;  ///< guarded by mutex
};

/// Never destroyed: threads may still use it while the process ends.
extern HandleTable processHandles;

inline HandleTable& handles() { return processHandles; }

/// Keeps a handle's object alive during a call. Empty when there is none.
template <typename Kind>
class Use {
 public:
  explicit Use(HandleSlot* entered = nullptr) : slot(entered) {}
  Use(Use&& other) noexcept : slot(std::exchange(other.slot, nullptr)) {}
  Use& operator=(Use&& other) = delete;
  ~Use() {
    if (slot) handles().leave(*slot);
  }

  explicit operator bool() const { return slot != nullptr; }
  Kind& operator*() const { return static_cast<Kind&>(slot->held()); }
  Kind* operator->() const { return &**this; }

 private:
  HandleSlot* slot;
};

/// Returns the handle's object. Returns none, with the last error set, when there is none or it is
/// of another kind.
template <typename Kind>
Use<Kind> objectOf(HANDLE handle) {
  HandleSlot* const slot = handles().enter(handle, Kind::kKinds);
  if (!slot) SetLastError(ERROR_INVALID_HANDLE);
  return Use<Kind>(slot);
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
