#include "sync_bytes.h"

#include <utility>

namespace coredll {
namespace {

constexpr std::uint8_t kSyncByte = 0xFF;
constexpr std::uint8_t kStartByte = 0x55;
constexpr std::uint8_t kLongFormMarker = 0x00;
constexpr std::size_t kChecksumSize = 1;

}  // namespace

FramePlace::Part FramePlace::of(std::uint8_t byte) {
  switch (state) {
    case State::kBetween:
      if (byte != kStartByte) return Part::kBetween;
      state = State::kLength;
      return Part::kStart;
    case State::kLength:
      left = byte + kChecksumSize;
      state = byte == kLongFormMarker ? State::kLongLengthHigh : State::kRest;
      break;
    case State::kLongLengthHigh:
      left = std::size_t{byte} << 8;
      state = State::kLongLengthLow;
      break;
    case State::kLongLengthLow:
      left += byte + kChecksumSize;
      state = State::kRest;
      break;
    case State::kRest:
      if (--left == 0) state = State::kBetween;
      break;
  }
  return Part::kInside;
}

std::vector<std::uint8_t> SyncBytesAdded::with(const std::uint8_t* bytes, std::size_t count) {
  std::vector<std::uint8_t> all;
  all.reserve(count + 1);
  for (std::size_t i = 0; i < count; ++i) {
    if (place.of(bytes[i]) == FramePlace::Part::kStart) all.push_back(kSyncByte);
    all.push_back(bytes[i]);
  }
  return all;
}

void SyncBytesRemoved::append(const std::uint8_t* bytes, std::size_t count,
                              std::vector<std::uint8_t>& out) {
  for (std::size_t i = 0; i < count; ++i) {
    if (isKept && bytes[i] != kStartByte) out.push_back(kSyncByte);
    isKept = !place.isInside() && bytes[i] == kSyncByte;
    if (isKept) continue;
    place.of(bytes[i]);
    out.push_back(bytes[i]);
  }
}

bool SyncBytesRemoved::appendKept(std::vector<std::uint8_t>& out) {
  if (!std::exchange(isKept, false)) return false;
  out.push_back(kSyncByte);
  return true;
}

}  // namespace coredll
