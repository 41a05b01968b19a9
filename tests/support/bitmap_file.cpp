#include "support/bitmap_file.h"

namespace session {

namespace {

constexpr size_t kHeaderSize = 54;

void append(std::string& bytes, uint32_t value, int count) {
  for (int i = 0; i < count; ++i)
    bytes.push_back(static_cast<char>(value >> 8 * i));
}

bool lookAlike(simulator::Colour a, simulator::Colour b) {
  return a.red >> 3 == b.red >> 3 && a.green >> 2 == b.green >> 2 && a.blue >> 3 == b.blue >> 3;
}

}  // namespace

uint32_t BitmapFile::number(size_t offset) const {
  uint32_t value = 0;
  for (size_t i = 4; i > 0; --i)
    value = value << 8 | static_cast<uint8_t>(bytes.at(offset + i - 1));
  return value;
}

// Rows are stored from the bottom up and padded to whole words. A pixel is blue, green, red.
simulator::Colour BitmapFile::at(int x, int y) const {
  const size_t row = (static_cast<size_t>(width()) * 3 + 3) / 4 * 4;
  const size_t pixel =
      number(10) + row * static_cast<size_t>(height() - 1 - y) + 3 * static_cast<size_t>(x);
  return {static_cast<uint8_t>(bytes.at(pixel + 2)), static_cast<uint8_t>(bytes.at(pixel + 1)),
          static_cast<uint8_t>(bytes.at(pixel))};
}

int differentPixels(const BitmapFile& bitmap, const simulator::Picture& picture, uint16_t left,
                    uint16_t top) {
  int different = 0;
  for (uint16_t y = 0; y < bitmap.height(); ++y) {
    for (uint16_t x = 0; x < bitmap.width(); ++x) {
      const simulator::Colour shown =
          picture.at(static_cast<uint16_t>(left + x), static_cast<uint16_t>(top + y));
      different += lookAlike(bitmap.at(x, y), shown) ? 0 : 1;
    }
  }
  return different;
}

std::string bitmapFile(int32_t width, int32_t height, int bitsPerPixel, const std::string& pixels) {
  std::string bytes = "BM";
  append(bytes, static_cast<uint32_t>(kHeaderSize + pixels.size()), 4);
  append(bytes, 0, 4);
  append(bytes, kHeaderSize, 4);
  append(bytes, 40, 4);
  append(bytes, static_cast<uint32_t>(width), 4);
  append(bytes, static_cast<uint32_t>(height), 4);
  append(bytes, 1, 2);
  append(bytes, static_cast<uint32_t>(bitsPerPixel), 2);
  for (int field = 0; field < 6; ++field)
    append(bytes, 0, 4);
  return bytes + pixels;
}

}  // namespace session
