#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

class ExtendedPlaybackTest : public testing::Test {
 protected:
  void SetUp() override { bench.enter(); }

  // Plays all music from this index on.
  void play(uint32_t index) {
    EXPECT_EQ(bench.ask("04 00 28" + u32(index)), Payloads{"04 00 01 00 00 28"});
  }
  void control(const std::string& code) {
    EXPECT_EQ(bench.ask("04 00 29 " + code), Payloads{"04 00 01 00 00 29"});
  }
  Payloads index() { return bench.ask("04 00 1E"); }
  Payloads status() { return bench.ask("04 00 1C"); }

  Bench bench;
};

TEST_F(ExtendedPlaybackTest, StoppedIpodHasNoIndexAndNoTimes) {
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 00 00 00 00 00 00 00"});
  EXPECT_EQ(index(), Payloads{"04 00 1F FF FF FF FF"});
  EXPECT_EQ(bench.ask("04 00 35"), Payloads{"04 00 36 00 00 00 00"});
}

TEST_F(ExtendedPlaybackTest, PlaysTheSelectionFromTheIndexOn) {
  bench.select(2, 0);
  play(1);
  bench.wait(milliseconds(1500));
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 4E 20 00 00 05 DC 01"});
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 01"});
  EXPECT_EQ(bench.ask("04 00 35"), Payloads{"04 00 36 00 00 00 03"});
}

TEST_F(ExtendedPlaybackTest, PlayingNeedsATrackOfTheSelection) {
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 05"), Payloads{"04 00 01 04 00 28"});
  EXPECT_EQ(index(), Payloads{"04 00 1F FF FF FF FF"});
}

TEST_F(ExtendedPlaybackTest, PlayingWithoutAnIndexBeginsAtTheFirstTrack) {
  play(0xFFFFFFFF);
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 00"});
}

TEST_F(ExtendedPlaybackTest, PlayedSelectionIsACopy) {
  bench.select(2, 0);
  play(0);
  bench.ask("04 00 16");
  EXPECT_EQ(bench.ask("04 00 35"), Payloads{"04 00 36 00 00 00 03"});
}

TEST_F(ExtendedPlaybackTest, ReturnsTheTextsOfAnyTrackOfThePlayingList) {
  play(0);
  EXPECT_EQ(bench.ask("04 00 20 00 00 00 02"), Payloads{"04 00 21 43 68 61 72 6C 69 65 00"});
  EXPECT_EQ(bench.ask("04 00 22 00 00 00 02"), Payloads{"04 00 23 41 6E 6E 61 00"});
  EXPECT_EQ(bench.ask("04 00 24 00 00 00 02"), Payloads{"04 00 25 53 65 63 6F 6E 64 00"});
}

TEST_F(ExtendedPlaybackTest, TextsOfAMissingTrackAreABadParameter) {
  play(0);
  EXPECT_EQ(bench.ask("04 00 20 00 00 00 05"), Payloads{"04 00 01 04 00 20"});
  EXPECT_EQ(bench.ask("04 00 22 FF FF FF FF"), Payloads{"04 00 01 04 00 22"});
  EXPECT_EQ(bench.ask("04 00 24 00 00 00 05"), Payloads{"04 00 01 04 00 24"});
}

TEST(TrackTexts, OfAMissingTrackFailWithSomeModels) {
  Personality personality;
  personality.badTrackIndex = BadTrackIndex::kFailed;
  Bench bench(personality);
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 20 FF FF FF FF"), Payloads{"04 00 01 02 00 20"});
  bench.ask("04 00 28 00 00 00 00");
  EXPECT_EQ(bench.ask("04 00 20 00 00 00 05"), Payloads{"04 00 01 02 00 20"});
  EXPECT_EQ(bench.ask("04 00 22 00 00 00 05"), Payloads{"04 00 01 02 00 22"});
  EXPECT_EQ(bench.ask("04 00 24 00 00 00 05"), Payloads{"04 00 01 02 00 24"});
  EXPECT_EQ(bench.ask("04 00 20 00 00 00 04"), Payloads{"04 00 21 45 63 68 6F 00"});
  EXPECT_EQ(bench.ask("04 00 0C 06 00 00 00 05 00 00"), Payloads{"04 00 01 04 00 0C"});
}

