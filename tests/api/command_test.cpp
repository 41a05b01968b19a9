#include <climits>

#include "api/api_test.h"
#include "support/row_name.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr char kPlaying[] = "01";
constexpr char kPaused[] = "02";
constexpr char kStopped[] = "00";
constexpr char kTracks[] = "05";

class IpodCommandTest : public ConnectedApiTest {
 protected:
  std::vector<std::string> command(int code) {
    forgetEvents();
    EXPECT_EQ(IpodCommand(code), 0);
    return events();
  }

  /// The iPod reports these playing tracks before the command and after its first play control.
  void playingIndexChanges(std::uint32_t before, std::uint32_t after) {
    ipod.answerOnce(kGetCurrentTrackIndex, {"04 00 1F" + word(before)});
    ipod.answerOnce(kGetCurrentTrackIndex, {"04 00 1F" + word(after)});
  }
};

struct PlainCommand : NamedRow {
  int code;
  std::string request;
};

class PlainCommandTest : public IpodCommandTest,
                         public testing::WithParamInterface<PlainCommand> {};

TEST_P(PlainCommandTest, IsSentUnchangedAndPostsNothing) {
  EXPECT_THAT(command(GetParam().code), ElementsAre(GetParam().request));
}

TEST_P(PlainCommandTest, IsNotRepeatedWhenTheIpodRefuses) {
  ipod.refuse(kPlayControl);
  EXPECT_THAT(command(GetParam().code), ElementsAre(GetParam().request));
}

INSTANTIATE_TEST_SUITE_P(Codes, PlainCommandTest,
                         testing::Values(PlainCommand{"Toggle", 1, kTogglePlayPause},
                                         PlainCommand{"Stop", 2, kPlayControl + " 02"},
                                         PlainCommand{"StartFastForward", 5, kPlayControl + " 05"},
                                         PlainCommand{"StartRewind", 6, kPlayControl + " 06"},
                                         PlainCommand{"EndSeek", 7, kPlayControl + " 07"},
                                         PlainCommand{"Next", 8, kPlayControl + " 08"},
                                         PlainCommand{"Previous", 9, kPlayControl + " 09"}),
                         rowName<PlainCommand>);

TEST_F(IpodCommandTest, OutsideOneToFourteenDoesNothing) {
  for (const int code : {0, 15, -1, 16, 256 + 3, INT_MAX, INT_MIN})
    EXPECT_THAT(command(code), IsEmpty()) << code;
}

// ---------------------------------------------------------------- 3: next track

using NextTrack = IpodCommandTest;

