#include "screen/text_painter.h"

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>

#include "screen/characters.h"

namespace simulator {

namespace {

/// Longer texts do not fit a screen anyway.
constexpr size_t kMostCharacters = 400;
constexpr char32_t kEllipsis = 0x2026;

using Faces = std::vector<FT_Face>;

int pixels(FT_Pos units) { return static_cast<int>(units / 64); }

unsigned alphaAt(const FT_Bitmap& bitmap, unsigned x, unsigned y) {
  const unsigned char* const row =
      bitmap.buffer + static_cast<std::ptrdiff_t>(y) * static_cast<std::ptrdiff_t>(bitmap.pitch);
  if (bitmap.pixel_mode == FT_PIXEL_MODE_MONO) return (row[x / 8] >> (7 - x % 8) & 1) * 255u;
  return bitmap.pixel_mode == FT_PIXEL_MODE_GRAY ? row[x] : 0;
}

}  // namespace

/// The library FreeType and its open fonts.
class TextPainter::Fonts {
 public:
  explicit Fonts(const FontFiles& files) {
    if (FT_Init_FreeType(&library) != 0) return;
    regular = opened(files.regular);
    bold = opened(files.bold);
    if (bold.empty()) bold = regular;
  }
  Fonts(const Fonts&) = delete;
  Fonts& operator=(const Fonts&) = delete;
  ~Fonts() { FT_Done_FreeType(library); }

  const Faces& of(Weight weight) const { return weight == Weight::kBold ? bold : regular; }

 private:
  Faces opened(const std::vector<std::string>& files) {
    Faces faces;
    for (const std::string& file : files) {
      FT_Face face = nullptr;
      if (FT_New_Face(library, file.c_str(), 0, &face) == 0) faces.push_back(face);
    }
    return faces;
  }

  FT_Library library = nullptr;
  Faces regular;
  Faces bold;
};

namespace {

/// The fonts of a text, with the size that it needs.
class Letters {
 public:
  Letters(const Faces& tried, const TextStyle& style, bool isSmooth)
      : faces(tried), load(isSmooth ? FT_LOAD_TARGET_LIGHT : FT_LOAD_TARGET_MONO) {
    for (FT_Face face : faces)
      FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(std::max(1, style.size)));
  }

  int widthOf(const std::u32string& text) const {
    FT_Pos width = 0;
    for (char32_t character : text)
      width += advanceOf(character);
    return pixels(width + 63);
  }

  /// Returns the text, or its beginning and an ellipsis; empty when not even that fits.
  std::u32string fitted(std::u32string text, int width) const {
    const FT_Pos room = FT_Pos{width} * 64;
    const FT_Pos roomBeforeEllipsis = room - advanceOf(kEllipsis);
    FT_Pos used = 0;
    size_t kept = 0;
    for (char32_t character : text) {
      used += advanceOf(character);
      if (used > room) break;
      if (used <= roomBeforeEllipsis) ++kept;
    }
    if (used <= room) return text;
    if (roomBeforeEllipsis < 0) return {};
    while (kept > 0 && text[kept - 1] == U' ')
      --kept;
    return text.substr(0, kept) + kEllipsis;
  }

  int ascent() const { return pixels(faces.front()->size->metrics.ascender); }

  /// Draws the character at this place of the base line, and returns its advance.
  FT_Pos draw(Canvas& canvas, char32_t character, FT_Pos x, int baseLine, Colour colour) const {
    FT_Face face = faceOf(character);
    if (FT_Load_Char(face, character, FT_LOAD_RENDER | load) != 0) return 0;
    const FT_GlyphSlot glyph = face->glyph;
    for (unsigned row = 0; row < glyph->bitmap.rows; ++row) {
      for (unsigned column = 0; column < glyph->bitmap.width; ++column) {
        canvas.blend(pixels(x) + glyph->bitmap_left + static_cast<int>(column),
                     baseLine - glyph->bitmap_top + static_cast<int>(row), colour,
                     alphaAt(glyph->bitmap, column, row));
      }
    }
    return glyph->advance.x;
  }

 private:
  /// Returns the first font that has the character; if none has it, the first one, whose sign for
  /// it is a box.
  FT_Face faceOf(char32_t character) const {
    for (FT_Face face : faces) {
      if (FT_Get_Char_Index(face, character) != 0) return face;
    }
    return faces.front();
  }

  FT_Pos advanceOf(char32_t character) const {
    FT_Face face = faceOf(character);
    return FT_Load_Char(face, character, load) == 0 ? face->glyph->advance.x : 0;
  }

  const Faces& faces;
  const FT_Int32 load;
};

}  // namespace

FontFiles FontFiles::ofTheSystem() {
  const std::string folder = "/usr/share/fonts/truetype/";
  return {
      {folder + "dejavu/DejaVuSans.ttf", "/usr/share/fonts/dejavu/DejaVuSans.ttf",
       "/usr/share/fonts/TTF/DejaVuSans.ttf", folder + "liberation/LiberationSans-Regular.ttf",
       folder + "freefont/FreeSans.ttf", "/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc"},
      {folder + "dejavu/DejaVuSans-Bold.ttf", "/usr/share/fonts/dejavu/DejaVuSans-Bold.ttf",
       "/usr/share/fonts/TTF/DejaVuSans-Bold.ttf", folder + "liberation/LiberationSans-Bold.ttf",
       folder + "freefont/FreeSansBold.ttf",
       "/usr/share/fonts/opentype/noto/NotoSansCJK-Bold.ttc"}};
}

FontFiles FontFiles::only(const std::string& file) { return {{file}, {file}}; }

TextPainter::TextPainter(const FontFiles& files) : fonts(std::make_unique<Fonts>(files)) {}

TextPainter::~TextPainter() = default;

bool TextPainter::hasFont() const { return !fonts->of(Weight::kRegular).empty(); }

int TextPainter::lineHeight(const TextStyle& style) const { return style.size * 5 / 4; }

int TextPainter::widthOf(std::string_view utf8, const TextStyle& style) const {
  if (!hasFont()) return 0;
  return Letters(fonts->of(style.weight), style, true)
      .widthOf(shownCharacters(utf8, kMostCharacters));
}

void TextPainter::draw(Canvas& canvas, Area area, std::string_view utf8,
                       const TextStyle& style) const {
  if (!hasFont()) return;
  const Letters letters(fonts->of(style.weight), style, canvas.isColoured());
  const std::u32string text = letters.fitted(shownCharacters(utf8, kMostCharacters), area.width);
  const int room = std::max(0, area.width - letters.widthOf(text));
  const int indent = style.align == Align::kLeft     ? 0
                     : style.align == Align::kCentre ? room / 2
                                                     : room;
  FT_Pos x = FT_Pos{area.left + indent} * 64;
  for (char32_t character : text)
    x += letters.draw(canvas, character, x, area.top + letters.ascent(), style.colour);
}

}  // namespace simulator
