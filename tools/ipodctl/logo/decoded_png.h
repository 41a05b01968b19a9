#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tool {

/// A picture with four bytes a pixel, red, green, blue and opacity, row by row from the top.
struct DecodedPng {
  uint32_t width = 0;
  uint32_t height = 0;
  std::vector<uint8_t> pixels;

  const uint8_t* at(size_t x, size_t y) const { return &pixels[(y * width + x) * 4]; }
};

/// Decodes a PNG of any kind. Throws std::runtime_error with one line for the user.
DecodedPng decodePng(const std::string& png);

}  // namespace tool
