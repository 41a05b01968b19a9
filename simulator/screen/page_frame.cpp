#include <algorithm>

#include "screen/pages.h"

namespace simulator {

namespace {

constexpr Colour kBlack{0, 0, 0};
constexpr Colour kWhite{255, 255, 255};
constexpr Colour kCharged{104, 211, 120};

/// Returns a part of the screen's shorter side, at least `least` pixels.
int scaled(const ScreenView& view, int of240, int least) {
  const int side = std::min<int>(view.height, view.width * 3 / 4);
  return std::max(least, (side * of240 + 120) / 240);
}

void drawPlaySign(Canvas& canvas, Area area, Colour colour) {
  canvas.fillTriangle({double(area.left), double(area.top)},
                      {double(area.left), double(area.bottom())},
                      {double(area.right()), area.top + area.height / 2.0}, colour);
}

void drawPauseSign(Canvas& canvas, Area area, Colour colour) {
  const int bar = std::max(2, area.width / 3);
  canvas.fill({area.left, area.top, bar, area.height}, colour);
  canvas.fill({area.right() - bar, area.top, bar, area.height}, colour);
}

void drawStateSign(Canvas& canvas, Area area, PlayState state, Colour colour) {
  if (state == PlayState::kPlaying) drawPlaySign(canvas, area, colour);
  if (state == PlayState::kPaused) drawPauseSign(canvas, area, colour);
}

/// A full battery; green while the cable charges it.
void drawBattery(Canvas& canvas, Area area, const ScreenView& view, const Palette& palette) {
  const int knob = std::max(1, area.width / 12);
  const Area body{area.left, area.top, area.width - knob, area.height};
  const bool isCharging = view.plugged && view.hasColours;
  canvas.fillRounded(body, area.height / 5.0, palette.text);
  canvas.fill({body.left + 1, body.top + 1, body.width - 2, body.height - 2}, palette.top);
  canvas.fill({body.left + 2, body.top + 2, body.width - 4, body.height - 4},
              isCharging ? kCharged : palette.text);
  canvas.fill({body.right(), area.top + area.height / 3, knob, area.height - 2 * (area.height / 3)},
              palette.text);
}

}  // namespace

Palette paletteOf(const ScreenView& view) {
  if (!view.hasColours) return {kWhite, kWhite, kBlack, kBlack, kBlack, kWhite};
  return {{38, 50, 66}, {10, 14, 20}, kWhite, {158, 172, 190}, {74, 158, 255}, kWhite};
}

Measures::Measures(const ScreenView& view)
    : margin(scaled(view, 14, 5)),
      statusHeight(scaled(view, 26, 15)),
      titleSize(scaled(view, 18, 12)),
      textSize(scaled(view, 16, 10)),
      smallSize(scaled(view, 13, 9)) {}

void drawFrame(Canvas& canvas, const ScreenView& view, const TextPainter& painter,
               const std::string& title) {
  const Palette palette = paletteOf(view);
  const Measures sizes(view);
  canvas.fillFromTopToBottom({0, 0, canvas.width(), canvas.height()}, palette.top, palette.bottom);
  const int sign = sizes.statusHeight * 9 / 20;
  const int signTop = (sizes.statusHeight - sign) / 2;
  drawStateSign(canvas, {sizes.margin, signTop, sign, sign}, view.state, palette.text);
  const int battery = sizes.statusHeight;
  drawBattery(canvas, {canvas.width() - sizes.margin - battery, signTop, battery, sign}, view,
              palette);
  const int side = sizes.margin + battery + 4;
  const TextStyle style{sizes.smallSize, Weight::kBold, palette.text, Align::kCentre};
  painter.draw(canvas,
               {side, (sizes.statusHeight - painter.lineHeight(style)) / 2,
                canvas.width() - 2 * side, sizes.statusHeight},
               title, style);
  const Colour line = view.hasColours ? mixed(palette.top, palette.text, 0.25) : palette.text;
  canvas.fill({0, sizes.statusHeight, canvas.width(), 1}, line);
}

}  // namespace simulator
