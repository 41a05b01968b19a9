#include "device/simulated_ipod.h"

#include <gtest/gtest.h>

#include <utility>

#include "device/traffic.h"
#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

TEST(SimulatedIpod, SendsNothingWithoutARequest) {
  Bench bench;
  EXPECT_EQ(bench.wait(seconds(3600)), Payloads{});
  EXPECT_FALSE(bench.ipod.nextWake());
}

TEST(SimulatedIpod, IgnoresBytesBeforeItIsPlugged) {
  SimulatedIpod ipod(Personality{}, smallLibrary());
  ipod.receive(Time(0), hex("55 02 00 03 FB"));
  EXPECT_TRUE(ipod.takeOutput(Time(0)).empty());
  EXPECT_EQ(ipod.counters().bytesReceived, 0u);
}

TEST(SimulatedIpod, SpeaksSerialFramesOnASerialLine) {
  SimulatedIpod ipod(Personality{}, smallLibrary());
  ipod.plugIn(Time(0), FrameKind::kSerial);
  ipod.receive(Time(0), hex("FF 55 02 00 03 FB"));
  const std::vector<Bytes> writes = ipod.takeOutput(Time(0));
  ASSERT_EQ(writes.size(), 1u);
  EXPECT_EQ(toHex(writes[0]), "FF 55 03 00 04 00 F9");
}

TEST(SimulatedIpod, WritesEachFrameSeparately) {
  Bench bench;
  bench.sendRaw("55 02 00 03 FB 55 02 00 03 FB");
  EXPECT_EQ(bench.takeRaw(), (Payloads{"55 03 00 04 00 F9", "55 03 00 04 00 F9"}));
}

TEST(SimulatedIpod, DropsAFrameWithAWrongChecksumWithoutAnAnswer) {
  Bench bench;
  bench.sendRaw("55 02 00 03 FC");
  EXPECT_EQ(bench.take(), Payloads{});
  EXPECT_EQ(bench.ipod.frameCounters().badChecksums, 1u);
}

TEST(SimulatedIpod, DropsAnIncompletePacket) {
  Bench bench;
  bench.sendRaw("55 02 00");
  bench.wait(milliseconds(30));
  bench.sendRaw("55 02 00 03 FB");
  EXPECT_EQ(bench.take(), Payloads{"00 04 00"});
}

TEST(SimulatedIpod, ForgetsTheAccessoryThatHangsUp) {
  Bench bench;
  bench.enter();
  bench.select(2, 0);
  bench.ipod.pressPlay(bench.now);
  bench.ask("04 00 26 01");
  bench.sendRaw("55 02 00");
  bench.ipod.hangUp(bench.now);
  EXPECT_FALSE(bench.ipod.inExtendedMode());
  EXPECT_FALSE(bench.ipod.notificationsOn());
  EXPECT_EQ(bench.ipod.player().state(), PlayState::kPaused);
  EXPECT_EQ(bench.ask("00 03"), Payloads{"00 04 00"});
  bench.enter();
  EXPECT_EQ(bench.count(5), 5u);
}

TEST(SimulatedIpod, UnreadAnswersAreDroppedWithTheAccessory) {
  Bench bench;
  bench.send("00 03");
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.take(), Payloads{});
}

TEST(SimulatedIpod, ContinuesToPlayWhenUnpluggedAndPlugged) {
  Bench bench;
  bench.ipod.unplug(bench.now);
  bench.ipod.pressPlay(bench.now);
  bench.wait(seconds(3));
  EXPECT_EQ(bench.ipod.player().position(bench.now), seconds(3));
  bench.ipod.pressNext(bench.now);
  EXPECT_EQ(bench.ipod.player().list().currentIndex(), 1u);
  bench.ipod.pressPrevious(bench.now);
  EXPECT_EQ(bench.ipod.player().list().currentIndex(), 0u);
  bench.ipod.pressPause(bench.now);
  EXPECT_EQ(bench.ipod.player().state(), PlayState::kPaused);
}

TEST(SimulatedIpod, WakesWhenTheTrackEnds) {
  Bench bench;
  bench.ipod.pressPlay(bench.now);
  EXPECT_EQ(bench.ipod.nextWake(), seconds(10));
}

TEST(SimulatedIpod, KeepsAHistoryOfMessages) {
  Bench bench;
  bench.ask("00 03");
  const auto& history = bench.ipod.history();
  ASSERT_EQ(history.size(), 3u);
  EXPECT_EQ(history[0].note, "plugged in");
  EXPECT_EQ(history[1].kind, Traffic::Kind::kReceived);
  EXPECT_EQ(history[1].message, (Message{0x00, 0x03, {}}));
  EXPECT_EQ(history[2].kind, Traffic::Kind::kSent);
  EXPECT_EQ(history[2].message, (Message{0x00, 0x04, {0x00}}));
  EXPECT_EQ(bench.ipod.countReceived(Lingo::kGeneral, 0x03), 1u);
  EXPECT_EQ(bench.ipod.countSent(Lingo::kGeneral, 0x04), 1u);
}