TEST_F(NextTrack, OnTheLastTrackPlaysTheFirst) {
  playState(kPlaying, 1000);
  playingIndex(9);
  count(kTracks, 10);
  EXPECT_THAT(command(3), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(NextTrack, OnAnotherTrackSendsNextTrack) {
  playState(kPlaying, 1000);
  count(kTracks, 10);
  for (const std::uint32_t index : {0u, 8u, 10u, 300u}) {
    playingIndex(index);
    EXPECT_THAT(command(3), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                        kNextTrack, kRefresh));
  }
}

TEST_F(NextTrack, BehavesTheSameWhilePaused) {
  playState(kPaused, 1000);
  playingIndex(9);
  count(kTracks, 10);
  EXPECT_THAT(command(3), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(NextTrack, WhileNeitherPlayingNorPausedSendsNextTrack) {
  playingIndex(9);
  count(kTracks, 10);
  for (const char* state : {kStopped, "03", "FF"}) {
    playState(state, 1000);
    EXPECT_THAT(command(3), ElementsAre(kGetPlayStatus, kNextTrack, kRefresh)) << state;
  }
}

TEST_F(NextTrack, WithoutAPlayStatusSendsNextTrack) {
  ipod.refuse(kGetPlayStatus);
  EXPECT_THAT(command(3), ElementsAre(kGetPlayStatus, kNextTrack, kRefresh));
}

TEST_F(NextTrack, WithoutAnIndexSendsNextTrack) {
  playState(kPlaying, 1000);
  ipod.refuse(kGetCurrentTrackIndex);
  EXPECT_THAT(command(3), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kNextTrack, kRefresh));
}

TEST_F(NextTrack, WithNothingPlayingPlaysTheFirstTrack) {
  playState(kPlaying, 1000);
  playingIndex(0xFFFFFFFF);
  count(kTracks, 10);
  const std::vector<std::string> happened = command(3);
  ASSERT_GE(happened.size(), 2u);
  EXPECT_EQ(happened[happened.size() - 2], kPlayCurrentSelection + " 00 00 00 00");
  EXPECT_EQ(happened.back(), kRefresh);
  EXPECT_THAT(happened, testing::Not(testing::Contains(kNextTrack)));
}

TEST_F(NextTrack, WithoutATrackCountSendsNextTrack) {
  playState(kPlaying, 1000);
  playingIndex(0);
  ipod.refuse(kCountRecords);
  EXPECT_THAT(command(3), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kNextTrack, kRefresh));
}

TEST_F(NextTrack, PostsTheMessageEvenIfTheIpodRefuses) {
  playState(kStopped, 0);
  ipod.refuse(kPlayControl);
  EXPECT_THAT(command(3), ElementsAre(kGetPlayStatus, kNextTrack, kRefresh));
}

// ---------------------------------------------------------------- 4: previous track

using PreviousTrack = IpodCommandTest;

TEST_F(PreviousTrack, WhileNeitherPlayingNorPausedPlaysTheFirstTrack) {
  for (const char* state : {kStopped, "03"}) {
    playState(state, 1000);
    EXPECT_THAT(command(4),
                ElementsAre(kGetPlayStatus, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  }
}

TEST_F(PreviousTrack, WithoutAPlayStatusPlaysTheFirstTrack) {
  ipod.refuse(kGetPlayStatus);
  EXPECT_THAT(command(4),
              ElementsAre(kGetPlayStatus, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(PreviousTrack, WithoutAnIndexOnlyPosts) {
  playState(kPlaying, 1000);
  ipod.refuse(kGetCurrentTrackIndex);
  EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kRefresh));
}

TEST_F(PreviousTrack, WithNothingPlayingPlaysTheLastTrack) {
  playingIndex(0xFFFFFFFF);
  count(kTracks, 10);
  for (const std::uint32_t position : {0u, 3000u, 5000u}) {
    playState(kPlaying, position);
    EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                        kPlayCurrentSelection + " 00 00 00 09", kRefresh));
  }
}

TEST_F(PreviousTrack, NearTheStartOfTheFirstTrackPlaysTheLastTrack) {
  playingIndex(0);
  count(kTracks, 10);
  for (const std::uint32_t position : {0u, 2999u}) {
    playState(kPlaying, position);
    EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                        kPlayCurrentSelection + " 00 00 00 09", kRefresh));
  }
}

TEST_F(PreviousTrack, WithoutATrackCountPlaysTheTrackBeforeTheFirst) {
  ipod.refuse(kCountRecords);
  for (const std::uint32_t index : {0u, 0xFFFFFFFFu}) {
    playingIndex(index);
    playState(kPlaying, 2999);
    EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                        kPlayCurrentSelection + " FF FF FF FF", kRefresh));
  }
}

TEST_F(PreviousTrack, WithoutATrackCountGoesBackFromALaterTrack) {
  ipod.refuse(kCountRecords);
  playingIndex(4);
  playState(kPlaying, 2999);
  EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPreviousTrack, kRefresh));
}

TEST_F(PreviousTrack, BehavesTheSameWhilePaused) {
  playState(kPaused, 2999);
  playingIndex(0);
  count(kTracks, 300);
  EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPlayCurrentSelection + " 00 00 01 2B", kRefresh));
}

TEST_F(PreviousTrack, AtExactlyThreeSecondsOnlySendsPreviousTrack) {
  count(kTracks, 10);
  playState(kPlaying, 3000);
  for (const std::uint32_t index : {0u, 4u}) {
    playingIndex(index);
    EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                        kPreviousTrack, kRefresh));
  }
}

