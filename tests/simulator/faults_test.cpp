#include <gtest/gtest.h>

#include <algorithm>

#include "device/traffic.h"
#include "faults/fault_text.h"
#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

/// Every fault as an accessory sees it. "00 07" is answered with 55 06 00 08 50 6F 64 00 CF.
class FaultsTest : public testing::Test {
 protected:
  void fault(const std::string& text) { addFault(bench.ipod.faults(), text); }
  Payloads askRaw(const std::string& payload) {
    bench.send(payload);
    return bench.takeRaw();
  }

  Bench bench;
};

const char* const kNameFrame = "55 06 00 08 50 6F 64 00 CF";

TEST_F(FaultsTest, NoneHappensUnlessAdded) {
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
  EXPECT_EQ(bench.ipod.faults().injectedInAll(), 0u);
}

TEST_F(FaultsTest, LateReplyIsSentAfterLaterMessages) {
  fault("late=1500@00:07#1");
  EXPECT_EQ(bench.ask("00 07"), Payloads{});
  EXPECT_EQ(bench.ask("00 03"), Payloads{"00 04 00"});
  EXPECT_EQ(bench.wait(milliseconds(1499)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"00 08 50 6F 64 00"});
}

TEST_F(FaultsTest, LostReplyIsNotSentButCounted) {
  fault("lost@00:07#2");
  EXPECT_EQ(bench.ask("00 07").size(), 1u);
  EXPECT_EQ(bench.ask("00 07"), Payloads{});
  EXPECT_EQ(bench.wait(seconds(60)), Payloads{});
  EXPECT_EQ(bench.ask("00 07").size(), 1u);
  EXPECT_EQ(bench.ipod.faults().injected(FaultKind::kLost), 1u);
  EXPECT_EQ(bench.ipod.counters().messagesLost, 1u);
  EXPECT_EQ(bench.ipod.countSent(Lingo::kGeneral, kReturnIpodName), 2u);
}

TEST_F(FaultsTest, DoubledReplyIsSentTwice) {
  fault("doubled@00:07");
  EXPECT_EQ(askRaw("00 07"), (Payloads{kNameFrame, kNameFrame}));
}

TEST_F(FaultsTest, WrongCommandLingoAndStatus) {
  fault("wrong-command=0x0A@00:07#1");
  fault("wrong-lingo=2@00:07#2");
  fault("wrong-status=2@00:07#3");
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 0A 50 6F 64 00"});
  EXPECT_EQ(bench.ask("00 07"), Payloads{"02 08 50 6F 64 00"});
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 02 02 07"});
}

TEST_F(FaultsTest, WrongStatusOfTheExtendedInterfaceNamesTheWholeCommand) {
  bench.enter();
  fault("wrong-status=3@04:0016");
  EXPECT_EQ(bench.ask("04 00 16"), Payloads{"04 00 01 03 00 16"});
}

TEST_F(FaultsTest, CutFrameEndsEarly) {
  fault("cut=4@00:07#1");
  EXPECT_EQ(askRaw("00 07"), Payloads{"55 06 00 08"});
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
}

TEST_F(FaultsTest, FrameCutToNothingIsNotWritten) {
  fault("cut=0@00:07");
  EXPECT_EQ(askRaw("00 07"), Payloads{});
}

TEST_F(FaultsTest, CorruptFrameHasOneBitFlipped) {
  fault("corrupt@00:07#1");
  fault("corrupt=8@00:07#2");
  fault("corrupt=99@00:07#3");
  EXPECT_EQ(askRaw("00 07"), Payloads{"55 06 00 08 50 6F 64 00 CE"});
  EXPECT_EQ(askRaw("00 07"), Payloads{"54 06 00 08 50 6F 64 00 CF"});
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
}

TEST_F(FaultsTest, NoisePrecedesTheFrame) {
  fault("noise=3/0xA9@00:07#1");
  EXPECT_EQ(askRaw("00 07"), Payloads{std::string("A9 A9 A9 ") + kNameFrame});
}