TEST(TrackInfo, OfTheGenreIsRefusedBySomeModels) {
  Personality personality;
  personality.tellsGenre = false;
  Bench bench(personality);
  bench.enter();
  bench.ask("04 00 28 00 00 00 00");
  EXPECT_EQ(bench.ask("04 00 0C 05 00 00 00 00 00 00"), Payloads{"04 00 01 04 00 0C"});
  EXPECT_EQ(bench.ask("04 00 0C 06 00 00 00 00 00 00"), Payloads{"04 00 0D 06 43 6F 6C 65 00"});
}

TEST_F(ExtendedPlaybackTest, ReturnsGenreAndComposer) {
  play(0);
  EXPECT_EQ(bench.ask("04 00 0C 05 00 00 00 00 00 00"), Payloads{"04 00 0D 05 52 6F 63 6B 00"});
  EXPECT_EQ(bench.ask("04 00 0C 06 00 00 00 02 00 00"), Payloads{"04 00 0D 06 44 6F 72 6E 00"});
  EXPECT_EQ(bench.ask("04 00 0C 06 00 00 00 03 00 00"), Payloads{"04 00 0D 06 00"});
}

TEST_F(ExtendedPlaybackTest, ReturnsCapabilitiesLengthAndChapters) {
  play(0);
  EXPECT_EQ(bench.ask("04 00 0C 00 00 00 00 00 00 00"),
            Payloads{"04 00 0D 00 00 00 00 20 00 00 27 10 00 00"});
  EXPECT_EQ(bench.ask("04 00 0C 00 00 00 00 04 00 00"),
            Payloads{"04 00 0D 00 00 00 00 00 00 00 17 70 00 00"});
}

TEST_F(ExtendedPlaybackTest, ReturnsTheFirstDayOfTheReleaseYear) {
  play(0);  // 1 January 2001 was a Monday
  EXPECT_EQ(bench.ask("04 00 0C 02 00 00 00 00 00 00"),
            Payloads{"04 00 0D 02 00 00 00 01 01 07 D1 01"});
  // 1 January 1999 was a Friday
  EXPECT_EQ(bench.ask("04 00 0C 02 00 00 00 03 00 00"),
            Payloads{"04 00 0D 02 00 00 00 01 01 07 CF 05"});
}

TEST_F(ExtendedPlaybackTest, ReturnsThePodcastsName) {
  bench.select(8, 0);
  play(0);
  EXPECT_EQ(bench.ask("04 00 0C 01 00 00 00 00 00 00"), Payloads{"04 00 0D 01 44 61 69 6C 79 00"});
  EXPECT_EQ(bench.ask("04 00 0C 00 00 00 00 00 00 00"),
            Payloads{"04 00 0D 00 00 00 00 30 00 01 5F 90 00 00"});
}

TEST_F(ExtendedPlaybackTest, OtherInformationIsABadParameter) {
  play(0);
  EXPECT_EQ(bench.ask("04 00 0C 03 00 00 00 00 00 00"), Payloads{"04 00 01 04 00 0C"});
  EXPECT_EQ(bench.ask("04 00 0C 05 00 00 00 05 00 00"), Payloads{"04 00 01 04 00 0C"});
}

TEST_F(ExtendedPlaybackTest, TogglesAndPauses) {
  play(0);
  control("01");
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 27 10 00 00 00 00 02"});
  control("0A");
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 27 10 00 00 00 00 01"});
  control("0A");
  control("0B");
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 27 10 00 00 00 00 02"});
  control("0B");
  control("01");
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 27 10 00 00 00 00 01"});
}

TEST_F(ExtendedPlaybackTest, PlayOnAnIdleIpodPlaysAllMusic) {
  control("0A");
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 00"});
  EXPECT_EQ(bench.ask("04 00 35"), Payloads{"04 00 36 00 00 00 05"});
}

TEST_F(ExtendedPlaybackTest, StopEndsPlaying) {
  play(2);
  control("02");
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 00 00 00 00 00 00 00"});
  EXPECT_EQ(index(), Payloads{"04 00 1F FF FF FF FF"});
}

TEST_F(ExtendedPlaybackTest, SkipsBothWays) {
  play(0);
  control("03");
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 01"});
  control("04");
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 00"});
}

