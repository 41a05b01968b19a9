// The bytes of a link in pieces of any size, through the frame reader of either kind.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "link/frame_reader.h"
#include "support/require.h"

using namespace ipodctl;

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kSync = 0xFF;
constexpr uint8_t kStart = 0x55;
constexpr size_t kArea = 200000;

/// What a link makes of its bytes: the payload of a good frame, or why there is none.
struct Event {
  FrameOutcome outcome;
  Bytes payload;
};

bool operator==(const Event& left, const Event& right) {
  return left.outcome == right.outcome && left.payload == right.payload;
}

// ---------------------------------------------------------------- the model

/// The place of the next start byte; the stream's size when there is none.
size_t startIn(const Bytes& stream, size_t from, bool isSerial) {
  const auto end = stream.end();
  auto at = std::min(stream.begin() + static_cast<std::ptrdiff_t>(from), end);
  const auto begin = at;
  while ((at = std::find(at, end, kStart)) != end) {
    if (!isSerial || (at > begin && at[-1] == kSync)) break;
    ++at;
  }
  return static_cast<size_t>(at - stream.begin());
}

/// The check assumes a length of one byte, even where it has two more: see takeFrame.
bool sumsUp(const Bytes& stream, size_t start, size_t length) {
  uint8_t sum = 0;
  for (size_t at = start + 1; at < start + length + 3; ++at)
    sum = static_cast<uint8_t>(sum + stream[at]);
  return sum == 0;
}

Event eventOf(const Bytes& stream, size_t start, size_t payload, size_t length, size_t capacity) {
  if (!sumsUp(stream, start, length)) return {FrameOutcome::kBadChecksum, {}};
  if (length > capacity) return {FrameOutcome::kTooLarge, {}};
  const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(payload);
  return {FrameOutcome::kFrame, Bytes(begin, begin + static_cast<std::ptrdiff_t>(length))};
}

/// The events of a stream that is not cut, or whose cuts do not matter.
std::vector<Event> expectedEvents(const Bytes& stream, bool isSerial, size_t capacity) {
  std::vector<Event> events;
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
    events.push_back(eventOf(stream, at, payload, length, capacity));
    at += length + 3;
  }
  return events;
}

/// Returns the place after `header` and `payload` in the stream; the stream's end when they are not
/// in it.
Bytes::const_iterator placeAfter(Bytes header, const Bytes& payload, Bytes::const_iterator from,
                                 Bytes::const_iterator end) {
  header.insert(header.end(), payload.begin(), payload.end());
  const auto found = std::search(from, end, header.begin(), header.end());
  return found == end ? end : found + static_cast<std::ptrdiff_t>(payload.size());
}

/// Cuts can lose frames of a serial link, but what it finds is in the stream and in this order.
void requireInStream(const std::vector<Event>& events, const Bytes& stream) {
  auto from = stream.begin();
  for (const Event& event : events) {
    if (event.outcome != FrameOutcome::kFrame) continue;
    const auto high = static_cast<uint8_t>(event.payload.size() >> 8);
    const auto low = static_cast<uint8_t>(event.payload.size());
    auto next = placeAfter({kSync, kStart, 0x00, high, low}, event.payload, from, stream.end());
    if (high == 0 && low != 0) {
      next = std::min(next, placeAfter({kSync, kStart, low}, event.payload, from, stream.end()));
    }
    require(next != stream.end(), "a frame that nobody sent");
    from = next;
  }
}

// ---------------------------------------------------------------- the reader

class Link {
 public:
  Link(bool isSerial, size_t largestPayload)
      : reader(readerOf(isSerial)), capacity(largestPayload), dest(new uint8_t[capacity]) {
    reader.beginFrame();
  }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  /// Leaves the reader as a new one is: its area has only bytes of value 0.
  ~Link() {
    reader.clear();
    std::memset(reader.freeArea(), 0, filled);
  }

