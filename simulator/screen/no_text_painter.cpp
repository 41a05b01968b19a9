// The small simulator: it needs no font library, and its screen has no texts.
#include "screen/text_painter.h"

namespace simulator {

class TextPainter::Fonts {};

FontFiles FontFiles::ofTheSystem() { return {}; }

FontFiles FontFiles::only(const std::string&) { return {}; }

TextPainter::TextPainter(const FontFiles&) : fonts(nullptr) {}

TextPainter::~TextPainter() = default;

/// A font that is missing would be reported, and installing one would not help.
bool TextPainter::hasFont() const { return true; }

int TextPainter::lineHeight(const TextStyle& style) const { return style.size * 5 / 4; }

int TextPainter::widthOf(std::string_view, const TextStyle&) const { return 0; }

void TextPainter::draw(Canvas&, Area, std::string_view, const TextStyle&) const {}

}  // namespace simulator