TEST_F(ExtendedPlaybackTest, PreviousLateInATrackRestartsIt) {
  play(1);
  bench.wait(seconds(4));
  control("04");
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 01"});
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 4E 20 00 00 00 00 01"});
}

TEST_F(ExtendedPlaybackTest, WindsForwardAndBack) {
  play(2);
  control("05");
  bench.wait(seconds(2));
  control("07");
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 75 30 00 00 3E 80 01"});
  control("06");
  bench.wait(seconds(1));
  control("07");
  EXPECT_EQ(status(), Payloads{"04 00 1D 00 00 75 30 00 00 1F 40 01"});
}

TEST_F(ExtendedPlaybackTest, ChaptersOfATrackWithoutAnyAreTracks) {
  play(0);
  control("08");
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 01"});
  control("09");
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 00"});
}

TEST_F(ExtendedPlaybackTest, UnknownControlCodeIsABadParameter) {
  EXPECT_EQ(bench.ask("04 00 29 00"), Payloads{"04 00 01 04 00 29"});
  EXPECT_EQ(bench.ask("04 00 29 0C"), Payloads{"04 00 01 04 00 29"});
}

TEST_F(ExtendedPlaybackTest, ShuffleAndRepeatAreKept) {
  EXPECT_EQ(bench.ask("04 00 2C"), Payloads{"04 00 2D 00"});
  EXPECT_EQ(bench.ask("04 00 2E 02"), Payloads{"04 00 01 00 00 2E"});
  EXPECT_EQ(bench.ask("04 00 2C"), Payloads{"04 00 2D 02"});
  EXPECT_EQ(bench.ask("04 00 2F"), Payloads{"04 00 30 00"});
  EXPECT_EQ(bench.ask("04 00 31 01 01"), Payloads{"04 00 01 00 00 31"});
  EXPECT_EQ(bench.ask("04 00 2F"), Payloads{"04 00 30 01"});
}

TEST_F(ExtendedPlaybackTest, ModesAboveTwoAreABadParameter) {
  EXPECT_EQ(bench.ask("04 00 2E 03"), Payloads{"04 00 01 04 00 2E"});
  EXPECT_EQ(bench.ask("04 00 31 FF"), Payloads{"04 00 01 04 00 31"});
  EXPECT_EQ(bench.ask("04 00 2C"), Payloads{"04 00 2D 00"});
  EXPECT_EQ(bench.ask("04 00 2F"), Payloads{"04 00 30 00"});
}

TEST_F(ExtendedPlaybackTest, ShuffledSelectionPlaysTheIndexedTrackFirst) {
  bench.ask("04 00 2E 01");
  play(3);
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 00"});
  EXPECT_EQ(bench.ask("04 00 20 00 00 00 00"), Payloads{"04 00 21 54 68 65 20 44 65 6C 74 61 00"});
  EXPECT_EQ(bench.list(5)[3], "The Delta");
}

TEST_F(ExtendedPlaybackTest, SetsTheCurrentTrack) {
  EXPECT_EQ(bench.ask("04 00 37 00 00 00 00"), Payloads{"04 00 01 02 00 37"});
  play(0);
  EXPECT_EQ(bench.ask("04 00 37 00 00 00 05"), Payloads{"04 00 01 04 00 37"});
  EXPECT_EQ(bench.ask("04 00 37 00 00 00 04"), Payloads{"04 00 01 00 00 37"});
  EXPECT_EQ(index(), Payloads{"04 00 1F 00 00 00 04"});
}

TEST_F(ExtendedPlaybackTest, PositionNeverExceedsTheStatedLength) {
  MusicLibrary library = smallLibrary();
  for (Track& track : library.tracks)
    track.lengthMs = 0;
  Bench other({}, library);
  other.enter();
  other.ask("04 00 28 00 00 00 00");
  other.wait(milliseconds(50));
  EXPECT_EQ(other.ask("04 00 1C"), Payloads{"04 00 1D 00 00 00 00 00 00 00 00 01"});
}

