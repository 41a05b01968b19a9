#include "session/counted_heap.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> live{0};
std::atomic<bool (*)()> refusal{nullptr};

void* allocate(std::size_t size) noexcept {
  void* const memory = std::malloc(size);
  if (memory != nullptr) ++live;
  return memory;
}

void release(void* memory) noexcept {
  if (memory != nullptr) --live;
  std::free(memory);
}

}  // namespace

// The other forms, without alignment, come down to these.
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

void setRefusal(bool (*refuses)()) { refusal = refuses; }

}  // namespace session
