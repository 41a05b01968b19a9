#include "support/counted_heap.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> live{0};
std::atomic<long> liveSize{0};
std::atomic<bool (*)()> refusal{nullptr};

void count(void* memory, long sign) noexcept {
  if (memory == nullptr) return;
  live += sign;
  liveSize += sign * static_cast<long>(malloc_usable_size(memory));
}

void* allocate(std::size_t size) noexcept {
  void* const memory = std::malloc(size);
  count(memory, 1);
  return memory;
}

void release(void* memory) noexcept {
  count(memory, -1);
  std::free(memory);
}

}  // namespace

// The other forms without alignment call these.
void* operator new(std::size_t size) {
  void* const memory = allocate(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  bool (*const refuses)() = refusal;
  if (refuses != nullptr && refuses()) return nullptr;
  return allocate(size == 0 ? 1 : size);
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return operator new(size, std::nothrow);
}
void operator delete(void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }

namespace session {

long liveObjects() { return live; }

long liveBytes() { return liveSize; }

void setRefusal(bool (*refuses)()) { refusal = refuses; }

}  // namespace session
