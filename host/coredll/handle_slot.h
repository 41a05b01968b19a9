// The place of one object in the handle table.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

#include "kernel_object.h"

namespace coredll {

/// A handle as a number. From the highest bit: the generation of its slot, the index of the slot,
/// and two bits that are 0.
using HandleBits = std::uintptr_t;

constexpr unsigned kIndexShift = 2;
constexpr HandleBits kIndexMask = 0xffff;
constexpr HandleBits kGenerationStep = (kIndexMask + 1) << kIndexShift;
constexpr HandleBits kGenerationMask = ~(kGenerationStep - 1);

/// A slot serves one object after another. Each has another generation, so that a stale handle is
/// recognised.
class HandleSlot {
 public:
  /// Puts an object into the empty slot and returns its handle.
  HandleBits open(std::shared_ptr<KernelObject> newObject) {
    object = std::move(newObject);
    const HandleBits generation = (state.load() & kGenerationMask) + kGenerationStep;
    state.store(generation | kOpen);
    return generation | index << kIndexShift;
  }

  /// Begins a use of the object. Returns false when the handle is not open.
  bool enter(HandleBits handle) { return change(handle, 1); }

  /// Closes the handle and begins a use. Returns false when the handle is not open.
  bool close(HandleBits handle) { return change(handle, 1 - kOpen); }

  /// Ends a use. Returns true when it was the last one of a closed handle: the object can then be
  /// removed.
  bool leave() {
    constexpr HandleBits kLastUse = 1;
    return (state.fetch_sub(1, std::memory_order_acq_rel) & ~kGenerationMask) == kLastUse;
  }

  /// Empties the slot.
  std::shared_ptr<KernelObject> removeObject() { return std::move(object); }

  /// Returns false when the slot has no generation left, so that it can never be used again.
  bool canBeReused() const { return (state.load() & kGenerationMask) != kGenerationMask; }

  /// For a caller with a use of the object.
  KernelObject& held() const { return *object; }

  HandleBits index = 0;            ///< set once, before the first open()
  HandleSlot* nextFree = nullptr;  ///< guarded by the table's mutex

 private:
  /// Set while the handle is open. The bits below count the uses.
  static constexpr HandleBits kOpen = kGenerationStep >> 1;

  bool change(HandleBits handle, HandleBits difference) {
    const HandleBits wanted = (handle & kGenerationMask) | kOpen;
    HandleBits found = state.load(std::memory_order_relaxed);
    do {
      if ((found & (kGenerationMask | kOpen)) != wanted) return false;
    } while (!state.compare_exchange_weak(found, found + difference, std::memory_order_acq_rel,
                                          std::memory_order_relaxed));
    return true;
  }

  /// The generation, kOpen, and the number of uses: a lookup compares and counts in one step.
  std::atomic<HandleBits> state{0};
  std::shared_ptr<KernelObject> object;
};

}  // namespace coredll
