#include "wire/frame_decoder.h"

namespace simulator {

void FrameDecoder::push(Time now, ByteView bytes,
                        const std::function<void(ByteView payload)>& onPayload) {
  if (bytes.empty()) return;
  giveUpAfterGap(now);
  lastByte = now;
  for (uint8_t byte : bytes)
    take(byte, onPayload);
  reportNoise();
}

void FrameDecoder::reset() {
  if (state != State::kHunt) giveUp();
}

void FrameDecoder::clear() {
  state = State::kHunt;
  length = 0;
  sum = 0;
  payload.clear();
  packet.clear();
}

void FrameDecoder::giveUpAfterGap(Time now) {
  if (state == State::kHunt || now - lastByte <= gap) return;
  ++tally.abandoned;
  giveUp();
}

void FrameDecoder::giveUp() {
  report(Waste::kUnfinished, packet);
  clear();
}

void FrameDecoder::take(uint8_t byte, const std::function<void(ByteView)>& onPayload) {
  if (state >= State::kLength) packet.push_back(byte);
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
  if (kind == FrameKind::kUsb || byte != kSyncByte) return skip(byte);
  state = State::kSynced;
  packet = {kSyncByte};
}

void FrameDecoder::afterSync(uint8_t byte) {
  if (byte == kStartByte) return beginPacket();
  skip(kSyncByte);
  // A sync byte can be repeated; the packet starts with the last one.
  if (byte == kSyncByte) return;
  skip(byte);
  clear();
}

void FrameDecoder::skip(uint8_t byte) {
  ++tally.skippedBytes;
  noise.push_back(byte);
}

void FrameDecoder::reportNoise() {
  if (!noise.empty()) report(Waste::kNoise, noise);
  noise.clear();
}

void FrameDecoder::report(Waste waste, ByteView bytes) const {
  if (onWaste) onWaste(waste, bytes);
}

void FrameDecoder::beginPacket() {
  constexpr size_t kUsualSize = 64;  // bytes
  reportNoise();
  packet.reserve(kUsualSize);
  packet.push_back(kStartByte);
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

/// Gives the memory of a packet to the next one, unless that has begun.
void FrameDecoder::reuse(Bytes& old, Bytes& next) {
  if (!next.empty()) return;
  old.clear();
  next.swap(old);
}

void FrameDecoder::takeChecksum(uint8_t byte, const std::function<void(ByteView)>& onPayload) {
  const bool isGood = ((sum + byte) & 0xFF) == 0;
  Bytes body;
  Bytes whole;
  body.swap(payload);
  whole.swap(packet);
  clear();
  if (!isGood) {
    ++tally.badChecksums;
    report(Waste::kBadChecksum, whole);
  } else {
    ++tally.packets;
    onPayload(body);
  }
  reuse(body, payload);
  reuse(whole, packet);
}

}  // namespace simulator
