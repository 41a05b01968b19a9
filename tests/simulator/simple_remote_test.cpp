#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

class SimpleRemoteTest : public testing::Test {
 protected:
  void SetUp() override { bench.ipod.pressPlay(bench.now); }

  void press(const std::string& buttons) {
    EXPECT_EQ(bench.ask("02 00 " + buttons), Payloads{});
    EXPECT_EQ(bench.ask("02 00 00"), Payloads{});
  }
  const Player& player() const { return bench.ipod.player(); }
  uint32_t index() const { return player().list().currentIndex(); }

  Bench bench;
};

TEST_F(SimpleRemoteTest, PlayPauseToggles) {
  press("01");
  EXPECT_EQ(player().state(), PlayState::kPaused);
  press("01");
  EXPECT_EQ(player().state(), PlayState::kPlaying);
}

TEST_F(SimpleRemoteTest, HeldButtonActsOnce) {
  for (int i = 0; i < 50; ++i) {
    bench.send("02 00 01");
    bench.wait(milliseconds(5));
  }
  EXPECT_EQ(player().state(), PlayState::kPaused);
  bench.wait(milliseconds(194));
  EXPECT_EQ(bench.ipod.heldButtons(), 1u);
  bench.wait(milliseconds(1));
  EXPECT_EQ(bench.ipod.heldButtons(), 0u);
}

TEST_F(SimpleRemoteTest, NextAndPreviousTrack) {
  press("08");
  EXPECT_EQ(index(), 1u);
  press("10");
  EXPECT_EQ(index(), 0u);
}

TEST_F(SimpleRemoteTest, NextAndPreviousAlbum) {
  press("20");
  EXPECT_EQ(index(), 2u);
  press("20");
  EXPECT_EQ(index(), 3u);
  press("40");
  EXPECT_EQ(index(), 2u);
  press("40");
  EXPECT_EQ(index(), 1u);
  press("40");
  EXPECT_EQ(index(), 1u);
}

TEST_F(SimpleRemoteTest, StopButton) {
  press("80");
  EXPECT_EQ(player().state(), PlayState::kStopped);
  press("20");
  EXPECT_EQ(player().state(), PlayState::kStopped);
}

TEST_F(SimpleRemoteTest, PlayAndPauseButtonsOfTheSecondByte) {
  press("00 02");
  EXPECT_EQ(player().state(), PlayState::kPaused);
  press("00 02");
  EXPECT_EQ(player().state(), PlayState::kPaused);
  press("00 01");
  EXPECT_EQ(player().state(), PlayState::kPlaying);
}

TEST_F(SimpleRemoteTest, ChapterButtonsStepATrack) {
  press("00 08");
  EXPECT_EQ(index(), 1u);
  press("00 10");
  EXPECT_EQ(index(), 0u);
}

TEST_F(SimpleRemoteTest, ShuffleAndRepeatButtonsCycle) {
  press("00 80");
  EXPECT_EQ(player().shuffle(), Shuffle::kTracks);
  press("00 80");
  press("00 80");
  EXPECT_EQ(player().shuffle(), Shuffle::kOff);
  press("00 00 01");
  EXPECT_EQ(player().repeat(), Repeat::kOne);
}

TEST_F(SimpleRemoteTest, WindsWhileTheButtonIsDown) {
  bench.send("02 00 00 00 10");
  bench.wait(milliseconds(100));
  bench.send("02 00 00");
  EXPECT_EQ(player().position(bench.now), milliseconds(800));
  bench.send("02 00 00 00 20");
  bench.wait(milliseconds(50));
  bench.send("02 00 00");
  EXPECT_EQ(player().position(bench.now), milliseconds(400));
}

TEST_F(SimpleRemoteTest, WindingEndsWhenTheReportsEnd) {
  bench.send("02 00 00 00 10");
  bench.wait(milliseconds(1200));
  EXPECT_EQ(player().position(bench.now), milliseconds(200 * 8 + 1000));
}

TEST_F(SimpleRemoteTest, TwoButtonsAtOnceBothAct) {
  press("09");
  EXPECT_EQ(index(), 1u);
  EXPECT_EQ(player().state(), PlayState::kPaused);
}

TEST_F(SimpleRemoteTest, ButtonsOfTheIpodsControlsDoNothing) {
  press("06");
  press("00 00 CE");
  press("00 00 00 07");
  EXPECT_EQ(player().state(), PlayState::kPlaying);
  EXPECT_EQ(index(), 0u);
}

TEST_F(SimpleRemoteTest, ReportWithoutBytesIsARelease) {
  bench.send("02 00 01");
  EXPECT_EQ(bench.ipod.heldButtons(), 1u);
  bench.send("02 00");
  EXPECT_EQ(bench.ipod.heldButtons(), 0u);
}

TEST_F(SimpleRemoteTest, AudioButtonsActTheSameWay) {
  EXPECT_EQ(bench.ask("02 04 08 00 00 00"), Payloads{});
  EXPECT_EQ(index(), 1u);
}

TEST_F(SimpleRemoteTest, AudioButtonsBeyondTheSecondByteDoNothing) {
  bench.send("02 04 00 00 10 00");
  EXPECT_EQ(bench.ipod.heldButtons(), 0u);
}

TEST_F(SimpleRemoteTest, UnknownCommandHasNoAnswer) {
  EXPECT_EQ(bench.ask("02 77 01"), Payloads{});
  EXPECT_EQ(player().state(), PlayState::kPlaying);
}

TEST_F(SimpleRemoteTest, ButtonsAreReleasedWhenTheAccessoryDisconnects) {
  bench.send("02 00 01");
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.ipod.heldButtons(), 0u);
}

}  // namespace
}  // namespace simulator
