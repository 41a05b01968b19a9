#include "iaptrace/frame_cutter.h"

#include <gtest/gtest.h>

#include "typed_trace.h"

namespace iaptrace::frame_cutter_test {
namespace {

/// Returns the items as text: their kind, their size, and "sync" or "long".
std::string shapeOf(const Conversation& items) {
  static constexpr const char* kNames[] = {"message",    "malformed", "bad",
                                           "unfinished", "noise",     "event"};
  std::string text;
  for (const Item& item : items) {
    text += (text.empty() ? "" : " ") + std::string(kNames[static_cast<size_t>(item.kind)]);
    if (item.kind != Item::Kind::kEvent) text += std::to_string(item.bytes.size());
    text += item.hasSync ? "+sync" : "";
    text += item.isLong ? "+long" : "";
  }
  return text;
}

std::string shapeOfRead(const std::string& bytes) {
  return shapeOf(typedConversation("0.1 IPD1: < " + bytes + "\n"));
}

TEST(FrameCutter, CutsFramesThatWereReadTogether) {
  EXPECT_EQ(shapeOfRead("55 02 00 03 FB 55 03 00 04 00 F9"), "message5 message6");
}

TEST(FrameCutter, JoinsAFrameOfSeveralRecords) {
  const Conversation items =
      typedConversation("0.1 IPD1: < 55\n0.2 IPD1: < 03 00 04\n0.3 IPD1: < 00 F9\n");
  ASSERT_EQ(shapeOf(items), "message6");
  EXPECT_EQ(items[0].begun, trace::Time(100000));
  EXPECT_EQ(items[0].at, trace::Time(300000));
  EXPECT_EQ(items[0].firstLine, 2u);
  EXPECT_EQ(items[0].line, 4u);
  EXPECT_EQ(items[0].message, (Message{0x00, 0x04, {0x00}}));
}

TEST(FrameCutter, KeepsTheDirectionsApart) {
  const Conversation items =
      typedConversation("0.1 IPD1: < 55 03 00\n0.2 IPD1: > 55 02 00 03 FB\n0.3 IPD1: < 04 00 F9\n");
  ASSERT_EQ(shapeOf(items), "message5 message6");
  EXPECT_EQ(items[0].sender, Sender::kHost);
  EXPECT_EQ(items[1].sender, Sender::kIpod);
}

TEST(FrameCutter, FindsSyncBytes) {
  EXPECT_EQ(shapeOfRead("FF 55 02 00 03 FB FF 55 02 00 03 FB"), "message5+sync message5+sync");
  EXPECT_EQ(shapeOfRead("FF FF 55 02 00 03 FB"), "noise1 message5+sync");
}

TEST(FrameCutter, TakesADataByteFfForData) {
  EXPECT_EQ(shapeOfRead("55 03 00 04 FF FA 55 02 00 03 FB"), "message6 message5");
  EXPECT_EQ(shapeOfRead("55 03 00 03 FF FB"), "message6");
}

TEST(FrameCutter, ReadsLongFrames) {
  EXPECT_EQ(shapeOfRead("55 00 00 02 00 03 FB"), "message7+long");
}

TEST(FrameCutter, ReportsNoiseAndWrongChecksums) {
  EXPECT_EQ(shapeOfRead("13 A9 55 02 00 03 FC 77"), "noise2 bad5 noise1");
  EXPECT_EQ(shapeOfRead("55 01 00 FF"), "malformed4");
}

TEST(FrameCutter, FindsAFrameInsideADamagedOne) {
  EXPECT_EQ(shapeOfRead("55 09 00 55 03 00 04 00 F9 13 14 15"), "bad3 message6 noise3");
  EXPECT_EQ(shapeOfRead("55 09 00 FF 55 03 00 04 00 F9 14 15"), "bad3 message6+sync noise2");
}

TEST(FrameCutter, FindsAFrameAfterAnUnfinishedOne) {
  EXPECT_EQ(shapeOfRead("55 80 00 55 03 00 04 00 F9"), "unfinished3 message6");
}

TEST(FrameCutter, BeginsAgainWhenTheDeviceIsOpenedAgain) {
  EXPECT_EQ(shapeOf(typedConversation("0.1 IPD1: < 55 03 00\n# 0.2 IPD1: close\n"
                                      "# 0.3 IPD1: open ok\n0.4 IPD1: < 04 00 F9\n")),
            "unfinished3 event event noise3");
}

TEST(Conversation, LeavesOtherDevicesOut) {
  EXPECT_EQ(shapeOf(typedConversation("0.1 COM1: < 55 02 00 03 FB\n# 0.2 COM1: close\n"
                                      "# 0.3 audio SelectFrequency 48000\n")),
            "event");
}

}  // namespace
}  // namespace iaptrace::frame_cutter_test