  /// Receives a piece, or as much of it as there is room for. Returns the number of bytes received.
  size_t receive(const uint8_t* bytes, size_t count) {
    require(reader.freeSize() > 0, "the link is full and reads no more");
    const size_t moved = std::min<size_t>(count, reader.freeSize());
    if (moved > 0) std::memcpy(reader.freeArea(), bytes, moved);
    reader.add(static_cast<uint32_t>(moved));
    filled = std::max<size_t>(filled, kArea - reader.freeSize());
    takeEvents();
    return moved;
  }

  std::vector<Event> events;

 private:
  /// Returns one of two readers for all inputs: to make one takes longer than most inputs.
  static FrameReader& readerOf(bool isSerial) {
    static FrameReader& usb = *new FrameReader(ipodctl::FrameKind::kWithoutSyncByte);
    static FrameReader& serial = *new FrameReader(ipodctl::FrameKind::kWithSyncByte);
    return isSerial ? serial : usb;
  }

  void takeEvents() {
    for (;;) {
      uint32_t length = 0;
      const FrameOutcome outcome = reader.next(dest.get(), static_cast<uint32_t>(capacity), length);
      if (outcome == FrameOutcome::kNeedsMore) return;
      require(length <= capacity, "a payload is longer than its destination");
      events.push_back({outcome, Bytes(dest.get(), dest.get() + length)});
      reader.beginFrame();
    }
  }

  FrameReader& reader;
  const size_t capacity;
  const std::unique_ptr<uint8_t[]> dest;
  size_t filled = 0;  ///< the bytes of the reader's area that were used
};

std::vector<Event> eventsOf(Link& link, const Bytes& stream, const std::vector<size_t>& pieces) {
  size_t position = 0;
  size_t piecesTaken = 0;
  while (position < stream.size()) {
    const size_t piece = piecesTaken < pieces.size() ? pieces[piecesTaken++] : stream.size();
    position += link.receive(stream.data() + position, std::min(piece, stream.size() - position));
  }
  return link.events;
}

// ---------------------------------------------------------------- the input

/// A byte, from 250 on about as many as the reader's area holds.
size_t sizeFrom(FuzzedDataProvider& input) {
  constexpr uint8_t kFirstLarge = 250;
  constexpr size_t kStep = 5;
  const auto choice = input.ConsumeIntegral<uint8_t>();
  return choice < kFirstLarge ? choice : kArea - 10 + (choice - kFirstLarge) * kStep;
}

std::vector<size_t> piecesFrom(FuzzedDataProvider& input) {
  constexpr uint8_t kMostPieces = 31;
  std::vector<size_t> pieces(input.ConsumeIntegral<uint8_t>() % (kMostPieces + 1));
  for (size_t& size : pieces)
    size = sizeFrom(input);
  return pieces;
}

/// Mostly as many bytes as the longest payload has, as on the reader thread; sometimes few.
size_t capacityFrom(uint8_t choice) {
  constexpr uint8_t kFirstLargest = 64;
  return choice < kFirstLargest ? choice / 2 + 1 : 65535;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  const auto choice = input.ConsumeIntegral<uint8_t>();
  const bool isSerial = choice % 2 != 0;
  const size_t capacity = capacityFrom(choice);
  const size_t noise = sizeFrom(input);
  const std::vector<size_t> pieces = piecesFrom(input);
  Bytes stream(noise);
  const Bytes said = input.ConsumeRemainingBytes<uint8_t>();
  stream.insert(stream.end(), said.begin(), said.end());
  Link link(isSerial, capacity);
  const std::vector<Event> events = eventsOf(link, stream, pieces);
  // Where a serial link's bytes are cut decides about frames: a sync byte may lose the next one.
  const bool isWhole = pieces.empty() && stream.size() <= kArea;
  if (!isSerial || isWhole) {
    require(events == expectedEvents(stream, isSerial, capacity),
            "other frames than the bytes say");
  } else {
    requireInStream(events, stream);
  }
  return 0;
}
