// The replacement of one text.
#pragma once

#include <cstdint>
#include <vector>

#include "wire/bytes.h"

namespace iaptrace {

/// Replaces visible ASCII by `letter`, and every other character or byte by one of its kind. 00 and
/// control characters stay.
void redactText(uint8_t* text, size_t size, char letter);

/// Replaces what looks like a text among other bytes: at least so many visible characters in a row.
/// Start and sync bytes stay, because frames are looked for in such bytes.
void redactLookalikes(uint8_t* bytes, size_t size, char letter, size_t shortest = 3);

}  // namespace iaptrace
