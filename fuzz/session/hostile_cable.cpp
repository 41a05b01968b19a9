#include "session/hostile_cable.h"

#include <algorithm>
#include <initializer_list>

#include "wire/frame.h"

using simulator::Bytes;
using simulator::ByteView;
using virtual_platform::Readiness;
using virtual_platform::Time;

namespace {

constexpr uint8_t kGeneral = 0x00;
constexpr uint8_t kExtended = 0x04;
constexpr uint8_t kDigitalAudio = 0x0A;
constexpr size_t kRecordCountSize = 7;  // lingo, command, count

/// Returns the payload of a written frame in short form, as all the library's requests are.
ByteView payloadOfFrame(const BYTE* frame, size_t size) {
  constexpr size_t kHeader = 2;
  const ByteView bytes(frame, size);
  return size > kHeader ? bytes.from(kHeader).prefix(bytes[1]) : ByteView{};
}

uint8_t byteAt(ByteView bytes, size_t at) { return at < bytes.size() ? bytes[at] : uint8_t{0}; }

bool isRecordCount(const Bytes& payload) {
  return payload.size() == kRecordCountSize && payload[0] == kExtended && payload[1] == 0x00 &&
         payload[2] == 0x19;
}

Bytes commandOf(ByteView request, uint8_t step) {
  const auto low = static_cast<uint8_t>(byteAt(request, 1) + step);
  if (byteAt(request, 0) != kExtended) return {byteAt(request, 0), low};
  return {kExtended, byteAt(request, 1), static_cast<uint8_t>(byteAt(request, 2) + step)};
}

/// Returns an acknowledgement. Its lingo, command and the place of the status depend on the lingo
/// of the request.
Bytes acknowledgementOf(ByteView request, uint8_t status) {
  if (byteAt(request, 0) == kExtended) {
    return {kExtended, 0x00, 0x01, status, byteAt(request, 1), byteAt(request, 2)};
  }
  const bool isAudio = byteAt(request, 0) == kDigitalAudio;
  return {isAudio ? kDigitalAudio : kGeneral, isAudio ? uint8_t{0x00} : uint8_t{0x02}, status,
          byteAt(request, 1)};
}

}  // namespace

void HostileCable::limitCount(Bytes& payload) const {
  if (!mostRecords || !isRecordCount(payload)) return;
  const uint32_t count = uint32_t{payload[3]} << 24 | uint32_t{payload[4]} << 16 |
                         uint32_t{payload[5]} << 8 | payload[6];
  if (count <= *mostRecords) return;
  payload[3] = payload[4] = 0;
  payload[5] = static_cast<uint8_t>(*mostRecords >> 8);
  payload[6] = static_cast<uint8_t>(*mostRecords);
}

void HostileCable::sayRaw(const Bytes& bytes) {
  unread.insert(unread.end(), bytes.begin(), bytes.end());
}

void HostileCable::say(Bytes payload) {
  limitCount(payload);
  sayRaw(encodeFrame(simulator::FrameKind::kUsb, payload));
}

void HostileCable::leave() {
  answers.clear();
  unread.clear();
  mostRecords.reset();
}

void HostileCable::opened(Time now) {
  unread.clear();
  real.opened(now);
}

void HostileCable::closed(Time now) {
  unread.clear();
  real.closed(now);
}

Readiness HostileCable::readReadiness(Time now) {
  const Readiness readiness = real.readReadiness(now);
  return readiness == Readiness::kWaits && !unread.empty() ? Readiness::kReady : readiness;
}

Readiness HostileCable::writeReadiness(Time now) { return real.writeReadiness(now); }

size_t HostileCable::read(Time now, BYTE* buffer, size_t count) {
  if (unread.empty()) return real.read(now, buffer, count);
  const size_t moved = std::min(count, unread.size());
  std::copy_n(unread.begin(), moved, buffer);
  unread.erase(unread.begin(), unread.begin() + static_cast<std::ptrdiff_t>(moved));
  return moved;
}

size_t HostileCable::write(Time now, const BYTE* bytes, size_t count) {
  if (answers.empty() || !real.isPlugged()) return real.write(now, bytes, count);
  const Answer answer = std::move(answers.front());
  answers.pop_front();
  say(payloadOf(answer, payloadOfFrame(bytes, count)));
  return count;
}

Bytes HostileCable::payloadOf(const Answer& answer, ByteView request) const {
  Bytes payload;
  size_t used = 0;
  if (answer.kind == AnswerKind::kNextCommand) payload = commandOf(request, 1);
  if (answer.kind == AnswerKind::kAcknowledgement) {
    payload = acknowledgementOf(request, byteAt(answer.bytes, 0));
    used = std::min<size_t>(1, answer.bytes.size());
  }
  payload.insert(payload.end(), answer.bytes.begin() + static_cast<std::ptrdiff_t>(used),
                 answer.bytes.end());
  return payload;
}
