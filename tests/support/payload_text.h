#pragma once

#include <string>

#include "support/pty_pair.h"

/// Payloads as tests write them: pairs of hexadecimal digits with blanks between, "04 00 18 05".

/// Throws std::invalid_argument for anything else.
Bytes bytesOf(const std::string& payload);

std::string payloadText(const Bytes& bytes);

/// Returns the bytes of a text and the final 00 that iPods send, to be appended to a payload.
std::string textBytes(const std::string& text);
