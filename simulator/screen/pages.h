#pragma once

#include "screen/screen_view.h"

namespace simulator {

/// The colours of a screen.
struct Palette {
  Colour top;     ///< of the background
  Colour bottom;  ///< of the background
  Colour text;
  Colour quiet;   ///< texts of less importance, and the empty part of the bar
  Colour accent;  ///< the bar, and the selected line of the menu
  Colour onAccent;
};

/// Returns light colours on a dark background, or black on white for a screen without colours.
Palette paletteOf(const ScreenView& view);

/// Sizes that fit the screen, in pixels.
struct Measures {
  explicit Measures(const ScreenView& view);

  int margin;
  int statusHeight;
  int titleSize;
  int textSize;
  int smallSize;
};

/// Fills the background and draws the line at the top: the play state, this title, and the battery.
void drawFrame(Canvas& canvas, const ScreenView& view, const TextPainter& painter,
               const std::string& title);

/// Draws the cover of an album: a pattern in a colour that its name determines.
void drawCover(Canvas& canvas, Area area, const std::string& album);
/// Returns the colour of the album's cover.
Colour coverColour(const std::string& album);

void drawPlayingPage(Canvas& canvas, const ScreenView& view, const TextPainter& painter);
void drawMenuPage(Canvas& canvas, const ScreenView& view, const TextPainter& painter);
void drawConnectedPage(Canvas& canvas, const ScreenView& view, const TextPainter& painter);

}  // namespace simulator
