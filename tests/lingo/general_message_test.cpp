#include "lingo/general_message.h"

#include <gtest/gtest.h>

#include <vector>

#include "lingo/command_rows.h"
#include "support/message_bytes.h"

namespace ipodctl::general_message {
namespace {

using namespace std::string_literals;

TEST(GeneralMessage, StartsAsAnEmptyMessageOfLingoZero) {
  const GeneralMessage message;
  EXPECT_EQ(message.getLingo(), 0x00);
  EXPECT_EQ(message.getCommand(), 0);
  EXPECT_EQ(message.getDataLength(), 0);
  EXPECT_EQ(message.dataBytes(), nullptr);
}

using Builder = BuilderRow<GeneralMessage>;

class GeneralBuilder : public testing::TestWithParam<Builder> {};

TEST_P(GeneralBuilder, WritesTheCommandAndItsFields) { expectBuilds(GetParam()); }

const Builder kBuilders[] = {
    {"IdentifyAsSimpleRemote",
     [](GeneralMessage& m) { return m.buildIdentify(kSimpleRemoteLingo); },
     0x01,
     {0x02},
     {0x55, 0x03, 0x00, 0x01, 0x02}},
    {"IdentifyAsExtendedInterface",
     [](GeneralMessage& m) { return m.buildIdentify(kExtendedInterfaceLingo); },
     0x01,
     {0x04},
     {0x55, 0x03, 0x00, 0x01, 0x04}},
    {"EnterRemoteUiMode",
     [](GeneralMessage& m) { return m.buildEnterRemoteUiMode(); },
     0x05,
     {},
     {0x55, 0x02, 0x00, 0x05}},
    {"ExitRemoteUiMode",
     [](GeneralMessage& m) { return m.buildExitRemoteUiMode(); },
     0x06,
     {},
     {0x55, 0x02, 0x00, 0x06}},
    {"RequestIpodName",
     [](GeneralMessage& m) { return m.buildRequestIpodName(); },
     0x07,
     {},
     {0x55, 0x02, 0x00, 0x07}},
    {"RequestIpodSoftwareVersion",
     [](GeneralMessage& m) { return m.buildRequestIpodSoftwareVersion(); },
     0x09,
     {},
     {0x55, 0x02, 0x00, 0x09}},
    {"RequestIpodSerialNum",
     [](GeneralMessage& m) { return m.buildRequestIpodSerialNum(); },
     0x0B,
     {},
     {0x55, 0x02, 0x00, 0x0B}},
    {"RequestIpodModelNum",
     [](GeneralMessage& m) { return m.buildRequestIpodModelNum(); },
     0x0D,
     {},
     {0x55, 0x02, 0x00, 0x0D}},
    {"RequestLingoProtocolVersion",
     [](GeneralMessage& m) { return m.buildRequestLingoProtocolVersion(0x0A); },
     0x0F,
     {0x0A},
     {0x55, 0x03, 0x00, 0x0F, 0x0A}},
    {"IdentifyDeviceLingoes",
     [](GeneralMessage& m) { return m.buildIdentifyDeviceLingoes(0x411); },
     0x13,
     {0x00, 0x00, 0x04, 0x11, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
     {0x55, 0x0E, 0x00, 0x13, 0x00, 0x00, 0x04, 0x11, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x00}},
    {"IdentifyDeviceLingoesWithEveryByteOfTheMask",
     [](GeneralMessage& m) { return m.buildIdentifyDeviceLingoes(0x81234567); },
     0x13,
     {0x81, 0x23, 0x45, 0x67, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
     {0x55, 0x0E, 0x00, 0x13, 0x81, 0x23, 0x45, 0x67, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
      0x00}},
    {"RetAccessoryCapabilities",
     [](GeneralMessage& m) { return m.buildRetAccessoryCapabilities(); },
     0x28,
     {0x00, 0x00, 0x00, 0x00, 0x01},
     {0x55, 0x07, 0x00, 0x28, 0x00, 0x00, 0x00, 0x00, 0x01}},
    {"RetAccessoryFirmwareVersion",
     [](GeneralMessage& m) {
       return m.buildRetAccessoryFirmwareVersion(0x000B0010, 0x01, 0x02, 0x03);
     },
     0x28,
     {0x02, 0x00, 0x0B, 0x00, 0x10, 0x01, 0x02, 0x03},
     {0x55, 0x0A, 0x00, 0x28, 0x02, 0x00, 0x0B, 0x00, 0x10, 0x01, 0x02, 0x03}},
    {"RetAccessoryLingoVersion",
     [](GeneralMessage& m) { return m.buildRetAccessoryLingoVersion(0x0A, 0x01, 0x07); },
     0x28,
     {0x03, 0x0A, 0x01, 0x07},
     {0x55, 0x06, 0x00, 0x28, 0x03, 0x0A, 0x01, 0x07}},
};

INSTANTIATE_TEST_SUITE_P(Commands, GeneralBuilder, testing::ValuesIn(kBuilders), rowName<Builder>);

using Decoded = DecoderRow<GeneralMessage>;

class GeneralDecoder : public testing::TestWithParam<Decoded> {};

TEST_P(GeneralDecoder, ReadsTheFields) { expectDecodes(GetParam()); }

TEST_P(GeneralDecoder, RefusesWrongLengthsAndLeavesTheOutputs) { expectLengthsJudged(GetParam()); }

TEST_P(GeneralDecoder, RefusesOtherCommandsAndLeavesTheOutputs) {
  expectOtherCommandsRefused(GetParam());
}

const Decoded kDecoders[] = {
    decoderRow("RemoteUiModeOn", &GeneralMessage::decodeReturnRemoteUiMode, 0x04, {0x01}, {1u}, 1,
               1),
    decoderRow("RemoteUiModeOnWithAnyNonZeroByte", &GeneralMessage::decodeReturnRemoteUiMode, 0x04,
               {0x80}, {1u}, 1, 1),
    decoderRow("RemoteUiModeOff", &GeneralMessage::decodeReturnRemoteUiMode, 0x04, {0x00}, {0u}, 1,
               1),
    decoderRow("IpodName", &GeneralMessage::decodeReturnIpodName, 0x08,
               {0x43, 0x61, 0x66, 0xC3, 0xA9}, {"Caf\xE9"s}, 1, kAnyLength),
    decoderRow("IpodNameOfOneByte", &GeneralMessage::decodeReturnIpodName, 0x08, {0x41}, {"A"s}, 1,
               kAnyLength),
    decoderRow("IpodNameUpToItsTerminator", &GeneralMessage::decodeReturnIpodName, 0x08,
               {0x41, 0x42, 0x00, 0x43}, {"AB"s}, 1, kAnyLength),
    decoderRow("SoftwareVersion", &GeneralMessage::decodeReturnIpodSoftwareVersion, 0x0A,
               {0x01, 0x02, 0x03}, {1u, 2u, 3u}, 3, 3),
    decoderRow("SerialNumWithItsFinalZero", &GeneralMessage::decodeReturnIpodSerialNum, 0x0C,
               {0x38, 0x4B, 0xC3, 0xA9, 0x00}, {"8K\xC3\xA9\0"s}, 1, kAnyLength),
    decoderRow("SerialNumOfOneByte", &GeneralMessage::decodeReturnIpodSerialNum, 0x0C, {0x37},
               {"7"s}, 1, kAnyLength),
    decoderRow("ModelNumWithThreeZerosBehindIt", &GeneralMessage::decodeReturnIpodModelNum, 0x0E,
               {0x00, 0x14, 0x00, 0x03, 0x4D, 0x42, 0x35}, {0x00140003u, "MB5\0\0\0"s}, 5,
               kAnyLength),
    decoderRow("ModelNumOfFiveBytes", &GeneralMessage::decodeReturnIpodModelNum, 0x0E,
               {0x81, 0x23, 0x45, 0x67, 0x4D}, {0x81234567u, "M\0\0\0"s}, 5, kAnyLength),
    decoderRow("LingoProtocolVersion", &GeneralMessage::decodeReturnLingoProtocolVersion, 0x10,
               {0x04, 0x01, 0x0D}, {4u, 1u, 13u}, 3, 3),
};

INSTANTIATE_TEST_SUITE_P(Replies, GeneralDecoder, testing::ValuesIn(kDecoders), rowName<Decoded>);

const Decoder<GeneralMessage> decodeAck = decoder(&GeneralMessage::decodeIpodAck);
const auto untouchedAck = untouched<uint8_t, uint8_t, uint32_t>;

TEST(GeneralIpodAck, OfTwoBytesHasNoWaitTime) {
  GeneralMessage message;
  receive(message, 0x02, {0x04, 0x13});
  const Decoding decoding = decodeAck(message, false);
  EXPECT_TRUE(decoding.accepted);
  EXPECT_EQ(decoding.fields, (Fields{4u, 0x13u, 0u}));
}

TEST(GeneralIpodAck, OfSixBytesHasTheWaitTimeFirstByteLowest) {
  GeneralMessage message;
  receive(message, 0x02, {0x06, 0x05, 0x78, 0x56, 0x34, 0x12});
  const Decoding decoding = decodeAck(message, false);
  EXPECT_TRUE(decoding.accepted);
  EXPECT_EQ(decoding.fields, (Fields{6u, 5u, 0x12345678u}));
}

TEST(GeneralIpodAck, OfSixBytesReadsAWaitTimeWithItsTopBitSet) {
  GeneralMessage message;
  receive(message, 0x02, {0x06, 0x05, 0x01, 0x00, 0x00, 0x80});
  EXPECT_EQ(decodeAck(message, false).fields, (Fields{6u, 5u, 0x80000001u}));
}

TEST(GeneralIpodAck, OfAnyOtherLengthIsRefused) {
  for (const uint32_t length : {0u, 1u, 3u, 4u, 5u, 7u, 8u}) {
    SCOPED_TRACE(length);
    GeneralMessage message;
    receive(message, 0x02, countingBytes(length));
    for (const bool odd : {false, true}) {
      const Decoding decoding = decodeAck(message, odd);
      EXPECT_FALSE(decoding.accepted);
      EXPECT_EQ(decoding.fields, untouchedAck(odd));
    }
  }
}

TEST(GeneralIpodAck, OfAnotherCommandIsRefused) {
  for (const uint16_t command : std::vector<uint16_t>{0x01, 0x03, 0x0102}) {
    GeneralMessage message;
    receive(message, command, {0x00, 0x13});
    EXPECT_FALSE(decodeAck(message, false).accepted);
    EXPECT_EQ(decodeAck(message, true).fields, untouchedAck(true));
  }
}

AccessoryInfoQuestion unanswered() { return {0xA1, 0xA2A3A4A5, 0xA6, 0xA7, 0xA8, 0xA9}; }

void expectSame(const AccessoryInfoQuestion& left, const AccessoryInfoQuestion& right) {
  EXPECT_EQ(left.type, right.type);
  EXPECT_EQ(left.model, right.model);
  EXPECT_EQ(left.major, right.major);
  EXPECT_EQ(left.minor, right.minor);
  EXPECT_EQ(left.revision, right.revision);
  EXPECT_EQ(left.lingo, right.lingo);
}

bool decodeQuestion(const Bytes& data, AccessoryInfoQuestion& question, uint16_t command = 0x27) {
  GeneralMessage message;
  receive(message, command, data);
  return message.decodeGetAccessoryInfo(question);
}

TEST(GetAccessoryInfo, OfTypeTwoHasModelAndFirmware) {
  AccessoryInfoQuestion question = unanswered();
  EXPECT_TRUE(decodeQuestion({0x02, 0x12, 0x34, 0x56, 0x78, 0x09, 0x0A, 0x0B}, question));
  expectSame(question, {0x02, 0x12345678, 0x09, 0x0A, 0x0B, 0xA9});
}

TEST(GetAccessoryInfo, OfTypeThreeHasTheLingo) {
  AccessoryInfoQuestion question = unanswered();
  EXPECT_TRUE(decodeQuestion({0x03, 0x0A}, question));
  expectSame(question, {0x03, 0xA2A3A4A5, 0xA6, 0xA7, 0xA8, 0x0A});
}

TEST(GetAccessoryInfo, OfAnotherTypeBelowTenHasTheTypeOnly) {
  for (const uint8_t type : Bytes{0, 1, 4, 5, 6, 7, 8, 9}) {
    SCOPED_TRACE(int(type));
    AccessoryInfoQuestion question = unanswered();
    EXPECT_TRUE(decodeQuestion({type}, question));
    expectSame(question, {type, 0xA2A3A4A5, 0xA6, 0xA7, 0xA8, 0xA9});
  }
}

TEST(GetAccessoryInfo, OfTypeTenAndAboveIsRefusedAndHasTheTypeOnly) {
  for (const uint8_t type : Bytes{10, 11, 0x7F, 0x80, 0xFF}) {
    SCOPED_TRACE(int(type));
    AccessoryInfoQuestion question = unanswered();
    EXPECT_FALSE(decodeQuestion({type, 1, 2, 3, 4, 5, 6, 7}, question));
    expectSame(question, {type, 0xA2A3A4A5, 0xA6, 0xA7, 0xA8, 0xA9});
  }
}

TEST(GetAccessoryInfo, WithoutPayloadLeavesTheCallersTypeAndJudgesIt) {
  AccessoryInfoQuestion question = unanswered();
  question.type = 9;
  EXPECT_TRUE(decodeQuestion({}, question));
  expectSame(question, {9, 0xA2A3A4A5, 0xA6, 0xA7, 0xA8, 0xA9});

  question.type = 10;
  EXPECT_FALSE(decodeQuestion({}, question));
  EXPECT_EQ(question.type, 10);
}

TEST(GetAccessoryInfo, TooShortForItsFieldsIsRefusedAndHasTheTypeOnly) {
  const Bytes whole = {0x02, 0x12, 0x34, 0x56, 0x78, 0x09, 0x0A, 0x0B};
  for (uint32_t length = 1; length < 8; ++length) {
    SCOPED_TRACE(length);
    AccessoryInfoQuestion question = unanswered();
    EXPECT_FALSE(decodeQuestion(Bytes(whole.begin(), whole.begin() + length), question));
    expectSame(question, {0x02, 0xA2A3A4A5, 0xA6, 0xA7, 0xA8, 0xA9});
  }
}

TEST(GetAccessoryInfo, OfTypeThreeMayLackTheLingo) {
  AccessoryInfoQuestion question = unanswered();
  EXPECT_TRUE(decodeQuestion({0x03}, question));
  expectSame(question, {0x03, 0xA2A3A4A5, 0xA6, 0xA7, 0xA8, 0xA9});
}

TEST(GetAccessoryInfo, MayBeLongerThanItsFields) {
  AccessoryInfoQuestion question = unanswered();
  EXPECT_TRUE(decodeQuestion({0x02, 0x12, 0x34, 0x56, 0x78, 0x09, 0x0A, 0x0B, 0xFF}, question));
  EXPECT_TRUE(decodeQuestion({0x03, 0x0A, 0xFF}, question));
  EXPECT_TRUE(decodeQuestion({0x00, 0xFF}, question));
}

TEST(GetAccessoryInfo, OfAnotherCommandIsRefusedAndLeavesTheQuestion) {
  for (const uint16_t command : std::vector<uint16_t>{0x26, 0x28, 0x0127}) {
    AccessoryInfoQuestion question = unanswered();
    EXPECT_FALSE(decodeQuestion({0x03, 0x0A}, question, command));
    expectSame(question, unanswered());
  }
}

}  // namespace
}  // namespace ipodctl::general_message
