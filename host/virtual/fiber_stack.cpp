#include "fiber_stack.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#endif

namespace virtual_platform {
namespace {

constexpr std::size_t kGuardSize = 65536;  // at least one page on every processor
constexpr std::size_t kStackSize = 1048576;

/// Never destroyed: the last fiber may be destroyed while the process ends.
std::vector<void*>& spareStacks() {
  static auto& spare = *new std::vector<void*>;
  return spare;
}

void* mapStack() {
  void* const area = mmap(nullptr, kGuardSize + kStackSize, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (area == MAP_FAILED || mprotect(area, kGuardSize, PROT_NONE) != 0) throw std::bad_alloc();
  return static_cast<char*>(area) + kGuardSize;
}

}  // namespace

FiberStack::FiberStack() {
  auto& spare = spareStacks();
  if (spare.empty()) {
    lowest = mapStack();
    return;
  }
  lowest = spare.back();
  spare.pop_back();
}

void FiberStack::forgetFrames([[maybe_unused]] const void* last) {
#if defined(__SANITIZE_ADDRESS__)
  constexpr std::size_t kStillToBeCalled = 4096;  // bytes
  const auto begin = reinterpret_cast<std::uintptr_t>(lowest);
  const auto frame = reinterpret_cast<std::uintptr_t>(last);
  const std::uintptr_t from = std::max(begin, frame - kStillToBeCalled);
  __asan_unpoison_memory_region(reinterpret_cast<void*>(from), begin + kStackSize - from);
#endif
}

FiberStack::~FiberStack() {
  if (!isKept) spareStacks().push_back(lowest);
}

void FiberStack::keep() {
  isKept = true;
#if defined(__SANITIZE_ADDRESS__)
  __lsan_register_root_region(lowest, kStackSize);
#endif
}

std::size_t FiberStack::size() { return kStackSize; }

}  // namespace virtual_platform
