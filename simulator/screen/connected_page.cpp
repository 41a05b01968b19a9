#include "screen/pages.h"

namespace simulator {

namespace {

/// A tick in a circle.
void drawSign(Canvas& canvas, Point centre, double radius, Colour colour) {
  const Area everywhere{0, 0, canvas.width(), canvas.height()};
  const double line = radius / 6;
  canvas.drawRing(centre, radius, line, colour, everywhere);
  const Point corner{centre.x - radius * 0.12, centre.y + radius * 0.38};
  canvas.drawLine({centre.x - radius * 0.45, centre.y + radius * 0.05}, corner, line * 1.2, colour);
  canvas.drawLine(corner, {centre.x + radius * 0.48, centre.y - radius * 0.35}, line * 1.2, colour);
}

}  // namespace

void drawConnectedPage(Canvas& canvas, const ScreenView& view, const TextPainter& painter) {
  drawFrame(canvas, view, painter, view.ipodName);
  const Palette palette = paletteOf(view);
  const Measures sizes(view);
  const TextStyle large{sizes.titleSize, Weight::kBold, palette.text, Align::kCentre};
  const TextStyle small{sizes.textSize, Weight::kRegular, palette.quiet, Align::kCentre};
  const int texts = painter.lineHeight(large) + painter.lineHeight(small) + sizes.margin;
  const int room = canvas.height() - sizes.statusHeight - texts;
  const double radius = room * 0.34;
  drawSign(canvas, {canvas.width() / 2.0, sizes.statusHeight + room / 2.0}, radius, palette.accent);
  const int width = canvas.width() - 2 * sizes.margin;
  const int top = canvas.height() - texts;
  painter.draw(canvas, {sizes.margin, top, width, texts}, "Connected", large);
  painter.draw(canvas, {sizes.margin, top + painter.lineHeight(large), width, texts},
               "Do not disconnect", small);
}

}  // namespace simulator
