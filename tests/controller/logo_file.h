#pragma once

#include <cstdint>
#include <string>

#include "support/message_bytes.h"

namespace ipodctl {

/// The header of a bitmap file; by default of a picture of 4 x 1 pixels with 24 bits.
struct BitmapHeader {
  bool highByteFirst = false;  ///< begins with "MB" instead of "BM"
  uint32_t fileSize = 66;
  uint16_t reserved1 = 0;
  uint16_t reserved2 = 0;
  uint32_t dataOffset = 54;
  uint32_t headerSize = 40;
  uint32_t width = 4;
  uint32_t height = 1;
  uint16_t planes = 1;
  uint16_t bitsPerPixel = 24;
  uint32_t compression = 0;
  uint32_t imageSize = 0;
  uint32_t horizontalResolution = 0;
  uint32_t verticalResolution = 0;
  uint32_t coloursUsed = 0;
  uint32_t importantColours = 0;
};

/// A bitmap file: the header's 54 bytes, then the pixels (blue, green, red; the bottom row first).
Bytes bitmap(const BitmapHeader& header, const Bytes& pixels);

/// The header of a picture of this size.
BitmapHeader sized(uint32_t width, uint32_t height);

/// A file that lives as long as this object.
class LogoFile {
 public:
  explicit LogoFile(const Bytes& content);
  ~LogoFile();
  LogoFile(const LogoFile&) = delete;
  LogoFile& operator=(const LogoFile&) = delete;

  const char* path() const { return name.c_str(); }

 private:
  std::string name;
};

}  // namespace ipodctl
