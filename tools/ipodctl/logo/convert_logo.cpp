#include "ipodctl/logo/convert_logo.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "ipodctl/logo/decoded_png.h"

namespace tool {
namespace {

constexpr unsigned kAlignment = 4;
constexpr unsigned kPixelSize = 3;
constexpr size_t kHeaderSize = 54;

struct Size {
  unsigned width;
  unsigned height;
};

unsigned aligned(unsigned width) { return (width + kAlignment - 1) / kAlignment * kAlignment; }

/// Returns the largest size of this shape that fits; never one that is larger than the picture.
Size fitted(const DecodedPng& picture, Size most) {
  const uint64_t width = picture.width;
  const uint64_t height = picture.height;
  if (width <= most.width && height <= most.height) return {picture.width, picture.height};
  const bool isWide = width * most.height >= height * most.width;
  const uint64_t numerator = isWide ? most.width : most.height;
  const uint64_t denominator = isWide ? width : height;
  const auto scaled = [=](uint64_t side) {
    const uint64_t rounded = (side * numerator + denominator / 2) / denominator;
    return static_cast<unsigned>(std::max<uint64_t>(rounded, 1));
  };
  return {std::min(scaled(width), most.width), std::min(scaled(height), most.height)};
}

/// Where an output pixel begins, and how much of each source pixel it covers: positions are counted
/// in parts of a source pixel, `targets` parts to each.
class Coverage {
 public:
  Coverage(uint64_t target, uint64_t numberOfSources, uint64_t numberOfTargets)
      : begin(target * numberOfSources), end(begin + numberOfSources), targets(numberOfTargets) {}

  size_t first() const { return begin / targets; }
  size_t last() const { return (end - 1) / targets; }
  uint64_t of(size_t source) const {
    return std::min(end, (source + 1) * targets) - std::max(begin, source * targets);
  }

 private:
  uint64_t begin;
  uint64_t end;
  uint64_t targets;
};

using Colour = std::array<uint8_t, kPixelSize>;  // red, green, blue

/// Returns the mean colour of the part of the picture that a pixel of the logo covers.
Colour meanColour(const DecodedPng& picture, const Coverage& columns, const Coverage& rows) {
  std::array<uint64_t, kPixelSize> sums{};
  uint64_t area = 0;
  for (size_t y = rows.first(); y <= rows.last(); ++y) {
    for (size_t x = columns.first(); x <= columns.last(); ++x) {
      const uint8_t* const pixel = picture.at(x, y);
      const uint64_t weight = columns.of(x) * rows.of(y);
      area += weight;
      for (size_t i = 0; i < kPixelSize; ++i)
        sums[i] += weight * pixel[i] * pixel[3];
    }
  }
  const uint64_t whole = std::max<uint64_t>(area, 1) * 255;
  Colour colour{};
  for (size_t i = 0; i < kPixelSize; ++i)
    colour[i] = static_cast<uint8_t>((sums[i] + whole / 2) / whole);
  return colour;
}

void append16(std::string& bytes, unsigned number) {
  bytes += static_cast<char>(number);
  bytes += static_cast<char>(number >> 8);
}

void append32(std::string& bytes, size_t number) {
  append16(bytes, static_cast<unsigned>(number & 0xFFFF));
  append16(bytes, static_cast<unsigned>(number >> 16));
}

std::string header(Size size) {
  constexpr size_t kInformationSize = 40;
  constexpr size_t kPixelsPerMetre = 2835;  // 72 a inch
  const size_t pixelBytes = size_t{size.width} * size.height * kPixelSize;
  std::string bytes = "BM";
  append32(bytes, kHeaderSize + pixelBytes);
  append32(bytes, 0);
  append32(bytes, kHeaderSize);
  append32(bytes, kInformationSize);
  append32(bytes, size.width);
  append32(bytes, size.height);
  append16(bytes, 1);
  append16(bytes, 8 * kPixelSize);
  append32(bytes, 0);  // not compressed
  append32(bytes, pixelBytes);
  append32(bytes, kPixelsPerMetre);
  append32(bytes, kPixelsPerMetre);
  append32(bytes, 0);
  append32(bytes, 0);
  return bytes;
}

void appendRow(std::string& bytes, const DecodedPng& picture, Size size, unsigned row) {
  const unsigned padding = aligned(size.width) - size.width;
  const unsigned left = padding / 2;
  bytes.append(size_t{left} * kPixelSize, '\0');
  const Coverage rows(row, picture.height, size.height);
  for (unsigned x = 0; x < size.width; ++x) {
    const Colour colour = meanColour(picture, Coverage(x, picture.width, size.width), rows);
    bytes += static_cast<char>(colour[2]);
    bytes += static_cast<char>(colour[1]);
    bytes += static_cast<char>(colour[0]);
  }
  bytes.append(size_t{padding - left} * kPixelSize, '\0');
}

}  // namespace

std::string convertLogo(const std::string& png, unsigned maxWidth, unsigned maxHeight) {
  const Size most{maxWidth / kAlignment * kAlignment, maxHeight};
  if (most.width == 0 || most.height == 0) {
    throw std::runtime_error("the iPod shows no pictures; connect another model");
  }
  const DecodedPng picture = decodePng(png);
  const Size size = fitted(picture, most);
  std::string bitmap = header({aligned(size.width), size.height});
  for (unsigned row = size.height; row > 0; --row)
    appendRow(bitmap, picture, size, row - 1);
  return bitmap;
}

}  // namespace tool
