#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "screen/display_image.h"

namespace session {

/// A 24-bit bitmap file, read without the library's code.
class BitmapFile {
 public:
  explicit BitmapFile(std::string content) : bytes(std::move(content)) {}

  const std::string& content() const { return bytes; }

  int width() const { return static_cast<int>(number(18)); }
  int height() const { return static_cast<int>(number(22)); }
  /// From the left and from the top.
  simulator::Colour at(int x, int y) const;

 private:
  uint32_t number(size_t offset) const;

  const std::string bytes;
};

/// Returns how many pixels of the bitmap differ from the part of the picture that begins at this
/// column and row. The screen's pixels have 5 bits of red and blue and 6 of green.
int differentPixels(const BitmapFile& bitmap, const simulator::Picture& picture, uint16_t left,
                    uint16_t top);

/// Returns a bitmap file with this header, whatever its pixels are.
std::string bitmapFile(int32_t width, int32_t height, int bitsPerPixel, const std::string& pixels);

}  // namespace session