TEST_F(PreviousTrack, NearTheStartOfAnotherTrackOnlySendsPreviousTrack) {
  count(kTracks, 10);
  playingIndex(4);
  playState(kPlaying, 2999);
  EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPreviousTrack, kRefresh));
}

TEST_F(PreviousTrack, FarIntoATrackGoesForwardAgainWhenTheIpodLeftTheTrack) {
  count(kTracks, 10);
  for (const std::uint32_t position : {3001u, 5000u, 180000u}) {
    playState(kPlaying, position);
    playingIndexChanges(4, 3);
    EXPECT_THAT(command(4),
                ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks, kPreviousTrack,
                            kGetCurrentTrackIndex, kNextTrack, kRefresh));
  }
}

TEST_F(PreviousTrack, FarIntoATrackStopsIfTheIpodDoesNotAnswerTheSecondTime) {
  count(kTracks, 10);
  playState(kPlaying, 5000);
  ipod.answerOnce(kGetCurrentTrackIndex, {"04 00 1F 00 00 00 04"});
  ipod.refuse(kGetCurrentTrackIndex);
  EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPreviousTrack, kGetCurrentTrackIndex, kRefresh));
}

TEST_F(PreviousTrack, FarIntoATrackStopsIfTheIpodRestartedTheTrack) {
  count(kTracks, 10);
  playingIndex(4);
  playState(kPlaying, 3001);
  EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPreviousTrack, kGetCurrentTrackIndex, kRefresh));
}

TEST_F(PreviousTrack, FarIntoTheFirstTrackSendsPreviousTrackAndWhenTheIndexChangedNextTrack) {
  count(kTracks, 10);
  playState(kPlaying, 5000);
  playingIndexChanges(0, 9);
  EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPreviousTrack, kGetCurrentTrackIndex, kNextTrack, kRefresh));
}

TEST_F(PreviousTrack, ReadsTheIndexAgainEvenIfTheIpodRefuses) {
  count(kTracks, 10);
  playingIndex(4);
  playState(kPlaying, 5000);
  ipod.refuse(kPlayControl);
  EXPECT_THAT(command(4), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                      kPreviousTrack, kGetCurrentTrackIndex, kRefresh));
}

// ---------------------------------------------------------------- 10: play

class PlayWithPlayCommand : public IpodCommandTest {};

TEST_F(PlayWithPlayCommand, SendsPlayAndPosts) {
  EXPECT_THAT(command(10), ElementsAre(kPlay, kRefresh));
}

TEST_F(PlayWithPlayCommand, DoesNotSleepWithoutTheDelayFlag) {
  command(10);
  EXPECT_THAT(log.events(), ElementsAre(kPlay, kRefresh));
}

TEST_F(PlayWithPlayCommand, YieldsItsTimeSliceFirstWithTheDelayFlag) {
  ipodPlayDelayFlag = 1;
  command(10);
  EXPECT_THAT(log.events(), ElementsAre("Sleep(0)", kPlay, kRefresh));
}

TEST_F(PlayWithPlayCommand, TogglesWhenPlayIsRefused) {
  ipod.refuse(kPlay);
  playState(kPaused, 1000);
  EXPECT_THAT(command(10), ElementsAre(kPlay, kGetPlayStatus, kTogglePlayPause, kRefresh));
}

TEST_F(PlayWithPlayCommand, SendsPlayAgainAfterARefusal) {
  ipod.answerOnce(kPlay, {"00 02 05 00"});
  playState(kPaused, 1000);
  command(10);
  EXPECT_THAT(command(10), ElementsAre(kPlay, kRefresh));
}

TEST_F(PlayWithPlayCommand, DoesNotToggleIfTheIpodPlaysAlready) {
  ipod.refuse(kPlay);
  playState(kPlaying, 1000);
  EXPECT_THAT(command(10), ElementsAre(kPlay, kGetPlayStatus));
}

class WithoutPlayAndPause : public IpodCommandTest {
 protected:
  void SetUp() override {
    ipod.answer(kRequestExtendedInterfaceVersion, {"00 10 04 01 0C"});
    IpodCommandTest::SetUp();
    ASSERT_EQ(ipodHasPlayPause, 0);
  }
};

