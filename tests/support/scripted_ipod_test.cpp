#include "support/scripted_ipod.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/device_calls.h"
#include "support/payload_text.h"

using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::readDevice;
using host_test::writeDevice;
using testing::ElementsAre;

namespace {

class ScriptedIpodTest : public testing::Test {
 protected:
  void write(const Bytes& bytes) { writeDevice(device.get(), bytes); }

  // Reads until as many bytes have arrived; fewer when the other side has gone.
  Bytes read(std::size_t count) {
    Bytes bytes;
    while (bytes.size() < count) {
      const host_test::Transfer part = readDevice(device.get(), static_cast<DWORD>(count));
      if (!part.result) break;
      bytes.insert(bytes.end(), part.bytes.begin(), part.bytes.end());
    }
    return bytes;
  }

  EventLog log;
  ScriptedIpod ipod{log};
  OwnedHandle device{openDevice(u"IPD1:")};
};

TEST_F(ScriptedIpodTest, AnswersByTheScriptAndLogsTheRequest) {
  ipod.answer("04 00 18 02", {"04 00 19 00 00 00 24"});
  write({0x55, 0x04, 0x04, 0x00, 0x18, 0x02, 0xDE});
  EXPECT_EQ(read(10), (Bytes{0x55, 0x07, 0x04, 0x00, 0x19, 0x00, 0x00, 0x00, 0x24, 0xB8}));
  EXPECT_THAT(log.events(), ElementsAre("04 00 18 02"));
}

TEST_F(ScriptedIpodTest, UsesTheLongestMatchingBeginning) {
  ipod.answer("04", {"04 00 01 02 00 18"});
  ipod.answer("04 00 18", {"04 00 19 00 00 00 01"});
  write({0x55, 0x04, 0x04, 0x00, 0x18, 0x02, 0xDE});
  EXPECT_EQ(read(10).at(4), 0x19);
}

TEST_F(ScriptedIpodTest, AnswersOnceBeforeItAnswersAsUsual) {
  ipod.answer("00 0F 04", {"00 10 04 01 0D"});
  ipod.answerOnce("00 0F 04", {"00 10 04 01 01"});
  ipod.answerOnce("00 0F 04", {"00 10 04 01 02"});
  const Bytes request = {0x55, 0x03, 0x00, 0x0F, 0x04, 0xEA};
  std::vector<std::uint8_t> minorVersions;
  for (int i = 0; i < 4; ++i) {
    write(request);
    minorVersions.push_back(read(8).at(6));
  }
  EXPECT_THAT(minorVersions, ElementsAre(1, 2, 13, 13));
}

TEST_F(ScriptedIpodTest, RefusesWhatTheScriptDoesNotName) {
  write({0x55, 0x03, 0x04, 0x00, 0x1C, 0xDD});
  EXPECT_EQ(read(7), (Bytes{0x55, 0x04, 0x00, 0x02, 0x05, 0x00, 0xF5}));
}

TEST_F(ScriptedIpodTest, HoldsAnswersUntilTheyAreReleased) {
  ipod.hold("00 07");
  ipod.answer("00 07", {"00 08 41 00"});
  write({0x55, 0x02, 0x00, 0x07, 0xF7});
  write({0x55, 0x02, 0x00, 0x05, 0xF9});
  EXPECT_EQ(read(7), (Bytes{0x55, 0x04, 0x00, 0x02, 0x00, 0x05, 0xF5}));
  ipod.release();
  EXPECT_EQ(read(7), (Bytes{0x55, 0x04, 0x00, 0x08, 0x41, 0x00, 0xB3}));
}

TEST_F(ScriptedIpodTest, DelaysAnswers) {
  using std::chrono::milliseconds;
  ipod.answer("00 07", {{"00 08 41 00", milliseconds(20)}, {"00 08 42 00", milliseconds(1)}});
  const auto start = std::chrono::steady_clock::now();
  write({0x55, 0x02, 0x00, 0x07, 0xF7});
  const Bytes replies = read(14);
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(20));
  EXPECT_EQ(replies.at(4), 0x42);
  EXPECT_EQ(replies.at(11), 0x41);
}

