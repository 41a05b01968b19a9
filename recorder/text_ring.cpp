#include "recorder/text_ring.h"

#include <cstring>

namespace recorder {

bool TextRing::append(const char* text, uint32_t count) {
  if (count > room()) return false;
  const uint32_t place = appended.load(std::memory_order_relaxed);
  const uint32_t beforeEnd = size - place;
  const uint32_t first = count < beforeEnd ? count : beforeEnd;
  std::memcpy(begin + place, text, first);
  std::memcpy(begin, text + first, count - first);
  appended.store(moved(place, count), std::memory_order_release);
  return true;
}

TextRing::Piece TextRing::first() const {
  const uint32_t place = taken.load(std::memory_order_relaxed);
  const uint32_t end = appended.load(std::memory_order_acquire);
  return {begin + place, end >= place ? end - place : size - place};
}

void TextRing::remove(uint32_t count) {
  taken.store(moved(taken.load(std::memory_order_relaxed), count), std::memory_order_release);
}

}  // namespace recorder
