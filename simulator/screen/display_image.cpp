#include "screen/display_image.h"

#include "wire/payload.h"

namespace simulator {

namespace {

constexpr Colour kBlack{0, 0, 0};

Colour fromRgb565(uint16_t pixel) {
  const auto widen = [](unsigned value, unsigned most) {
    return static_cast<uint8_t>(value * 255 / most);
  };
  return {widen(pixel >> 11 & 0x1F, 0x1F), widen(pixel >> 5 & 0x3F, 0x3F),
          widen(pixel & 0x1F, 0x1F)};
}

Colour fromGrey2(unsigned level) {
  const uint8_t light = static_cast<uint8_t>(255 - level * 85);
  return {light, light, light};
}

Colour decodeRgb565(ByteView row, size_t x, PixelFormat format) {
  if (2 * x + 1 >= row.size()) return kBlack;
  const uint8_t first = row[2 * x];
  const uint8_t second = row[2 * x + 1];
  const bool isLowFirst = format == PixelFormat::kRgb565LowFirst;
  return fromRgb565(static_cast<uint16_t>(isLowFirst ? second << 8 | first : first << 8 | second));
}

/// Returns the colour of a pixel; black beyond the bytes of the row, which may be shorter than the
/// width.
Colour decodePixel(ByteView row, size_t x, PixelFormat format) {
  if (format != PixelFormat::kGrey2) return decodeRgb565(row, x, format);
  if (x / 4 >= row.size()) return kBlack;
  return fromGrey2(row[x / 4] >> (6 - 2 * (x % 4)) & 3u);
}

}  // namespace

Status DisplayImage::take(ByteView packet, Time now) {
  PayloadReader reader(packet);
  const uint16_t index = reader.u16();
  if (!reader.ok()) return Status::kBadParameter;
  if (index == 0) return begin(reader.rest(), now);
  if (!isReceiving || index != nextPacket) return Status::kBadParameter;
  return append(reader.rest(), now);
}

void DisplayImage::clear() {
  isReceiving = false;
  picture.reset();
}

Status DisplayImage::begin(ByteView packet, Time now) {
  isReceiving = false;
  PayloadReader reader(packet);
  const uint8_t formatNumber = reader.u8();
  width = reader.u16();
  height = reader.u16();
  rowBytes = reader.u32();
  const bool fits = width > 0 && height > 0 && width <= habits.limits.width &&
                    height <= habits.limits.height && rowBytes > 0 && rowBytes <= 0xFFFF;
  if (!reader.ok() || !fits || !takesFormat(formatNumber)) return Status::kBadParameter;
  format = static_cast<PixelFormat>(formatNumber);
  pixels.clear();
  nextPacket = 0;
  isReceiving = true;
  return append(reader.rest(), now);
}

Status DisplayImage::append(ByteView data, Time now) {
  const size_t size = rowBytes * height;
  if (pixels.size() + data.size() > size) {
    isReceiving = false;
    return Status::kBadParameter;
  }
  pixels.insert(pixels.end(), data.begin(), data.end());
  ++nextPacket;
  if (pixels.size() == size) finish(now);
  return Status::kOk;
}

bool DisplayImage::takesFormat(uint8_t number) const {
  if (number == static_cast<uint8_t>(PixelFormat::kGrey2)) return true;
  return habits.colour && (number == static_cast<uint8_t>(PixelFormat::kRgb565LowFirst) ||
                           number == static_cast<uint8_t>(PixelFormat::kRgb565HighFirst));
}

void DisplayImage::finish(Time now) {
  isReceiving = false;
  if (lastShown && now - *lastShown < habits.imageInterval) return;
  Picture image{width, height, {}};
  image.pixels.reserve(size_t{width} * height);
  for (size_t y = 0; y < height; ++y) {
    const ByteView row = ByteView(pixels).from(y * rowBytes).prefix(rowBytes);
    for (size_t x = 0; x < width; ++x)
      image.pixels.push_back(decodePixel(row, x, format));
  }
  picture = std::move(image);
  lastShown = now;
  ++count;
}

}  // namespace simulator
