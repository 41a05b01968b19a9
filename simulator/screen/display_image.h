#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "simulated_time.h"
#include "wire/bytes.h"
#include "wire/lingo.h"

namespace simulator {

/// How the pixels of an image are coded, with the numbers on the wire.
enum class PixelFormat : uint8_t {
  kGrey2 = 1,  ///< four pixels a byte, the first in the highest bits; 3 is black
  kRgb565LowFirst = 2,
  kRgb565HighFirst = 3,
};

/// The largest image that a screen takes.
struct ImageLimits {
  uint16_t width = 0;
  uint16_t height = 0;
};

/// What a model's screen can show.
struct DisplayHabits {
  ImageLimits limits{320, 240};
  bool colour = true;  ///< false: only kGrey2, and no colour limits
  /// An image that is complete sooner than this after the previous one is acknowledged, but not
  /// shown.
  Time imageInterval{0};
};

struct Colour {
  uint8_t red, green, blue;
};

inline bool operator==(Colour a, Colour b) {
  return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

/// A picture, row by row from the top.
struct Picture {
  uint16_t width = 0;
  uint16_t height = 0;
  std::vector<Colour> pixels;

  Colour at(uint16_t x, uint16_t y) const { return pixels[size_t{y} * width + x]; }
};

/// Joins the packets of an uploaded image. The first packet describes the image; its pixel bytes
/// and those of the packets that follow are one stream, from the top row down.
class DisplayImage {
 public:
  explicit DisplayImage(DisplayHabits model) : habits(model) {}

  /// Handles the data of one packet: the packet index and what follows it.
  Status take(ByteView packet, Time now);
  /// Clears the shown image and the one that is being uploaded.
  void clear();

  /// Returns the image that is shown.
  const std::optional<Picture>& shown() const { return picture; }
  /// Returns the number of images that were shown since the start.
  size_t shownCount() const { return count; }

 private:
  Status begin(ByteView packet, Time now);
  Status append(ByteView data, Time now);
  bool takesFormat(uint8_t number) const;
  void finish(Time now);

  DisplayHabits habits;
  bool isReceiving = false;
  PixelFormat format{};
  uint16_t width = 0;
  uint16_t height = 0;
  size_t rowBytes = 0;
  uint16_t nextPacket = 0;
  Bytes pixels;
  std::optional<Picture> picture;
  size_t count = 0;
  std::optional<Time> lastShown;
};

}  // namespace simulator
