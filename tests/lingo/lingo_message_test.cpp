#include "lingo/lingo_message.h"

#include <gtest/gtest.h>

#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "support/console.h"
#include "support/message_bytes.h"

namespace ipodctl {
namespace {

const uint8_t kTen[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

TEST(SetCommand, KeepsAll16Bits) {
  GeneralMessage message;
  message.setCommand(0xABCD);
  EXPECT_EQ(message.getCommand(), 0xABCD);
}

TEST(SetData, CopiesTheBytes) {
  GeneralMessage message;
  uint8_t source[] = {0x11, 0x22, 0x33};
  EXPECT_TRUE(message.setData(source, 3));
  source[0] = 0;
  EXPECT_EQ(message.getDataLength(), 3);
  EXPECT_EQ(dataOf(message), (Bytes{0x11, 0x22, 0x33}));
}

TEST(SetData, ReusesTheArrayForShorterDataOnly) {
  GeneralMessage message;
  ASSERT_TRUE(message.setData(kTen, 10));
  const uint8_t* const first = message.dataBytes();

  ASSERT_TRUE(message.setData(kTen + 6, 4));
  EXPECT_EQ(message.dataBytes(), first);
  EXPECT_EQ(dataOf(message), (Bytes{6, 7, 8, 9}));

  ASSERT_TRUE(message.setData(kTen + 2, 8));
  EXPECT_EQ(dataOf(message), (Bytes{2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(SetData, ReusesTheArrayForDataOfTheSameLength) {
  GeneralMessage message;
  ASSERT_TRUE(message.setData(kTen, 4));
  const uint8_t* const first = message.dataBytes();
  ASSERT_TRUE(message.setData(kTen + 4, 4));
  EXPECT_EQ(message.dataBytes(), first);
  EXPECT_EQ(dataOf(message), (Bytes{4, 5, 6, 7}));
}

TEST(SetData, OfNoBytesEmptiesTheMessage) {
  GeneralMessage message;
  ASSERT_TRUE(message.setData(kTen, 4));
  EXPECT_TRUE(message.setData(kTen, 0));
  EXPECT_EQ(message.getDataLength(), 0);
}

TEST(SetData, TakesTheLargestLength) {
  const Bytes bytes = countingBytes(65535);
  GeneralMessage message;
  EXPECT_TRUE(message.setData(bytes.data(), 65535));
  EXPECT_EQ(message.getDataLength(), 65535);
  EXPECT_EQ(dataOf(message), bytes);
}

TEST(AppendData, WithoutDataSetsIt) {
  GeneralMessage message;
  EXPECT_TRUE(message.appendData(kTen, 3));
  EXPECT_EQ(message.getDataLength(), 3);
  EXPECT_EQ(dataOf(message), (Bytes{0, 1, 2}));
}

TEST(AppendData, AppendsToTheData) {
  GeneralMessage message;
  ASSERT_TRUE(message.appendData(kTen, 3));
  EXPECT_TRUE(message.appendData(kTen + 7, 2));
  EXPECT_TRUE(message.appendData(kTen + 9, 1));
  EXPECT_EQ(message.getDataLength(), 6);
  EXPECT_EQ(dataOf(message), (Bytes{0, 1, 2, 7, 8, 9}));
}

TEST(AppendData, OfNoBytesChangesNothing) {
  GeneralMessage message;
  ASSERT_TRUE(message.appendData(kTen, 3));
  EXPECT_TRUE(message.appendData(kTen, 0));
  EXPECT_EQ(dataOf(message), (Bytes{0, 1, 2}));
}

TEST(AppendData, AppendsToTheShortLengthAfterSetDataShortenedTheData) {
  GeneralMessage message;
  ASSERT_TRUE(message.setData(kTen, 10));
  ASSERT_TRUE(message.setData(kTen, 2));
  EXPECT_TRUE(message.appendData(kTen + 5, 1));
  EXPECT_EQ(dataOf(message), (Bytes{0, 1, 5}));
}

TEST(AppendData, FillsUpToTheLargestLength) {
  const Bytes bytes(65535, 0x5A);
  GeneralMessage message;
  ASSERT_TRUE(message.appendData(bytes.data(), 65530));
  EXPECT_TRUE(message.appendData(kTen, 5));
  EXPECT_EQ(message.getDataLength(), 65535);
  EXPECT_EQ(dataOf(message), Bytes(65530, 0x5A) + (Bytes{0, 1, 2, 3, 4}));
}

TEST(AppendData, BeyondTheLargestLengthKeepsTheLow16BitsOfIt) {
  const Bytes bytes(65534, 0x5A);
  GeneralMessage message;
  ASSERT_TRUE(message.appendData(bytes.data(), 65534));
  EXPECT_TRUE(message.appendData(kTen, 5));
  EXPECT_EQ(dataOf(message), (Bytes{0x5A, 0x5A, 0x5A}));
  EXPECT_TRUE(message.appendData(kTen, 2));
  EXPECT_EQ(dataOf(message), (Bytes{0x5A, 0x5A, 0x5A, 0, 1}));
}

TEST(GetData, CopiesIntoABufferThatJustFits) {
  GeneralMessage message;
  ASSERT_TRUE(message.setData(kTen, 3));
  uint8_t buffer[] = {0xEE, 0xEE, 0xEE, 0xEE};
  EXPECT_EQ(message.getData(buffer, 3), 3u);
  EXPECT_EQ(Bytes(buffer, buffer + 4), (Bytes{0, 1, 2, 0xEE}));
}

TEST(GetData, CopiesNothingIntoABufferThatIsTooSmall) {
  GeneralMessage message;
  ASSERT_TRUE(message.setData(kTen, 3));
  uint8_t buffer[] = {0xEE, 0xEE, 0xEE};
  EXPECT_EQ(message.getData(buffer, 2), 0u);
  EXPECT_EQ(Bytes(buffer, buffer + 3), (Bytes{0xEE, 0xEE, 0xEE}));
}

TEST(GetData, OfAnEmptyMessageIsZero) {
  const GeneralMessage message;
  uint8_t buffer[] = {0xEE};
  EXPECT_EQ(message.getData(buffer, 1), 0u);
  EXPECT_EQ(buffer[0], 0xEE);
}

TEST(ClearData, ForgetsTheData) {
  GeneralMessage message;
  ASSERT_TRUE(message.setData(kTen, 3));
  EXPECT_TRUE(message.clearData());
  EXPECT_EQ(message.getDataLength(), 0);
  EXPECT_EQ(message.dataBytes(), nullptr);
}

TEST(ClearData, WithoutDataSucceeds) {
  GeneralMessage message;
  EXPECT_TRUE(message.clearData());
  EXPECT_EQ(message.dataBytes(), nullptr);
}

TEST(Dump, ShowsTheFirstTwoDataBytesOnly) {
  ExtendedInterfaceMessage message;
  receive(message, 0x12, {0x01, 0x02, 0x03});
  EXPECT_EQ(printedInDebug([&] { message.dump(); }), "Lingo=4\tCommand=0x12 Data=0x1 0x2 \n");
}

TEST(Dump, ShowsASingleDataByte) {
  GeneralMessage message;
  receive(message, 0xABCD, {0xF0});
  EXPECT_EQ(printedInDebug([&] { message.dump(); }), "Lingo=0\tCommand=0xabcd Data=0xf0 \n");
}

TEST(Dump, ShowsNoDataOfAMessageWithoutData) {
  GeneralMessage message;
  message.setCommand(0x05);
  EXPECT_EQ(printedInDebug([&] { message.dump(); }), "Lingo=0\tCommand=0x5 \n");
}

TEST(Dump, ShowsDataThatWasSetToNoBytes) {
  GeneralMessage message;
  receive(message, 0x05, {});
  EXPECT_EQ(printedInDebug([&] { message.dump(); }), "Lingo=0\tCommand=0x5 Data=\n");
}

TEST(Dump, IsSilentWithoutTheDebugFlag) {
  GeneralMessage message;
  receive(message, 0x05, {0x01});
  EXPECT_EQ(printedQuietly([&] { message.dump(); }), "");
}

TEST(DebugPrint, PrintsWithAnyNonZeroFlag) {
  EXPECT_EQ(printed(0x80, [] { debugPrint("%d %s", 7, "seven"); }), "7 seven");
}

TEST(DebugPrint, IsSilentWithoutTheFlag) {
  EXPECT_EQ(printedQuietly([] { debugPrint("%d", 7); }), "");
}

TEST(DebugFlag, StartsCleared) { EXPECT_EQ(debugFlag, 0); }

TEST(PutUint32, WritesTheHighByteFirst) {
  uint8_t buffer[] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
  EXPECT_TRUE(LingoMessage::putUint32(buffer, 0x01020304));
  EXPECT_EQ(Bytes(buffer, buffer + 5), (Bytes{0x01, 0x02, 0x03, 0x04, 0xEE}));
}

TEST(PutUint16, WritesTheHighByteFirst) {
  uint8_t buffer[] = {0xEE, 0xEE, 0xEE};
  EXPECT_TRUE(LingoMessage::putUint16(buffer, 0x8102));
  EXPECT_EQ(Bytes(buffer, buffer + 3), (Bytes{0x81, 0x02, 0xEE}));
}

TEST(GetUint32, ReadsTheHighByteFirst) {
  const uint8_t buffer[] = {0x81, 0x82, 0x83, 0x84};
  uint32_t value = 0;
  EXPECT_TRUE(LingoMessage::getUint32(buffer, value));
  EXPECT_EQ(value, 0x81828384u);
}

TEST(GetUint16, ReadsTheHighByteFirst) {
  const uint8_t buffer[] = {0x81, 0x82};
  uint16_t value = 0;
  EXPECT_TRUE(LingoMessage::getUint16(buffer, value));
  EXPECT_EQ(value, 0x8182);
}

TEST(ByteOrderHelpers, DoNothingWithoutABuffer) {
  uint32_t word = 0xA5A5A5A5;
  uint16_t half = 0xA5A5;
  EXPECT_FALSE(LingoMessage::putUint32(nullptr, 1));
  EXPECT_FALSE(LingoMessage::putUint16(nullptr, 1));
  EXPECT_FALSE(LingoMessage::getUint32(nullptr, word));
  EXPECT_FALSE(LingoMessage::getUint16(nullptr, half));
  EXPECT_EQ(word, 0xA5A5A5A5u);
  EXPECT_EQ(half, 0xA5A5);
}

}  // namespace
}  // namespace ipodctl
