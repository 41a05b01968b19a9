#include "wire/frame.h"

namespace simulator {

namespace {

void appendLength(Bytes& frame, size_t length, LengthForm form) {
  if (form == LengthForm::kLong || length > kShortFormLimit) {
    frame.push_back(kLongFormMarker);
    frame.push_back(static_cast<uint8_t>(length >> 8));
  }
  frame.push_back(static_cast<uint8_t>(length));
}

}  // namespace

uint8_t frameChecksum(ByteView lengthAndPayload) {
  unsigned sum = 0;
  for (uint8_t byte : lengthAndPayload)
    sum += byte;
  return static_cast<uint8_t>(0x100 - (sum & 0xFF));
}

Bytes encodeFrame(FrameKind kind, ByteView payload, LengthForm form) {
  const ByteView body = payload.prefix(kLongFormLimit);
  constexpr size_t kMostAround = 6;  // sync byte, start byte, long length, checksum
  Bytes frame;
  frame.reserve(body.size() + kMostAround);
  if (kind == FrameKind::kSerial) frame.push_back(kSyncByte);
  frame.push_back(kStartByte);
  const size_t lengthOffset = frame.size();
  appendLength(frame, body.size(), form);
  frame.insert(frame.end(), body.begin(), body.end());
  frame.push_back(frameChecksum(ByteView(frame).from(lengthOffset)));
  return frame;
}

}  // namespace simulator
