#include "virtual/forged_frame.h"

#include <algorithm>

#include "wire/frame.h"
#include "wire/message.h"

namespace virtual_session {
namespace {

using simulator::FrameKind;
using simulator::Lingo;

constexpr std::size_t kLongLengthField = 3;
constexpr std::size_t kShortLengthField = 1;

}  // namespace

ForgedFrame::ForgedFrame(const Bytes& frame)
    : original(frame), hasSync(frame.front() == simulator::kSyncByte) {
  const std::size_t length = hasSync ? 2 : 1;
  const bool isLong = frame[length] == simulator::kLongFormMarker;
  const std::size_t start = length + (isLong ? kLongLengthField : kShortLengthField);
  whole.assign(frame.begin() + static_cast<std::ptrdiff_t>(start), frame.end() - 1);
}

bool ForgedFrame::is(Lingo wantedLingo, uint16_t wantedCommand) const {
  return lingo() == static_cast<uint8_t>(wantedLingo) && command() == wantedCommand;
}

std::size_t ForgedFrame::headerSize() const { return 1 + simulator::commandWidth(lingo()); }

uint16_t ForgedFrame::command() const { return simulator::parseMessage(whole)->command; }

Bytes ForgedFrame::with(const Bytes& payload) const {
  return simulator::encodeFrame(hasSync ? FrameKind::kSerial : FrameKind::kUsb, payload);
}

Bytes ForgedFrame::withCommand(uint16_t command) const {
  const Bytes data(whole.begin() + static_cast<std::ptrdiff_t>(headerSize()), whole.end());
  return with(simulator::messagePayload({lingo(), command, data}));
}

Bytes ForgedFrame::withLingo(uint8_t lingo) const {
  Bytes payload = whole;
  payload.front() = lingo;
  return with(payload);
}

Bytes ForgedFrame::withData(const Bytes& data) const {
  return with(simulator::messagePayload({lingo(), command(), data}));
}

Bytes ForgedFrame::withPart(std::size_t offset, const Bytes& part) const {
  Bytes payload = whole;
  const std::size_t start = headerSize() + offset;
  payload.resize(std::max(payload.size(), start + part.size()));
  std::copy(part.begin(), part.end(), payload.begin() + static_cast<std::ptrdiff_t>(start));
  return with(payload);
}

Bytes ForgedFrame::acknowledgement(uint8_t status, uint16_t command) const {
  if (lingo() != static_cast<uint8_t>(Lingo::kExtendedInterface)) {
    return with({lingo(), simulator::kAck, status, static_cast<uint8_t>(command)});
  }
  return with({lingo(), 0, simulator::kExtendedAck, status, static_cast<uint8_t>(command >> 8),
               static_cast<uint8_t>(command)});
}

uint16_t ForgedFrame::request() const {
  const auto isIn = [this](Lingo wanted) { return lingo() == static_cast<uint8_t>(wanted); };
  if (isIn(Lingo::kGeneral) && command() == simulator::kAck) return whole[3];
  if (isIn(Lingo::kExtendedInterface) && command() == simulator::kExtendedAck) {
    return static_cast<uint16_t>(whole[4] << 8 | whole[5]);
  }
  return static_cast<uint16_t>(command() - 1);
}

Bytes acceptedLongFrame(const ForgedFrame& original, Bytes payload) {
  const std::size_t check = payload.size() - 2;
  const auto size = static_cast<uint16_t>(payload.size());
  Bytes checked{simulator::kLongFormMarker, static_cast<uint8_t>(size >> 8),
                static_cast<uint8_t>(size)};
  checked.insert(checked.end(), payload.begin(),
                 payload.begin() + static_cast<std::ptrdiff_t>(check));
  payload[check] = simulator::frameChecksum(checked);
  return original.with(payload);
}

Bytes bigEndian(uint32_t number) {
  return {static_cast<uint8_t>(number >> 24), static_cast<uint8_t>(number >> 16),
          static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)};
}

std::vector<virtual_platform::ComingFrame> atOnce(const std::vector<Bytes>& frames) {
  std::vector<virtual_platform::ComingFrame> coming;
  for (const Bytes& frame : frames)
    coming.push_back({virtual_platform::Time(0), frame});
  return coming;
}

}  // namespace virtual_session
