#pragma once

#include <cstdint>

#include "base/text_string.h"

namespace ipodctl {

/// A host's text buffers: up to two of them, null or of `maxChars` 16-bit units each. Every byte of
/// a text becomes one unit; no terminator is written.
struct TextBuffers {
  unsigned short* first;
  unsigned short* second;
  int maxChars;  ///< below 1: nothing is written
};

/// Writes a text's first maxChars bytes into the first buffer and the next maxChars into the
/// second.
void writeText(const uint8_t* text, uint32_t length, const TextBuffers& buffers);
void writeText(const ByteString& text, const TextBuffers& buffers);

/// Writes the mark of the play-all entry, four units 0xFFFF, as if it were a text.
void writePlayAllMark(const TextBuffers& buffers);

}  // namespace ipodctl