TEST(SimulatedIpod, CountsBytesAndMessages) {
  Bench bench;
  bench.ask("00 03");
  bench.ask("00 07");
  EXPECT_EQ(bench.ipod.counters().bytesReceived, 10u);
  EXPECT_EQ(bench.ipod.counters().bytesSent, 15u);
  EXPECT_EQ(bench.ipod.counters().messagesReceived, 2u);
  EXPECT_EQ(bench.ipod.counters().messagesSent, 2u);
}

TEST(SimulatedIpod, KeepsALimitedHistory) {
  Bench bench;
  for (size_t i = 0; i < SimulatedIpod::kHistoryLimit; ++i)
    bench.ask("00 03");
  EXPECT_EQ(bench.ipod.history().size(), SimulatedIpod::kHistoryLimit);
  EXPECT_EQ(bench.ipod.countSent(Lingo::kGeneral, 0x04), SimulatedIpod::kHistoryLimit / 2);
}

TEST(Trace, ShowsEachMessageInOneLine) {
  Bench bench;
  std::vector<std::string> lines;
  bench.ipod.setTrace([&](const Traffic& traffic) { lines.push_back(describe(traffic)); });
  bench.now = milliseconds(1234);
  bench.enter();
  Fault late;
  late.kind = FaultKind::kLate;
  late.value = 5;
  bench.ipod.faults().add(late);
  bench.ask("04 00 18 02");
  bench.wait(milliseconds(5));
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "     1.234 <- 00 05 EnterRemoteUIMode",
                       "     1.234 -> 00 02 iPodAck status=ok command=EnterRemoteUIMode",
                       "     1.234 <- 04 0018 GetNumberCategorizedDbRecords category=artists",
                       "fault: late=5@04:0018#1 struck at 1.234 s (GetNumberCategorizedDbRecords)",
                       "     1.239 -> 04 0019 ReturnNumberCategorizedDbRecords count=3  [late]",
                   }));
}

class WasteTrace : public testing::Test {
 protected:
  WasteTrace() {
    bench.ipod.setTrace([this](const Traffic& traffic) { lines.push_back(describe(traffic)); });
  }
  std::vector<std::string> take() { return std::exchange(lines, {}); }

  Bench bench;
  std::vector<std::string> lines;
};

TEST_F(WasteTrace, ShowsBytesThatFormNoFrameInTheirOrder) {
  bench.sendRaw("13 A9 55 02 00 03 FB 77 FF");
  EXPECT_EQ(take(), (std::vector<std::string>{
                        "     0.000 -- bytes that form no frame: 13 A9",
                        "     0.000 <- 00 03 RequestRemoteUIMode",
                        "     0.000 -- bytes that form no frame: 77 FF",
                    }));
}

TEST_F(WasteTrace, ShowsAFrameWithAWrongChecksum) {
  bench.sendRaw("55 03 00 0F 04 EB");
  EXPECT_EQ(take(), std::vector<std::string>{
                        "     0.000 -- a frame with a wrong checksum: 55 03 00 0F 04 EB"});
  EXPECT_EQ(bench.ipod.history().back().kind, Traffic::Kind::kEvent);
}

TEST_F(WasteTrace, ShowsAnIncompleteFrameWhenTheNextByteArrives) {
  bench.sendRaw("55 02 00");
  EXPECT_EQ(take(), std::vector<std::string>{});
  bench.wait(milliseconds(30));
  bench.sendRaw("77");
  EXPECT_EQ(take(), (std::vector<std::string>{
                        "     0.030 -- a frame that was not finished: 55 02 00",
                        "     0.030 -- bytes that form no frame: 77",
                    }));
}

TEST_F(WasteTrace, ShowsAnIncompleteFrameWhenTheAccessoryDisconnects) {
  bench.sendRaw("55 02 00");
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(take(), (std::vector<std::string>{
                        "     0.000 -- a frame that was not finished: 55 02 00",
                        "     0.000 -- the accessory closed the link",
                    }));
  bench.sendRaw("55 02 00 03");
  bench.ipod.unplug(bench.now);
  EXPECT_EQ(take(), (std::vector<std::string>{
                        "     0.000 -- a frame that was not finished: 55 02 00 03",
                        "     0.000 -- unplugged",
                    }));
}