TEST_F(FaultsTest, NoiseOfAnyBytesContainsNoStartByte) {
  fault("noise=2000@00:07#1");
  const Payloads writes = askRaw("00 07");
  ASSERT_EQ(writes.size(), 1u);
  const Bytes bytes = hex(writes[0]);
  ASSERT_EQ(bytes.size(), 2009u);
  EXPECT_EQ(std::count(bytes.begin(), bytes.end() - 9, 0x55), 0);
  EXPECT_EQ(toHex(ByteView(bytes).from(2000)), kNameFrame);
}

TEST_F(FaultsTest, SplitFrameIsSentInTwoWrites) {
  fault("split=1@00:07#1");
  EXPECT_EQ(askRaw("00 07"), (Payloads{"55", "06 00 08 50 6F 64 00 CF"}));
}

TEST_F(FaultsTest, NothingIsSentBetweenTheWritesOfASplitFrame) {
  fault("split=4/50@00:07#1");
  EXPECT_EQ(askRaw("00 07"), Payloads{"55 06 00 08"});
  EXPECT_EQ(askRaw("00 03"), Payloads{});
  EXPECT_EQ(bench.ipod.nextWake(), milliseconds(50));
  bench.now = milliseconds(49);
  EXPECT_EQ(bench.takeRaw(), Payloads{});
  bench.now = milliseconds(50);
  EXPECT_EQ(bench.takeRaw(), (Payloads{"50 6F 64 00 CF", "55 03 00 04 00 F9"}));
}

TEST_F(FaultsTest, SecondWriteOfASplitFrameIsDroppedWithTheAccessory) {
  fault("split=4/50@00:07#1");
  askRaw("00 07");
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(askRaw("00 03"), Payloads{"55 03 00 04 00 F9"});
}

TEST_F(FaultsTest, SplitBeyondTheFrameSplitsNothing) {
  fault("split=9@00:07#1");
  fault("split=0@00:07#2");
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
}

TEST_F(FaultsTest, FramesAreSentTogetherInOneWrite) {
  bench.enter();
  fault("together@04:1A");
  EXPECT_EQ(askRaw("04 00 1A 06 00 00 00 00 FF FF FF FF"),
            Payloads{"55 0C 04 00 1B 00 00 00 00 43 6F 6C 65 00 52 "
                     "55 0C 04 00 1B 00 00 00 01 44 6F 72 6E 00 41"});
}

TEST_F(FaultsTest, LongFormForAShortReply) {
  fault("long-form@00:07");
  EXPECT_EQ(askRaw("00 07"), Payloads{"55 00 00 06 00 08 50 6F 64 00 CF"});
}

TEST_F(FaultsTest, ModelCanAlwaysUseTheLongForm) {
  Personality personality;
  personality.lengthForm = LengthForm::kLong;
  Bench other(personality);
  other.send("00 03");
  EXPECT_EQ(other.takeRaw(), Payloads{"55 00 00 03 00 04 00 F9"});
}

TEST_F(FaultsTest, NotificationsAreSentBetweenRequestAndAnswer) {
  fault("notifications-before=2@00:07");
  EXPECT_EQ(bench.ask("00 07"),
            (Payloads{"04 00 27 04 00 00 00 00", "04 00 27 04 00 00 00 00", "00 08 50 6F 64 00"}));
}

TEST_F(FaultsTest, TextsOfAnyLength) {
  fault("text-length=0@00:07#1");
  fault("text-length=3@00:07#2");
  fault("text-length=4096@00:07#3");
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 08 00"});
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 08 78 78 78 00"});
  EXPECT_EQ(hex(bench.ask("00 07").at(0)).size(), 4099u);
}

TEST_F(FaultsTest, BrokenAndUnterminatedTexts) {
  fault("text-broken@00:07#1");
  fault("text-unterminated@00:07#2");
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 08 C3 28 A0 E2 82 78 F0 9F FF 00"});
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 08 50 6F 64"});
}

TEST_F(FaultsTest, TextFaultDoesNotAffectRepliesWithoutAText) {
  fault("text-length=5");
  EXPECT_EQ(bench.ask("00 03"), Payloads{"00 04 00"});
  EXPECT_EQ(bench.ipod.faults().injectedInAll(), 0u);
}

