#include "ipodctl/logo/decoded_png.h"

#include <png.h>

#include <cstring>
#include <stdexcept>

namespace tool {
namespace {

/// A small file can unpack to much more than the memory of the machine.
constexpr uint64_t kMostPixels = 8u << 20;

constexpr char kSignature[] = "\x89PNG\r\n\x1A\n";

/// Releases what libpng has allocated, also after a failure.
struct Decoder {
  Decoder() {
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
  }
  ~Decoder() { png_image_free(&image); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  png_image image;
};

[[noreturn]] void refuse(const png_image& image) {
  throw std::runtime_error(std::string("the PNG is damaged (") + image.message +
                           "); save it again and retry");
}

void requirePng(const std::string& png) {
  if (png.compare(0, sizeof kSignature - 1, kSignature) == 0) return;
  throw std::runtime_error("the picture is not a PNG; convert it to one first");
}

void requireModestSize(const png_image& image) {
  if (uint64_t{image.width} * image.height <= kMostPixels) return;
  throw std::runtime_error("the picture has " + std::to_string(image.width) + "x" +
                           std::to_string(image.height) +
                           " pixels; make it smaller, 8 million pixels are the limit");
}

}  // namespace

DecodedPng decodePng(const std::string& png) {
  requirePng(png);
  Decoder decoder;
  png_image& image = decoder.image;
  if (png_image_begin_read_from_memory(&image, png.data(), png.size()) == 0) refuse(image);
  requireModestSize(image);
  image.format = PNG_FORMAT_RGBA;
  DecodedPng decoded{image.width, image.height, {}};
  decoded.pixels.resize(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, decoded.pixels.data(), 0, nullptr) == 0) refuse(image);
  return decoded;
}

}  // namespace tool
