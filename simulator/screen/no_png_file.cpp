// The small simulator: it needs no library that writes pictures.
#include <stdexcept>

#include "screen/png_file.h"

namespace simulator {

namespace {

constexpr char kWithoutPictures[] =
    "this ipodsim makes no pictures; use the ipodsim of a complete build";

}  // namespace

/// It is not about the place, so the caller must not propose another one.
void requirePlaceForPng(const std::filesystem::path&) {
  throw std::invalid_argument(std::string("--screen: ") + kWithoutPictures);
}

Bytes encodePng(const Picture&) { throw std::runtime_error(kWithoutPictures); }

void writePng(const Picture&, const std::filesystem::path&) {
  throw std::runtime_error(kWithoutPictures);
}

}  // namespace simulator
