#include "screen/canvas.h"

#include <algorithm>
#include <cmath>

namespace simulator {

namespace {

/// A pixel is sampled at this many places in each direction.
constexpr int kSamples = 4;
constexpr unsigned kOpaque = 255;

uint8_t mixedByte(uint8_t from, uint8_t to, unsigned alpha) {
  return static_cast<uint8_t>((from * (kOpaque - alpha) + to * alpha + kOpaque / 2) / kOpaque);
}

double distance(Point a, Point b) { return std::hypot(a.x - b.x, a.y - b.y); }

double crossProduct(Point origin, Point a, Point b) {
  return (a.x - origin.x) * (b.y - origin.y) - (a.y - origin.y) * (b.x - origin.x);
}

double distanceToLine(Point place, Point from, Point to) {
  const double length = distance(from, to);
  if (length == 0) return distance(place, from);
  const double along =
      ((place.x - from.x) * (to.x - from.x) + (place.y - from.y) * (to.y - from.y)) /
      (length * length);
  const double part = std::clamp(along, 0.0, 1.0);
  return distance(place, {from.x + part * (to.x - from.x), from.y + part * (to.y - from.y)});
}

/// Returns the whole pixels that a range touches.
Area boxAround(Point a, Point b, double margin) {
  const int left = static_cast<int>(std::floor(std::min(a.x, b.x) - margin));
  const int top = static_cast<int>(std::floor(std::min(a.y, b.y) - margin));
  const int right = static_cast<int>(std::ceil(std::max(a.x, b.x) + margin));
  const int bottom = static_cast<int>(std::ceil(std::max(a.y, b.y) + margin));
  return {left, top, right - left, bottom - top};
}

Area common(Area a, Area b) {
  const int left = std::max(a.left, b.left);
  const int top = std::max(a.top, b.top);
  return {left, top, std::max(0, std::min(a.right(), b.right()) - left),
          std::max(0, std::min(a.bottom(), b.bottom()) - top)};
}

}  // namespace

Colour mixed(Colour from, Colour to, double part) {
  const auto alpha = static_cast<unsigned>(std::lround(std::clamp(part, 0.0, 1.0) * kOpaque));
  return {mixedByte(from.red, to.red, alpha), mixedByte(from.green, to.green, alpha),
          mixedByte(from.blue, to.blue, alpha)};
}

Canvas::Canvas(uint16_t width, uint16_t height, bool hasColours)
    : picture{width, height, std::vector<Colour>(size_t{width} * height)}, coloured(hasColours) {}

void Canvas::blend(int x, int y, Colour colour, unsigned alpha) {
  if (x < 0 || y < 0 || x >= width() || y >= height()) return;
  Colour& pixel = picture.pixels[static_cast<size_t>(y) * picture.width + static_cast<size_t>(x)];
  if (!coloured) alpha = alpha > kOpaque / 2 ? kOpaque : 0;
  pixel = {mixedByte(pixel.red, colour.red, alpha), mixedByte(pixel.green, colour.green, alpha),
           mixedByte(pixel.blue, colour.blue, alpha)};
}

void Canvas::fill(Area area, Colour colour) { fillFromTopToBottom(area, colour, colour); }

void Canvas::fillFromTopToBottom(Area area, Colour top, Colour bottom) {
  const Area inside = visible(area);
  for (int y = inside.top; y < inside.bottom(); ++y) {
    const Colour colour = mixed(top, bottom, (y - area.top + 0.5) / area.height);
    for (int x = inside.left; x < inside.right(); ++x)
      blend(x, y, colour, kOpaque);
  }
}

void Canvas::fillRounded(Area area, double radius, Colour colour) {
  const double round = std::min(radius, std::min(area.width, area.height) / 2.0);
  const Point first{area.left + round, area.top + round};
  const Point last{area.right() - round, area.bottom() - round};
  fillShape(area, colour, [&](Point place) {
    const Point nearest{std::clamp(place.x, first.x, last.x), std::clamp(place.y, first.y, last.y)};
    return distance(place, nearest) <= round;
  });
}

void Canvas::fillTriangle(Point a, Point b, Point c, Colour colour) {
  const Point least{std::min({a.x, b.x, c.x}), std::min({a.y, b.y, c.y})};
  const Point most{std::max({a.x, b.x, c.x}), std::max({a.y, b.y, c.y})};
  fillShape(boxAround(least, most, 0), colour, [&](Point place) {
    const double sides[] = {crossProduct(a, b, place), crossProduct(b, c, place),
                            crossProduct(c, a, place)};
    return (sides[0] >= 0 && sides[1] >= 0 && sides[2] >= 0) ||
           (sides[0] <= 0 && sides[1] <= 0 && sides[2] <= 0);
  });
}

void Canvas::drawRing(Point centre, double radius, double lineWidth, Colour colour, Area within) {
  fillShape(common(boxAround(centre, centre, radius), within), colour, [&](Point place) {
    const double away = distance(place, centre);
    return away <= radius && away >= radius - lineWidth;
  });
}

void Canvas::drawLine(Point from, Point to, double lineWidth, Colour colour) {
  const double half = lineWidth / 2;
  fillShape(boxAround(from, to, half), colour,
            [&](Point place) { return distanceToLine(place, from, to) <= half; });
}

void Canvas::copy(const Picture& image, int left, int top) {
  const Area inside = visible({left, top, image.width, image.height});
  for (int y = inside.top; y < inside.bottom(); ++y) {
    for (int x = inside.left; x < inside.right(); ++x) {
      const Colour colour =
          image.at(static_cast<uint16_t>(x - left), static_cast<uint16_t>(y - top));
      picture.pixels[static_cast<size_t>(y) * picture.width + static_cast<size_t>(x)] = colour;
    }
  }
}

template <typename IsInside>
void Canvas::fillShape(Area box, Colour colour, IsInside isInside) {
  const Area inside = visible(box);
  for (int y = inside.top; y < inside.bottom(); ++y) {
    for (int x = inside.left; x < inside.right(); ++x) {
      unsigned hits = 0;
      for (int sample = 0; sample < kSamples * kSamples; ++sample) {
        const Point place{x + (sample % kSamples + 0.5) / kSamples,
                          y + (sample / kSamples + 0.5) / kSamples};
        hits += isInside(place) ? 1 : 0;
      }
      blend(x, y, colour, hits * kOpaque / (kSamples * kSamples));
    }
  }
}

Area Canvas::visible(Area area) const { return common(area, {0, 0, width(), height()}); }

}  // namespace simulator
