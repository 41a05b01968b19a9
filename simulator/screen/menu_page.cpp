#include <string>

#include "screen/pages.h"

namespace simulator {

namespace {

constexpr const char* kEntries[] = {"Music", "Playlists", "Podcasts", "Settings", "Shuffle Songs"};

/// A screen with less height shows fewer lines.
int linesIn(int height, int lineHeight) {
  return std::min<int>(static_cast<int>(std::size(kEntries)) + 1, height / lineHeight);
}

void drawChevron(Canvas& canvas, Area line, Colour colour) {
  const double half = line.height / 6.0;
  const double right = line.right() - line.height * 0.3;
  const double middle = line.top + line.height / 2.0;
  canvas.drawLine({right - half, middle - half}, {right, middle}, 2, colour);
  canvas.drawLine({right, middle}, {right - half, middle + half}, 2, colour);
}

void drawLine(Canvas& canvas, Area line, const std::string& text, bool isSelected,
              const ScreenView& view, const TextPainter& painter) {
  const Palette palette = paletteOf(view);
  const Measures sizes(view);
  if (isSelected) {
    canvas.fillFromTopToBottom(line, palette.accent, mixed(palette.accent, palette.bottom, 0.3));
    if (!view.hasColours) canvas.fill(line, palette.accent);
  }
  const Colour colour = isSelected ? palette.onAccent : palette.text;
  const TextStyle style{sizes.textSize, Weight::kRegular, colour, Align::kLeft};
  const int top = line.top + (line.height - painter.lineHeight(style)) / 2;
  painter.draw(
      canvas, {line.left + sizes.margin, top, line.width - sizes.margin - line.height, line.height},
      text, style);
  drawChevron(canvas, line, isSelected ? palette.onAccent : palette.quiet);
}

/// Draws two notes that are joined.
void drawNotes(Canvas& canvas, Area area, Colour colour) {
  const double unit = area.width / 16.0;
  const Point left{area.left + 4.0 * unit, area.top + 12.5 * unit};
  const Point right{area.left + 11.0 * unit, area.top + 11.0 * unit};
  for (const Point& head : {left, right})
    canvas.drawRing(head, 2 * unit, 2 * unit, colour, area);
  const double stem = 1.85 * unit;
  canvas.drawLine({left.x + stem, left.y}, {left.x + stem, left.y - 8 * unit}, unit / 2, colour);
  canvas.drawLine({right.x + stem, right.y}, {right.x + stem, right.y - 8 * unit}, unit / 2,
                  colour);
  canvas.drawLine({left.x + stem, left.y - 7.6 * unit}, {right.x + stem, right.y - 7.6 * unit},
                  1.6 * unit, colour);
}

void drawPanel(Canvas& canvas, Area area, const ScreenView& view) {
  const Colour colour = coverColour(view.ipodName);
  const Palette palette = paletteOf(view);
  canvas.fillFromTopToBottom(area, mixed(colour, palette.bottom, 0.35),
                             mixed(colour, palette.bottom, 0.85));
  const int side = std::min(area.width, area.height) / 2;
  drawNotes(canvas,
            {area.left + (area.width - side) / 2, area.top + (area.height - side) / 2, side, side},
            mixed(colour, palette.text, 0.75));
}

}  // namespace

void drawMenuPage(Canvas& canvas, const ScreenView& view, const TextPainter& painter) {
  drawFrame(canvas, view, painter, view.ipodName);
  const Measures sizes(view);
  const int top = sizes.statusHeight + 1;
  const bool hasPanel = view.hasColours && canvas.width() >= 240;
  const int width = hasPanel ? canvas.width() * 11 / 20 : canvas.width();
  const int height = painter.lineHeight({sizes.textSize}) * 13 / 10;
  const int lines = linesIn(canvas.height() - top, height);
  const bool hasPlaying = view.state != PlayState::kStopped;
  for (int i = 0; i < lines; ++i) {
    const bool isPlaying = i == lines - 1 && hasPlaying;
    if (i == static_cast<int>(std::size(kEntries)) && !isPlaying) break;
    drawLine(canvas, {0, top + i * height, width, height}, isPlaying ? "Now Playing" : kEntries[i],
             i == 0, view, painter);
  }
  if (hasPanel)
    drawPanel(canvas, {width, top, canvas.width() - width, canvas.height() - top}, view);
}

}  // namespace simulator
