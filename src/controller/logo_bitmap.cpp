#include "controller/logo_bitmap.h"

#include <algorithm>
#include <new>

namespace ipodctl {
namespace {

constexpr uint32_t kHeaderSize = 54;
constexpr uint16_t kMarker = 0x4D42;         // "BM"
constexpr uint16_t kSwappedMarker = 0x424D;  // "MB": every number in the file is big-endian
constexpr uint32_t kBitsPerPixel = 24;
constexpr uint32_t kBitmapPixelSize = 3;  // blue, green, red
constexpr uint32_t kScreenPixelSize = 2;
constexpr uint32_t kRowAlignment = 4;
constexpr uint64_t kLargestFile = 0x7FFFFFFF;  // the largest file position on the device

/// Reads the header's numbers one after the other.
class FieldReader {
 public:
  explicit FieldReader(const uint8_t* header) : cursor(header) {
    const uint16_t marker = read16();
    valid = marker == kMarker || marker == kSwappedMarker;
    swapped = marker == kSwappedMarker;
  }

  bool markerValid() const { return valid; }

  uint16_t read16() {
    const uint8_t first = *cursor++;
    const uint8_t second = *cursor++;
    return static_cast<uint16_t>(swapped ? first << 8 | second : second << 8 | first);
  }

  uint32_t read32() {
    const uint32_t first = read16();
    const uint32_t second = read16();
    return swapped ? first << 16 | second : second << 16 | first;
  }

  void skip(uint32_t bytes) { cursor += bytes; }

 private:
  const uint8_t* cursor;
  bool swapped = false;
  bool valid = false;
};

std::unique_ptr<uint8_t[]> allocate(uint32_t size) {
  return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[size]());
}

/// Returns the file's size in bytes, at most kLargestFile; 0 when it cannot be read.
uint64_t sizeOf(std::FILE* file) {
  if (std::fseek(file, 0, SEEK_END) != 0) return 0;
  const long size = std::ftell(file);
  return size > 0 ? std::min(static_cast<uint64_t>(size), kLargestFile) : 0;
}

void convertPixel(const uint8_t* bitmapPixel, uint8_t* screenPixel) {
  const uint8_t blue = bitmapPixel[0];
  const uint8_t green = bitmapPixel[1];
  const uint8_t red = bitmapPixel[2];
  screenPixel[0] = static_cast<uint8_t>((green & 0x1C) << 3 | blue >> 3);
  screenPixel[1] = static_cast<uint8_t>((red & 0xF8) | green >> 5);
}

}  // namespace

struct LogoBitmap::Header {
  bool markerValid;
  uint32_t dataOffset;
  int32_t width;
  int32_t height;
  uint32_t bitsPerPixel;

  explicit Header(const uint8_t* bytes) {
    FieldReader fields(bytes);
    markerValid = fields.markerValid();
    fields.skip(sizeof(uint32_t) + 2 * sizeof(uint16_t));  // file size, reserved words
    dataOffset = fields.read32();
    fields.skip(sizeof(uint32_t));  // header size
    width = static_cast<int32_t>(fields.read32());
    height = static_cast<int32_t>(fields.read32());
    const uint32_t planes = fields.read16();
    bitsPerPixel = planes * fields.read16();
  }

  bool usable() const {
    return markerValid && bitsPerPixel == kBitsPerPixel && width > 0 && height > 0;
  }

  uint64_t pixelBytes() const {
    return uint64_t{kBitmapPixelSize} * static_cast<uint32_t>(width) *
           static_cast<uint32_t>(height);
  }

  uint64_t pixelsEnd() const { return dataOffset + pixelBytes(); }
};

bool LogoBitmap::read(const char* fileName) {
  pixels.reset();
  std::FILE* file = std::fopen(fileName, "rb");
  if (file == nullptr) return false;
  const bool complete = readFrom(file);
  std::fclose(file);
  return complete;
}

bool LogoBitmap::readFrom(std::FILE* file) {
  uint8_t headerBytes[kHeaderSize];
  if (std::fread(headerBytes, 1, kHeaderSize, file) != kHeaderSize) return false;
  const Header header(headerBytes);
  if (!header.usable() || header.pixelsEnd() > sizeOf(file)) return false;

  const auto size = static_cast<uint32_t>(header.pixelBytes());
  const std::unique_ptr<uint8_t[]> bitmapPixels = allocate(size);
  if (!bitmapPixels) return false;
  if (std::fseek(file, static_cast<long>(header.dataOffset), SEEK_SET) != 0) return false;
  if (std::fread(bitmapPixels.get(), 1, size, file) != size) return false;

  pixelWidth = static_cast<uint32_t>(header.width);
  pixelHeight = static_cast<uint32_t>(header.height);
  return convert(bitmapPixels.get());
}

bool LogoBitmap::convert(const uint8_t* bitmapPixels) {
  const uint32_t surplus = pixelWidth % kRowAlignment;
  const uint32_t rowPixels = pixelWidth - surplus + (surplus != 0 ? 1 : 0);
  bytesPerRow = kScreenPixelSize * rowPixels;
  pixels = allocate(bytesPerRow * pixelHeight);
  if (!pixels) return false;
  for (uint32_t y = 0; y < pixelHeight; ++y) {
    const uint8_t* source = bitmapPixels + size_t{y} * pixelWidth * kBitmapPixelSize;
    uint8_t* target = pixels.get() + size_t{y} * bytesPerRow;
    for (uint32_t x = 0; x < rowPixels; ++x) {
      convertPixel(source, target);
      source += kBitmapPixelSize;
      target += kScreenPixelSize;
    }
  }
  return true;
}

const uint8_t* LogoBitmap::row(uint32_t fromTop) const {
  if (!pixels || fromTop >= pixelHeight) return nullptr;
  return pixels.get() + size_t{pixelHeight - 1 - fromTop} * bytesPerRow;
}

}  // namespace ipodctl