TEST_F(WithoutPlayAndPause, PlayWhilePausedSendsToggleAndPosts) {
  playState(kPaused, 1000);
  EXPECT_THAT(command(10), ElementsAre(kGetPlayStatus, kTogglePlayPause, kRefresh));
}

TEST_F(WithoutPlayAndPause, PlayWhileStoppedSendsToggleAndPosts) {
  playState(kStopped, 0);
  EXPECT_THAT(command(10), ElementsAre(kGetPlayStatus, kTogglePlayPause, kRefresh));
}

TEST_F(WithoutPlayAndPause, PlayWhilePlayingDoesNothing) {
  playState(kPlaying, 1000);
  EXPECT_THAT(command(10), ElementsAre(kGetPlayStatus));
}

TEST_F(WithoutPlayAndPause, PlayWithoutAPlayStatusSendsToggle) {
  ipod.refuse(kGetPlayStatus);
  EXPECT_THAT(command(10), ElementsAre(kGetPlayStatus, kTogglePlayPause, kRefresh));
}

TEST_F(WithoutPlayAndPause, PlayPostsNothingWhenToggleIsRefused) {
  playState(kPaused, 1000);
  ipod.refuse(kPlayControl);
  EXPECT_THAT(command(10), ElementsAre(kGetPlayStatus, kTogglePlayPause));
}

TEST_F(WithoutPlayAndPause, PlayDoesNotSleepForTheDelayFlag) {
  ipodPlayDelayFlag = 1;
  playState(kPaused, 1000);
  command(10);
  EXPECT_THAT(log.events(), ElementsAre(kGetPlayStatus, kTogglePlayPause, kRefresh));
}

// ---------------------------------------------------------------- 11: pause

class PauseWithPauseCommand : public IpodCommandTest {};

TEST_F(PauseWithPauseCommand, SendsPauseAndPostsNothing) {
  EXPECT_THAT(command(11), ElementsAre(kPause));
}

TEST_F(PauseWithPauseCommand, TogglesWhenPauseIsRefusedWhilePlaying) {
  ipod.refuse(kPause);
  playState(kPlaying, 1000);
  EXPECT_THAT(command(11), ElementsAre(kPause, kGetPlayStatus, kTogglePlayPause));
}

TEST_F(PauseWithPauseCommand, DoesNotToggleIfTheIpodDoesNotPlay) {
  ipod.refuse(kPause);
  for (const char* state : {kStopped, kPaused, "03"}) {
    playState(state, 1000);
    EXPECT_THAT(command(11), ElementsAre(kPause, kGetPlayStatus)) << state;
  }
}

TEST_F(WithoutPlayAndPause, PauseWhilePlayingSendsToggleAndPostsNothing) {
  playState(kPlaying, 1000);
  EXPECT_THAT(command(11), ElementsAre(kGetPlayStatus, kTogglePlayPause));
}

TEST_F(WithoutPlayAndPause, PauseWhileNotPlayingDoesNothing) {
  for (const char* state : {kStopped, kPaused, "03"}) {
    playState(state, 1000);
    EXPECT_THAT(command(11), ElementsAre(kGetPlayStatus)) << state;
  }
}

TEST_F(WithoutPlayAndPause, PauseWithoutAPlayStatusDoesNothing) {
  ipod.refuse(kGetPlayStatus);
  EXPECT_THAT(command(11), ElementsAre(kGetPlayStatus));
}

// ---------------------------------------------------------------- 14: previous track, no restart

using PreviousTrackNoRestart = IpodCommandTest;

TEST_F(PreviousTrackNoRestart, WhileNeitherPlayingNorPausedSelectsTheFirstTrack) {
  for (const char* state : {kStopped, "03"}) {
    playState(state, 1000);
    EXPECT_THAT(command(14),
                ElementsAre(kGetPlayStatus, kSelectDbRecord + " 05 00 00 00 00", kRefresh));
  }
}

TEST_F(PreviousTrackNoRestart, WithoutAPlayStatusSelectsTheFirstTrack) {
  ipod.refuse(kGetPlayStatus);
  EXPECT_THAT(command(14),
              ElementsAre(kGetPlayStatus, kSelectDbRecord + " 05 00 00 00 00", kRefresh));
}

