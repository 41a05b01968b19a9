#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <vector>

#include "link/link_kinds.h"
#include "support/console.h"
#include "support/row_name.h"
#include "support/scripted_platform.h"

namespace ipodctl {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Gt;
using testing::SizeIs;

constexpr uint32_t kArea = 200000;

/// What readFrame gave.
struct Reading {
  int result;
  Bytes payload;
  bool payloadAtDest;
};

bool operator==(const Reading& left, const Reading& right) {
  return left.result == right.result && left.payload == right.payload &&
         left.payloadAtDest == right.payloadAtDest;
}

void PrintTo(const Reading& reading, std::ostream* out) {
  *out << "result " << reading.result << (reading.payloadAtDest ? " with" : " without")
       << " a payload of " << testing::PrintToString(reading.payload);
}

Reading frame(const Bytes& payload) { return {static_cast<int>(payload.size()), payload, true}; }

const Reading kBadFrame{0, {}, false};
const Reading kNoMore{-1, {}, false};

/// A transport with an open device whose reader thread waits to be run, so that the test can read
/// its frames itself.
class ReadFrameTest : public ScriptedPlatformTest {
 protected:
  explicit ReadFrameTest(const LinkKind& linkKind) : kind(linkKind) { reopen(); }

  /// A transport that has read nothing yet.
  void reopen() {
    transport = kind.create();
    platform.reset();
    EXPECT_TRUE(transport->open(kind.deviceName));
    EXPECT_TRUE(transport->startReadData());
  }

  Reading read(int capacity = 65535) {
    received.assign(static_cast<size_t>(capacity) + 16, 0xEE);
    uint8_t marker = 0;
    uint8_t* payload = &marker;
    const int result = transport->readFrame(received.data(), capacity, payload);
    EXPECT_TRUE(payload == received.data() || payload == nullptr);
    const size_t length = payload != nullptr && result > 0 ? static_cast<size_t>(result) : 0;
    const auto end = received.begin() + static_cast<std::ptrdiff_t>(length);
    EXPECT_EQ(Bytes(end, received.end()), Bytes(received.size() - length, 0xEE))
        << "behind the payload";
    return {result, Bytes(received.begin(), end), payload != nullptr};
  }

  const LinkKind& kind;
  std::unique_ptr<Transport> transport;

 private:
  Bytes received;
};

Bytes joined(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts)
    all = all + part;
  return all;
}

// ---------------------------------------------------------------- frames of both kinds

class ReadFrame : public ReadFrameTest, public testing::WithParamInterface<LinkKind> {
 protected:
  ReadFrame() : ReadFrameTest(GetParam()) {}

  /// `frame` as it comes over this kind of link.
  Bytes onWire(const Bytes& frameBytes) const { return kind.sync + frameBytes; }

  const Bytes goodFrame = onWire({0x55, 0x02, 0x00, 0x01, 0xFD});
  const Bytes otherFrame = onWire({0x55, 0x03, 0x00, 0x02, 0x07, 0xF4});
  const Bytes badFrame = onWire({0x55, 0x02, 0x00, 0x01, 0xFC});
};

TEST_P(ReadFrame, GivesThePayload) {
  platform.arrive(goodFrame);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, GivesTheLongestShortPayload) {
  platform.arrive(onWire(Bytes{0x55, 0xFF} + Bytes(255, 0x01) + Bytes{0x02}));
  EXPECT_EQ(read(), frame(Bytes(255, 0x01)));
}

TEST_P(ReadFrame, GivesAPayloadOfOneByte) {
  platform.arrive(onWire({0x55, 0x01, 0x00, 0xFF}));
  EXPECT_EQ(read(), frame({0x00}));
}

TEST_P(ReadFrame, GivesTwoFramesOfOneReadWithoutReadingAgain) {
  platform.arrive(goodFrame + otherFrame);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_EQ(read(), frame({0x00, 0x02, 0x07}));
  EXPECT_THAT(platform.readSizes, SizeIs(1));
}

