#include "api/text_output.h"

#include <algorithm>
#include <cstdint>

namespace ipodctl {
namespace {

constexpr unsigned short kPlayAllUnit = 0xFFFF;
constexpr uint32_t kPlayAllUnits = 4;

/// Writes units [start, start + maxChars) of a text of `length` units.
template <class UnitAt>
void writePart(UnitAt unitAt, uint32_t length, uint32_t start, unsigned short* buffer,
               uint32_t maxChars) {
  if (buffer == nullptr || length <= start) return;
  const uint32_t count = std::min(length - start, maxChars);
  for (uint32_t i = 0; i < count; ++i)
    buffer[i] = unitAt(start + i);
}

template <class UnitAt>
void writeUnits(UnitAt unitAt, uint32_t length, const TextBuffers& buffers) {
  if (buffers.maxChars < 1) return;
  const auto maxChars = static_cast<uint32_t>(buffers.maxChars);
  writePart(unitAt, length, 0, buffers.first, maxChars);
  writePart(unitAt, length, maxChars, buffers.second, maxChars);
}

}  // namespace

void writeText(const uint8_t* text, uint32_t length, const TextBuffers& buffers) {
  writeUnits([text](uint32_t i) { return text[i]; }, length, buffers);
}

void writeText(const ByteString& text, const TextBuffers& buffers) {
  writeText(text.text(), text.size(), buffers);
}

void writePlayAllMark(const TextBuffers& buffers) {
  writeUnits([](uint32_t) { return kPlayAllUnit; }, kPlayAllUnits, buffers);
}

}  // namespace ipodctl