TEST_F(FaultsTest, TextFaultOfARecordKeepsItsIndex) {
  bench.enter();
  fault("text-length=1@04:1A#2");
  EXPECT_EQ(bench.ask("04 00 1A 06 00 00 00 00 00 00 00 02"),
            (Payloads{"04 00 1B 00 00 00 00 43 6F 6C 65 00", "04 00 1B 00 00 00 01 78 00"}));
}

TEST_F(FaultsTest, ShortListingLacksItsLastRecords) {
  bench.enter();
  fault("short-listing=1@04:1A#2");
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 00 00 00 00 03").size(), 3u);
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 00 00 00 00 03").size(), 2u);
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 00 00 00 00 01").size(), 1u);
}

TEST_F(FaultsTest, ShortListingCanLackEveryRecord) {
  bench.enter();
  fault("short-listing=9@04:1A");
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 00 00 00 00 03"), Payloads{});
}

TEST_F(FaultsTest, LongListingHasMoreRecords) {
  bench.enter();
  fault("long-listing=2@04:1A");
  EXPECT_EQ(bench.ask("04 00 1A 06 00 00 00 01 00 00 00 01"),
            (Payloads{"04 00 1B 00 00 00 01 44 6F 72 6E 00", "04 00 1B 00 00 00 02 43 6F 6C 65 00",
                      "04 00 1B 00 00 00 03 44 6F 72 6E 00"}));
}

TEST_F(FaultsTest, ShuffledListingHasTheSameRecordsInAnotherOrder) {
  bench.enter();
  const Payloads inOrder = bench.ask("04 00 1A 05 00 00 00 00 00 00 00 05");
  fault("shuffled-listing@04:1A");
  Payloads mixed = bench.ask("04 00 1A 05 00 00 00 00 00 00 00 05");
  EXPECT_NE(mixed, inOrder);
  std::sort(mixed.begin(), mixed.end());
  EXPECT_EQ(mixed, inOrder);
}

TEST_F(FaultsTest, ShuffledListingIsNeverInOrder) {
  bench.enter();
  fault("shuffled-listing@04:1A");
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(bench.ask("04 00 1A 06 00 00 00 00 00 00 00 02").at(0),
              "04 00 1B 00 00 00 01 44 6F 72 6E 00");
  }
}

TEST_F(FaultsTest, NotificationsAreSentBetweenRecords) {
  bench.enter();
  fault("notifications-between=1@04:1A");
  EXPECT_EQ(bench.ask("04 00 1A 06 00 00 00 00 00 00 00 02"),
            (Payloads{"04 00 1B 00 00 00 00 43 6F 6C 65 00", "04 00 27 04 00 00 00 00",
                      "04 00 1B 00 00 00 01 44 6F 72 6E 00"}));
}

TEST_F(FaultsTest, CountDriftsFurtherWithEachRequest) {
  bench.enter();
  fault("drift=-1@04:18");
  EXPECT_EQ(bench.ask("04 00 18 05"), Payloads{"04 00 19 00 00 00 04"});
  EXPECT_EQ(bench.ask("04 00 18 05"), Payloads{"04 00 19 00 00 00 03"});
}

TEST_F(FaultsTest, SilenceLastsUntilTheCableIsPluggedAgain) {
  fault("silence@00:07#2");
  EXPECT_EQ(bench.ask("00 07").size(), 1u);
  EXPECT_EQ(bench.ask("00 07"), Payloads{});
  EXPECT_EQ(bench.ask("00 03"), Payloads{});
  bench.ipod.plugIn(bench.now, FrameKind::kUsb);
  EXPECT_EQ(bench.ask("00 03"), Payloads{"00 04 00"});
}

TEST_F(FaultsTest, SleepIsAnnounced) {
  fault("sleep@00:07#1");
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 23 01"});
  EXPECT_EQ(bench.ask("00 03"), Payloads{});
}

