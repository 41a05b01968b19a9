#include "device/extended_interface_lingo.h"

namespace simulator {

namespace {

void appendLimits(PayloadWriter& writer, ImageLimits limits, PixelFormat format) {
  writer.u16(limits.width).u16(limits.height).u8(static_cast<uint8_t>(format));
}

}  // namespace

void ExtendedInterfaceLingo::displayImage(PayloadReader& data) {
  state.acknowledge(state.display.take(data.rest(), state.now));
}

void ExtendedInterfaceLingo::monoImageLimits(PayloadReader&) {
  PayloadWriter writer;
  appendLimits(writer, state.personality.display.limits, PixelFormat::kGrey2);
  reply(kReturnMonoDisplayImageLimits, writer.take());
}

void ExtendedInterfaceLingo::colourImageLimits(PayloadReader&) {
  const DisplayHabits& display = state.personality.display;
  if (!display.colour) return state.acknowledge(Status::kFailed);
  PayloadWriter writer;
  appendLimits(writer, display.limits, PixelFormat::kRgb565LowFirst);
  appendLimits(writer, display.limits, PixelFormat::kRgb565HighFirst);
  reply(kReturnColorDisplayImageLimits, writer.take());
}

}  // namespace simulator
