#include "ipodctl/logo/logo_preview.h"

#include <cstdint>
#include <stdexcept>

#include "device/personality.h"
#include "screen/display_image.h"
#include "screen/png_file.h"
#include "screen/screen.h"

namespace tool {
namespace {

using simulator::Bytes;

constexpr size_t kPixelsAt = 54;
constexpr uint8_t kFormat = static_cast<uint8_t>(simulator::PixelFormat::kRgb565LowFirst);

simulator::Personality personalityOf(const std::string& model) {
  try {
    return simulator::personality(model);
  } catch (const std::invalid_argument& error) {
    throw std::runtime_error(error.what());
  }
}

size_t numberAt(const std::string& bitmap, size_t place) {
  const auto byte = [&](size_t i) { return size_t{static_cast<uint8_t>(bitmap[place + i])}; };
  return byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
}

void append16(Bytes& bytes, size_t number) {
  bytes.push_back(static_cast<uint8_t>(number >> 8));
  bytes.push_back(static_cast<uint8_t>(number));
}

void appendPixel(Bytes& bytes, const std::string& bitmap, size_t place) {
  const auto part = [&](size_t i) { return unsigned{static_cast<uint8_t>(bitmap[place + i])}; };
  const unsigned pixel = (part(2) >> 3) << 11 | (part(1) >> 2) << 5 | part(0) >> 3;
  bytes.push_back(static_cast<uint8_t>(pixel));
  bytes.push_back(static_cast<uint8_t>(pixel >> 8));
}

/// The head of the image, white rows that push it to the middle of the screen, and its rows.
Bytes uploadOf(const std::string& bitmap, unsigned screenHeight) {
  const size_t width = numberAt(bitmap, 18);
  const size_t height = numberAt(bitmap, 22);
  const size_t margin = screenHeight > height ? (screenHeight - height) / 2 : 0;
  Bytes bytes = {0, 0, kFormat};
  append16(bytes, width);
  append16(bytes, margin + height);
  append16(bytes, 0);
  append16(bytes, 2 * width);
  bytes.insert(bytes.end(), margin * width * 2, 0xFF);
  for (size_t row = height; row > 0; --row) {
    for (size_t x = 0; x < width; ++x)
      appendPixel(bytes, bitmap, kPixelsAt + ((row - 1) * width + x) * 3);
  }
  return bytes;
}

}  // namespace

LogoLimits logoLimits(const std::string& model) {
  const simulator::DisplayHabits display = personalityOf(model).display;
  if (!display.colour || display.limits.width == 0) {
    throw std::runtime_error("the model " + model + " shows no logo; choose another one");
  }
  return {display.limits.width, display.limits.height};
}

void writeLogoPreview(const std::string& bitmap, const std::string& model,
                      const std::string& file) {
  const LogoLimits limits = logoLimits(model);
  const simulator::Personality shown = personalityOf(model);
  simulator::DisplayImage image(shown.display);
  const Bytes upload = uploadOf(bitmap, limits.height);
  if (image.take(upload, simulator::Time(0)) != simulator::Status::kOk || !image.shown()) {
    throw std::runtime_error("the logo is too large for the model " + model + "; convert it again");
  }
  simulator::requirePlaceForPng(file);
  simulator::writePng(simulator::renderScreen(shown.screenWidth, shown.screenHeight, image.shown()),
                      file);
}

}  // namespace tool
