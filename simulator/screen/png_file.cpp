#include "screen/png_file.h"

#include <png.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace simulator {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const fs::path& file, const std::string& why) {
  throw std::runtime_error("cannot write " + file.string() + ": " + why);
}

fs::path unfinishedOf(const fs::path& file) {
  fs::path unfinished = file;
  unfinished += ".part";
  return unfinished;
}

png_image descriptionOf(const Picture& picture) {
  static_assert(sizeof(Colour) == 3, "a picture's pixels are the bytes that libpng reads");
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  image.width = picture.width;
  image.height = picture.height;
  image.format = PNG_FORMAT_RGB;
  return image;
}

}  // namespace

void requirePlaceForPng(const fs::path& file) {
  std::error_code ignored;
  const fs::path folder = file.has_parent_path() ? file.parent_path() : ".";
  if (!fs::is_directory(folder, ignored)) refuse(file, "there is no folder " + folder.string());
  if (fs::is_directory(file, ignored)) refuse(file, "it is a folder");
  const fs::path unfinished = unfinishedOf(file);
  errno = 0;
  if (!std::ofstream(unfinished)) refuse(file, std::generic_category().message(errno));
  fs::remove(unfinished, ignored);
}

Bytes encodePng(const Picture& picture) {
  png_image image = descriptionOf(picture);
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  Bytes bytes(size);
  if (png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.pixels.data(), 0,
                                nullptr) == 0) {
    throw std::runtime_error(image.message);
  }
  bytes.resize(size);
  return bytes;
}

void writePng(const Picture& picture, const fs::path& file) {
  png_image image = descriptionOf(picture);
  const fs::path unfinished = unfinishedOf(file);
  if (png_image_write_to_file(&image, unfinished.c_str(), 0, picture.pixels.data(), 0, nullptr) ==
      0) {
    refuse(file, image.message);
  }
  std::error_code error;
  fs::rename(unfinished, file, error);
  if (error) refuse(file, error.message());
}

}  // namespace simulator
