#include "support/wire_frames.h"

#include <cstddef>
#include <numeric>

namespace {

constexpr std::uint8_t kSync = 0xFF;
constexpr std::uint8_t kStart = 0x55;
constexpr std::size_t kLongestShortForm = 255;

std::uint8_t sumOf(Bytes::const_iterator begin, Bytes::const_iterator end) {
  return static_cast<std::uint8_t>(std::accumulate(begin, end, 0u));
}

}  // namespace

Bytes frameOf(const Bytes& payload, WireKind kind) {
  Bytes summed;
  if (payload.size() > kLongestShortForm) {
    summed = {0, static_cast<std::uint8_t>(payload.size() / 256)};
  }
  summed.push_back(static_cast<std::uint8_t>(payload.size() % 256));
  summed.insert(summed.end(), payload.begin(), payload.end());
  summed.push_back(static_cast<std::uint8_t>(0x100 - sumOf(summed.begin(), summed.end())));
  Bytes frame;
  if (kind == WireKind::kSerial) frame.push_back(kSync);
  frame.push_back(kStart);
  frame.insert(frame.end(), summed.begin(), summed.end());
  return frame;
}

void FrameCutter::feed(const Bytes& bytes) {
  buffered.insert(buffered.end(), bytes.begin(), bytes.end());
}

std::optional<FrameCutter::Piece> FrameCutter::next() {
  std::size_t syncBytes = 0;
  while (syncBytes < buffered.size() && buffered[syncBytes] == kSync)
    ++syncBytes;
  if (buffered.size() < syncBytes + 2) return std::nullopt;
  const bool synced = kind == WireKind::kUsb || syncBytes > 0;
  if (!synced || buffered[syncBytes] != kStart) return cut(syncBytes + 1, false, syncBytes, 1);

  const std::size_t lengthAt = syncBytes + 1;
  std::size_t length = buffered[lengthAt];
  std::size_t payloadAt = lengthAt + 1;
  if (length == 0) {
    if (buffered.size() < lengthAt + 3) return std::nullopt;
    length = buffered[lengthAt + 1] * 256u + buffered[lengthAt + 2];
    payloadAt = lengthAt + 3;
  }
  const std::size_t end = payloadAt + length + 1;
  if (buffered.size() < end) return std::nullopt;
  const auto at = [&](std::size_t index) {
    return buffered.begin() + static_cast<std::ptrdiff_t>(index);
  };
  return cut(end, sumOf(at(lengthAt), at(end)) == 0, payloadAt, length);
}

FrameCutter::Piece FrameCutter::cut(std::size_t count, bool good, std::size_t payloadStart,
                                    std::size_t payloadLength) {
  const auto first = buffered.begin() + static_cast<std::ptrdiff_t>(payloadStart);
  Piece piece = {good, Bytes(first, first + static_cast<std::ptrdiff_t>(payloadLength))};
  buffered.erase(buffered.begin(), buffered.begin() + static_cast<std::ptrdiff_t>(count));
  return piece;
}
