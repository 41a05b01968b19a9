// The bytes of a link in pieces of any size, through both kinds of transport and the reader thread.

#include <desk.h>
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <vector>

#include "lingo/lingo_message.h"
#include "link/serial_transport.h"
#include "link/usb_transport.h"
#include "support/require.h"
#include "virtual/virtual_world.h"

using namespace ipodctl;

namespace {

using Bytes = std::vector<uint8_t>;
using virtual_platform::Readiness;
using virtual_platform::Time;

constexpr uint8_t kSync = 0xFF;
constexpr uint8_t kStart = 0x55;

/// Returns its bytes in pieces. When there are no more, reads wait.
class PieceDevice final : public virtual_platform::VirtualDevice {
 public:
  PieceDevice(Bytes stream, std::vector<size_t> sizes)
      : bytes(std::move(stream)), pieces(std::move(sizes)) {}

  bool canBeOpened() const override { return true; }
  void opened(Time) override {}
  void closed(Time) override {}
  Readiness readReadiness(Time) override {
    return position < bytes.size() ? Readiness::kReady : Readiness::kWaits;
  }
  Readiness writeReadiness(Time) override { return Readiness::kReady; }
  size_t read(Time, BYTE* buffer, size_t count) override {
    const size_t piece = piecesTaken < pieces.size() ? pieces[piecesTaken++] : bytes.size();
    const size_t moved = std::min({piece, count, bytes.size() - position});
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), moved, buffer);
    position += moved;
    return moved;
  }
  size_t write(Time, const BYTE*, size_t count) override { return count; }
  std::optional<Time> nextWake() const override { return std::nullopt; }

 private:
  const Bytes bytes;
  const std::vector<size_t> pieces;
  size_t position = 0;
  size_t piecesTaken = 0;
};

/// The messages that a link must receive from a stream.
struct Reading {
  std::vector<Bytes> payloads;
  bool endsAtBadFrame = false;
};

bool makesMessage(const Bytes& payload) {
  const uint8_t lingo = payload[0];
  const bool isKnown = lingo == 0x00 || lingo == 0x02 || lingo == 0x04 || lingo == 0x0A;
  return isKnown && payload.size() >= (lingo == 0x04 ? 3 : 2);
}

/// Returns the offset of the next start byte; the stream's size when there is none.
size_t startIn(const Bytes& stream, size_t from, bool isSerial) {
  for (size_t at = from; at < stream.size(); ++at) {
    if (stream[at] != kStart) continue;
    if (!isSerial || (at > from && stream[at - 1] == kSync)) return at;
  }
  return stream.size();
}

/// Returns whether the checksum test passes. The test assumes a length of one byte, also in the
/// long form: see takeFrame.
bool sumsUp(const Bytes& stream, size_t start, size_t length) {
  uint8_t sum = 0;
  for (size_t at = start + 1; at < start + length + 3; ++at)
    sum = static_cast<uint8_t>(sum + stream[at]);
  return sum == 0;
}

Reading readingOf(const Bytes& stream, bool isSerial) {
  Reading reading;
  size_t at = 0;
  while ((at = startIn(stream, at, isSerial)) + 1 < stream.size()) {
    size_t length = stream[at + 1];
    size_t payload = at + 2;
    if (length == 0) {
      if (stream.size() < at + 4) break;
      length = static_cast<size_t>(stream[at + 2] << 8 | stream[at + 3]);
      payload = at + 4;
    }
    if (stream.size() < payload + length + 1) break;
    reading.endsAtBadFrame = length == 0 || !sumsUp(stream, at, length);
    if (reading.endsAtBadFrame) break;
    const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(payload);
    const Bytes content(begin, begin + static_cast<std::ptrdiff_t>(length));
    if (makesMessage(content)) reading.payloads.push_back(content);
    at += length + 3;
  }
  return reading;
}

Bytes payloadOf(const LingoMessage& message) {
  Bytes payload{message.getLingo()};
  const uint16_t command = message.getCommand();
  if (message.getLingo() == 0x04) payload.push_back(static_cast<uint8_t>(command >> 8));
  payload.push_back(static_cast<uint8_t>(command));
  payload.resize(payload.size() + message.getDataLength());
  const uint32_t length = message.getDataLength();
  require(message.getData(payload.data() + payload.size() - length, length) == length,
          "a message returns other data than it has");
  return payload;
}

template <class Kind>
std::vector<Bytes> receive(PieceDevice& device, uint64_t seed) {
  std::vector<Bytes> payloads;
  virtual_platform::VirtualWorld world(seed);
  world.addDevice("IPD1:", device);
  const std::string failure = world.run([&] {
    Kind transport;
    require(transport.open("IPD1:") && transport.startReadData(), "the link does not open");
    while (const auto message = transport.getMessage(0, 1))
      payloads.push_back(payloadOf(*message));
    transport.close();
  });
  require(failure.empty(), failure);
  return payloads;
}

/// Compares the messages. A reader that meets a bad frame stops, and messages not taken by then are
/// lost.
void compare(const std::vector<Bytes>& payloads, const Reading& expected) {
  const bool isStart = payloads.size() <= expected.payloads.size() &&
                       std::equal(payloads.begin(), payloads.end(), expected.payloads.begin());
  require(isStart, "other messages than those in the bytes");
  require(expected.endsAtBadFrame || payloads.size() == expected.payloads.size(),
          "a message is missing");
}

/// Returns a size: that of a byte, or, from 250 on, about the size of the transport's buffer.
size_t sizeFrom(FuzzedDataProvider& input) {
  constexpr uint8_t kFirstLarge = 250;
  constexpr size_t kStep = 5;
  const auto choice = input.ConsumeIntegral<uint8_t>();
  return choice < kFirstLarge ? choice : kReceiveCapacity - 10 + (choice - kFirstLarge) * kStep;
}

std::vector<size_t> piecesFrom(FuzzedDataProvider& input) {
  constexpr uint8_t kMostPieces = 31;
  std::vector<size_t> pieces(input.ConsumeIntegral<uint8_t>() % (kMostPieces + 1));
  for (size_t& size : pieces)
    size = std::max<size_t>(sizeFrom(input), 1);
  return pieces;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  const auto seed = input.ConsumeIntegral<uint8_t>();
  const bool isSerial = seed % 2 != 0;
  const size_t noise = sizeFrom(input);
  const std::vector<size_t> pieces = piecesFrom(input);
  Bytes stream(noise);
  const Bytes said = input.ConsumeRemainingBytes<uint8_t>();
  stream.insert(stream.end(), said.begin(), said.end());
  PieceDevice device(stream, pieces);
  const std::vector<Bytes> payloads =
      isSerial ? receive<SerialTransport>(device, seed) : receive<UsbTransport>(device, seed);
  // The places where a serial link's bytes are cut affect the frames: a sync byte may lose the next
  // frame.
  const bool isPredictable = !isSerial || (pieces.empty() && noise == 0);
  if (isPredictable) compare(payloads, readingOf(stream, isSerial));
  return 0;
}
