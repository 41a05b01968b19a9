#include "player/player.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/small_library.h"

namespace simulator {
namespace {

using Tracks = std::vector<uint32_t>;

/// Tracks of the small library, in playing order: 10 s, 20 s, 30 s.
const Tracks kAnna = {2, 4, 1};

class PlayerTest : public testing::Test {
 protected:
  Tracks listed() const {
    Tracks tracks;
    for (uint32_t i = 0; i < player.list().size(); ++i)
      tracks.push_back(player.list().trackAt(i));
    return tracks;
  }
  // Returns the index that plays; -1 when nothing plays.
  int index() const {
    return player.currentTrack() ? static_cast<int>(player.list().currentIndex()) : -1;
  }

  Catalogue catalogue{smallLibrary()};
  Random random{1};
  Player player{catalogue, PlayerHabits{}, random};
};

TEST_F(PlayerTest, IsStoppedAtFirst) {
  EXPECT_EQ(player.state(), PlayState::kStopped);
  EXPECT_FALSE(player.currentTrack());
  EXPECT_EQ(player.position(seconds(5)), Time(0));
  EXPECT_FALSE(player.nextEnd());
}

TEST_F(PlayerTest, PositionAdvancesWithTime) {
  player.play(kAnna, 1, seconds(100));
  EXPECT_EQ(player.currentTrack(), 4u);
  EXPECT_EQ(player.position(seconds(103)), seconds(3));
  EXPECT_EQ(player.nextEnd(), seconds(120));
}

TEST_F(PlayerTest, PauseKeepsThePosition) {
  player.play(kAnna, 0, seconds(0));
  player.pause(seconds(4));
  EXPECT_EQ(player.state(), PlayState::kPaused);
  EXPECT_EQ(player.position(seconds(50)), seconds(4));
  EXPECT_FALSE(player.nextEnd());
  player.resume(seconds(60));
  EXPECT_EQ(player.position(seconds(61)), seconds(5));
}

TEST_F(PlayerTest, MovesWithinTheTrack) {
  player.play(kAnna, 1, seconds(0));
  player.takeChanges();
  player.moveTo(seconds(15), seconds(4));
  EXPECT_EQ(player.position(seconds(6)), seconds(17));
  player.moveTo(seconds(-1), seconds(7));
  EXPECT_EQ(player.position(seconds(8)), seconds(1));
  EXPECT_FALSE(player.takeChanges().track);
}

TEST_F(PlayerTest, MovesWithinAPausedTrack) {
  player.play(kAnna, 1, seconds(0));
  player.pause(seconds(1));
  player.moveTo(seconds(15), seconds(4));
  EXPECT_EQ(player.position(seconds(90)), seconds(15));
  player.moveTo(seconds(21), seconds(91));
  EXPECT_EQ(player.position(seconds(92)), seconds(20));
  EXPECT_EQ(index(), 1) << "a paused track does not end";
}

TEST_F(PlayerTest, MovingToTheEndStartsTheNextTrack) {
  player.play(kAnna, 0, seconds(0));
  player.moveTo(seconds(10), seconds(4));
  EXPECT_EQ(index(), 1);
  EXPECT_EQ(player.position(seconds(5)), seconds(1));
}

TEST_F(PlayerTest, StoppedPlayerDoesNotMove) {
  player.moveTo(seconds(3), seconds(1));
  EXPECT_EQ(player.state(), PlayState::kStopped);
  EXPECT_EQ(player.position(seconds(2)), Time(0));
}

TEST_F(PlayerTest, NextTrackFollowsAtTheEnd) {
  player.play(kAnna, 0, seconds(0));
  player.takeChanges();
  player.advance(seconds(12));
  EXPECT_EQ(index(), 1);
  EXPECT_EQ(player.position(seconds(12)), seconds(2));
  EXPECT_TRUE(player.takeChanges().track);
}

TEST_F(PlayerTest, SeveralEndsCanPassAtOnce) {
  player.play(kAnna, 0, seconds(0));
  player.advance(seconds(31));
  EXPECT_EQ(index(), 2);
  EXPECT_EQ(player.position(seconds(31)), seconds(1));
}

TEST_F(PlayerTest, StopsAtTheEndOfTheList) {
  player.play(kAnna, 2, seconds(0));
  player.takeChanges();
  player.advance(seconds(30));
  EXPECT_EQ(player.state(), PlayState::kStopped);
  EXPECT_TRUE(player.takeChanges().stopped);
  player.resume(seconds(40));
  EXPECT_EQ(index(), 0);
}

TEST_F(PlayerTest, RepeatAllBeginsAgain) {
  player.setRepeat(Repeat::kAll);
  player.play(kAnna, 2, seconds(0));
  player.advance(seconds(31));
  EXPECT_EQ(index(), 0);
  EXPECT_EQ(player.position(seconds(31)), seconds(1));
}

TEST_F(PlayerTest, RepeatOneRepeatsTheTrackUntilASkip) {
  player.setRepeat(Repeat::kOne);
  player.play(kAnna, 0, seconds(0));
  player.advance(seconds(25));
  EXPECT_EQ(index(), 0);
  EXPECT_EQ(player.position(seconds(25)), seconds(5));
  player.next(seconds(25));
  EXPECT_EQ(index(), 1);
}

TEST_F(PlayerTest, NextAtTheLastTrackStops) {
  player.play(kAnna, 2, seconds(0));
  player.next(seconds(1));
  EXPECT_EQ(player.state(), PlayState::kStopped);
  player.resume(seconds(2));
  EXPECT_EQ(index(), 0);
}

TEST_F(PlayerTest, NextAtTheLastTrackWrapsWithRepeatAll) {
  player.setRepeat(Repeat::kAll);
  player.play(kAnna, 2, seconds(0));
  player.next(seconds(1));
  EXPECT_EQ(index(), 0);
  player.previous(seconds(1));
  EXPECT_EQ(index(), 2);
}

TEST_F(PlayerTest, NextKeepsThePause) {
  player.play(kAnna, 0, seconds(0));
  player.pause(seconds(1));
  player.next(seconds(2));
  EXPECT_EQ(index(), 1);
  EXPECT_EQ(player.state(), PlayState::kPaused);
  EXPECT_EQ(player.position(seconds(9)), Time(0));
}

TEST_F(PlayerTest, PreviousGoesBackEarlyAndRestartsLater) {
  player.play(kAnna, 1, seconds(0));
  player.previous(milliseconds(2999));
  EXPECT_EQ(index(), 0);
  player.next(milliseconds(2999));
  player.previous(milliseconds(5999));
  EXPECT_EQ(index(), 1);
  EXPECT_EQ(player.position(milliseconds(5999)), Time(0));
}

TEST_F(PlayerTest, PreviousNeverRestartsOnSomeModels) {
  PlayerHabits habits;
  habits.previousRestartsAfter = Time(0);
  Player other(catalogue, habits, random);
  other.play(kAnna, 1, seconds(0));
  other.previous(seconds(9));
  EXPECT_EQ(other.list().currentIndex(), 0u);
}

TEST_F(PlayerTest, PreviousAtTheFirstTrackRestartsIt) {
  player.play(kAnna, 0, seconds(0));
  player.previous(seconds(1));
  EXPECT_EQ(index(), 0);
  EXPECT_EQ(player.position(seconds(1)), Time(0));
}

TEST_F(PlayerTest, SkippingWhileStoppedDoesNothing) {
  player.next(seconds(1));
  player.previous(seconds(1));
  player.startSeek(SeekDirection::kForward, seconds(1));
  EXPECT_EQ(player.state(), PlayState::kStopped);
  const PlayerChanges changes = player.takeChanges();
  EXPECT_FALSE(changes.track || changes.stopped);
}

TEST_F(PlayerTest, FastForwardMovesThePositionFaster) {
  player.play(kAnna, 2, seconds(0));
  player.startSeek(SeekDirection::kForward, seconds(1));
  EXPECT_EQ(player.position(seconds(2)), seconds(9));
  player.endSeek(seconds(2));
  EXPECT_EQ(player.position(seconds(3)), seconds(10));
}

TEST_F(PlayerTest, FastForwardContinuesInTheNextTrack) {
  player.play(kAnna, 0, seconds(0));
  player.startSeek(SeekDirection::kForward, seconds(2));
  EXPECT_EQ(player.nextEnd(), seconds(3));
  player.advance(milliseconds(3500));
  EXPECT_EQ(index(), 1);
  EXPECT_EQ(player.position(milliseconds(3500)), seconds(4));
}

TEST_F(PlayerTest, RewindStopsAtTheBeginning) {
  player.play(kAnna, 2, seconds(0));
  player.startSeek(SeekDirection::kBackward, seconds(16));
  EXPECT_EQ(player.position(seconds(17)), seconds(8));
  EXPECT_EQ(player.position(seconds(30)), Time(0));
  player.endSeek(seconds(30));
  EXPECT_EQ(player.position(seconds(31)), seconds(1));
}

TEST_F(PlayerTest, SeekingMovesAPausedTrackAndLeavesItPaused) {
  player.play(kAnna, 2, seconds(0));
  player.pause(seconds(1));
  player.startSeek(SeekDirection::kForward, seconds(2));
  player.endSeek(seconds(3));
  EXPECT_EQ(player.state(), PlayState::kPaused);
  EXPECT_EQ(player.position(seconds(9)), seconds(9));
}

TEST_F(PlayerTest, StopKeepsTheListAndTheTrack) {
  player.play(kAnna, 1, seconds(0));
  player.stop(seconds(5));
  EXPECT_FALSE(player.currentTrack());
  EXPECT_EQ(player.list().size(), 3u);
  player.resume(seconds(6));
  EXPECT_EQ(index(), 1);
  EXPECT_EQ(player.position(seconds(6)), Time(0));
}

TEST_F(PlayerTest, GoToPlaysFromTheBeginning) {
  player.play(kAnna, 0, seconds(0));
  player.goTo(2, seconds(5));
  EXPECT_EQ(index(), 2);
  EXPECT_EQ(player.position(seconds(6)), seconds(1));
}

TEST_F(PlayerTest, PlayingNoTracksStops) {
  player.play(kAnna, 0, seconds(0));
  player.play({}, 0, seconds(1));
  EXPECT_EQ(player.state(), PlayState::kStopped);
}

TEST_F(PlayerTest, TracksWithoutLengthStillTakeTime) {
  MusicLibrary library;
  library.tracks.resize(2);
  const Catalogue silence(library);
  Player other(silence, PlayerHabits{}, random);
  other.setRepeat(Repeat::kAll);
  other.play({0, 1}, 0, Time(0));
  other.advance(milliseconds(150));
  EXPECT_EQ(other.list().currentIndex(), 1u);
  other.advance(seconds(10));
  EXPECT_EQ(other.state(), PlayState::kPlaying);
}

TEST_F(PlayerTest, ShuffledSelectionPlaysTheChosenTrackFirst) {
  player.setShuffle(Shuffle::kTracks);
  player.play({0, 1, 2, 3, 4}, 3, Time(0));
  EXPECT_EQ(index(), 0);
  EXPECT_EQ(player.currentTrack(), 3u);
  Tracks sorted = listed();
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(sorted, (Tracks{0, 1, 2, 3, 4}));
}

TEST_F(PlayerTest, SameSeedShufflesTheSameWayAndAnotherDoesNot) {
  const Tracks all = {0, 1, 2, 3, 4, 5, 6};
  const auto shuffled = [&](uint32_t seed) {
    Random chance(seed);
    Player other(catalogue, PlayerHabits{}, chance);
    other.setShuffle(Shuffle::kTracks);
    other.play(all, 0, Time(0));
    Tracks tracks;
    for (uint32_t i = 0; i < all.size(); ++i)
      tracks.push_back(other.list().trackAt(i));
    return tracks;
  };
  EXPECT_EQ(shuffled(7), shuffled(7));
  EXPECT_NE(shuffled(7), shuffled(8));
  EXPECT_NE(shuffled(7), all);
}

TEST_F(PlayerTest, ShuffleTurnedOffRestoresTheOrderAndKeepsTheTrack) {
  player.setShuffle(Shuffle::kTracks);
  player.play({0, 1, 2, 3, 4}, 3, Time(0));
  player.takeChanges();
  player.setShuffle(Shuffle::kOff);
  EXPECT_EQ(listed(), (Tracks{0, 1, 2, 3, 4}));
  EXPECT_EQ(index(), 3);
  EXPECT_EQ(player.currentTrack(), 3u);
  EXPECT_TRUE(player.takeChanges().track);
}

TEST_F(PlayerTest, ShuffleTurnedOnWhilePlayingKeepsTheTrack) {
  player.play({0, 1, 2, 3, 4}, 3, seconds(0));
  player.setShuffle(Shuffle::kTracks);
  EXPECT_EQ(player.currentTrack(), 3u);
  EXPECT_EQ(index(), 0);
  EXPECT_EQ(player.position(seconds(2)), seconds(2));
}

TEST_F(PlayerTest, AlbumShuffleKeepsAlbumsTogetherAndTheChosenOneFirst) {
  player.setShuffle(Shuffle::kAlbums);
  player.play({2, 4, 1, 3, 0}, 4, Time(0));  // First, First, Second, Hive, Hive
  const Tracks tracks = listed();
  EXPECT_EQ(tracks[0], 3u);
  EXPECT_EQ(tracks[1], 0u);
  EXPECT_EQ(index(), 1);
  const auto able = std::find(tracks.begin(), tracks.end(), 2u);
  ASSERT_NE(able + 1, tracks.end());
  EXPECT_EQ(*(able + 1), 4u);
}

}  // namespace
}  // namespace simulator
