#include "controller/live_messages.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>

#include "lingo/lingo_message.h"

namespace ipodctl {
namespace {

/// Room for more messages than any test has at once.
constexpr uint32_t kMostFollowed = 1024;

std::array<const void*, kMostFollowed> followed = {};
uint32_t placesUsed = 0;

void* allocate(std::size_t size) { return std::malloc(size == 0 ? 1 : size); }

void* allocateOrAbort(std::size_t size) {
  void* const memory = allocate(size);
  if (memory == nullptr) std::abort();
  return memory;
}

void forget(const void* memory) {
  const auto end = followed.begin() + placesUsed;
  const auto place = std::find(followed.begin(), end, memory);
  if (memory != nullptr && place != end) *place = nullptr;
}

void release(void* memory) {
  forget(memory);
  std::free(memory);
}

}  // namespace

void followMessage(const LingoMessage* message) {
  const auto free = std::find(followed.begin(), followed.end(), nullptr);
  if (free == followed.end()) std::abort();
  *free = message;
  placesUsed = std::max(placesUsed, static_cast<uint32_t>(free - followed.begin()) + 1);
}

uint32_t liveMessages() {
  return kMostFollowed -
         static_cast<uint32_t>(std::count(followed.begin(), followed.end(), nullptr));
}

}  // namespace ipodctl

using namespace ipodctl;

void* operator new(std::size_t size) { return allocateOrAbort(size); }

void* operator new[](std::size_t size) { return allocateOrAbort(size); }

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }

void operator delete(void* memory) noexcept { release(memory); }

void operator delete[](void* memory) noexcept { release(memory); }

void operator delete(void* memory, std::size_t) noexcept { release(memory); }

void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