TEST_F(FaultsTest, UnsolicitedMessageIsNamedByItsCommand) {
  fault("lost@00:27#1");
  EXPECT_EQ(bench.ask("00 13 00 00 04 11 00 00 00 00 00 00 00 00"), Payloads{"00 02 00 13"});
  EXPECT_EQ(bench.wait(seconds(5)), Payloads{"00 27 00"});
}

TEST_F(FaultsTest, PendingAnswerIsStillAnAnswerToItsRequest) {
  Personality personality;
  personality.modeChangePending = milliseconds(300);
  Bench other(personality);
  addFault(other.ipod.faults(), "lost@00:05#2");
  EXPECT_EQ(other.ask("00 05"), Payloads{"00 02 06 05 00 00 01 2C"});
  EXPECT_EQ(other.wait(seconds(1)), Payloads{});
}

TEST_F(FaultsTest, CableIsPulledAfterBytesSent) {
  fault("unplug-sent=12");
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
  EXPECT_TRUE(bench.ipod.plugged());
  EXPECT_EQ(askRaw("00 07"), Payloads{"55 06 00"});
  EXPECT_FALSE(bench.ipod.plugged());
  EXPECT_EQ(askRaw("00 07"), Payloads{});
  bench.ipod.plugIn(bench.now, FrameKind::kUsb);
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
}

TEST_F(FaultsTest, CableIsPulledBetweenTwoFrames) {
  fault("unplug-sent=9");
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
  EXPECT_FALSE(bench.ipod.plugged());
}

TEST_F(FaultsTest, CableIsPulledAfterBytesReceived) {
  fault("unplug-received=7");
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
  EXPECT_EQ(askRaw("00 07"), Payloads{});
  EXPECT_FALSE(bench.ipod.plugged());
  EXPECT_EQ(bench.ipod.counters().bytesReceived, 7u);
}

TEST_F(FaultsTest, BytesUntilTheCableIsPulledAreCountedForEachAccessory) {
  fault("unplug-sent=12");
  fault("unplug-received=12");
  askRaw("00 07");
  bench.ipod.hangUp(bench.now);
  askRaw("00 07");
  EXPECT_TRUE(bench.ipod.plugged());
  bench.ipod.hangUp(bench.now);
  askRaw("00 03");
  EXPECT_EQ(askRaw("00 03"), Payloads{"55 03 00 04 00 F9"});
  EXPECT_FALSE(bench.ipod.plugged());
}

TEST_F(FaultsTest, ClearedPlanHasNoEffect) {
  fault("lost");
  fault("unplug-sent=1");
  bench.ipod.faults().clear();
  EXPECT_EQ(askRaw("00 07"), Payloads{kNameFrame});
}

TEST_F(FaultsTest, ClassAndTextMeanTheSame) {
  Fault lost;
  lost.kind = FaultKind::kLost;
  lost.target = FaultTarget::repliesTo(0x00, 0x07).nth(2);
  bench.ipod.faults().add(lost);
  EXPECT_EQ(bench.ask("00 07").size(), 1u);
  EXPECT_EQ(bench.ask("00 07").size(), 0u);
  EXPECT_EQ(bench.ask("00 07").size(), 1u);
}

TEST_F(FaultsTest, RandomFaultsHappenAboutAsOftenAsTheirChance) {
  fault("random=20/lost");
  for (int i = 0; i < 1000; ++i)
    bench.ask("00 03");
  EXPECT_GT(bench.ipod.faults().injected(FaultKind::kLost), 150u);
  EXPECT_LT(bench.ipod.faults().injected(FaultKind::kLost), 250u);
}

/// The reports of faults.
class StrikesTest : public FaultsTest {
 protected:
  void SetUp() override { bench.enter(); }

  Payloads strikes() const {
    Payloads texts;
    for (const Traffic& traffic : bench.ipod.history()) {
      if (traffic.kind == Traffic::Kind::kFault) texts.push_back(traffic.note);
    }
    return texts;
  }
};

TEST_F(StrikesTest, NameTheReply) {
  fault("doubled@00:*#3");
  fault("late=5");
  bench.ask("00 07");
  bench.ask("00 03");
  bench.ask("00 07");
  EXPECT_EQ(strikes(),
            (Payloads{"late=5@00:07#1", "late=5@00:03#1", "doubled@00:07#2", "late=5@00:07#2"}));
}