TEST(PlayControl, ModelsBefore113KnowNeitherPlayNorPause) {
  Personality personality;
  personality.lingoes[0x04] = {1, 12};
  Bench bench(personality);
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 29 0A"), Payloads{"04 00 01 04 00 29"});
  EXPECT_EQ(bench.ask("04 00 29 0B"), Payloads{"04 00 01 04 00 29"});
  EXPECT_EQ(bench.ask("04 00 29 01"), Payloads{"04 00 01 00 00 29"});
}

TEST(PlaySelection, CanPendFirst) {
  Personality personality;
  personality.playPending = milliseconds(500);
  Bench bench(personality);
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 01"), Payloads{"04 00 01 06 00 28 00 00 01 F4"});
  EXPECT_EQ(bench.ask("04 00 1E"), Payloads{"04 00 1F FF FF FF FF"});
  EXPECT_EQ(bench.wait(milliseconds(500)), Payloads{"04 00 01 00 00 28"});
  EXPECT_EQ(bench.ask("04 00 1E"), Payloads{"04 00 1F 00 00 00 01"});
}

TEST(PlaySelection, CanBeAcknowledgedWhenTheSoundStarts) {
  Personality personality;
  personality.soundDelay = milliseconds(200);
  Bench bench(personality);
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 01"), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(199)), Payloads{});
  EXPECT_EQ(bench.ask("04 00 1E"), Payloads{"04 00 1F FF FF FF FF"});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"04 00 01 00 00 28"});
  EXPECT_EQ(bench.ask("04 00 1C"), Payloads{"04 00 1D 00 00 4E 20 00 00 00 00 01"});
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 05"), Payloads{"04 00 01 04 00 28"});
}

TEST(PlaySelection, CanPendAndThenWaitForTheSound) {
  Personality personality;
  personality.playPending = milliseconds(500);
  personality.soundDelay = milliseconds(200);
  Bench bench(personality);
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 01"), Payloads{"04 00 01 06 00 28 00 00 01 F4"});
  EXPECT_EQ(bench.wait(milliseconds(699)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"04 00 01 00 00 28"});
}

TEST(PlaySelection, SoundThatIsDueIsCancelledWithTheAccessory) {
  Personality personality;
  personality.soundDelay = milliseconds(200);
  Bench bench(personality);
  bench.enter();
  bench.ask("04 00 28 00 00 00 01");
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.wait(seconds(1)), Payloads{});
  EXPECT_EQ(bench.ipod.player().state(), PlayState::kStopped);
}

TEST(Answers, CanBeDelayedAndAcknowledgementsMore) {
  Personality personality;
  personality.answerDelay = milliseconds(10);
  personality.acknowledgementDelay = milliseconds(30);
  Bench bench(personality);
  bench.send("00 05");
  EXPECT_EQ(bench.wait(milliseconds(39)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"00 02 00 05"});
  bench.send("04 00 1E");
  EXPECT_EQ(bench.wait(milliseconds(9)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"04 00 1F FF FF FF FF"});
}

class NotificationTest : public ExtendedPlaybackTest {
 protected:
  void SetUp() override {
    ExtendedPlaybackTest::SetUp();
    switchOn(bench);
  }
  static void switchOn(Bench& any) {
    EXPECT_EQ(any.ask("04 00 26 01"), Payloads{"04 00 01 00 00 26"});
  }
};

TEST_F(ExtendedPlaybackTest, NothingIsNotifiedWithoutARequest) {
  play(0);
  EXPECT_EQ(bench.wait(seconds(90)), Payloads{});
}

TEST_F(NotificationTest, TracksAreNotified) {
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 01"),
            (Payloads{"04 00 01 00 00 28", "04 00 27 01 00 00 00 01"}));
  EXPECT_EQ(bench.ask("04 00 29 03"), (Payloads{"04 00 01 00 00 29", "04 00 27 01 00 00 00 02"}));
}

TEST_F(NotificationTest, PositionIsNotifiedTwiceASecondWhilePlaying) {
  bench.ask("04 00 28 00 00 00 00");
  EXPECT_EQ(bench.wait(milliseconds(1200)),
            (Payloads{"04 00 27 04 00 00 01 F4", "04 00 27 04 00 00 03 E8"}));
  bench.ask("04 00 29 01");
  EXPECT_EQ(bench.wait(seconds(5)), Payloads{});
  bench.ask("04 00 29 01");
  EXPECT_EQ(bench.wait(milliseconds(500)), Payloads{"04 00 27 04 00 00 06 A4"});
}

