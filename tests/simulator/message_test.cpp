#include "wire/message.h"

#include <gtest/gtest.h>

#include "support/hex.h"
#include "wire/command_names.h"
#include "wire/payload.h"

namespace simulator {
namespace {

TEST(ParseMessage, CommandIdIsOneByte) {
  const auto message = parseMessage(hex("00 0F 04"));
  ASSERT_TRUE(message);
  EXPECT_EQ(message->lingo, 0x00);
  EXPECT_EQ(message->command, 0x0F);
  EXPECT_EQ(toHex(message->data), "04");
}

TEST(ParseMessage, CommandIdOfTheExtendedInterfaceIsTwoBytes) {
  const auto message = parseMessage(hex("04 00 18 02"));
  ASSERT_TRUE(message);
  EXPECT_EQ(message->command, 0x0018);
  EXPECT_EQ(toHex(message->data), "02");
}

TEST(ParseMessage, PayloadThatIsTooShortForItsCommandIsNotAMessage) {
  EXPECT_FALSE(parseMessage(Bytes{}));
  EXPECT_FALSE(parseMessage(hex("00")));
  EXPECT_FALSE(parseMessage(hex("04")));
  EXPECT_FALSE(parseMessage(hex("04 00")));
}

TEST(ParseMessage, UnknownLingoIsKept) {
  const auto message = parseMessage(hex("63 07"));
  ASSERT_TRUE(message);
  EXPECT_EQ(message->lingo, 0x63);
  EXPECT_EQ(message->command, 0x07);
}

TEST(MessagePayload, WritesTheCommandInTheWidthOfItsLingo) {
  EXPECT_EQ(toHex(messagePayload({0x00, 0x04, {0x01}})), "00 04 01");
  EXPECT_EQ(toHex(messagePayload({0x04, 0x0019, {0, 0, 0, 5}})), "04 00 19 00 00 00 05");
}

TEST(PayloadReader, ReadsTheHighByteFirst) {
  const Bytes bytes = hex("01 02 03 04 05 06 07 08");
  PayloadReader reader(bytes);
  EXPECT_EQ(reader.u8(), 0x01);
  EXPECT_EQ(reader.u16(), 0x0203);
  EXPECT_EQ(reader.u32(), 0x04050607u);
  EXPECT_EQ(toHex(reader.rest()), "08");
  EXPECT_TRUE(reader.ok());
}

TEST(PayloadReader, PastTheEndIsZeroAndNotOk) {
  const Bytes bytes = hex("01 02");
  PayloadReader reader(bytes);
  EXPECT_EQ(reader.u32(), 0u);
  EXPECT_FALSE(reader.ok());
  EXPECT_TRUE(reader.rest().empty());
}

TEST(PayloadWriter, WritesHighByteFirstAndEndsTexts) {
  EXPECT_EQ(toHex(PayloadWriter().u8(1).u16(0x0203).u32(0x04050607).text("Ab").take()),
            "01 02 03 04 05 06 07 41 62 00");
}

TEST(CommandName, NamesRequestsAndReplies) {
  EXPECT_STREQ(commandName({0x04, 0x0018, {}}), "GetNumberCategorizedDbRecords");
  EXPECT_STREQ(commandName({0x00, 0x13, {}}), "IdentifyDeviceLingoes");
  EXPECT_STREQ(commandName({0x0A, 0x04, {}}), "TrackNewAudioAttributes");
  EXPECT_STREQ(commandName({0x0A, 0x77, {}}), "unknown");
}

}  // namespace
}  // namespace simulator