TEST_F(WasteTrace, ShowsAllBytesOfALargeFrameAndCutsLongNoise) {
  std::string large = "55 FF 00 77";
  for (int i = 0; i < 253; ++i)
    large += " 01";
  bench.sendRaw(large + " 00");
  EXPECT_EQ(take(), std::vector<std::string>{
                        "     0.000 -- a frame with a wrong checksum: " + large + " 00"});
  std::string shown;
  for (int i = 0; i < 264; ++i)
    shown += " 77";
  bench.sendRaw(shown + " 77");
  EXPECT_EQ(take(), std::vector<std::string>{"     0.000 -- bytes that form no frame:" + shown +
                                             " ... (265 bytes)"});
}

TEST(Trace, ShowsFaultsWithTheirRequestIfItIsKnown) {
  Traffic traffic{milliseconds(61005), Traffic::Kind::kFault, {0x00, 0x77, {}}, "lost@00:77#1"};
  EXPECT_EQ(describe(traffic), "fault: lost@00:77#1 struck at 61.005 s");
  traffic.message = {0x04, 0x0027, {}};
  EXPECT_EQ(describe(traffic),
            "fault: lost@00:77#1 struck at 61.005 s (PlayStatusChangeNotification)");
}

TEST(Trace, CutsLongDataAndShowsItsLength) {
  const Traffic traffic{Time(0), Traffic::Kind::kSent, {0x63, 0x07, Bytes(30, 0x11)}, ""};
  EXPECT_EQ(describe(traffic),
            "     0.000 -> 63 07 unknown data=11 11 11 11 11 11 11 11 11 11 11 11 11 11 11 11 "
            "11 11 11 11 11 11 11 11 ... (30 bytes)");
}

TEST(Trace, ShowsLostMessagesAndEvents) {
  Traffic traffic{seconds(61), Traffic::Kind::kLost, {0x00, 0x04, {0x01}}, "lost"};
  EXPECT_EQ(describe(traffic), "    61.000 x- 00 04 ReturnRemoteUIMode mode=extended  [lost]");
  traffic.kind = Traffic::Kind::kEvent;
  EXPECT_EQ(describe(traffic), "    61.000 -- lost");
}

TEST(Personalities, EveryPresetCanBeMadeAndExplained) {
  for (const std::string& name : personalityNames()) {
    EXPECT_EQ(personality(name).preset, name);
    EXPECT_FALSE(personalityMeaning(name).empty());
  }
  EXPECT_EQ(personalityNames().front(), "classic");
}

TEST(Personalities, UnknownPresetIsRefused) {
  EXPECT_THROW(personality("walkman"), std::invalid_argument);
}

TEST(Personalities, HastyAnswersAtOnceAndAsksAndPlaysLate) {
  Bench bench(personality("hasty"));
  EXPECT_EQ(bench.ask("00 13 00 00 00 11 00 00 00 00 00 00 00 00"), Payloads{"00 02 00 13"});
  EXPECT_EQ(bench.wait(milliseconds(100)), Payloads{"00 27 00"});
  EXPECT_EQ(bench.ask("00 05"), (Payloads{"00 02 06 05 00 00 01 2C", "00 02 00 05"}));
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 00"), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(200)), Payloads{"04 00 01 00 00 28"});
}

TEST(Personalities, StrictRefusesWhatItMay) {
  const char* const announce = "00 13 00 00 00 11 00 00 00 00 00 00 00 00";
  Bench bench(personality("strict"));
  bench.ask(announce);
  EXPECT_EQ(bench.ask(announce), Payloads{"00 02 04 13"});
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 17 01 FF FF FF FF"), Payloads{"04 00 01 04 00 17"});
  EXPECT_EQ(bench.ask("04 00 20 00 00 00 00"), Payloads{"04 00 01 02 00 20"});
  bench.ask("04 00 28 00 00 00 00");
  EXPECT_EQ(bench.ask("04 00 0C 05 00 00 00 00 00 00"), Payloads{"04 00 01 04 00 0C"});
}

TEST(Personalities, ReturnTheVersionOfTheirExtendedInterface) {
  EXPECT_EQ(Bench(personality("classic")).ask("00 0F 04"), Payloads{"00 10 04 01 0E"});
  EXPECT_EQ(Bench(personality("nano")).ask("00 0F 04"), Payloads{"00 10 04 01 0D"});
  EXPECT_EQ(Bench(personality("video")).ask("00 0F 04"), Payloads{"00 10 04 01 0C"});
  EXPECT_EQ(Bench(personality("mini")).ask("00 0F 04"), Payloads{"00 10 04 01 02"});
  EXPECT_EQ(Bench(personality("touch")).ask("00 0F 04"), Payloads{"00 10 04 02 00"});
  EXPECT_EQ(Bench(personality("hasty")).ask("00 0F 04"), Payloads{"00 10 04 01 0C"});
}

}  // namespace
}  // namespace simulator
