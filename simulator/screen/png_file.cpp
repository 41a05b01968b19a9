#include "screen/png_file.h"

#include <png.h>

#include <cstring>
#include <stdexcept>

namespace simulator {

void writePng(const Picture& picture, const std::filesystem::path& file) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = PNG_FORMAT_RGB;
  static_assert(sizeof(Colour) == 3, "a picture's pixels are the bytes that libpng reads");

  std::filesystem::path unfinished = file;
  unfinished += ".part";
  if (png_image_write_to_file(&image, unfinished.c_str(), 0, picture.pixels.data(), 0, nullptr) ==
      0) {
    throw std::runtime_error("cannot write " + file.string() + ": " + image.message);
  }
  std::error_code error;
  std::filesystem::rename(unfinished, file, error);
  if (error) throw std::runtime_error("cannot write " + file.string() + ": " + error.message());
}

}  // namespace simulator