TEST_F(PreviousTrackNoRestart, WithoutAnIndexOnlyPosts) {
  playState(kPlaying, 1000);
  ipod.refuse(kGetCurrentTrackIndex);
  EXPECT_THAT(command(14), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kRefresh));
}

TEST_F(PreviousTrackNoRestart, AtTheFirstTrackSelectsTheLastTrack) {
  count(kTracks, 10);
  playingIndex(0);
  for (const char* state : {kPlaying, kPaused}) {
    playState(state, 5000);
    EXPECT_THAT(command(14), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                         kSelectDbRecord + " 05 00 00 00 09", kRefresh));
  }
}

TEST_F(PreviousTrackNoRestart, WithNothingPlayingSelectsTheLastTrack) {
  count(kTracks, 10);
  playingIndex(0xFFFFFFFF);
  playState(kPlaying, 0);
  EXPECT_THAT(command(14), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                       kSelectDbRecord + " 05 00 00 00 09", kRefresh));
}

TEST_F(PreviousTrackNoRestart, WithoutATrackCountSelectsNoTrack) {
  ipod.refuse(kCountRecords);
  playState(kPlaying, 5000);
  for (const std::uint32_t index : {0u, 0xFFFFFFFFu}) {
    playingIndex(index);
    EXPECT_THAT(command(14), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                         kSelectDbRecord + " 05 FF FF FF FF", kRefresh));
  }
}

TEST_F(PreviousTrackNoRestart, WithoutATrackCountGoesBackFromALaterTrack) {
  ipod.refuse(kCountRecords);
  playState(kPlaying, 5000);
  playingIndexChanges(4, 3);
  EXPECT_THAT(command(14), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                       kPreviousTrack, kGetCurrentTrackIndex, kRefresh));
}

TEST_F(PreviousTrackNoRestart, SendsPreviousTrackTwiceWhenTheFirstOnlyRestartedTheTrack) {
  count(kTracks, 10);
  playingIndex(4);
  playState(kPlaying, 5000);
  EXPECT_THAT(command(14),
              ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks, kPreviousTrack,
                          kGetCurrentTrackIndex, kPreviousTrack, kRefresh));
}

TEST_F(PreviousTrackNoRestart, SendsPreviousTrackOnceWhenTheTrackChanged) {
  count(kTracks, 10);
  playState(kPaused, 0);
  playingIndexChanges(4, 3);
  EXPECT_THAT(command(14), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                       kPreviousTrack, kGetCurrentTrackIndex, kRefresh));
}

TEST_F(PreviousTrackNoRestart, SendsPreviousTrackOnceWhenTheNewIndexIsNotKnown) {
  count(kTracks, 10);
  playState(kPlaying, 0);
  ipod.refuse(kGetCurrentTrackIndex);
  ipod.answerOnce(kGetCurrentTrackIndex, {"04 00 1F 00 00 00 04"});
  EXPECT_THAT(command(14), ElementsAre(kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                       kPreviousTrack, kGetCurrentTrackIndex, kRefresh));
}

// ---------------------------------------------------------------- the lock and the message

TEST_F(IpodCommandTest, PostsItsMessageWhileItHoldsTheLock) {
  bool heldTheLock = false;
  desk.onMessage = [&] { heldTheLock = !libraryLockIsFree(); };
  command(10);
  EXPECT_TRUE(heldTheLock);
}

TEST_F(IpodCommandTest, HoldsTheLockForAllItsRequests) {
  playState(kPlaying, 1000);
  playingIndex(4);
  count(kTracks, 10);
  for (const std::string& request :
       {kGetPlayStatus, kGetCurrentTrackIndex, kCountRecords, kPlayControl}) {
    forgetEvents();
    ipod.hold(request);
    std::thread host([] { IpodCommand(3); });
    EXPECT_TRUE(log.waitFor(request));
    EXPECT_FALSE(libraryLockIsFree()) << request;
    ipod.release();
    host.join();
    EXPECT_TRUE(libraryLockIsFree());
  }
}

}  // namespace
