#include "lingo/digital_audio_message.h"

#include <gtest/gtest.h>

#include "lingo/command_rows.h"
#include "support/message_bytes.h"

namespace ipodctl::digital_audio_message {
namespace {

TEST(DigitalAudioMessage, StartsAsAnEmptyMessageOfLingoTen) {
  const DigitalAudioMessage message;
  EXPECT_EQ(message.getLingo(), 0x0A);
  EXPECT_EQ(message.getCommand(), 0);
  EXPECT_EQ(message.getDataLength(), 0);
  EXPECT_EQ(message.dataBytes(), nullptr);
}

using Builder = BuilderRow<DigitalAudioMessage>;

Builder rateRow(const char* name, uint8_t code, const Bytes& rate) {
  return {name, [code](DigitalAudioMessage& m) { return m.buildRetAccSampleRateCaps(&code, 1); },
          0x03, rate, Bytes{0x55, 0x06, 0x0A, 0x03} + rate};
}

bool buildRates(DigitalAudioMessage& message, const Bytes& codes) {
  return message.buildRetAccSampleRateCaps(codes.data(), static_cast<uint32_t>(codes.size()));
}

class DigitalAudioBuilder : public testing::TestWithParam<Builder> {};

TEST_P(DigitalAudioBuilder, WritesTheCommandAndItsFields) { expectBuilds(GetParam()); }

const Builder kBuilders[] = {
    {"AccAck",
     [](DigitalAudioMessage& m) { return m.buildAccAck(0, 0x04); },
     0x00,
     {0x00, 0x04},
     {0x55, 0x04, 0x0A, 0x00, 0x00, 0x04}},
    {"AccAckWithAStatus",
     [](DigitalAudioMessage& m) { return m.buildAccAck(0x02, 0x81); },
     0x00,
     {0x02, 0x81},
     {0x55, 0x04, 0x0A, 0x00, 0x02, 0x81}},
    rateRow("Rate8000", 0, {0x00, 0x00, 0x1F, 0x40}),
    rateRow("Rate11025", 1, {0x00, 0x00, 0x2B, 0x11}),
    rateRow("Rate12000", 2, {0x00, 0x00, 0x2E, 0xE0}),
    rateRow("Rate16000", 3, {0x00, 0x00, 0x3E, 0x80}),
    rateRow("Rate22050", 4, {0x00, 0x00, 0x56, 0x22}),
    rateRow("Rate24000", 5, {0x00, 0x00, 0x5D, 0xC0}),
    rateRow("Rate32000", 6, {0x00, 0x00, 0x7D, 0x00}),
    rateRow("Rate44100", 7, {0x00, 0x00, 0xAC, 0x44}),
    rateRow("Rate48000", 8, {0x00, 0x00, 0xBB, 0x80}),
    {"RatesOfTheAccessory",
     [](DigitalAudioMessage& m) {
       return buildRates(m, {0, 6, 7, 8});
     },
     0x03,
     {0x00, 0x00, 0x1F, 0x40, 0x00, 0x00, 0x7D, 0x00, 0x00, 0x00, 0xAC, 0x44, 0x00, 0x00, 0xBB,
      0x80},
     {0x55, 0x12, 0x0A, 0x03, 0x00, 0x00, 0x1F, 0x40, 0x00, 0x00,
      0x7D, 0x00, 0x00, 0x00, 0xAC, 0x44, 0x00, 0x00, 0xBB, 0x80}},
    {"RateCodeBeyondTheListRepeatsTheRateBefore",
     [](DigitalAudioMessage& m) {
       return buildRates(m, {7, 9, 0xFF, 6});
     },
     0x03,
     {0x00, 0x00, 0xAC, 0x44, 0x00, 0x00, 0xAC, 0x44, 0x00, 0x00, 0xAC, 0x44, 0x00, 0x00, 0x7D,
      0x00},
     {0x55, 0x12, 0x0A, 0x03, 0x00, 0x00, 0xAC, 0x44, 0x00, 0x00,
      0xAC, 0x44, 0x00, 0x00, 0xAC, 0x44, 0x00, 0x00, 0x7D, 0x00}},
    {"NoRates",
     [](DigitalAudioMessage& m) { return m.buildRetAccSampleRateCaps(nullptr, 0); },
     0x03,
     {},
     {0x55, 0x02, 0x0A, 0x03}},
};

INSTANTIATE_TEST_SUITE_P(Commands, DigitalAudioBuilder, testing::ValuesIn(kBuilders),
                         rowName<Builder>);

TEST(RetAccSampleRateCaps, TakesAsManyRatesAsAPayloadHolds) {
  DigitalAudioMessage message;
  EXPECT_TRUE(buildRates(message, Bytes(16383, 7)));
  ASSERT_EQ(message.getDataLength(), 65532);
  const Bytes data = dataOf(message);
  EXPECT_EQ(Bytes(data.begin(), data.begin() + 4), (Bytes{0x00, 0x00, 0xAC, 0x44}));
  EXPECT_EQ(Bytes(data.end() - 4, data.end()), (Bytes{0x00, 0x00, 0xAC, 0x44}));
}

TEST(RetAccSampleRateCaps, KeepsNoRateForTheNextMessage) {
  DigitalAudioMessage first;
  ASSERT_TRUE(buildRates(first, {8}));
  DigitalAudioMessage second;
  ASSERT_TRUE(buildRates(second, {9}));
  EXPECT_EQ(dataOf(second), (Bytes{0x00, 0x00, 0x00, 0x00}));
}

TEST(RetAccSampleRateCaps, KeepsItsLengthTo16Bits) {
  DigitalAudioMessage message;
  EXPECT_TRUE(buildRates(message, Bytes(16384, 7)));
  EXPECT_EQ(message.getCommand(), 0x03);
  EXPECT_EQ(message.getDataLength(), 0);

  DigitalAudioMessage oneMore;
  EXPECT_TRUE(buildRates(oneMore, Bytes(16384, 7) + Bytes{0}));
  EXPECT_EQ(dataOf(oneMore), (Bytes{0x00, 0x00, 0x1F, 0x40}));
}

using Decoded = DecoderRow<DigitalAudioMessage>;

class DigitalAudioDecoder : public testing::TestWithParam<Decoded> {};

TEST_P(DigitalAudioDecoder, ReadsTheFields) { expectDecodes(GetParam()); }

TEST_P(DigitalAudioDecoder, RefusesWrongLengthsAndLeavesTheOutputs) {
  expectLengthsJudged(GetParam());
}

TEST_P(DigitalAudioDecoder, RefusesOtherCommandsAndLeavesTheOutputs) {
  expectOtherCommandsRefused(GetParam());
}

const Decoded kDecoders[] = {
    decoderRow("TrackNewAudioAttributes", &DigitalAudioMessage::decodeTrackNewAudioAttributes, 0x04,
               {0x00, 0x00, 0xBB, 0x80, 0x01, 0x23, 0x45, 0x67, 0xFF, 0xFF, 0xFF, 0xFE},
               {48000u, 0x01234567u, 0xFFFFFFFEu}, 12, 12),
};

INSTANTIATE_TEST_SUITE_P(Notifications, DigitalAudioDecoder, testing::ValuesIn(kDecoders),
                         rowName<Decoded>);

}  // namespace
}  // namespace ipodctl::digital_audio_message
