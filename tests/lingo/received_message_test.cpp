#include "lingo/received_message.h"

#include <gtest/gtest.h>

#include "lingo/digital_audio_message.h"
#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "lingo/simple_remote_message.h"
#include "support/message_bytes.h"
#include "support/row_name.h"

namespace ipodctl {
namespace {

std::unique_ptr<LingoMessage> made(const Bytes& payload) {
  return makeReceivedMessage(payload.data(), static_cast<uint16_t>(payload.size()));
}

struct Payload : NamedRow {
  Bytes bytes;
  uint8_t lingo;
  uint16_t command;
  Bytes data;
};

class ReceivedPayload : public testing::TestWithParam<Payload> {};

TEST_P(ReceivedPayload, BecomesAMessage) {
  const std::unique_ptr<LingoMessage> message = made(GetParam().bytes);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->getLingo(), GetParam().lingo);
  EXPECT_EQ(message->getCommand(), GetParam().command);
  EXPECT_EQ(dataOf(*message), GetParam().data);
}

const Payload kPayloads[] = {
    {"OfTheGeneralLingo", {0x00, 0x0A, 0x01, 0x02, 0x03}, 0x00, 0x0A, {0x01, 0x02, 0x03}},
    {"OfTheSimpleRemoteLingo", {0x02, 0x01, 0x00}, 0x02, 0x01, {0x00}},
    {"OfTheExtendedInterfaceLingo", {0x04, 0x00, 0x15, 0x41, 0x42}, 0x04, 0x0015, {0x41, 0x42}},
    {"OfTheExtendedInterfaceLingoWithAHighCommandByte",
     {0x04, 0x81, 0x02, 0x41},
     0x04,
     0x8102,
     {0x41}},
    {"OfTheDigitalAudioLingo", {0x0A, 0x04, 0xAC, 0x44}, 0x0A, 0x04, {0xAC, 0x44}},
    {"OfTheGeneralLingoWithoutData", {0x00, 0x27}, 0x00, 0x27, {}},
    {"OfTheSimpleRemoteLingoWithoutData", {0x02, 0x81}, 0x02, 0x81, {}},
    {"OfTheExtendedInterfaceLingoWithoutData", {0x04, 0x00, 0x1B}, 0x04, 0x001B, {}},
    {"OfTheDigitalAudioLingoWithoutData", {0x0A, 0x02}, 0x0A, 0x02, {}},
};

INSTANTIATE_TEST_SUITE_P(Payloads, ReceivedPayload, testing::ValuesIn(kPayloads), rowName<Payload>);

TEST(MakeReceivedMessage, EncodesAsItsLingoDoes) {
  EXPECT_EQ(bodyOf(*made({0x00, 0x02, 0x00, 0x13})), (Bytes{0x55, 0x04, 0x00, 0x02, 0x00, 0x13}));
  EXPECT_EQ(bodyOf(*made({0x02, 0x00, 0x08})), (Bytes{0x55, 0x03, 0x02, 0x00, 0x08}));
  EXPECT_EQ(bodyOf(*made({0x04, 0x00, 0x2D, 0x01})), (Bytes{0x55, 0x04, 0x04, 0x00, 0x2D, 0x01}));
  EXPECT_EQ(bodyOf(*made({0x0A, 0x02})), (Bytes{0x55, 0x02, 0x0A, 0x02}));
}

TEST(MakeReceivedMessage, MakesNoneOfALingoThatTheLibraryDoesNotSpeak) {
  for (const uint8_t lingo :
       Bytes{0x01, 0x03, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0B, 0x0C, 0x40, 0x80, 0xFF})
    EXPECT_EQ(made({lingo, 0x00, 0x15, 0x41}), nullptr) << int(lingo);
}

TEST(MakeReceivedMessage, MakesNoneOfAPayloadTooShortForItsCommand) {
  EXPECT_EQ(made({}), nullptr);
  for (const uint8_t lingo : Bytes{0x00, 0x02, 0x04, 0x0A})
    EXPECT_EQ(made({lingo}), nullptr) << int(lingo);
  EXPECT_EQ(made({0x04, 0x00}), nullptr);
}

TEST(MakeReceivedMessage, TakesTheLargestPayload) {
  const Bytes payload = Bytes{0x04, 0x00, 0x15} + countingBytes(65532);
  const std::unique_ptr<LingoMessage> message = made(payload);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(dataOf(*message), countingBytes(65532));
}

TEST(MakeReceivedMessage, KeepsNoPointerToThePayload) {
  Bytes payload = {0x04, 0x00, 0x15, 0x41};
  const std::unique_ptr<LingoMessage> message = made(payload);
  payload.assign(4, 0xEE);
  EXPECT_EQ(dataOf(*message), (Bytes{0x41}));
}

TEST(CopyMessage, HasTheSameLingoAndCommandAndACopyOfTheData) {
  for (const Bytes& payload : {Bytes{0x00, 0x02, 0x00, 0x13}, Bytes{0x02, 0x00, 0x08},
                               Bytes{0x04, 0x81, 0x15, 0x41}, Bytes{0x0A, 0x02}}) {
    const std::unique_ptr<LingoMessage> original = made(payload);
    const std::unique_ptr<LingoMessage> copy = copyMessage(*original);
    ASSERT_NE(copy, nullptr);
    EXPECT_NE(copy.get(), original.get());
    EXPECT_EQ(copy->getLingo(), original->getLingo());
    EXPECT_EQ(copy->getCommand(), original->getCommand());
    EXPECT_EQ(dataOf(*copy), dataOf(*original));
    EXPECT_EQ(bodyOf(*copy), bodyOf(*original));
    if (original->getDataLength() > 0) {
      EXPECT_NE(copy->dataBytes(), original->dataBytes());
    }
  }
}

}  // namespace
}  // namespace ipodctl
