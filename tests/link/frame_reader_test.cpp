#include "link/frame_reader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <ostream>
#include <vector>

#include "support/bytes.h"
#include "support/row_name.h"

namespace ipodctl::frame_reader {
namespace {

constexpr uint32_t kArea = 200000;
constexpr uint32_t kLargestPayload = 65535;

/// What the reader makes of its bytes, other than that it needs more.
struct Event {
  FrameOutcome outcome;
  Bytes payload;
};

using Events = std::vector<Event>;

bool operator==(const Event& left, const Event& right) {
  return left.outcome == right.outcome && left.payload == right.payload;
}

void PrintTo(const Event& event, std::ostream* out) {
  switch (event.outcome) {
    case FrameOutcome::kNeedsMore:
      *out << "needs more";
      break;
    case FrameOutcome::kFrame:
      *out << "frame " << testing::PrintToString(event.payload);
      break;
    case FrameOutcome::kBadChecksum:
      *out << "bad checksum";
      break;
    case FrameOutcome::kTooLarge:
      *out << "too large";
      break;
  }
}

Event frame(const Bytes& payload) { return {FrameOutcome::kFrame, payload}; }

const Event kBad{FrameOutcome::kBadChecksum, {}};
const Event kTooLarge{FrameOutcome::kTooLarge, {}};

/// A reader, and what it has made of all bytes so far. Each event starts a new frame, as each call
/// of readFrame does.
class Feeding {
 public:
  explicit Feeding(FrameKind kind, uint32_t largestPayload = kLargestPayload)
      : reader(new FrameReader(kind)), capacity(largestPayload) {
    reader->beginFrame();
  }

  /// Feeds all bytes, as many at a time as there is room for.
  void feed(const Bytes& bytes) {
    size_t fed = 0;
    do {
      const size_t count = std::min<size_t>(bytes.size() - fed, reader->freeSize());
      if (count > 0) std::memcpy(reader->freeArea(), bytes.data() + fed, count);
      reader->add(static_cast<uint32_t>(count));
      fed += count;
      takeAll();
    } while (fed < bytes.size());
  }

  void takeAll() {
    for (Event event = take(); event.outcome != FrameOutcome::kNeedsMore; event = take()) {
      events.push_back(event);
      reader->beginFrame();
    }
  }

  const std::unique_ptr<FrameReader> reader;
  Events events;

 private:
  Event take() {
    constexpr uint32_t kNotSet = 0xEEEEEEEE;
    Bytes dest(capacity + 16, 0xEE);
    uint32_t length = kNotSet;
    const FrameOutcome outcome = reader->next(dest.data(), capacity, length);
    if (outcome != FrameOutcome::kFrame) {
      EXPECT_EQ(length, kNotSet);
      length = 0;
    }
    const auto end = dest.begin() + static_cast<std::ptrdiff_t>(length);
    EXPECT_EQ(Bytes(end, dest.end()), Bytes(dest.size() - length, 0xEE)) << "beyond the payload";
    return {outcome, Bytes(dest.begin(), end)};
  }

  const uint32_t capacity;
};

Events ofWhole(FrameKind kind, const Bytes& bytes) {
  Feeding feeding(kind);
  feeding.feed(bytes);
  return feeding.events;
}

Events ofPieces(FrameKind kind, const std::vector<Bytes>& pieces) {
  Feeding feeding(kind);
  for (const Bytes& piece : pieces)
    feeding.feed(piece);
  return feeding.events;
}

Bytes firstOf(const Bytes& bytes, size_t count) {
  return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count)};
}

Bytes withoutFirst(const Bytes& bytes, size_t count) {
  return {bytes.begin() + static_cast<std::ptrdiff_t>(count), bytes.end()};
}

// ---------------------------------------------------------------- the table

/// What splits after `first` to `last` bytes give.
struct Splits {
  size_t first;
  size_t last;
  Events events;
};

