#include "support/memory_limit.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> limited{false};
std::atomic<uint32_t> allowedCount{0};
std::atomic<bool> allLater{false};
std::atomic<uint32_t> askedCount{0};
std::atomic<uint32_t> deniedCount{0};
std::atomic<uint32_t> uncheckedCount{0};

void* allocate(std::size_t size) { return std::malloc(size == 0 ? 1 : size); }

void* allocateChecked(std::size_t size) {
  if (!limited) return allocate(size);
  const uint32_t place = askedCount++;
  if (place < allowedCount || (place > allowedCount && !allLater)) return allocate(size);
  ++deniedCount;
  return nullptr;
}

void* allocateUnchecked(std::size_t size) {
  if (limited) ++uncheckedCount;
  void* const memory = allocate(size);
  if (memory == nullptr) std::abort();
  return memory;
}

}  // namespace

MemoryLimit::MemoryLimit(const FailurePoint& point) {
  allowedCount = point.allowed;
  allLater = point.andAllLater;
  askedCount = 0;
  deniedCount = 0;
  uncheckedCount = 0;
  limited = true;
}

MemoryLimit::~MemoryLimit() { limited = false; }

bool MemoryLimit::struck() const { return deniedCount > 0; }

uint32_t MemoryLimit::asked() const { return askedCount; }

uint32_t MemoryLimit::unchecked() const { return uncheckedCount; }

void* operator new(std::size_t size) { return allocateUnchecked(size); }

void* operator new[](std::size_t size) { return allocateUnchecked(size); }

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocateChecked(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocateChecked(size);
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete[](void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
