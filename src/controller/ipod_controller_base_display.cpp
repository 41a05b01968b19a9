// The picture on the iPod's screen.

#include <cstring>
#include <new>

#include "controller/ipod_controller_base.h"

namespace ipodctl {

using Message = ExtendedInterfaceMessage;

namespace {

/// The pixel format of LogoBitmap.
constexpr PixelFormat kFormat = PixelFormat::kRgb565LowByteFirst;

constexpr uint8_t kWhite = 0xFF;

}  // namespace

bool IpodControllerBase::GetMonoImageLimits(ImageLimits& limits) {
  return sendAndAwaitReply(&Message::buildGetMonoDisplayImageLimits)
      .read(&Message::decodeReturnMonoDisplayImageLimits, limits.width, limits.height,
            limits.format);
}

bool IpodControllerBase::GetColorImageLimits(ImageLimits& limits) {
  return sendAndAwaitReply(&Message::buildGetColorDisplayImageLimits)
      .read(&Message::decodeReturnColorDisplayImageLimits, limits.width, limits.height,
            limits.format);
}

bool IpodControllerBase::SetDisplayImage(PixelFormat format, uint16_t packetIndex, uint16_t width,
                                         uint16_t height, uint32_t rowBytes, const uint8_t* row) {
  return sendAndAwaitAcknowledgement(&Message::buildSetDisplayImage, format, packetIndex, width,
                                     height, rowBytes, row);
}

bool IpodControllerBase::LoadLogo(const char* fileName) {
  FreeLogo();
  std::unique_ptr<LogoBitmap> loaded(new (std::nothrow) LogoBitmap);
  if (!loaded || !loaded->read(fileName)) return false;
  logo = std::move(loaded);
  return true;
}

bool IpodControllerBase::FreeLogo() {
  logo.reset();
  return true;
}

/// Sends the logo row by row, pushed down by white rows to half the free height. A screen that is
/// too small, or that is not of the logo's pixel format, gets nothing; a packet that fails is
/// passed over.
void IpodControllerBase::uploadLogo() {
  const uint32_t rowBytes = logo->rowBytes();
  const std::unique_ptr<uint8_t[]> whiteRow(new (std::nothrow) uint8_t[rowBytes]);
  if (!whiteRow) return;
  std::memset(whiteRow.get(), kWhite, rowBytes);
  ImageLimits limits;
  GetColorImageLimits(limits);
  if (limits.width < logo->width() || limits.height < logo->height() || limits.format != kFormat) {
    return;
  }
  const auto width = static_cast<uint16_t>(logo->width());
  const auto logoHeight = static_cast<uint16_t>(logo->height());
  const auto margin = static_cast<uint16_t>((limits.height - logoHeight) / 2);
  const auto totalHeight = static_cast<uint16_t>(logoHeight + margin);
  for (uint16_t i = 0; i < totalHeight; ++i) {
    const uint8_t* row = i < margin ? whiteRow.get() : logo->row(i - margin);
    SetDisplayImage(kFormat, i, width, totalHeight, rowBytes, row);
  }
}

}  // namespace ipodctl