/// Bytes in, events out.
struct Stream : NamedRow {
  Bytes before;  ///< fed first, whole
  Bytes bytes;
  Events events;  ///< of all bytes, those before included, in every feeding that is not listed

  // What other feedings give. Only a serial link has any: it discards bytes without a start byte,
  // but keeps the place of its scan.
  std::optional<Events> byteByByte = std::nullopt;
  std::vector<Splits> splits = {};
};

class StreamTest : public testing::TestWithParam<Stream> {
 protected:
  explicit StreamTest(FrameKind frameKind) : kind(frameKind) {}

  void feedWhole() {
    EXPECT_EQ(ofPieces(kind, {GetParam().before, GetParam().bytes}), GetParam().events);
  }

  void feedByteByByte() {
    std::vector<Bytes> pieces = {GetParam().before};
    for (const uint8_t byte : GetParam().bytes)
      pieces.push_back({byte});
    EXPECT_EQ(ofPieces(kind, pieces), GetParam().byteByByte.value_or(GetParam().events));
  }

  void feedSplitEverywhere() {
    const Bytes& bytes = GetParam().bytes;
    for (size_t split = 1; split < bytes.size(); ++split) {
      SCOPED_TRACE(testing::Message() << "split after " << split << " bytes");
      const std::vector<Bytes> pieces = {GetParam().before, firstOf(bytes, split),
                                         withoutFirst(bytes, split)};
      EXPECT_EQ(ofPieces(kind, pieces), eventsOfSplit(split));
    }
  }

  const Events& eventsOfSplit(size_t split) const {
    for (const Splits& splits : GetParam().splits)
      if (split >= splits.first && split <= splits.last) return splits.events;
    return GetParam().events;
  }

  const FrameKind kind;
};

class UsbStream : public StreamTest {
 protected:
  UsbStream() : StreamTest(FrameKind::kWithoutSyncByte) {}
};

TEST_P(UsbStream, IsFedWhole) { feedWhole(); }
TEST_P(UsbStream, IsFedByteByByte) { feedByteByByte(); }
TEST_P(UsbStream, IsFedSplitEverywhere) { feedSplitEverywhere(); }

