#include <algorithm>
#include <cstdio>

#include "screen/pages.h"

namespace simulator {

namespace {

std::string timeText(uint32_t time) {
  char text[24];
  if (time >= 3600) {
    std::snprintf(text, sizeof text, "%u:%02u:%02u", time / 3600, time / 60 % 60, time % 60);
  } else {
    std::snprintf(text, sizeof text, "%u:%02u", time / 60, time % 60);
  }
  return text;
}

/// Draws lines of text one below the other.
class Lines {
 public:
  Lines(Canvas& drawn, const TextPainter& painter, Area lines)
      : canvas(drawn), text(painter), area(lines) {}

  void add(const std::string& line, const TextStyle& style) {
    text.draw(canvas, area, line, style);
    skip(text.lineHeight(style));
  }
  void skip(int height) { area.top += height; }

 private:
  Canvas& canvas;
  const TextPainter& text;
  Area area;
};

void drawTexts(Canvas& canvas, const ScreenView& view, const TextPainter& painter, Area area,
               Align align) {
  const Palette palette = paletteOf(view);
  const Measures sizes(view);
  const TextStyle quiet{sizes.textSize, Weight::kRegular, palette.quiet, align};
  TextStyle small = quiet;
  small.size = sizes.smallSize;
  Lines lines(canvas, painter, area);
  lines.add(view.title, {sizes.titleSize, Weight::kBold, palette.text, align});
  lines.skip(sizes.margin / 3);
  lines.add(view.artist, {sizes.textSize, Weight::kRegular, palette.text, align});
  lines.add(view.album, quiet);
  lines.skip(sizes.margin / 2);
  lines.add(std::to_string(view.index + 1) + " of " + std::to_string(view.tracks), small);
}

/// Draws the bar, and returns where the times below it begin.
int drawBar(Canvas& canvas, const ScreenView& view, Area bar) {
  const Palette palette = paletteOf(view);
  const double radius = bar.height / 2.0;
  const uint32_t length = std::max(1u, view.lengthSeconds);
  const uint32_t position = std::min(view.positionSeconds, length);
  const int filled = static_cast<int>(int64_t{bar.width} * position / length);
  if (view.hasColours) {
    canvas.fillRounded(bar, radius, mixed(palette.bottom, palette.quiet, 0.4));
    if (filled > 0)
      canvas.fillRounded({bar.left, bar.top, filled, bar.height}, radius, palette.accent);
  } else {
    canvas.fill(bar, palette.text);
    canvas.fill({bar.left + 1, bar.top + 1, bar.width - 2, bar.height - 2}, palette.top);
    canvas.fill({bar.left, bar.top, filled, bar.height}, palette.text);
  }
  return bar.bottom();
}

std::string modesText(const ScreenView& view) {
  std::string text;
  if (view.shuffle != Shuffle::kOff) text += "⇄";
  if (view.repeat != Repeat::kOff) text += text.empty() ? "↻" : " ↻";
  return text + (view.repeat == Repeat::kOne ? "1" : "");
}

void drawTimes(Canvas& canvas, const ScreenView& view, const TextPainter& painter, Area area) {
  TextStyle style{Measures(view).smallSize, Weight::kRegular, paletteOf(view).quiet, Align::kLeft};
  const uint32_t position = std::min(view.positionSeconds, view.lengthSeconds);
  painter.draw(canvas, area, timeText(position), style);
  style.align = Align::kRight;
  painter.draw(canvas, area, "-" + timeText(view.lengthSeconds - position), style);
  style.align = Align::kCentre;
  painter.draw(canvas, area, modesText(view), style);
}

/// Draws the bar and the times at the bottom, and returns where they begin.
int drawProgress(Canvas& canvas, const ScreenView& view, const TextPainter& painter) {
  const Measures sizes(view);
  const int height = std::max(5, sizes.margin / 2);
  const int times = painter.lineHeight({sizes.smallSize}) + sizes.margin / 2;
  const int width = canvas.width() - 2 * sizes.margin;
  const int top = canvas.height() - sizes.margin / 2 - times - height;
  const int below = drawBar(canvas, view, {sizes.margin, top, width, height});
  drawTimes(canvas, view, painter, {sizes.margin, below + sizes.margin / 4, width, times});
  return top;
}

int heightOfTexts(const Measures& sizes, const TextPainter& painter) {
  return painter.lineHeight({sizes.titleSize}) + 2 * painter.lineHeight({sizes.textSize}) +
         painter.lineHeight({sizes.smallSize}) + sizes.margin / 3 + sizes.margin / 2;
}

}  // namespace

void drawPlayingPage(Canvas& canvas, const ScreenView& view, const TextPainter& painter) {
  drawFrame(canvas, view, painter, view.hasColours ? "Now Playing" : view.ipodName);
  const Measures sizes(view);
  const int bottom = drawProgress(canvas, view, painter);
  const int room = bottom - sizes.statusHeight;
  const int textTop = sizes.statusHeight + (room - heightOfTexts(sizes, painter)) / 2;
  const int most = room - 2 * sizes.margin;
  const int cover = view.hasColours ? std::min(most, canvas.width() * 3 / 8) : 0;
  const int left = cover > 0 ? cover + 2 * sizes.margin : sizes.margin;
  if (cover > 0) {
    const int top = sizes.statusHeight + (room - cover) / 2;
    drawCover(canvas, {sizes.margin, top, cover, cover},
              view.album.empty() ? view.title : view.album);
  }
  drawTexts(canvas, view, painter, {left, textTop, canvas.width() - left - sizes.margin, room},
            cover > 0 ? Align::kLeft : Align::kCentre);
}

}  // namespace simulator
