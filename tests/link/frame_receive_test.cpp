// readFrame: reading from the device and stopping. frame_reader_test.cpp has the cutting of frames.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>

#include "link/link_kinds.h"
#include "support/console.h"
#include "support/row_name.h"
#include "support/scripted_platform.h"

namespace ipodctl::frame_receive {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Gt;
using testing::SizeIs;

constexpr uint32_t kArea = 200000;

/// What readFrame returned.
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

/// A transport with an open device. Its reader thread never runs; the test calls readFrame itself.
class ReadFrameTest : public ScriptedPlatformTest {
 protected:
  explicit ReadFrameTest(const LinkKind& linkKind) : kind(linkKind), transport(linkKind.create()) {
    platform.reset();
    EXPECT_TRUE(transport->open(kind.deviceName));
    EXPECT_TRUE(transport->startReadData());
    platform.calls.clear();
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
        << "beyond the payload";
    return {result, Bytes(received.begin(), end), payload != nullptr};
  }

  const LinkKind& kind;
  const std::unique_ptr<Transport> transport;

 private:
  Bytes received;
};

class ReadFrame : public ReadFrameTest, public testing::WithParamInterface<LinkKind> {
 protected:
  ReadFrame() : ReadFrameTest(GetParam()) {}

  /// `frameBytes` as they are on this kind of link.
  Bytes onWire(const Bytes& frameBytes) const { return kind.sync + frameBytes; }

  const Bytes goodFrame = onWire({0x55, 0x02, 0x00, 0x01, 0xFD});
  const Bytes otherFrame = onWire({0x55, 0x03, 0x00, 0x02, 0x07, 0xF4});
  const Bytes badFrame = onWire({0x55, 0x02, 0x00, 0x01, 0xFC});
};

TEST_P(ReadFrame, ReturnsThePayload) {
  platform.arrive(goodFrame);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, ReturnsTheSecondFrameOfOneReadWithoutReadingAgain) {
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

TEST_P(ReadFrame, ReturnsZeroAndNoPayloadForABadChecksum) {
  platform.arrive(badFrame);
  EXPECT_EQ(read(), kBadFrame);
}

TEST_P(ReadFrame, ReturnsTheGoodFrameAfterABadOneWithoutReadingAgain) {
  platform.arrive(badFrame + goodFrame);
  EXPECT_EQ(read(), kBadFrame);
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_THAT(platform.readSizes, SizeIs(1));
}

TEST_P(ReadFrame, ReturnsZeroForALongFrameWithoutPayload) {
  platform.arrive(onWire({0x55, 0x00, 0x00, 0x00, 0x00}));
  EXPECT_EQ(read().result, 0);
}

TEST_P(ReadFrame, LogsABadChecksumWhileTheDebugFlagIsSet) {
  platform.arrive(badFrame);
  EXPECT_EQ(printedInDebug([&] { read(); }), "checksum Error\n");
}

TEST_P(ReadFrame, LogsNothingElse) {
  platform.arrive(Bytes{0x00} + goodFrame);
  EXPECT_EQ(printedInDebug([&] { read(); }), "");
  platform.arrive(otherFrame);
  EXPECT_EQ(printedInDebug([&] { read(2); }), "");
  platform.arrive(badFrame);
  EXPECT_EQ(printedQuietly([&] { read(); }), "");
}

// The destination.

TEST_P(ReadFrame, FailsWithoutADestination) {
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

TEST_P(ReadFrame, ReturnsZeroAndNoPayloadIfTheDestinationIsTooSmall) {
  platform.arrive(otherFrame + goodFrame);
  EXPECT_EQ(read(2), kBadFrame);
  EXPECT_EQ(read(2), frame({0x00, 0x01}));
}

// The device.

TEST_P(ReadFrame, ReadsIntoTheWholeAreaAndThenIntoTheRestOfIt) {
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
  platform.arrive(goodFrame + Bytes(kArea, 0x00));
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

TEST_P(ReadFrame, NeverReadsIntoAFullArea) {
  platform.arrive(
      Bytes(kArea - goodFrame.size() + 1, 0x00) + Bytes(goodFrame.begin(), goodFrame.end() - 1),
      Bytes{goodFrame.back()});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_THAT(platform.readSizes, SizeIs(2));
  EXPECT_THAT(platform.readSizes, Each(Gt(0u)));
}

TEST_P(ReadFrame, KeepsWhatHadArrivedWhenTheDeviceFails) {
  const Bytes head(goodFrame.begin(), goodFrame.end() - 2);
  platform.arrivals = {{head}, {{}, true}};
  EXPECT_EQ(read(), kNoMore);
  platform.arrivals = {{Bytes(goodFrame.end() - 2, goodFrame.end())}};
  EXPECT_EQ(read(), frame({0x00, 0x01}));
}

// The stop.

TEST_P(ReadFrame, ReturnsNothingMoreWhenTheReaderIsStopped) {
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

INSTANTIATE_TEST_SUITE_P(Kinds, ReadFrame, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);

class ReadSerialFrame : public ReadFrameTest {
 protected:
  ReadSerialFrame() : ReadFrameTest(kSerialKind) {}
};

TEST_F(ReadSerialFrame, NeedsTheSyncByte) {
  platform.arrive(Bytes{0x55, 0x02, 0x00, 0x01, 0xFD, 0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9});
  EXPECT_EQ(read(), frame({0x00, 0x05}));
}

TEST_F(ReadSerialFrame, StartsTheScanOverInTheNextCall) {
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

TEST_F(ReadSerialFrame, PollsEvery100Milliseconds) {
  platform.arrive(Bytes{}, Bytes{0xFF, 0x55, 0x02}, Bytes{}, Bytes{0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_THAT(platform.callsOf("Sleep"), ElementsAre("Sleep(100)", "Sleep(100)"));
}

class ReadUsbFrame : public ReadFrameTest {
 protected:
  ReadUsbFrame() : ReadFrameTest(kUsbKind) {}
};

TEST_F(ReadUsbFrame, ReadsAgainAtOnceAfterAReadOfNoBytes) {
  platform.arrive(Bytes{}, Bytes{}, Bytes{0x55, 0x02, 0x00, 0x01, 0xFD});
  EXPECT_EQ(read(), frame({0x00, 0x01}));
  EXPECT_THAT(platform.readSizes, SizeIs(3));
  EXPECT_THAT(platform.callsOf("Sleep"), SizeIs(0));
}

}  // namespace
}  // namespace ipodctl::frame_receive
