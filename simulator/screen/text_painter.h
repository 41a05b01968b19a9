#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "screen/canvas.h"

namespace simulator {

enum class Weight { kRegular, kBold };
enum class Align { kLeft, kCentre, kRight };

struct TextStyle {
  int size = 12;  ///< pixels
  Weight weight = Weight::kRegular;
  Colour colour{255, 255, 255};
  Align align = Align::kLeft;
};

/// The files of the fonts that are tried, in this order. A character is drawn with the first font
/// that has it.
struct FontFiles {
  std::vector<std::string> regular;
  std::vector<std::string> bold;

  /// Returns where Linux systems have fonts.
  static FontFiles ofTheSystem();
  /// Returns one file for both weights.
  static FontFiles only(const std::string& file);
};

/// Draws texts. Without a font it draws nothing. It is not safe for use by two threads at once.
class TextPainter {
 public:
  explicit TextPainter(const FontFiles& files);
  ~TextPainter();

  bool hasFont() const;
  /// Returns the height of a line in pixels.
  int lineHeight(const TextStyle& style) const;
  /// Returns the width in pixels of a text that is not cut.
  int widthOf(std::string_view utf8, const TextStyle& style) const;
  /// Draws one line at the top of the area, within its width. A text that is too long ends in an
  /// ellipsis.
  void draw(Canvas& canvas, Area area, std::string_view utf8, const TextStyle& style) const;

 private:
  class Fonts;
  const std::unique_ptr<Fonts> fonts;
};

}  // namespace simulator
