#include "lingo/simple_remote_message.h"

#include <gtest/gtest.h>

#include "lingo/command_rows.h"
#include "support/console.h"
#include "support/message_bytes.h"

namespace ipodctl::simple_remote_message {
namespace {

TEST(SimpleRemoteMessage, StartsAsAnEmptyMessageOfLingoTwo) {
  const SimpleRemoteMessage message;
  EXPECT_EQ(message.getLingo(), 0x02);
  EXPECT_EQ(message.getCommand(), 0);
  EXPECT_EQ(message.getDataLength(), 0);
  EXPECT_EQ(message.dataBytes(), nullptr);
}

using Builder = BuilderRow<SimpleRemoteMessage>;

class SimpleRemoteBuilder : public testing::TestWithParam<Builder> {};

TEST_P(SimpleRemoteBuilder, WritesTheCommandAndItsFields) { expectBuilds(GetParam()); }

const Builder kBuilders[] = {
    {"ContextButtonInByte0",
     [](SimpleRemoteMessage& m) { return m.buildContextButtonStatus(0, 0x80); },
     0x00,
     {0x80},
     {0x55, 0x03, 0x02, 0x00, 0x80}},
    {"ContextButtonInByte1",
     [](SimpleRemoteMessage& m) { return m.buildContextButtonStatus(1, 0x08); },
     0x00,
     {0x00, 0x08},
     {0x55, 0x04, 0x02, 0x00, 0x00, 0x08}},
    {"ContextButtonInByte2",
     [](SimpleRemoteMessage& m) { return m.buildContextButtonStatus(2, 0x40); },
     0x00,
     {0x00, 0x00, 0x40},
     {0x55, 0x05, 0x02, 0x00, 0x00, 0x00, 0x40}},
    {"ContextButtonInByte3",
     [](SimpleRemoteMessage& m) { return m.buildContextButtonStatus(3, 0x02); },
     0x00,
     {0x00, 0x00, 0x00, 0x02},
     {0x55, 0x06, 0x02, 0x00, 0x00, 0x00, 0x00, 0x02}},
    {"ContextButtonsReleased",
     [](SimpleRemoteMessage& m) { return m.buildContextButtonStatus(0, 0x00); },
     0x00,
     {0x00},
     {0x55, 0x03, 0x02, 0x00, 0x00}},
    {"ContextButtonBehindTheLastByteHasNoPayload",
     [](SimpleRemoteMessage& m) { return m.buildContextButtonStatus(4, 0x01); },
     0x00,
     {},
     {0x55, 0x02, 0x02, 0x00}},
    {"ContextButtonBeforeTheFirstByteHasNoPayload",
     [](SimpleRemoteMessage& m) { return m.buildContextButtonStatus(-1, 0x01); },
     0x00,
     {},
     {0x55, 0x02, 0x02, 0x00}},
    {"AudioButtons",
     [](SimpleRemoteMessage& m) { return m.buildAudioButtonStatus(0x12345678); },
     0x04,
     {0x12, 0x34, 0x56, 0x78},
     {0x55, 0x06, 0x02, 0x04, 0x12, 0x34, 0x56, 0x78}},
};

INSTANTIATE_TEST_SUITE_P(Commands, SimpleRemoteBuilder, testing::ValuesIn(kBuilders),
                         rowName<Builder>);

TEST(ContextButtonStatus, PrintsIndexAndMaskWhileTheDebugFlagIsSet) {
  SimpleRemoteMessage message;
  EXPECT_EQ(printedInDebug([&] { message.buildContextButtonStatus(1, 0x0C); }),
            "\nbyteIndex = 1\nbuttonBitmasks = 0xc");
}

TEST(ContextButtonStatus, PrintsAnIndexOutsideTheField) {
  SimpleRemoteMessage message;
  EXPECT_EQ(printedInDebug([&] { message.buildContextButtonStatus(-1, 0xFF); }),
            "\nbyteIndex = -1\nbuttonBitmasks = 0xff");
}

TEST(ContextButtonStatus, PrintsNothingWithoutTheDebugFlag) {
  SimpleRemoteMessage message;
  EXPECT_EQ(printedQuietly([&] { message.buildContextButtonStatus(1, 0x0C); }), "");
}

TEST(ContextButtonStatus, SetsItsCommandOnAUsedMessage) {
  SimpleRemoteMessage message;
  message.setCommand(0x04);
  EXPECT_TRUE(message.buildContextButtonStatus(4, 0x01));
  EXPECT_EQ(message.getCommand(), 0x00);
}

}  // namespace
}  // namespace ipodctl::simple_remote_message
