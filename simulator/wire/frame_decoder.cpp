#include "wire/frame_decoder.h"

namespace simulator {

void FrameDecoder::push(Time now, ByteView bytes,
                        const std::function<void(ByteView payload)>& onPayload) {
  if (bytes.empty()) return;
  giveUpAfterGap(now);
  lastByte = now;
  for (uint8_t byte : bytes)
    take(byte, onPayload);
}

void FrameDecoder::reset() {
  state = State::kHunt;
  length = 0;
  sum = 0;
  payload.clear();
}

void FrameDecoder::giveUpAfterGap(Time now) {
  if (state == State::kHunt || now - lastByte <= gap) return;
  ++tally.abandoned;
  reset();
}

void FrameDecoder::take(uint8_t byte, const std::function<void(ByteView)>& onPayload) {
  switch (state) {
    case State::kHunt:
      return hunt(byte);
    case State::kSynced:
      return afterSync(byte);
    case State::kLength:
    case State::kLengthHigh:
    case State::kLengthLow:
      return takeLength(byte);
    case State::kPayload:
      return takePayload(byte);
    case State::kChecksum:
      return takeChecksum(byte, onPayload);
  }
}

void FrameDecoder::hunt(uint8_t byte) {
  if (kind == FrameKind::kUsb && byte == kStartByte) return beginPacket();
  if (kind == FrameKind::kSerial && byte == kSyncByte) {
    state = State::kSynced;
    return;
  }
  ++tally.skippedBytes;
}

void FrameDecoder::afterSync(uint8_t byte) {
  if (byte == kStartByte) return beginPacket();
  ++tally.skippedBytes;
  // A sync byte can be repeated; the last one counts.
  if (byte == kSyncByte) return;
  ++tally.skippedBytes;
  state = State::kHunt;
}

void FrameDecoder::beginPacket() {
  reset();
  state = State::kLength;
}

void FrameDecoder::takeLength(uint8_t byte) {
  sum += byte;
  length = length << 8 | byte;
  if (state == State::kLength && byte == kLongFormMarker) {
    state = State::kLengthHigh;
  } else if (state == State::kLengthHigh) {
    state = State::kLengthLow;
  } else {
    beginPayload();
  }
}

void FrameDecoder::beginPayload() {
  payload.reserve(length);
  state = length == 0 ? State::kChecksum : State::kPayload;
}

void FrameDecoder::takePayload(uint8_t byte) {
  sum += byte;
  payload.push_back(byte);
  if (payload.size() == length) state = State::kChecksum;
}

void FrameDecoder::takeChecksum(uint8_t byte, const std::function<void(ByteView)>& onPayload) {
  const bool good = ((sum + byte) & 0xFF) == 0;
  const Bytes body = std::move(payload);
  reset();
  if (!good) {
    ++tally.badChecksums;
    return;
  }
  ++tally.packets;
  onPayload(body);
}

}  // namespace simulator