const Stream kUsbStreams[] = {
    {"Nothing", {}, {}, {}},
    {"OneFrame", {}, {0x55, 0x02, 0x00, 0x01, 0xFD}, {frame({0x00, 0x01})}},
    {"ASyncByteIsNoise", {}, {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD}, {frame({0x00, 0x01})}},
    {"SeveralSyncBytesAreNoise",
     {},
     {0xFF, 0xFF, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {frame({0x00, 0x01})}},
    {"APayloadOfOneByte", {}, {0x55, 0x01, 0x00, 0xFF}, {frame({0x00})}},
    {"AnAcknowledgement",
     {},
     {0x55, 0x06, 0x04, 0x00, 0x01, 0x00, 0x00, 0x16, 0xDF},
     {frame({0x04, 0x00, 0x01, 0x00, 0x00, 0x16})}},
    {"TwoFrames",
     {},
     {0x55, 0x02, 0x00, 0x01, 0xFD, 0x55, 0x03, 0x00, 0x02, 0x07, 0xF4},
     {frame({0x00, 0x01}), frame({0x00, 0x02, 0x07})}},
    {"TwoFramesInNoise",
     {},
     {0x00, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD, 0xAA, 0x55, 0x03, 0x00, 0x02, 0x07, 0xF4, 0x02},
     {frame({0x00, 0x01}), frame({0x00, 0x02, 0x07})}},
    {"APayloadOfStartBytes",
     {},
     {0x55, 0x04, 0x00, 0x55, 0x55, 0xFF, 0x53},
     {frame({0x00, 0x55, 0x55, 0xFF})}},
    {"ABadChecksum", {}, {0x55, 0x02, 0x00, 0x01, 0xFC}, {kBad}},
    {"AGoodFrameAfterABadOne",
     {},
     {0x55, 0x02, 0x00, 0x01, 0xFE, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kBad, frame({0x00, 0x01})}},
    {"ABadFrameTakesAsManyBytesAsItsLengthSays",
     {},
     {0x55, 0x03, 0x00, 0x02, 0xFD, 0x55, 0x02, 0x00, 0x01, 0xFD, 0x55, 0x03, 0x00, 0x02, 0x07,
      0xF4},
     {kBad, frame({0x00, 0x02, 0x07})}},
    {"ALongFrameFails",
     {},
     {0x55, 0x00, 0x00, 0x03, 0x00, 0x02, 0x07, 0xF4, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kBad, frame({0x00, 0x01})}},
    {"ALongFramePassesIfItsLastButOneByteIsTheChecksum",
     {},
     {0x55, 0x00, 0x00, 0x03, 0x00, 0xFD, 0x77, 0xEE, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {frame({0x00, 0xFD, 0x77}), frame({0x00, 0x01})}},
    {"ALongFrameLeavesItsLastTwoBytes",
     {},
     {0x55, 0x00, 0x00, 0x04, 0x00, 0xFC, 0x00, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {frame({0x00, 0xFC, 0x00, 0x55}), frame({0x00, 0x01})}},
    {"ALongFrameWithoutPayload",
     {},
     {0x55, 0x00, 0x00, 0x00, 0x00, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {frame({}), frame({0x00, 0x01})}},
    {"NoiseOnly", {}, {0x00, 0x01, 0xFF, 0xFE, 0x54, 0x56}, {}},
    {"AFrameWithoutItsEnd", {}, {0x55, 0x02, 0x00, 0x01}, {}},
    {"TheScanStartsOverAfterDiscardedNoise",
     {0xAA, 0xBB, 0xCC},
     {0x55, 0x02, 0x00, 0x01, 0xFD},
     {frame({0x00, 0x01})}},
};

INSTANTIATE_TEST_SUITE_P(Streams, UsbStream, testing::ValuesIn(kUsbStreams), rowName<Stream>);

class SerialStream : public StreamTest {
 protected:
  SerialStream() : StreamTest(FrameKind::kWithSyncByte) {}
};

TEST_P(SerialStream, IsFedWhole) { feedWhole(); }
TEST_P(SerialStream, IsFedByteByByte) { feedByteByByte(); }
TEST_P(SerialStream, IsFedSplitEverywhere) { feedSplitEverywhere(); }

const Event kFirst = frame({0x00, 0x01});
const Event kSecond = frame({0x00, 0x02, 0x07});
const Event kThird = frame({0x00, 0x05});

/// The first byte is discarded, and the index of the scan is 1 from then on. Each later byte is
/// discarded before the scan reaches it.
const Events kNone;

const Stream kSerialStreams[] = {
    {"Nothing", {}, {}, {}},
    // A sync byte alone is discarded. Of the rest, the start byte is skipped.
    {"OneFrame", {}, {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD}, {kFirst}, kNone, {{1, 1, kNone}}},
    {"APayloadOfOneByte",
     {},
     {0xFF, 0x55, 0x01, 0x00, 0xFF},
     {frame({0x00})},
     kNone,
     {{1, 1, kNone}}},
    {"APayloadOfStartAndSyncBytes",
     {},
     {0xFF, 0x55, 0x04, 0x00, 0x55, 0xFF, 0x55, 0x53},
     {frame({0x00, 0x55, 0xFF, 0x55})},
     kNone,
     {{1, 1, kNone}}},
    // Split after 1: the second sync byte is skipped. After 2: FF 55 is skipped.
    {"TheByteAfterALoneSyncByteIsTestedAgain",
     {},
     {0xFF, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kFirst},
     kNone,
     {{1, 2, kNone}}},
    // Split after 1: one of the other two is skipped, and the last one still starts the frame.
    {"SeveralSyncBytes",
     {},
     {0xFF, 0xFF, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kFirst},
     kNone,
     {{2, 3, kNone}}},
    {"AnotherByteAfterASyncByte",
     {},
     {0xFF, 0x00, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kFirst},
     kNone,
     {{2, 3, kNone}}},
    {"NoSyncByte", {}, {0x55, 0x02, 0x00, 0x01, 0xFD}, {}},
    {"AnotherByteThanTheSyncByte", {}, {0x12, 0x55, 0x02, 0x00, 0x01, 0xFD}, {}},
    {"ALoneStartByte",
     {},
     {0x55, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kFirst},
     kNone,
     {{1, 2, kNone}}},
    // Split after 2 or 3: the first frame's sync byte is skipped. After 10: the second one's. After
    // 11: the area is 55 AA FF 55, and the last of these is stale. It holds the place.
    {"TwoFramesInNoise",
     {},
     {0x00, 0xFF, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD, 0x55, 0xAA, 0xFF, 0x55, 0x03, 0x00, 0x02,
      0x07, 0xF4, 0x02},
     {kFirst, kSecond},
     kNone,
     {{2, 3, {kSecond}}, {10, 10, {kFirst}}}},
    // Split after 10 to 13: as many bytes as are discarded of the frame without a sync byte are
    // skipped of the next one.
    {"TwoFramesAndOneWithoutSyncByteBetweenThem",
     {},
     {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD, 0x55, 0x03, 0x00, 0x02, 0x07, 0xF4, 0xFF, 0x55, 0x02,
      0x00, 0x05, 0xF9},
     {kFirst, kThird},
     kNone,
     {{1, 1, {kThird}}, {10, 13, {kFirst}}}},
    {"ABadChecksum", {}, {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFC}, {kBad}, kNone, {{1, 1, kNone}}},
    // Split after 7: the stale start byte of the bad frame holds the place.
    {"AGoodFrameAfterABadOne",
     {},
     {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFE, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kBad, kFirst},
     kNone,
     {{1, 1, {kFirst}}}},
    // Split after 1: without the bad frame nothing takes the next sync byte.
    {"ABadFrameTakesAsManyBytesAsItsLengthSays",
     {},
     {0xFF, 0x55, 0x03, 0x00, 0x02, 0xFD, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD, 0xFF, 0x55, 0x03,
      0x00, 0x02, 0x07, 0xF4},
     {kBad, kSecond},
     kNone,
     {{1, 1, {kFirst, kSecond}}, {10, 13, {kBad}}}},
    // Split after 9 or 10: the last two bytes of the long frame are discarded.
    {"ALongFrameFails",
     {},
     {0xFF, 0x55, 0x00, 0x00, 0x03, 0x00, 0x02, 0x07, 0xF4, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kBad, kFirst},
     kNone,
     {{1, 1, {kFirst}}, {9, 10, {kBad}}}},
    {"ALongFramePassesIfItsLastButOneByteIsTheChecksum",
     {},
     {0xFF, 0x55, 0x00, 0x00, 0x03, 0x00, 0xFD, 0x77, 0xEE},
     {frame({0x00, 0xFD, 0x77})},
     kNone,
     {{1, 1, kNone}}},
    {"ALongFrameLeavesItsLastTwoBytes",
     {},
     {0xFF, 0x55, 0x00, 0x00, 0x04, 0x00, 0xFC, 0x00, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {frame({0x00, 0xFC, 0x00, 0xFF}), kFirst},
     kNone,
     {{1, 1, {kFirst}}}},
    // From here on the bytes before leave something in the area. Here: a start byte at 1.
    {"AStaleStartByteHoldsThePlace",
     {0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9},
     {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kThird, kFirst}},
    // Split after 2 or 3: the real byte is another one, and the bytes are discarded.
    {"AStaleStartByteIsReplacedByAnotherByte",
     {0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9},
     {0xFF, 0xAA, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kThird, kFirst},
     Events{kThird},
     {{2, 3, {kThird}}}},
    {"NoStaleStartByteHoldsThePlace",
     {0x00, 0x00, 0x00, 0x00, 0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9},
     {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kThird, kFirst},
     Events{kThird},
     {{1, 1, {kThird}}}},
    {"ASyncByteThatEndedDiscardedBytesIsForgotten",
     {0x00, 0x00, 0x00, 0x00, 0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9, 0xFF},
     {0xAA, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kThird}},
    // The index is 3. It finds the sync byte only if that is the fourth byte of its piece or later.
    {"TheScanStaysAfterDiscardedNoise",
     {0xAA, 0xBB, 0xCC},
     {0x11, 0x22, 0x33, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {kFirst},
     kNone,
     {{1, 4, kNone}}},
    // Split after 5 to 10: the index moves on to the end of the first piece.
    {"AFrameBeforeThePlaceOfTheScanIsSkipped",
     {0xAA, 0xBB, 0xCC},
     {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD, 0x00, 0x00, 0x00, 0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9},
     {kThird},
     kNone,
     {{5, 10, kNone}}},
    {"BytesShorterThanThePlaceOfTheScanAreDiscarded",
     {0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA, 0xAA},
     {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {}},
    {"TheScanStartsOverForTheNextFrame",
     {0xAA, 0xBB, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9},
     {kFirst, kThird},
     Events{kFirst},
     {{1, 1, {kFirst}}}},
    {"NoiseOnly", {}, {0x00, 0x55, 0xFF, 0xFE, 0x54, 0x56}, {}},
    {"AFrameWithoutItsEnd", {}, {0xFF, 0x55, 0x02, 0x00, 0x01}, {}},
};

INSTANTIATE_TEST_SUITE_P(Streams, SerialStream, testing::ValuesIn(kSerialStreams), rowName<Stream>);

// ---------------------------------------------------------------- both kinds

struct Kind : NamedRow {
  FrameKind frameKind;
  Bytes sync;  ///< before a frame's start byte
};

const Kind kKinds[] = {{"Serial", FrameKind::kWithSyncByte, {0xFF}},
                       {"Usb", FrameKind::kWithoutSyncByte, {}}};

class FrameReaderTest : public testing::TestWithParam<Kind> {
 protected:
  FrameKind kind() const { return GetParam().frameKind; }

  /// `frameBytes` as they are on this kind of link.
  Bytes onWire(const Bytes& frameBytes) const { return GetParam().sync + frameBytes; }

  const Bytes goodFrame = onWire({0x55, 0x02, 0x00, 0x01, 0xFD});
  const Bytes otherFrame = onWire({0x55, 0x03, 0x00, 0x02, 0x07, 0xF4});
};

TEST_P(FrameReaderTest, NoticesADamagedByteAnywhereInPayloadAndChecksum) {
  const Bytes whole = onWire({0x55, 0x04, 0x04, 0x00, 0x2D, 0x01, 0xCA});
  EXPECT_EQ(ofWhole(kind(), whole), Events{frame({0x04, 0x00, 0x2D, 0x01})});
  for (size_t place = GetParam().sync.size() + 2; place < whole.size(); ++place) {
    for (const int bit : {0x01, 0x80}) {
      SCOPED_TRACE(testing::Message() << "bit " << bit << " of byte " << place);
      Bytes damaged = whole;
      damaged[place] = static_cast<uint8_t>(damaged[place] ^ bit);
      EXPECT_EQ(ofWhole(kind(), damaged), Events{kBad});
    }
  }
}

TEST_P(FrameReaderTest, TakesTheLongestShortPayload) {
  EXPECT_EQ(ofWhole(kind(), onWire(Bytes{0x55, 0xFF} + Bytes(255, 0x01) + Bytes{0x02})),
            Events{frame(Bytes(255, 0x01))});
}

TEST_P(FrameReaderTest, FailsALongFrameOf256Bytes) {
  EXPECT_EQ(ofWhole(kind(), onWire(Bytes{0x55, 0x00, 0x01, 0x00, 0x04, 0x00, 0x15} +
                                   Bytes(253, 0x41) + Bytes{0xA9}) +
                                goodFrame),
            (Events{kBad, frame({0x00, 0x01})}));
}

TEST_P(FrameReaderTest, ReadsBothBytesOfALongLength) {
  Bytes payload(0x0203, 0x00);
  payload[0x0201] = 0xFB;
  EXPECT_EQ(ofWhole(kind(), onWire(Bytes{0x55, 0x00, 0x02, 0x03} + payload + Bytes{0x00})),
            Events{frame(payload)});
}

TEST_P(FrameReaderTest, TakesTheLargestPayload) {
  Bytes payload(65535, 0x00);
  payload[65533] = 0x02;
  EXPECT_EQ(ofWhole(kind(), onWire(Bytes{0x55, 0x00, 0xFF, 0xFF} + payload + Bytes{0x00})),
            Events{frame(payload)});
}

TEST_P(FrameReaderTest, TakesAPayloadThatJustFits) {
  Feeding feeding(kind(), 3);
  feeding.feed(otherFrame);
  EXPECT_EQ(feeding.events, Events{frame({0x00, 0x02, 0x07})});
}

TEST_P(FrameReaderTest, DropsAGoodFrameThatIsTooLarge) {
  Feeding feeding(kind(), 2);
  feeding.feed(otherFrame + goodFrame);
  EXPECT_EQ(feeding.events, (Events{kTooLarge, frame({0x00, 0x01})}));
}

TEST_P(FrameReaderTest, ReportsTheChecksumOfABadFrameThatIsTooLarge) {
  Feeding feeding(kind(), 2);
  feeding.feed(onWire({0x55, 0x03, 0x00, 0x02, 0x07, 0xF5}) + goodFrame);
  EXPECT_EQ(feeding.events, (Events{kBad, frame({0x00, 0x01})}));
}

TEST_P(FrameReaderTest, GoesOnAfterAReadOfNoBytes) {
  Feeding feeding(kind());
  feeding.feed({});
  feeding.feed(firstOf(goodFrame, goodFrame.size() - 2));
  feeding.feed({});
  feeding.feed({});
  feeding.feed(withoutFirst(goodFrame, goodFrame.size() - 2));
  EXPECT_EQ(feeding.events, Events{frame({0x00, 0x01})});
}

TEST_P(FrameReaderTest, KeepsAnIncompleteFrameForTheNextScan) {
  Feeding feeding(kind());
  feeding.feed(firstOf(goodFrame, goodFrame.size() - 2));
  feeding.reader->beginFrame();
  feeding.feed(withoutFirst(goodFrame, goodFrame.size() - 2));
  EXPECT_EQ(feeding.events, Events{frame({0x00, 0x01})});
}

TEST_P(FrameReaderTest, DropsAllReceivedBytesWhenItIsCleared) {
  Feeding feeding(kind());
  feeding.feed(firstOf(otherFrame, otherFrame.size() - 2));
  feeding.reader->clear();
  EXPECT_EQ(feeding.reader->freeSize(), kArea);
  feeding.reader->beginFrame();
  feeding.feed(goodFrame);
  EXPECT_EQ(feeding.events, Events{frame({0x00, 0x01})});
}

// The area of received bytes.

TEST_P(FrameReaderTest, HasRoomForTheWholeAreaAndThenForTheRestOfIt) {
  Feeding feeding(kind());
  EXPECT_EQ(feeding.reader->freeSize(), kArea);
  uint8_t* const area = feeding.reader->freeArea();
  feeding.feed(firstOf(goodFrame, goodFrame.size() - 1));
  EXPECT_EQ(feeding.reader->freeSize(), kArea - static_cast<uint32_t>(goodFrame.size()) + 1);
  EXPECT_EQ(feeding.reader->freeArea(), area + goodFrame.size() - 1);
  feeding.feed({goodFrame.back()});
  EXPECT_EQ(feeding.reader->freeSize(), kArea);
}

TEST_P(FrameReaderTest, TakesBytesThatFillTheAreaToItsEnd) {
  EXPECT_EQ(ofWhole(kind(), goodFrame + Bytes(kArea - goodFrame.size(), 0x00)),
            Events{frame({0x00, 0x01})});
}

TEST_P(FrameReaderTest, MakesRoomForAnIncompleteFrameAfterNoise) {
  const Bytes whole = onWire({0x55, 0x05, 0x00, 0x01, 0x02, 0x03, 0x04, 0xF1});
  for (size_t inArea = GetParam().sync.size() + 1; inArea < whole.size(); ++inArea) {
    SCOPED_TRACE(testing::Message() << inArea << " bytes of the frame in the area");
    Feeding feeding(kind());
    feeding.feed(Bytes(kArea - inArea, 0x00) + firstOf(whole, inArea));
    EXPECT_GT(feeding.reader->freeSize(), 0u);
    feeding.feed(withoutFirst(whole, inArea));
    EXPECT_EQ(feeding.events, Events{frame({0x00, 0x01, 0x02, 0x03, 0x04})});
  }
}

TEST_P(FrameReaderTest, MakesRoomInAnAreaThatFillsBitByBitAfterNoise) {
  Bytes payload(60000, 0x00);
  payload[59998] = 0xB6;
  const Bytes whole = onWire(Bytes{0x55, 0x00, 0xEA, 0x60} + payload + Bytes{0x00});
  EXPECT_EQ(
      ofPieces(kind(), {Bytes(150000, 0x00) + firstOf(whole, 20000),
                        firstOf(withoutFirst(whole, 20000), 30000), withoutFirst(whole, 50000)}),
      Events{frame(payload)});
}

TEST_P(FrameReaderTest, DropsAnAreaFullOfNoise) {
  Feeding feeding(kind());
  for (const uint8_t noise : Bytes{0x00, 0x01}) {
    feeding.feed(Bytes(kArea, noise));
    EXPECT_EQ(feeding.reader->freeSize(), kArea);
  }
  EXPECT_EQ(feeding.events, kNone);
}

TEST_P(FrameReaderTest, EmptiesAnAreaFullOfFrames) {
  const Bytes longest = onWire(Bytes{0x55, 0xFF} + Bytes(255, 0x01) + Bytes{0x02});
  const size_t count = kArea / longest.size();
  Bytes all;
  all.reserve(kArea);
  for (size_t i = 0; i < count; ++i)
    all.insert(all.end(), longest.begin(), longest.end());
  EXPECT_EQ(ofWhole(kind(), all), Events(count, frame(Bytes(255, 0x01))));
}

INSTANTIATE_TEST_SUITE_P(Kinds, FrameReaderTest, testing::ValuesIn(kKinds), rowName<Kind>);

class SerialFrameReader : public testing::Test {
 protected:
  Feeding feeding{FrameKind::kWithSyncByte};
};

TEST_F(SerialFrameReader, DoesNotLookBeyondAnAreaThatASyncByteEnds) {
  feeding.feed(Bytes(kArea - 1, 0x00) + Bytes{0xFF});
  feeding.feed({0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(feeding.events, kNone);
}

TEST_F(SerialFrameReader, ForgetsTheSyncByteForTheNextScan) {
  feeding.feed({0xFF});
  feeding.reader->beginFrame();
  feeding.feed({0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(feeding.events, kNone);
}

TEST_F(SerialFrameReader, KeepsStaleBytesWhenItIsCleared) {
  feeding.feed({0xFF, 0x55, 0x02, 0x00, 0x05});
  feeding.reader->clear();
  feeding.reader->beginFrame();
  feeding.feed({0xFF});
  feeding.feed({0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(feeding.events, Events{kFirst});
}

TEST_F(SerialFrameReader, DiscardsALoneSyncByteAfterAReadOfNoBytes) {
  feeding.feed({0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9, 0xFF});
  feeding.feed({});
  feeding.feed({0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(feeding.events, Events{kThird});
}

}  // namespace
}  // namespace ipodctl::frame_reader
