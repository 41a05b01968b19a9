#include "support/ipod_bench.h"

#include <gtest/gtest.h>

#include "support/hex.h"

namespace simulator {

namespace {

constexpr size_t kRecordNameOffset = 7;  // lingo, command, index

uint8_t checksumOf(const Bytes& bytes, size_t from) {
  uint8_t sum = 0;
  for (size_t i = from; i < bytes.size(); ++i)
    sum = static_cast<uint8_t>(sum + bytes[i]);
  return static_cast<uint8_t>(-sum);
}

}  // namespace

Bench::Bench(Personality personality, MusicLibrary library, uint32_t seed)
    : ipod(std::move(personality), std::move(library), seed) {
  ipod.plugIn(now, FrameKind::kUsb);
}

void Bench::send(const std::string& payload) { ipod.receive(now, usbFrame(hex(payload))); }

void Bench::sendRaw(const std::string& bytes) { ipod.receive(now, hex(bytes)); }

Payloads Bench::take() {
  Bytes stream;
  for (const Bytes& write : ipod.takeOutput(now)) {
    stream.insert(stream.end(), write.begin(), write.end());
  }
  return usbPayloads(stream);
}

Payloads Bench::ask(const std::string& payload) {
  send(payload);
  return take();
}

Payloads Bench::takeRaw() {
  Payloads writes;
  for (const Bytes& write : ipod.takeOutput(now))
    writes.push_back(toHex(write));
  return writes;
}

Payloads Bench::wait(Time span) {
  const Time end = now + span;
  Payloads all;
  const auto gather = [&] {
    const Payloads some = take();
    all.insert(all.end(), some.begin(), some.end());
  };
  for (auto wake = ipod.nextWake(); wake && *wake <= end; wake = ipod.nextWake()) {
    now = std::max(now, *wake);
    gather();
  }
  now = end;
  gather();
  return all;
}

void Bench::enter() { EXPECT_EQ(ask("00 05"), Payloads{"00 02 00 05"}); }

void Bench::select(uint8_t category, uint32_t index) {
  count(category);
  EXPECT_EQ(ask("04 00 17 " + toHex(Bytes{category}) + u32(index)), Payloads{"04 00 01 00 00 17"});
}

std::vector<std::string> Bench::list(uint8_t category) {
  std::vector<std::string> names;
  const uint32_t size = count(category);
  for (uint32_t i = 0; i < size; ++i) {
    const Payloads record = ask("04 00 1A " + toHex(Bytes{category}) + u32(i) + " 00 00 00 01");
    if (record.size() != 1) return {"no record"};
    const Bytes bytes = hex(record[0]);
    names.emplace_back(bytes.begin() + kRecordNameOffset, bytes.end() - 1);
  }
  return names;
}

uint32_t Bench::count(uint8_t category) {
  const Payloads reply = ask("04 00 18 " + toHex(Bytes{category}));
  if (reply.size() != 1 || reply[0].rfind("04 00 19", 0) != 0) {
    ADD_FAILURE() << "no count of category " << int{category};
    return 0;
  }
  const Bytes bytes = hex(reply[0]);
  return uint32_t{bytes[3]} << 24 | uint32_t{bytes[4]} << 16 | uint32_t{bytes[5]} << 8 | bytes[6];
}

Bytes usbFrame(ByteView payload) {
  Bytes frame{0x55};
  if (payload.size() > 255) {
    frame.push_back(0);
    frame.push_back(static_cast<uint8_t>(payload.size() >> 8));
  }
  frame.push_back(static_cast<uint8_t>(payload.size()));
  frame.insert(frame.end(), payload.begin(), payload.end());
  frame.push_back(checksumOf(frame, 1));
  return frame;
}

Payloads usbPayloads(ByteView stream) {
  Payloads payloads;
  const Bytes bytes(stream.begin(), stream.end());
  size_t at = 0;
  while (at + 2 < bytes.size() && bytes[at] == 0x55) {
    const bool longForm = bytes[at + 1] == 0;
    const size_t length = longForm ? size_t{bytes[at + 2]} << 8 | bytes[at + 3] : bytes[at + 1];
    const size_t begin = at + (longForm ? 4 : 2);
    const size_t end = begin + length;
    if (end >= bytes.size()) break;
    const Bytes frame(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                      bytes.begin() + static_cast<std::ptrdiff_t>(end) + 1);
    if (checksumOf(frame, 1) != 0) break;
    payloads.push_back(toHex(ByteView(bytes).from(begin).prefix(length)));
    at = end + 1;
  }
  if (at != bytes.size()) payloads.push_back("not a frame: " + toHex(ByteView(bytes).from(at)));
  return payloads;
}

std::string u32(uint32_t value) {
  return " " + toHex(Bytes{static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                           static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)});
}

}  // namespace simulator
