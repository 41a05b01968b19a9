#include "controller/logo_file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace ipodctl {
namespace {

class HeaderBytes {
 public:
  explicit HeaderBytes(bool mostSignificantFirst) : highByteFirst(mostSignificantFirst) {}

  HeaderBytes& put(uint32_t value, uint32_t size) {
    for (uint32_t i = 0; i < size; ++i) {
      const uint32_t place = highByteFirst ? size - 1 - i : i;
      bytes.push_back(static_cast<uint8_t>(value >> (8 * place)));
    }
    return *this;
  }

  Bytes bytes;

 private:
  bool highByteFirst;
};

}  // namespace

Bytes bitmap(const BitmapHeader& header, const Bytes& pixels) {
  HeaderBytes fields(header.highByteFirst);
  fields.put(0x4D42, 2)
      .put(header.fileSize, 4)
      .put(header.reserved1, 2)
      .put(header.reserved2, 2)
      .put(header.dataOffset, 4)
      .put(header.headerSize, 4)
      .put(header.width, 4)
      .put(header.height, 4)
      .put(header.planes, 2)
      .put(header.bitsPerPixel, 2)
      .put(header.compression, 4)
      .put(header.imageSize, 4)
      .put(header.horizontalResolution, 4)
      .put(header.verticalResolution, 4)
      .put(header.coloursUsed, 4)
      .put(header.importantColours, 4);
  return fields.bytes + pixels;
}

BitmapHeader sized(uint32_t width, uint32_t height) {
  BitmapHeader header;
  header.width = width;
  header.height = height;
  return header;
}

LogoFile::LogoFile(const Bytes& content) : name(testing::TempDir() + "logo-XXXXXX") {
  const int descriptor = mkstemp(name.data());
  std::FILE* const file = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
  if (file == nullptr) std::abort();
  const bool written =
      content.empty() || std::fwrite(content.data(), 1, content.size(), file) == content.size();
  if (std::fclose(file) != 0 || !written) std::abort();
}

LogoFile::~LogoFile() { unlink(name.c_str()); }

}  // namespace ipodctl