TEST_F(ScriptedIpodTest, SendsUnaskedPayloadsCorruptFramesAndRawBytes) {
  ipod.send("0A 02");
  ipod.sendCorrupt("0A 02");
  ipod.sendRaw("AB CD");
  EXPECT_EQ(read(12),
            (Bytes{0x55, 0x02, 0x0A, 0x02, 0xF2, 0x55, 0x02, 0x0A, 0x02, 0xF3, 0xAB, 0xCD}));
}

TEST_F(ScriptedIpodTest, LogsABadFrame) {
  write({0x55, 0x02, 0x00, 0x05, 0xF8});
  ipod.settle();
  EXPECT_THAT(log.events(), ElementsAre("not a frame: 00 05"));
}

TEST_F(ScriptedIpodTest, LogsANoiseByte) {
  write({0x12, 0x55, 0x02, 0x00, 0x05, 0xF9});
  ipod.settle();
  EXPECT_THAT(log.events(), ElementsAre("not a frame: 12", "00 05"));
}

TEST_F(ScriptedIpodTest, ReadsFramesInPiecesAndInTheLongForm) {
  ipod.fallSilent();
  Bytes frame = {0x55, 0x00, 0x01, 0x04, 0x04, 0x00, 0x32};
  frame.resize(frame.size() + 257, 0);
  frame.push_back(0xC5);
  for (const std::uint8_t byte : frame)
    write({byte});
  ipod.settle();
  const std::vector<std::string> events = log.events();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].substr(0, 14), "04 00 32 00 00");
  EXPECT_EQ(bytesOf(events[0]).size(), 260u);
}

TEST_F(ScriptedIpodTest, SendsTheLongFormWhenThePayloadIsLong) {
  ipod.send("00 08" + textBytes(std::string(256, 'a')));
  const Bytes frame = read(264);
  EXPECT_EQ(Bytes(frame.begin(), frame.begin() + 6), (Bytes{0x55, 0x00, 0x01, 0x03, 0x00, 0x08}));
}

TEST_F(ScriptedIpodTest, HangsUp) {
  ipod.hangUp();
  EXPECT_EQ(readDevice(device.get(), 1), host_test::failure(ERROR_GEN_FAILURE));
}

TEST_F(ScriptedIpodTest, SettlesAfterEverythingThatWasWritten) {
  ipod.fallSilent();
  for (int i = 0; i < 100; ++i)
    write({0x55, 0x02, 0x00, 0x05, 0xF9});
  ipod.settle();
  EXPECT_EQ(log.events().size(), 100u);
}

TEST(ScriptedIpodOnASerialLine, FramesWithTheSyncByte) {
  EventLog log;
  ScriptedIpod ipod(log, WireKind::kSerial);
  const OwnedHandle device(openDevice(u"COM1:"));
  writeDevice(device.get(), {0xFF, 0xFF, 0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9});
  EXPECT_EQ(readDevice(device.get(), 8).bytes,
            (Bytes{0xFF, 0x55, 0x04, 0x00, 0x02, 0x00, 0x05, 0xF5}));
  writeDevice(device.get(), {0x55, 0x02, 0x00, 0x05, 0xF9});
  ipod.settle();
  EXPECT_EQ(log.events().at(0), "00 05");
  EXPECT_EQ(log.events().at(1), "not a frame: 55");
}

TEST(EventLog, WaitsForAnEventAndLeavesOutWhatIsNotWanted) {
  EventLog log;
  std::thread other([&] {
    log.add("Sleep(1)");
    log.add("04 00 16");
  });
  EXPECT_TRUE(log.waitFor("04 00"));
  other.join();
  EXPECT_THAT(log.eventsWithout({"Sleep"}), ElementsAre("04 00 16"));
}

}  // namespace
