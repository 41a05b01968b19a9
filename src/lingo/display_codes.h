#pragma once

#include <cstdint>

namespace ipodctl {

/// A pixel format of the iPod's screen.
enum class PixelFormat : uint8_t {
  kGrey2Bits = 1,
  kRgb565LowByteFirst = 2,
  kRgb565HighByteFirst = 3,
};

/// The largest picture that the iPod's screen shows, in pixels, and the first of its formats.
struct ImageLimits {
  uint16_t width = 0;
  uint16_t height = 0;
  PixelFormat format{};
};

}  // namespace ipodctl