TEST_P(ReadFrame, KeepsTheStartOfTheNextFrame) {
  platform.arrive(goodFrame + Bytes(otherFrame.begin(), otherFrame.end() - 2),
                  Bytes(otherFrame.end() - 2, otherFrame.end()));
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_EQ(read(), frame({0x00, 0x02, 0x07}));
}

TEST_P(ReadFrame, SkipsNoiseBeforeAFrame) {
  platform.arrive(Bytes{0x00, 0xAA, 0x02} + goodFrame);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, SkipsNoiseBetweenFrames) {
  platform.arrive(goodFrame + Bytes{0x00, 0xAA, 0x02} + otherFrame);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_EQ(read(), frame({0x00, 0x02, 0x07}));
}

TEST_P(ReadFrame, FindsAFrameBehindSeveralSyncBytes) {
  platform.arrive(Bytes{0xFF, 0xFF, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, GivesZeroAndNoPayloadForABadChecksum) {
  platform.arrive(badFrame);
  EXPECT_EQ(read(), kBadFrame);
}

TEST_P(ReadFrame, GivesTheGoodFrameBehindABadOneWithoutReadingAgain) {
  platform.arrive(badFrame + goodFrame);
  EXPECT_EQ(read(), kBadFrame);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_THAT(platform.readSizes, SizeIs(1));
}

TEST_P(ReadFrame, DropsAsManyBytesOfABadFrameAsItsLengthTells) {
  platform.arrive(onWire({0x55, 0x03, 0x00, 0x02, 0xFD}) + goodFrame + otherFrame);
  EXPECT_EQ(read(), kBadFrame);
  EXPECT_EQ(read(), frame({0x00, 0x02, 0x07}));
}

TEST_P(ReadFrame, NoticesADamagedByteAnywhereInPayloadAndChecksum) {
  const Bytes whole = onWire({0x55, 0x04, 0x04, 0x00, 0x2D, 0x01, 0xCA});
  for (size_t place = kind.sync.size() + 2; place < whole.size(); ++place) {
    for (const int bit : {0x01, 0x80}) {
      SCOPED_TRACE(testing::Message() << "bit " << bit << " of byte " << place);
      reopen();
      Bytes damaged = whole;
      damaged[place] = static_cast<uint8_t>(damaged[place] ^ bit);
      platform.arrive(damaged);
      EXPECT_EQ(read(), kBadFrame);
    }
  }
}

TEST_P(ReadFrame, TellsABadChecksumWhileTheDebugFlagIsSet) {
  platform.arrive(badFrame);
  EXPECT_EQ(printedInDebug([&] { read(); }), "checksum Error\n");
}

TEST_P(ReadFrame, IsSilentOtherwise) {
  platform.arrive(Bytes{0x00} + goodFrame);
  EXPECT_EQ(printedInDebug([&] { read(); }), "");
  platform.arrive(badFrame);
  EXPECT_EQ(printedQuietly([&] { read(); }), "");
}

TEST_P(ReadFrame, OffersTheWholeAreaAndThenTheRestOfIt) {
  platform.arrive(Bytes(goodFrame.begin(), goodFrame.end() - 1), Bytes{goodFrame.back()});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_THAT(platform.readSizes,
              ElementsAre(kArea, kArea - static_cast<uint32_t>(goodFrame.size()) + 1));
}

TEST_P(ReadFrame, FailsWhenTheDeviceFails) {
  EXPECT_EQ(read(), kNoMore);
  EXPECT_THAT(platform.readSizes, SizeIs(1));
}

TEST_P(ReadFrame, FailsWhenTheDeviceReportsMoreBytesThanItWasAskedFor) {
  platform.arrive(onWire({0x55, 0x02, 0x00}), Bytes{0x01, 0xFD});
  EXPECT_EQ(platform.arrivals.size(), 2u);
  platform.surplusOfRead = kArea;
  EXPECT_EQ(read(), kNoMore);
  EXPECT_THAT(platform.readSizes, ElementsAre(kArea));
}

TEST_P(ReadFrame, TakesAReadThatFillsTheAreaToItsEnd) {
  platform.arrive(onWire({0x55, 0x02, 0x00, 0x01, 0xFD}) + Bytes(kArea, 0x00));
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, KeepsWhatHadArrivedWhenTheDeviceFails) {
  const Bytes head(goodFrame.begin(), goodFrame.end() - 2);
  platform.arrivals = {{head}, {{}, true}};
  EXPECT_EQ(read(), kNoMore);
  platform.arrivals = {{Bytes(goodFrame.end() - 2, goodFrame.end())}};
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, GivesNothingMoreWhenTheReaderIsStopped) {
  platform.arrive(goodFrame);
  transport->stopReadData();
  EXPECT_EQ(read(), kNoMore);
  EXPECT_THAT(platform.readSizes, SizeIs(0));
}

TEST_P(ReadFrame, EndsWhenTheReaderIsStoppedBetweenTwoReads) {
  platform.arrivals.push_back({Bytes(goodFrame.begin(), goodFrame.end() - 1)});
  platform.arrivals.push_back({Bytes{goodFrame.back()}, false, [&] { transport->close(); }});
  EXPECT_EQ(read(), kNoMore);
}

TEST_P(ReadFrame, EndsWhenTheReaderIsStoppedInNoise) {
  platform.arrivals.push_back({Bytes{0x00, 0x01}});
  platform.arrivals.push_back({Bytes{0x02}, false, [&] { transport->close(); }});
  EXPECT_EQ(read(), kNoMore);
  EXPECT_THAT(platform.readSizes, SizeIs(2));
}

TEST_P(ReadFrame, NeedsAPlaceForThePayload) {
  platform.arrive(goodFrame);
  uint8_t dest = 0xEE;
  uint8_t* payload = &dest;
  EXPECT_EQ(transport->readFrame(&dest, 0, payload), -1);
  EXPECT_EQ(payload, nullptr);
  payload = &dest;
  EXPECT_EQ(transport->readFrame(&dest, -1, payload), -1);
  EXPECT_EQ(payload, nullptr);
  payload = &dest;
  EXPECT_EQ(transport->readFrame(nullptr, 65535, payload), -1);
  EXPECT_EQ(payload, nullptr);
  EXPECT_THAT(platform.readSizes, SizeIs(0));
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, TakesAPayloadThatJustFits) {
  platform.arrive(otherFrame);
  EXPECT_EQ(read(3), frame({0x00, 0x02, 0x07}));
}

TEST_P(ReadFrame, WritesNothingBehindAPlaceThatIsTooSmall) {
  platform.arrive(otherFrame);
  uint8_t dest[] = {0xEE, 0xEE, 0xEE};
  uint8_t* payload = dest;
  EXPECT_LE(transport->readFrame(dest, 2, payload), 0);
  EXPECT_EQ(payload, nullptr);
  EXPECT_EQ(dest[2], 0xEE);
}

// A long frame: 55 00 length length payload checksum. Its check covers the bytes up to the
// payload's last but one.

TEST_P(ReadFrame, OfTheLongFormNormallyFails) {
  platform.arrive(
      onWire(Bytes{0x55, 0x00, 0x01, 0x00, 0x04, 0x00, 0x15} + Bytes(253, 0x41) + Bytes{0xA9}));
  EXPECT_EQ(read(), kBadFrame);
}

TEST_P(ReadFrame, OfTheLongFormSucceedsWhenThePayloadsLastButOneByteIsTheChecksum) {
  platform.arrive(onWire({0x55, 0x00, 0x00, 0x03, 0x00, 0xFD, 0x77, 0xEE}));
  EXPECT_EQ(read(), frame({0x00, 0xFD, 0x77}));
}

TEST_P(ReadFrame, OfTheLongFormLeavesItsLastTwoBytesInTheArea) {
  const Bytes longFrame = kind.sync.empty()
                              ? Bytes{0x55, 0x00, 0x00, 0x04, 0x00, 0xFC, 0x00, 0x55, 0x02}
                              : Bytes{0xFF, 0x55, 0x00, 0x00, 0x04, 0x00, 0xFC, 0x00, 0xFF, 0x55};
  const Bytes rest = kind.sync.empty() ? Bytes{0x00, 0x01, 0xFD} : Bytes{0x02, 0x00, 0x01, 0xFD};
  platform.arrive(longFrame + rest);
  EXPECT_EQ(read().result, 4);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, OfTheLongFormIsReadUpToItsChecksum) {
  const Bytes whole = onWire({0x55, 0x00, 0x00, 0x03, 0x00, 0xFD, 0x77, 0xEE});
  platform.arrive(Bytes(whole.begin(), whole.end() - 1), Bytes{whole.back()});
  EXPECT_EQ(read(), frame({0x00, 0xFD, 0x77}));
  EXPECT_THAT(platform.readSizes, SizeIs(2));
}

TEST_P(ReadFrame, OfTheLongFormTakesBothBytesOfItsLength) {
  Bytes payload(0x0203, 0x00);
  payload[0x0201] = 0xFB;
  platform.arrive(onWire(Bytes{0x55, 0x00, 0x02, 0x03} + payload + Bytes{0x00}));
  EXPECT_EQ(read(), frame(payload));
}

TEST_P(ReadFrame, OfTheLongFormTakesTheLargestPayload) {
  Bytes payload(65535, 0x00);
  payload[65533] = 0x02;
  platform.arrive(onWire(Bytes{0x55, 0x00, 0xFF, 0xFF} + payload + Bytes{0x00}));
  EXPECT_EQ(read(), frame(payload));
}

TEST_P(ReadFrame, OfTheLongFormWithoutPayloadIsNoFrame) {
  platform.arrive(onWire({0x55, 0x00, 0x00, 0x00, 0x00}));
  EXPECT_EQ(read().result, 0);
}

TEST_P(ReadFrame, GivesTheGoodFrameBehindALongOneThatFailed) {
  platform.arrive(
      onWire(Bytes{0x55, 0x00, 0x01, 0x00, 0x04, 0x00, 0x15} + Bytes(253, 0x41) + Bytes{0xA9}) +
      goodFrame);
  EXPECT_EQ(read(), kBadFrame);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

// A full receive area.

TEST_P(ReadFrame, GoesOnWhenAFullAreaHoldsAnIncompleteFrameBehindNoise) {
  const Bytes whole = onWire({0x55, 0x05, 0x00, 0x01, 0x02, 0x03, 0x04, 0xF1});
  for (size_t inArea = kind.sync.size() + 1; inArea < whole.size(); ++inArea) {
    SCOPED_TRACE(testing::Message() << inArea << " bytes of the frame in the area");
    reopen();
    const auto cut = whole.begin() + static_cast<std::ptrdiff_t>(inArea);
    platform.arrive(Bytes(kArea - inArea, 0x00) + Bytes(whole.begin(), cut),
                    Bytes(cut, whole.end()));
    EXPECT_EQ(read(), frame({0x00, 0x01, 0x02, 0x03, 0x04}));
    EXPECT_THAT(platform.readSizes, Each(Gt(0u)));
  }
}

TEST_P(ReadFrame, GoesOnWhenTheAreaFillsBitByBitBehindNoise) {
  Bytes payload(60000, 0x00);
  payload[59998] = 0xB6;
  const Bytes whole = onWire(Bytes{0x55, 0x00, 0xEA, 0x60} + payload + Bytes{0x00});
  const auto third = whole.begin() + 20000;
  platform.arrive(Bytes(150000, 0x00) + Bytes(whole.begin(), third), Bytes(third, third + 30000),
                  Bytes(third + 30000, whole.end()));
  EXPECT_EQ(read(), frame(payload));
  EXPECT_THAT(platform.readSizes, Each(Gt(0u)));
}

TEST_P(ReadFrame, DropsAnAreaFullOfNoise) {
  platform.arrive(Bytes(kArea, 0x00), Bytes(kArea, 0x01));
  EXPECT_EQ(read(), kNoMore);
  EXPECT_THAT(platform.readSizes, ElementsAre(kArea, kArea, kArea));
}

TEST_P(ReadFrame, EmptiesAnAreaFullOfFrames) {
  const Bytes longest = onWire(Bytes{0x55, 0xFF} + Bytes(255, 0x01) + Bytes{0x02});
  const uint32_t count = kArea / static_cast<uint32_t>(longest.size());
  platform.arrive(joined(std::vector<Bytes>(count, longest)));
  for (uint32_t i = 0; i < count; ++i)
    ASSERT_EQ(read(), frame(Bytes(255, 0x01)));
  EXPECT_THAT(platform.readSizes, SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(Kinds, ReadFrame, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);

// ---------------------------------------------------------------- frames in pieces

struct Stream : NamedRow {
  Bytes bytes;
  std::vector<Bytes> payloads;  ///< of the frames in it, an empty one for a bad frame
};

std::vector<Bytes> allPayloads(const std::function<Reading()>& read) {
  std::vector<Bytes> payloads;
  for (Reading reading = read(); reading.result >= 0; reading = read())
    payloads.push_back(reading.payload);
  return payloads;
}

class UsbStream : public ReadFrameTest, public testing::WithParamInterface<Stream> {
 protected:
  UsbStream() : ReadFrameTest(kUsbKind) {}
};

TEST_P(UsbStream, IsReadWhole) {
  platform.arrive(GetParam().bytes);
  EXPECT_EQ(allPayloads([&] { return read(); }), GetParam().payloads);
}

TEST_P(UsbStream, IsReadByteByByte) {
  for (const uint8_t byte : GetParam().bytes)
    platform.arrive(Bytes{byte});
  EXPECT_EQ(allPayloads([&] { return read(); }), GetParam().payloads);
}

TEST_P(UsbStream, IsReadSplitAtEveryByte) {
  const Bytes& bytes = GetParam().bytes;
  for (auto split = bytes.begin() + 1; split < bytes.end(); ++split) {
    SCOPED_TRACE(testing::Message() << "split at " << split - bytes.begin());
    reopen();
    platform.arrive(Bytes(bytes.begin(), split), Bytes(split, bytes.end()));
    EXPECT_EQ(allPayloads([&] { return read(); }), GetParam().payloads);
  }
}

TEST_P(UsbStream, IsReadWithReadsOfNoBytesInBetween) {
  for (const uint8_t byte : GetParam().bytes)
    platform.arrive(Bytes{}, Bytes{byte}, Bytes{}, Bytes{});
  EXPECT_EQ(allPayloads([&] { return read(); }), GetParam().payloads);
}

const Stream kUsbStreams[] = {
    {"OfOneFrame", {0x55, 0x02, 0x00, 0x01, 0xFD}, {{0x00, 0x01}}},
    {"OfOneFrameWithASyncByte", {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD}, {{0x00, 0x01}}},
    {"OfAnAcknowledgement",
     {0x55, 0x06, 0x04, 0x00, 0x01, 0x00, 0x00, 0x16, 0xDF},
     {{0x04, 0x00, 0x01, 0x00, 0x00, 0x16}}},
    {"OfTwoFrames",
     {0x55, 0x02, 0x00, 0x01, 0xFD, 0x55, 0x03, 0x00, 0x02, 0x07, 0xF4},
     {{0x00, 0x01}, {0x00, 0x02, 0x07}}},
    {"OfTwoFramesInNoise",
     {0x00, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD, 0xAA, 0x55, 0x03, 0x00, 0x02, 0x07, 0xF4, 0x02},
     {{0x00, 0x01}, {0x00, 0x02, 0x07}}},
    {"OfAFrameThatCarriesStartBytes",
     {0x55, 0x04, 0x00, 0x55, 0x55, 0xFF, 0x53},
     {{0x00, 0x55, 0x55, 0xFF}}},
    {"OfABadFrameAndAGoodOne",
     {0x55, 0x02, 0x00, 0x01, 0xFE, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {{}, {0x00, 0x01}}},
    {"OfALongFrameThatFails",
     {0x55, 0x00, 0x00, 0x03, 0x00, 0x02, 0x07, 0xF4, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {{}, {0x00, 0x01}}},
    {"OfALongFrameThatPasses",
     {0x55, 0x00, 0x00, 0x03, 0x00, 0xFD, 0x07, 0xF4, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {{0x00, 0xFD, 0x07}, {0x00, 0x01}}},
    {"OfNoiseOnly", {0x00, 0x01, 0xFF, 0xFE, 0x54, 0x56}, {}},
    {"OfAFrameWithoutItsEnd", {0x55, 0x02, 0x00, 0x01}, {}},
};

INSTANTIATE_TEST_SUITE_P(Streams, UsbStream, testing::ValuesIn(kUsbStreams), rowName<Stream>);

class SerialStream : public ReadFrameTest, public testing::WithParamInterface<Stream> {
 protected:
  SerialStream() : ReadFrameTest(kSerialKind) {}
};

TEST_P(SerialStream, IsReadWhole) {
  platform.arrive(GetParam().bytes);
  EXPECT_EQ(allPayloads([&] { return read(); }), GetParam().payloads);
}

const Stream kSerialStreams[] = {
    {"OfOneFrame", {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD}, {{0x00, 0x01}}},
    {"OfOneFrameBehindASecondSyncByte", {0xFF, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD}, {{0x00, 0x01}}},
    {"OfOneFrameBehindALoneSyncByte",
     {0xFF, 0x00, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {{0x00, 0x01}}},
    {"OfAFrameWithoutSyncByte", {0x55, 0x02, 0x00, 0x01, 0xFD}, {}},
    {"OfAFrameBehindAnotherByteThanTheSyncByte", {0x12, 0x55, 0x02, 0x00, 0x01, 0xFD}, {}},
    {"OfAFrameBehindALoneStartByte", {0x55, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD}, {{0x00, 0x01}}},
    {"OfTwoFramesInNoise",
     {0x00, 0xFF, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD, 0x55, 0xAA, 0xFF, 0x55, 0x03, 0x00, 0x02,
      0x07, 0xF4, 0x02},
     {{0x00, 0x01}, {0x00, 0x02, 0x07}}},
    {"OfTwoFramesOfWhichOneHasNoSyncByte",
     {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD, 0x55, 0x03, 0x00, 0x02, 0x07, 0xF4, 0xFF, 0x55, 0x02,
      0x00, 0x05, 0xF9},
     {{0x00, 0x01}, {0x00, 0x05}}},
    {"OfABadFrameAndAGoodOne",
     {0xFF, 0x55, 0x02, 0x00, 0x01, 0xFE, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {{}, {0x00, 0x01}}},
    {"OfALongFrameThatFails",
     {0xFF, 0x55, 0x00, 0x00, 0x03, 0x00, 0x02, 0x07, 0xF4, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
     {{}, {0x00, 0x01}}},
};

INSTANTIATE_TEST_SUITE_P(Streams, SerialStream, testing::ValuesIn(kSerialStreams), rowName<Stream>);

class ReadSerialFrame : public ReadFrameTest {
 protected:
  ReadSerialFrame() : ReadFrameTest(kSerialKind) {}
};

TEST_F(ReadSerialFrame, IsAssembledFromReadsSplitAnywhereBehindTheStartByte) {
  const Bytes whole = {0xFF, 0x55, 0x04, 0x00, 0x55, 0xFF, 0x55, 0x53};
  for (auto split = whole.begin() + 2; split < whole.end(); ++split) {
    SCOPED_TRACE(testing::Message() << "split at " << split - whole.begin());
    reopen();
    platform.arrive(Bytes(whole.begin(), split), Bytes(split, whole.end()));
    EXPECT_EQ(read(), frame({0x00, 0x55, 0xFF, 0x55}));
  }
}

TEST_F(ReadSerialFrame, IsAssembledByteByByteBehindTheStartByte) {
  platform.arrive(Bytes{0xFF, 0x55}, Bytes{0x02}, Bytes{0x00}, Bytes{0x01}, Bytes{0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_F(ReadSerialFrame, OfTheLongFormIsAssembledByteByByteBehindTheStartByte) {
  platform.arrive(Bytes{0xFF, 0x55}, Bytes{0x00}, Bytes{0x00}, Bytes{0x03}, Bytes{0x00},
                  Bytes{0xFD}, Bytes{0x77}, Bytes{0xEE});
  EXPECT_EQ(read(), frame({0x00, 0xFD, 0x77}));
}

TEST_F(ReadSerialFrame, BehindDiscardedNoiseIsLookedForFromTheOldPlaceOn) {
  platform.arrive(Bytes{0xAA, 0xBB, 0xCC},
                  Bytes{0x11, 0x22, 0x33, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_F(ReadSerialFrame, BeforeTheOldPlaceIsSkippedWithTheDataAroundIt) {
  platform.arrive(Bytes{0xAA, 0xBB, 0xCC}, Bytes{0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
                  Bytes{0, 0, 0, 0, 0, 0, 0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9});
  EXPECT_EQ(read(), frame({0x00, 0x05}));
}

TEST_F(ReadSerialFrame, ShorterThanTheOldPlaceIsDiscardedAtOnce) {
  platform.arrive(Bytes(8, 0xAA), Bytes{0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
                  Bytes(8, 0x00) + Bytes{0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9});
  EXPECT_EQ(read(), frame({0x00, 0x05}));
}

TEST_F(ReadSerialFrame, IsLostWhenItsSyncByteIsReadAlone) {
  platform.arrive(Bytes{0x00, 0x00, 0x00, 0x00, 0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9}, Bytes{0xFF},
                  Bytes{0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x05}));
  EXPECT_EQ(read(), kNoMore);
}

TEST_F(ReadSerialFrame, ForgetsTheSyncByteThatEndedDiscardedData) {
  platform.arrive(Bytes{0x00, 0x00, 0x00, 0x00, 0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9}, Bytes{0xFF},
                  Bytes{0xAA, 0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x05}));
  EXPECT_EQ(read(), kNoMore);
}

TEST_F(ReadSerialFrame, IsNotLookedForBehindTheAreaThatASyncByteEnds) {
  platform.arrive(Bytes(kArea - 1, 0x00) + Bytes{0xFF}, Bytes{0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), kNoMore);
  EXPECT_THAT(platform.readSizes, ElementsAre(kArea, kArea, kArea));
}

TEST_F(ReadSerialFrame, IsFoundBehindASyncByteReadAloneWhereTheFrameBeforeHadItsStartByte) {
  platform.arrive(Bytes{0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9}, Bytes{0xFF},
                  Bytes{0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x05}));
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_F(ReadSerialFrame, IsLookedForFromTheFrontAgainInTheNextCall) {
  platform.arrive(Bytes{0xAA, 0xBB, 0xFF, 0x55, 0x02, 0x00, 0x01, 0xFD},
                  Bytes{0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_EQ(read(), frame({0x00, 0x05}));
}

TEST_F(ReadSerialFrame, ForgetsTheSyncByteInTheNextCall) {
  platform.arrivals = {{Bytes{0xFF}}, {{}, true}};
  EXPECT_EQ(read(), kNoMore);
  platform.arrivals = {{Bytes{0x55, 0x02, 0x00, 0x01, 0xFD}}};
  EXPECT_EQ(read(), kNoMore);
}

TEST_F(ReadSerialFrame, IsWaitedForWithAPollEvery100Milliseconds) {
  platform.calls.clear();
  platform.arrive(Bytes{}, Bytes{0xFF, 0x55, 0x02}, Bytes{}, Bytes{0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_THAT(platform.callsOf("Sleep"), ElementsAre("Sleep(100)", "Sleep(100)"));
}

class ReadUsbFrame : public ReadFrameTest {
 protected:
  ReadUsbFrame() : ReadFrameTest(kUsbKind) {}
};

TEST_F(ReadUsbFrame, BehindDiscardedNoiseIsLookedForFromTheFront) {
  platform.arrive(Bytes{0xAA, 0xBB, 0xCC}, Bytes{0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_F(ReadUsbFrame, IsReadAgainAtOnceWhenNothingCame) {
  platform.calls.clear();
  platform.arrive(Bytes{}, Bytes{}, Bytes{0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_THAT(platform.readSizes, SizeIs(3));
  EXPECT_THAT(platform.callsOf("Sleep"), SizeIs(0));
}

}  // namespace
}  // namespace ipodctl
