#include <cmath>

#include "screen/pages.h"

namespace simulator {

namespace {

/// Returns a number that is the same on every machine (FNV-1a).
uint32_t hashOf(const std::string& text) {
  uint32_t hash = 2166136261u;
  for (char letter : text)
    hash = (hash ^ static_cast<uint8_t>(letter)) * 16777619u;
  return hash ^ hash >> 15;
}

/// Returns a colour of this hue in degrees, with a medium saturation.
Colour colourOfHue(double hue, double lightness) {
  const double chroma = (1 - std::abs(2 * lightness - 1)) * 0.62;
  const auto part = [&](double offset) {
    const double place = std::fmod(hue / 60 + offset, 6);
    const double level = std::min(std::max(std::abs(place - 3) - 1, 0.0), 1.0);
    return static_cast<uint8_t>(std::lround(255 * (lightness + chroma * (level - 0.5))));
  };
  return {part(0), part(4), part(2)};
}

double hueOf(const std::string& album) { return hashOf(album) % 360; }

}  // namespace

Colour coverColour(const std::string& album) { return colourOfHue(hueOf(album), 0.5); }

void drawCover(Canvas& canvas, Area area, const std::string& album) {
  const double hue = hueOf(album);
  const double side = area.width;
  canvas.fillFromTopToBottom(area, colourOfHue(hue, 0.56), colourOfHue(hue + 24, 0.34));
  const uint32_t variant = hashOf(album + "rings");
  const Point centre{area.left + side * (0.2 + 0.6 * (variant % 7) / 6),
                     area.top + side * (0.55 + 0.4 * (variant / 7 % 5) / 4)};
  for (int ring = 0; ring < 4; ++ring) {
    const Colour colour = colourOfHue(hue + 14 * ring, 0.62 - 0.07 * ring);
    canvas.drawRing(centre, side * (0.75 - 0.17 * ring), side * 0.09, colour, area);
  }
  canvas.drawRing(centre, side * 0.09, side, colourOfHue(hue + 180, 0.72), area);
}

}  // namespace simulator
