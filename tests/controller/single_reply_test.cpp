#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <string>

#include "controller/controller_test.h"
#include "controller/operations.h"
#include "support/console.h"
#include "support/row_name.h"

namespace ipodctl {
namespace {

class SingleReply : public ControllerFixture<IpodController>,
                    public testing::WithParamInterface<SingleReplyOperation> {
 protected:
  const SingleReplyOperation& row() const { return GetParam(); }

  Calls transaction() const { return {"flush", "send " + row().request, "wait 0 ns 1 s"}; }

  /// The operation's one transaction with an iPod that answers so: it fails and changes no output.
  void expectRefused(const Payloads& answer) {
    for (const bool odd : {false, true}) {
      callLog().clear();
      ipod().answer(row().request, answer);
      EXPECT_EQ(row().call(controller(), odd), (Outcome{false, row().untouched(odd)}));
      EXPECT_EQ(callLog(), transaction());
    }
  }

  /// The reply with its data cut or lengthened by zero bytes.
  Bytes replyOfLength(uint32_t length) const {
    Bytes reply = row().reply;
    reply.resize(dataOffset(reply) + length);
    return reply;
  }

  /// The reply's command and data in another lingo.
  Bytes replyOfLingo(uint8_t lingo) const {
    const Bytes& reply = row().reply;
    Bytes other = {lingo};
    if (lingo == 0x04) other.push_back(0x00);
    other.insert(other.end(), reply.begin() + dataOffset(reply) - 1, reply.end());
    return other;
  }
};

TEST_P(SingleReply, IsClearedForSentAndWaitedForOnce) {
  for (const bool odd : {false, true}) {
    callLog().clear();
    ipod().answer(row().request, {row().reply});
    EXPECT_EQ(row().call(controller(), odd), (Outcome{true, row().outputs}));
    EXPECT_EQ(callLog(), transaction());
    EXPECT_EQ(liveMessages(), 0u);
  }
}

TEST_P(SingleReply, FailsAfterASecondOfSilence) { expectRefused({}); }

TEST_P(SingleReply, IsNotTakenFromMessagesReceivedBeforeTheRequest) {
  ipod().arrive({row().reply, row().reply});
  expectRefused({});
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_P(SingleReply, OfAnotherLingoFailsAndIsDestroyed) {
  for (const uint8_t lingo : Bytes{0x00, 0x02, 0x04, 0x0A}) {
    if (lingo == row().reply[0]) continue;
    SCOPED_TRACE(testing::Message() << "lingo " << int{lingo});
    expectRefused({replyOfLingo(lingo), row().reply});
    EXPECT_EQ(ipod().queued(), 1u);
    EXPECT_EQ(liveMessages(), 1u);
  }
}

TEST_P(SingleReply, OfAnotherCommandFailsAndIsDestroyed) {
  const uint32_t commandPlace = dataOffset(row().reply) - 1;
  for (const uint8_t change : Bytes{0x01, 0x02, 0x40, 0x80}) {
    Bytes other = row().reply;
    other[commandPlace] = static_cast<uint8_t>(other[commandPlace] ^ change);
    SCOPED_TRACE(testing::Message() << "command " << int{other[commandPlace]});
    expectRefused({other, row().reply});
    EXPECT_EQ(ipod().queued(), 1u);
    EXPECT_EQ(liveMessages(), 1u);
  }
}

TEST_P(SingleReply, IsRefusedUnlessItsLengthFits) {
  const uint32_t dataLength = static_cast<uint32_t>(row().reply.size()) - dataOffset(row().reply);
  for (const uint32_t length :
       {dataLength + 1, dataLength + 2, dataLength + 5, 252u, 253u, 65532u}) {
    SCOPED_TRACE(testing::Message() << length << " data bytes");
    if (!row().takesLength(length)) expectRefused({replyOfLength(length)});
  }
  for (uint32_t length = 0; length < dataLength; ++length) {
    SCOPED_TRACE(testing::Message() << length << " data bytes");
    if (!row().takesLength(length)) expectRefused({replyOfLength(length)});
  }
}

TEST_P(SingleReply, IsTakenWithEveryLengthThatFits) {
  for (const uint32_t length : {0u, 1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 10u, 252u, 253u, 65532u}) {
    if (!row().takesLength(length)) continue;
    SCOPED_TRACE(testing::Message() << length << " data bytes");
    ipod().answer(row().request, {replyOfLength(length)});
    EXPECT_TRUE(row().call(controller(), false).result);
  }
}

TEST_P(SingleReply, FailsIfANotificationArrivesFirst) {
  expectRefused({{0x04, 0x00, 0x27, 0x01, 0x00, 0x00, 0x00, 0x05}, row().reply});
  EXPECT_EQ(ipod().queued(), 1u);
}

TEST_P(SingleReply, DecidesWhateverTheLinkSaysOfTheRequest) {
  ipod().sends = false;
  ipod().answer(row().request, {row().reply});
  EXPECT_EQ(row().call(controller(), false), (Outcome{true, row().outputs}));
}

TEST_P(SingleReply, FailsWithoutALinkAndSendsNothing) {
  IpodController unlinked(kNoLink);
  for (const bool odd : {false, true})
    EXPECT_EQ(row().call(unlinked, odd), (Outcome{false, row().untouched(odd)}));
  EXPECT_EQ(callLog(), Calls{});
}

TEST_P(SingleReply, PrintsItsRequestInDebugOnly) {
  const auto ask = [&] { row().call(controller(), false); };
  EXPECT_EQ(printedQuietly(ask), "");
  const std::string text = printedInDebug(ask);
  EXPECT_EQ(text.substr(0, 12), "OUT-> Lingo=");
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
}

using TwoByteCommand = ControllerTest;

TEST_F(TwoByteCommand, IsComparedInBothBytes) {
  for (const SingleReplyOperation& row : singleReplyOperations()) {
    SCOPED_TRACE(row.name);
    Bytes other = row.reply;
    if (other[0] != 0x04) continue;
    other[1] = 0x01;
    ipod().answer(row.request, {other});
    EXPECT_EQ(row.call(controller(), true), (Outcome{false, row.untouched(true)}));
  }
}

INSTANTIATE_TEST_SUITE_P(Of, SingleReply, testing::ValuesIn(singleReplyOperations()),
                         rowName<SingleReplyOperation>);

using EnterExtendedMode = ControllerTest;

constexpr const char* kEnter = "55 02 00 05";

TEST_F(EnterExtendedMode, FailsWhenAnotherCommandIsAcknowledged) {
  ipod().answer(kEnter, {{0x00, 0x02, 0x00, 0x06}});
  EXPECT_FALSE(controller().EnterExtendedMode());
}

TEST_F(EnterExtendedMode, FailsWithAnyStatusButZero) {
  for (const uint8_t status : Bytes{0x01, 0x02, 0x04, 0x06, 0xFF}) {
    ipod().answer(kEnter, {{0x00, 0x02, status, 0x05}, {0x00, 0x02, 0x00, 0x05}});
    EXPECT_FALSE(controller().EnterExtendedMode());
    EXPECT_EQ(ipod().queued(), 1u);
  }
}

TEST_F(EnterExtendedMode, TakesAnAcknowledgementWithAWaitTime) {
  ipod().answer(kEnter, {{0x00, 0x02, 0x00, 0x05, 0x2C, 0x01, 0x00, 0x00}});
  EXPECT_TRUE(controller().EnterExtendedMode());
}

TEST_F(EnterExtendedMode, PendingWithAWaitTimeFailsAtOnce) {
  ipod().answer(kEnter,
                {{0x00, 0x02, 0x06, 0x05, 0x2C, 0x01, 0x00, 0x00}, {0x00, 0x02, 0x00, 0x05}});
  EXPECT_FALSE(controller().EnterExtendedMode());
}

TEST_F(EnterExtendedMode, DoesNotMakeTheIpodIdentified) {
  ipod().answer(kEnter, {{0x00, 0x02, 0x00, 0x05}});
  EXPECT_TRUE(controller().EnterExtendedMode());
  EXPECT_EQ(controller().isIdentified(), 0);
}

using ResetDbSelection = ControllerTest;

constexpr const char* kReset = "55 03 04 00 16";

TEST_F(ResetDbSelection, FailsWithAnyStatusButZeroWithoutASecondWait) {
  for (const uint8_t status : Bytes{0x01, 0x04, 0x06, 0xFF}) {
    callLog().clear();
    ipod().answer(kReset,
                  {{0x04, 0x00, 0x01, status, 0x00, 0x16}, {0x04, 0x00, 0x01, 0x00, 0x00, 0x16}});
    EXPECT_FALSE(controller().ResetDbSelection());
    EXPECT_EQ(callLog(), (Calls{"flush", "send 55 03 04 00 16", "wait 0 ns 1 s"}));
  }
}

TEST_F(ResetDbSelection, FailsWhenAnotherCommandIsAcknowledged) {
  for (const Bytes& command : {Bytes{0x00, 0x17}, Bytes{0x01, 0x16}}) {
    ipod().answer(kReset, {Bytes{0x04, 0x00, 0x01, 0x00} + command});
    EXPECT_FALSE(controller().ResetDbSelection());
  }
}

TEST_F(ResetDbSelection, RefusesAnAcknowledgementOfFourBytes) {
  ipod().answer(kReset, {{0x04, 0x00, 0x01, 0x00, 0x00, 0x16, 0x00}});
  EXPECT_FALSE(controller().ResetDbSelection());
}

using SerialNumber = ControllerTest;

TEST_F(SerialNumber, EndsWithTheZeroByteThatTheIpodSent) {
  ipod().answer("55 02 00 0B", {{0x00, 0x0C, '8', 'K', '5', 0x00}});
  ByteString serial;
  ASSERT_TRUE(controller().RequestSerialNumber(serial));
  EXPECT_EQ(textOf(serial), std::string("8K5\0", 4));
}

TEST_F(SerialNumber, IsCopiedWithoutConversion) {
  ipod().answer("55 02 00 0B", {{0x00, 0x0C, 0xC3, 0xA9, 0x00, 0xFF}});
  ByteString serial;
  ASSERT_TRUE(controller().RequestSerialNumber(serial));
  EXPECT_EQ(textOf(serial), std::string("\xC3\xA9\0\xFF", 4));
}

using ModelNumber = ControllerTest;

TEST_F(ModelNumber, OfFiveBytesHasATextOfTheFifthAndThreeZeros) {
  ipod().answer("55 02 00 0D", {{0x00, 0x0E, 0xFE, 0xDC, 0xBA, 0x98, 'M'}});
  uint16_t modelId = 0;
  ByteString text;
  ASSERT_TRUE(controller().RequestModelNumber(modelId, text));
  EXPECT_EQ(modelId, 0xFEDC);
  EXPECT_EQ(textOf(text), std::string("M\0\0\0", 4));
}

/// Names come converted from UTF-8; what does not convert is still a name.
struct NameRow {
  const char* name;
  Bytes wire;
  std::string text;
};

void PrintTo(const NameRow& row, std::ostream* stream) { *stream << row.name; }

class Name : public ControllerFixture<IpodController>,
             public testing::WithParamInterface<NameRow> {};

TEST_P(Name, OfTheIpod) {
  ipod().answer("55 03 04 00 14", {Bytes{0x04, 0x00, 0x15} + GetParam().wire});
  ByteString name = byteString("before");
  EXPECT_TRUE(controller().GetIpodName(name));
  EXPECT_EQ(textOf(name), GetParam().text);
}

TEST_P(Name, OfTheIpodInTheGeneralLingo) {
  ipod().answer("55 02 00 07", {Bytes{0x00, 0x08} + GetParam().wire});
  ByteString name = byteString("before");
  EXPECT_TRUE(controller().RequestIpodName(name));
  EXPECT_EQ(textOf(name), GetParam().text);
}

TEST_P(Name, OfATrack) {
  ipod().answer("55 07 04 00 20 00 00 00 01", {Bytes{0x04, 0x00, 0x21} + GetParam().wire});
  ByteString title = byteString("before");
  EXPECT_TRUE(controller().GetTrackTitle(1, title));
  EXPECT_EQ(textOf(title), GetParam().text);
}

const NameRow kNames[] = {
    {"EndsAtItsZeroByte", {'A', 'n', 'n', 0x00, 'x'}, "Ann"},
    {"WithoutAZeroByteEndsWithThePayload", {'A', 'n', 'n'}, "Ann"},
    {"BecomesLatin1", {0x43, 0x61, 0x66, 0xC3, 0xA9}, "Caf\xE9"},
    {"HasASpaceForWhatIsNoLatin1", {0xE2, 0x82, 0xAC, '1'}, " 1"},
    {"StaysAsItWasForWhatIsBeyond16Bits", {0xF0, 0x9F, 0x8E, 0xB5}, "before"},
    {"OfAZeroByteIsEmpty", {0x00, 0x00}, ""},
};

INSTANTIATE_TEST_SUITE_P(That, Name, testing::ValuesIn(kNames), rowName<NameRow>);

using TrackInfo = ControllerTest;

TEST_F(TrackInfo, ConvertsTheTypeByteAndAllButTheLastCharacter) {
  ipod().answer("55 0A 04 00 0C 05 00 00 00 02 00 00",
                {{0x04, 0x00, 0x0D, 0x05, 'R', 'o', 'c', 'k'}});
  ByteString data;
  TrackInfoType answeredType{};
  ASSERT_TRUE(controller().GetIndexedTrackInfo(2, data, answeredType, TrackInfoType::kGenre));
  EXPECT_EQ(textOf(data), "\x05Roc");
  EXPECT_EQ(answeredType, TrackInfoType{0x05});
}

TEST_F(TrackInfo, OfTypeZeroSucceedsWithAnEmptyText) {
  ipod().answer("55 0A 04 00 0C 00 00 00 00 02 00 00",
                {{0x04, 0x00, 0x0D, 0x00, 0x00, 0x00, 0x00, 0x01}});
  ByteString data = byteString("before");
  TrackInfoType answeredType{0xEE};
  EXPECT_TRUE(controller().GetIndexedTrackInfo(2, data, answeredType, TrackInfoType{0}));
  EXPECT_EQ(textOf(data), "");
  EXPECT_EQ(answeredType, TrackInfoType{0x00});
}

TEST_F(TrackInfo, SucceedsWhenItsTextDoesNotConvert) {
  ipod().answer("55 0A 04 00 0C 05 00 00 00 02 00 00",
                {{0x04, 0x00, 0x0D, 0x05, 0xE2, 0x82, 0xAC, 0x00}});
  ByteString data;
  TrackInfoType answeredType{};
  EXPECT_TRUE(controller().GetIndexedTrackInfo(2, data, answeredType, TrackInfoType::kGenre));
  EXPECT_EQ(textOf(data), "\x05 ");
}

TEST_F(TrackInfo, GivesOutTheTypeThatTheIpodAnswered) {
  ipod().answer("55 0A 04 00 0C 05 00 00 00 02 00 00", {{0x04, 0x00, 0x0D, 0x07, 'x'}});
  ByteString data;
  TrackInfoType answeredType{};
  EXPECT_TRUE(controller().GetIndexedTrackInfo(2, data, answeredType, TrackInfoType::kGenre));
  EXPECT_EQ(answeredType, TrackInfoType{0x07});
  EXPECT_EQ(textOf(data), "\x07");
}

TEST(Shuffle, TakesTheFirstByteOfALongReply) {
  Scripted<IpodController> controller(followMessage);
  controller.ipod().answer("55 03 04 00 2C", {{0x04, 0x00, 0x2D, 0x01, 0x02, 0x03}});
  PlayMode mode{0xFF};
  EXPECT_TRUE(controller.GetShuffle(mode));
  EXPECT_EQ(mode, PlayMode::kTracks);
}

TEST(ColorImageLimits, AreThoseOfTheFirstEntry) {
  Scripted<IpodController> controller(followMessage);
  controller.ipod().answer("55 03 04 00 39", {{0x04, 0x00, 0x3A, 0x01, 0x40, 0x00, 0xF0, 0x02, 0x00,
                                               0xB0, 0x00, 0x84, 0x03}});
  ImageLimits limits;
  ASSERT_TRUE(controller.GetColorImageLimits(limits));
  EXPECT_EQ(limits.width, 320);
  EXPECT_EQ(limits.height, 240);
  EXPECT_EQ(limits.format, PixelFormat::kRgb565LowByteFirst);
}

}  // namespace
}  // namespace ipodctl
