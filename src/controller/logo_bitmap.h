#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

namespace ipodctl {

/// The head unit's logo, converted for the iPod's screen: RGB 565 with the low byte first.
///
/// If the width is not a multiple of 4, the iPod gets the next lower multiple and one pixel more.
/// The other pixels at the right edge are dropped.
class LogoBitmap {
 public:
  /// Reads a 24-bit uncompressed Windows bitmap. Its rows are read without padding, so only widths
  /// that are a multiple of 4 give the picture that was drawn. Returns false when the file is
  /// missing, is not such a bitmap, is cut short or has impossible sizes; then there is no picture.
  bool read(const char* fileName);

  uint32_t width() const { return pixelWidth; }
  uint32_t height() const { return pixelHeight; }
  uint32_t rowBytes() const { return bytesPerRow; }

  /// Returns the `rowBytes()` bytes of a row, null when there is no such row.
  const uint8_t* row(uint32_t fromTop) const;

 private:
  struct Header;

  bool readFrom(std::FILE* file);
  bool convert(const uint8_t* bitmapPixels);

  uint32_t pixelWidth = 0;
  uint32_t pixelHeight = 0;
  uint32_t bytesPerRow = 0;
  std::unique_ptr<uint8_t[]> pixels;  ///< bottom row first, as the file has them
};

}  // namespace ipodctl
