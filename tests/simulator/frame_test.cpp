#include "wire/frame.h"

#include <gtest/gtest.h>

#include "support/hex.h"

namespace simulator {
namespace {

std::string encoded(FrameKind kind, const std::string& payload,
                    LengthForm form = LengthForm::kAsNeeded) {
  return toHex(encodeFrame(kind, hex(payload), form));
}

TEST(EncodeFrame, UsbFrameBeginsWithTheStartByte) {
  EXPECT_EQ(encoded(FrameKind::kUsb, "00 01"), "55 02 00 01 FD");
}

TEST(EncodeFrame, SerialFrameHasASyncByteThatIsNotSummed) {
  EXPECT_EQ(encoded(FrameKind::kSerial, "00 01"), "FF 55 02 00 01 FD");
}

TEST(EncodeFrame, ChecksumOfASumThatIsAMultipleOf256IsZero) {
  EXPECT_EQ(encoded(FrameKind::kUsb, "00 FE"), "55 02 00 FE 00");
}

TEST(EncodeFrame, UsesTheLongFormForShortDataOnRequest) {
  EXPECT_EQ(encoded(FrameKind::kUsb, "00 01", LengthForm::kLong), "55 00 00 02 00 01 FD");
}

TEST(EncodeFrame, ShortFormCarries255Bytes) {
  const Bytes frame = encodeFrame(FrameKind::kUsb, Bytes(255, 0));
  EXPECT_EQ(frame.size(), 258u);
  EXPECT_EQ(toHex(ByteView(frame).prefix(3)), "55 FF 00");
  EXPECT_EQ(frame.back(), 0x01);
}

TEST(EncodeFrame, LongFormFrom256BytesOn) {
  const Bytes frame = encodeFrame(FrameKind::kSerial, Bytes(256, 0));
  EXPECT_EQ(frame.size(), 262u);
  EXPECT_EQ(toHex(ByteView(frame).prefix(6)), "FF 55 00 01 00 00");
  EXPECT_EQ(frame.back(), 0xFF);
}

TEST(EncodeFrame, CutsThePayloadAtTheLargestLength) {
  const Bytes frame = encodeFrame(FrameKind::kUsb, Bytes(70000, 0));
  EXPECT_EQ(frame.size(), 65535u + 5);
  EXPECT_EQ(toHex(ByteView(frame).prefix(4)), "55 00 FF FF");
}

}  // namespace
}  // namespace simulator