TEST_F(NotificationTest, EndOfTheTrackIsNotified) {
  bench.ask("04 00 28 00 00 00 03");
  EXPECT_EQ(bench.wait(milliseconds(4999)).back(), "04 00 27 04 00 00 11 94");
  EXPECT_EQ(bench.wait(milliseconds(501)),
            (Payloads{"04 00 27 01 00 00 00 04", "04 00 27 04 00 00 01 F4"}));
}

TEST_F(NotificationTest, EndOfTheListIsNotified) {
  bench.ask("04 00 28 00 00 00 04");
  EXPECT_EQ(bench.wait(milliseconds(5999)).back(), "04 00 27 04 00 00 15 7C");
  EXPECT_EQ(bench.wait(seconds(10)), Payloads{"04 00 27 00"});
}

TEST_F(NotificationTest, StopIsNotified) {
  bench.ask("04 00 28 00 00 00 04");
  EXPECT_EQ(bench.ask("04 00 29 02"), (Payloads{"04 00 01 00 00 29", "04 00 27 00"}));
  EXPECT_EQ(bench.ask("04 00 29 02"), Payloads{"04 00 01 00 00 29"});
}

TEST_F(NotificationTest, CanBeSwitchedOffAgain) {
  bench.ask("04 00 28 00 00 00 00");
  EXPECT_EQ(bench.ask("04 00 26 00"), Payloads{"04 00 01 00 00 26"});
  EXPECT_EQ(bench.wait(seconds(12)), Payloads{});
}

TEST_F(NotificationTest, StopWithTheExtendedMode) {
  bench.ask("04 00 28 00 00 00 00");
  bench.ask("00 06");
  bench.ipod.pressPlay(bench.now);
  EXPECT_EQ(bench.wait(seconds(2)), Payloads{});
  bench.enter();
  bench.ipod.pressPlay(bench.now);
  EXPECT_EQ(bench.wait(seconds(2)), Payloads{});
}

TEST(Notifications, CanBeSentUnsolicited) {
  Bench bench;
  bench.enter();
  bench.ask("04 00 28 00 00 00 00");
  bench.ipod.tellPosition(bench.now + milliseconds(300));
  EXPECT_EQ(bench.wait(milliseconds(300)), Payloads{"04 00 27 04 00 00 01 2C"});
}

TEST(Notifications, JitterDelaysThemUpToItsLimit) {
  Personality personality;
  personality.notificationJitter = milliseconds(100);
  Bench bench(personality);
  bench.enter();
  bench.ask("04 00 26 01");
  bench.ask("04 00 28 00 00 00 00");
  const Payloads told = bench.wait(milliseconds(600));
  ASSERT_EQ(told.size(), 1u);
  const Bytes bytes = hex(told[0]);
  const int position = bytes[6] << 8 | bytes[7];
  EXPECT_GE(position, 500);
  EXPECT_LE(position, 600);
}

TEST(Notifications, CanWaitForTheAcknowledgementOfTheAudioAttributes) {
  Personality personality;
  personality.audioAckOpensNotifications = true;
  Bench bench(personality);
  bench.ask("00 13 00 00 04 11 00 00 00 00 00 00 00 00");
  bench.ask("00 28 00 00 00 00 01");
  bench.ask("0A 03 00 00 AC 44");
  bench.enter();
  bench.ask("04 00 26 01");
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 00"), Payloads{"04 00 01 00 00 28"});
  EXPECT_EQ(bench.wait(seconds(1)), Payloads{});
  EXPECT_EQ(bench.ask("0A 00 00 04"), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(500)), Payloads{"04 00 27 04 00 00 05 DC"});
}

TEST(Notifications, DoNotWaitForAnAcknowledgementOfThePreviousAccessory) {
  Personality personality;
  personality.audioAckOpensNotifications = true;
  Bench bench(personality);
  bench.ipod.announceSampleRate(bench.now, 48000);
  bench.ipod.hangUp(bench.now);
  bench.enter();
  bench.ask("04 00 26 01");
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 00").size(), 2u);
}

}  // namespace
}  // namespace simulator
