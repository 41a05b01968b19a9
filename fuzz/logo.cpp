// A logo file with any content.

#include <vector>

#include "controller/logo_bitmap.h"
#include "support/input_file.h"
#include "support/require.h"

using namespace ipodctl;

namespace {

/// The file as its header describes it.
struct Bitmap {
  const uint8_t* bytes;
  size_t size;
  bool isSwapped;

  uint32_t numberAt(size_t at) const {
    const uint32_t first = bytes[at];
    const uint32_t second = bytes[at + 1];
    const uint32_t third = bytes[at + 2];
    const uint32_t fourth = bytes[at + 3];
    return isSwapped ? first << 24 | second << 16 | third << 8 | fourth
                     : fourth << 24 | third << 16 | second << 8 | first;
  }
  uint32_t offset() const { return numberAt(10); }
  uint32_t width() const { return numberAt(18); }
  uint32_t height() const { return numberAt(22); }

  /// Returns the RGB 565 value of a pixel. Rows are numbered from the bottom and have no padding.
  uint16_t pixel(uint32_t row, uint32_t column) const {
    const size_t at = offset() + (size_t{row} * width() + column) * 3;
    require(at + 3 <= size, "a pixel beyond the file's end");
    return static_cast<uint16_t>(bytes[at + 2] >> 3 << 11 | bytes[at + 1] >> 2 << 5 |
                                 bytes[at] >> 3);
  }
};

uint32_t shownPixels(uint32_t width) { return width % 4 == 0 ? width : width - width % 4 + 1; }

void compare(const LogoBitmap& logo, const Bitmap& bitmap) {
  require(logo.width() == bitmap.width() && logo.height() == bitmap.height(), "another size");
  require(logo.rowBytes() == 2 * shownPixels(logo.width()), "rows of another size");
  for (uint32_t y = 0; y < logo.height(); ++y) {
    const uint8_t* const row = logo.row(y);
    require(row != nullptr, "a row is missing");
    for (uint32_t x = 0; x < shownPixels(logo.width()); ++x) {
      const uint8_t* const shownPixel = row + size_t{2} * x;
      const auto shown = static_cast<uint16_t>(shownPixel[0] | shownPixel[1] << 8);
      require(shown == bitmap.pixel(logo.height() - 1 - y, x), "another pixel");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const InputFile file;
  file.write(data, size);
  LogoBitmap logo;
  if (logo.read(file.path().c_str())) {
    compare(logo, {data, size, data[0] == 'M'});
    require(logo.row(logo.height()) == nullptr, "a row below the last one");
  } else {
    require(logo.row(0) == nullptr, "a picture of a bad file");
  }
  return 0;
}
