#include "screen/screen.h"

#include <algorithm>

namespace simulator {

namespace {

constexpr Colour kTop{38, 50, 66};
constexpr Colour kBottom{10, 14, 20};

uint8_t blend(uint8_t from, uint8_t to, unsigned step, unsigned steps) {
  return static_cast<uint8_t>((from * (steps - step) + to * step) / steps);
}

Colour background(uint16_t y, uint16_t height) {
  return {blend(kTop.red, kBottom.red, y, height), blend(kTop.green, kBottom.green, y, height),
          blend(kTop.blue, kBottom.blue, y, height)};
}

void draw(Picture& screen, const Picture& image) {
  const uint16_t width = std::min(image.width, screen.width);
  const uint16_t height = std::min(image.height, screen.height);
  const size_t left = (screen.width - width) / 2u;
  for (size_t y = 0; y < height; ++y) {
    const auto row = image.pixels.begin() + static_cast<std::ptrdiff_t>(y * image.width);
    std::copy_n(row, width,
                screen.pixels.begin() + static_cast<std::ptrdiff_t>(y * screen.width + left));
  }
}

}  // namespace

Picture renderScreen(uint16_t width, uint16_t height, const std::optional<Picture>& image) {
  Picture screen{width, height, {}};
  screen.pixels.reserve(size_t{width} * height);
  for (uint16_t y = 0; y < height; ++y) {
    screen.pixels.insert(screen.pixels.end(), width, background(y, height));
  }
  if (image) draw(screen, *image);
  return screen;
}

}  // namespace simulator
