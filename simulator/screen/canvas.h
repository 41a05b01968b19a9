#pragma once

#include "screen/display_image.h"

namespace simulator {

/// A rectangle of pixels, from its upper left corner. It may exceed the canvas.
struct Area {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;

  int right() const { return left + width; }
  int bottom() const { return top + height; }
};

struct Point {
  double x = 0;
  double y = 0;
};

/// Returns the colour between two colours: `part` 0 is the first, 1 the second.
Colour mixed(Colour from, Colour to, double part);

/// A picture that is being drawn. What exceeds it is cut off. A canvas without colours has no
/// soft edges: only the colours that are drawn are on it.
class Canvas {
 public:
  Canvas(uint16_t width, uint16_t height, bool hasColours);

  int width() const { return picture.width; }
  int height() const { return picture.height; }
  bool isColoured() const { return coloured; }

  /// Mixes a pixel with a colour: 0 leaves the pixel, 255 replaces it.
  void blend(int x, int y, Colour colour, unsigned alpha);
  void fill(Area area, Colour colour);
  void fillFromTopToBottom(Area area, Colour top, Colour bottom);
  /// Fills with rounded corners.
  void fillRounded(Area area, double radius, Colour colour);
  void fillTriangle(Point a, Point b, Point c, Colour colour);
  /// Draws a circle line of this width, or a disc when the width is at least the radius.
  void drawRing(Point centre, double radius, double lineWidth, Colour colour, Area within);
  /// Draws a straight line with round ends.
  void drawLine(Point from, Point to, double lineWidth, Colour colour);
  /// Copies a picture; its upper left corner is there.
  void copy(const Picture& image, int left, int top);

  const Picture& result() const { return picture; }

 private:
  template <typename IsInside>
  void fillShape(Area box, Colour colour, IsInside isInside);
  Area visible(Area area) const;

  Picture picture;
  const bool coloured;
};

}  // namespace simulator