TEST_F(StrikesTest, CountFromTheStartOfThePlan) {
  bench.ask("00 07");
  fault("lost@00:07#1");
  bench.ask("00 07");
  bench.ipod.faults().clear();
  fault("lost@00:07#1");
  bench.ask("00 07");
  EXPECT_EQ(strikes(), (Payloads{"lost@00:07#2", "lost@00:07#3"}));
}

TEST_F(StrikesTest, OfUnsolicitedMessagesNameTheMessage) {
  fault("lost@04:27");
  bench.ask("04 00 26 01");
  bench.ask("04 00 28 00 00 00 00");
  EXPECT_EQ(strikes(), Payloads{"lost@04:0027#1"});
}

TEST_F(StrikesTest, OfListingsAndCountsNameTheRequest) {
  bench.ask("04 00 1A 02 00 00 00 00 00 00 00 03");
  fault("short-listing=1");
  fault("shuffled-listing");
  fault("drift=-2");
  bench.ask("04 00 1A 02 00 00 00 00 00 00 00 03");
  bench.ask("04 00 18 05");
  bench.ask("04 00 18 05");
  EXPECT_EQ(strikes(), (Payloads{"short-listing=1@04:001A#2", "shuffled-listing@04:001A#2",
                                 "drift=-2@04:0018#1", "drift=-4@04:0018#2"}));
}

TEST_F(StrikesTest, OfTheCableNameNoReply) {
  fault("unplug-sent=20");
  bench.ask("00 07");
  bench.ask("00 07");
  EXPECT_EQ(strikes(), Payloads{"unplug-sent=20"});
}

TEST_F(StrikesTest, AreNotReportedWithoutATextToChange) {
  fault("text-length=3");
  bench.ask("00 03");
  bench.ask("00 07");
  EXPECT_EQ(strikes(), Payloads{"text-length=3@00:07#1"});
}

/// A short session: every byte that the iPod writes, and the faults that happened.
struct Session {
  Payloads writes;
  Payloads strikes;
};

Session session(uint32_t seed, const Payloads& faults) {
  Bench bench({}, smallLibrary(), seed);
  for (const std::string& fault : faults)
    addFault(bench.ipod.faults(), fault);
  Session past;
  bench.ipod.setTrace([&](const Traffic& traffic) {
    if (traffic.kind == Traffic::Kind::kFault) past.strikes.push_back(traffic.note);
  });
  const auto ask = [&](const std::string& payload) {
    bench.send(payload);
    for (const std::string& write : bench.takeRaw())
      past.writes.push_back(write);
    bench.now += milliseconds(7);
  };
  for (int round = 0; round < 20; ++round) {
    for (const char* payload : {"00 05", "04 00 2E 01", "04 00 28 00 00 00 02",
                                "04 00 20 00 00 00 01", "04 00 1A 05 00 00 00 00 FF FF FF FF"}) {
      ask(payload);
    }
  }
  return past;
}

const Payloads kAtRandom = {"random=30"};

TEST(Determinism, SameSeedGivesTheSameBytes) {
  EXPECT_EQ(session(5, kAtRandom).writes, session(5, kAtRandom).writes);
}

TEST(Determinism, AnotherSeedGivesOtherBytes) {
  EXPECT_NE(session(5, kAtRandom).writes, session(6, kAtRandom).writes);
}

/// With shuffle, too: the faults have separate random numbers.
TEST(Determinism, RandomFaultsCanBeRepeatedByTheirReports) {
  for (uint32_t seed = 1; seed <= 20; ++seed) {
    const Session random = session(seed, kAtRandom);
    const Session written = session(seed, random.strikes);
    ASSERT_GT(random.strikes.size(), 20u);
    ASSERT_EQ(written.strikes, random.strikes) << "seed " << seed;
    ASSERT_EQ(written.writes, random.writes) << "seed " << seed;
  }
}

}  // namespace
}  // namespace simulator
