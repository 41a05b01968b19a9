// The sound of the simulated iPod, without its thread: tunes, files, rates and packets.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <set>

#include "audio/music_file.h"
#include "audio/packet_clock.h"
#include "audio/rate_converter.h"
#include "audio/tune.h"
#include "support/ipod_bench.h"
#include "support/small_library.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace audio {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

Moment at(Time time) { return Moment(time); }

std::vector<Frame> framesOf(SampleSource& source, size_t count) {
  std::vector<Frame> frames(count, Frame{99, 99});
  source.read(frames.data(), count);
  return frames;
}

/// Returns the frequency, from the first to the last rising crossing of zero.
double pitchOf(const std::vector<Frame>& frames, uint32_t rate) {
  size_t first = 0;
  size_t last = 0;
  double waves = -1;
  for (size_t i = 1; i < frames.size(); ++i) {
    if (frames[i - 1].left >= 0 || frames[i].left < 0) continue;
    if (waves < 0) first = i;
    last = i;
    ++waves;
  }
  return waves * rate / static_cast<double>(last - first);
}

TEST(Tune, HasADifferentPitchForEachTrack) {
  std::set<long> pitches;
  for (uint32_t track = 0; track < 720; ++track) {
    const double pitch = tunePitch(track);
    EXPECT_GE(pitch, 165);
    EXPECT_LT(pitch, 1320);
    pitches.insert(std::lround(pitch * 1000));
  }
  EXPECT_THAT(pitches, SizeIs(720));
  EXPECT_NEAR(tunePitch(0), 165.0, 0.1);
  EXPECT_NEAR(tunePitch(1), 360.9, 0.1);
  EXPECT_NEAR(tunePitch(2), 789.4, 0.1);
}

TEST(Tune, SoundsAtItsPitchAtEveryRate) {
  for (const uint32_t rate : {8000u, 32000u, 44100u, 48000u}) {
    Tune tune(1, rate);
    EXPECT_NEAR(pitchOf(framesOf(tune, rate), rate), 360.9, 0.9) << rate;
  }
}

TEST(Tune, ContinuesAfterASeekAsIfItHadBeenPlayed) {
  Tune played(5, 44100);
  const std::vector<Frame> all = framesOf(played, 88200);
  Tune sought(5, 44100);
  sought.seek(milliseconds(1500));
  const Frame frame = framesOf(sought, 1).front();
  EXPECT_EQ(frame.left, all[66150].left);
  EXPECT_EQ(frame.right, all[66150].right);
}

/// A WAV file with one channel of 16 bits, at 8000 Hz: 1, 2, 3, 4.
const std::string kMonoWav(
    "RIFF\x2C\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1F\0\0\x80\x3E\0\0\2\0\x10\0data\x08\0\0\0"
    "\1\0\2\0\3\0\4\0",
    52);

class MusicFileTest : public testing::Test {
 protected:
  std::unique_ptr<SampleSource> open(const std::string& content) {
    std::ofstream(folder / "one", std::ios::binary) << content;
    return openMusicFile(folder / "one");
  }

  const TemporaryFolder folder;
};

TEST_F(MusicFileTest, HasBothChannelsOfOne) {
  const auto file = open(kMonoWav);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(file->rate(), 8000u);
  const std::vector<Frame> frames = framesOf(*file, 2);
  EXPECT_EQ(frames[1].left, 2);
  EXPECT_EQ(frames[1].right, 2);
}

TEST_F(MusicFileTest, IsSilentAfterItsEnd) {
  const auto file = open(kMonoWav);
  ASSERT_NE(file, nullptr);
  const std::vector<Frame> frames = framesOf(*file, 6);
  EXPECT_EQ(frames[3].left, 4);
  EXPECT_EQ(frames[4].left, 0);
  EXPECT_EQ(frames[5].left, 0);
  file->seek(seconds(100));
  EXPECT_EQ(framesOf(*file, 1).front().left, 0);
}

TEST_F(MusicFileTest, Seeks) {
  const auto file = open(kMonoWav);
  ASSERT_NE(file, nullptr);
  file->seek(std::chrono::microseconds(250));
  EXPECT_EQ(framesOf(*file, 1).front().left, 3);
}

TEST_F(MusicFileTest, IsNotOpenedWithoutAKnownFormat) {
  EXPECT_EQ(open("fLaC, or so it says\n"), nullptr);
  EXPECT_EQ(openMusicFile(folder / "none"), nullptr);
}

TEST(RateConverter, KeepsThePitch) {
  const auto converted = convertedTo(44100, std::make_unique<Tune>(1, 22050));
  EXPECT_EQ(converted->rate(), 44100u);
  EXPECT_NEAR(pitchOf(framesOf(*converted, 44100), 44100), 360.9, 0.9);
  converted->seek(seconds(1));
  EXPECT_NEAR(pitchOf(framesOf(*converted, 44100), 44100), 360.9, 0.9);
}

/// Keeps what a packet clock makes.
struct Packets final : PacketSink {
  void packet(uint32_t rate, const Frame* frames, size_t count) override {
    rates.push_back(rate);
    sizes.push_back(count);
    all.insert(all.end(), frames, frames + count);
  }
  void missed(uint64_t packets) override { lost += packets; }

  std::vector<uint32_t> rates;
  std::vector<size_t> sizes;
  std::vector<Frame> all;
  uint64_t lost = 0;
};

/// Returns a track that is heard from a moment on.
Playing heard(Time from, uint32_t track, uint32_t rate, Time position = Time(0)) {
  Playing playing;
  playing.isHeard = true;
  playing.at = at(from);
  playing.track = track;
  playing.trackRate = rate;
  playing.streamRate = rate;
  playing.position = position;
  return playing;
}

Playing silent(Time from) {
  Playing playing;
  playing.at = at(from);
  return playing;
}

class PacketClockTest : public testing::Test {
 protected:
  Packets packets;
  PacketClock clock{packets};
};

TEST_F(PacketClockTest, MakesAPacketForEachMillisecond) {
  clock.follow(heard(Time(0), 0, 44100));
  clock.advance(at(milliseconds(11) - Time(1)));
  EXPECT_THAT(packets.sizes, ElementsAre(44, 44, 44, 44, 44, 44, 44, 44, 44, 45));
  EXPECT_EQ(clock.next(), at(milliseconds(11)));
}

TEST_F(PacketClockTest, HasNoFrameTooFewAfterAMinute) {
  clock.follow(heard(Time(0), 0, 44100, seconds(1)));
  for (int second = 1; second <= 60; ++second) {
    clock.advance(at(seconds(second)));
    packets.all.clear();
  }
  size_t frames = 0;
  for (const size_t size : packets.sizes)
    frames += size;
  EXPECT_EQ(frames, size_t{60} * 44100);
  EXPECT_EQ(packets.lost, 0u);
}

TEST_F(PacketClockTest, EndsAtThePauseAndContinuesAfterIt) {
  clock.follow(heard(Time(0), 0, 48000));
  clock.follow(silent(std::chrono::microseconds(2500)));
  EXPECT_THAT(packets.sizes, ElementsAre(48, 48, 24));
  EXPECT_FALSE(clock.next());
  clock.advance(at(seconds(1)));
  EXPECT_THAT(packets.sizes, SizeIs(3));
  clock.follow(heard(seconds(1), 0, 48000, std::chrono::microseconds(2500)));
  clock.advance(at(seconds(1) + milliseconds(1)));
  EXPECT_THAT(packets.sizes, ElementsAre(48, 48, 24, 48));
  Tune whole(0, 48000);
  const std::vector<Frame> expected = framesOf(whole, 168);
  for (size_t i = 0; i < expected.size(); ++i)
    ASSERT_EQ(packets.all[i].left, expected[i].left) << i;
}

TEST_F(PacketClockTest, FollowsTheNextTrackAndItsRate) {
  clock.follow(heard(Time(0), 0, 48000));
  clock.follow(heard(milliseconds(2), 1, 32000));
  clock.advance(at(milliseconds(4)));
  EXPECT_THAT(packets.rates, ElementsAre(48000, 48000, 32000, 32000));
  EXPECT_THAT(packets.sizes, ElementsAre(48, 48, 32, 32));
}

TEST_F(PacketClockTest, FollowsASeek) {
  clock.follow(heard(Time(0), 0, 48000));
  clock.follow(heard(milliseconds(1), 0, 48000, seconds(30)));
  clock.advance(at(milliseconds(2)));
  Tune there(0, 48000);
  there.seek(seconds(30));
  ASSERT_THAT(packets.all, SizeIs(96));
  EXPECT_EQ(packets.all[48].left, framesOf(there, 1).front().left);
}

TEST_F(PacketClockTest, GoesOnWhenNothingHasChanged) {
  clock.follow(heard(Time(0), 0, 44100));
  clock.follow(heard(std::chrono::microseconds(500), 0, 44100, std::chrono::microseconds(500)));
  clock.advance(at(milliseconds(1)));
  EXPECT_THAT(packets.sizes, ElementsAre(44));
}

// The thread that makes packets can be ahead of the iPod's.
TEST_F(PacketClockTest, RepeatsNothingAfterALateChange) {
  clock.follow(heard(Time(0), 0, 48000));
  clock.advance(at(milliseconds(5)));
  clock.follow(heard(milliseconds(3), 1, 48000));
  clock.advance(at(milliseconds(7)));
  EXPECT_THAT(packets.sizes, ElementsAre(48, 48, 48, 48, 48, 48, 48));
}

// The accessory began to listen after the iPod had noticed the change.
TEST_F(PacketClockTest, FollowsAChangeFromBeforeItsBeginning) {
  clock.follow(heard(milliseconds(5), 0, 48000));
  clock.follow(heard(milliseconds(3), 1, 48000));
  EXPECT_THAT(packets.sizes, SizeIs(0));
  clock.advance(at(milliseconds(7)));
  EXPECT_THAT(packets.sizes, ElementsAre(48, 48));
  Tune second(1, 48000);
  second.seek(milliseconds(2));
  EXPECT_EQ(packets.all.front().left, framesOf(second, 1).front().left);
}

TEST_F(PacketClockTest, LeavesOutWhatIsTooLate) {
  clock.follow(heard(Time(0), 0, 48000));
  clock.advance(at(milliseconds(10003)));
  EXPECT_EQ(packets.lost, 10003u);
  EXPECT_THAT(packets.sizes, SizeIs(0));
  clock.advance(at(milliseconds(10004)));
  EXPECT_THAT(packets.sizes, ElementsAre(48));
  Tune there(0, 48000);
  there.seek(milliseconds(10003));
  EXPECT_EQ(packets.all.front().left, framesOf(there, 1).front().left);
}

TEST_F(PacketClockTest, PlaysATuneInsteadOfAFileThatItCannotDecode) {
  Playing playing = heard(Time(0), 0, 48000);
  playing.file = "/dev/null";
  clock.follow(playing);
  clock.advance(at(seconds(1)));
  EXPECT_NEAR(pitchOf(packets.all, 48000), 165, 1);
}

TEST_F(PacketClockTest, ConvertsATrackToTheRateOfTheStream) {
  Playing playing = heard(Time(0), 1, 22050);
  playing.streamRate = 44100;
  clock.follow(playing);
  clock.advance(at(seconds(1)));
  EXPECT_THAT(packets.all, SizeIs(44100));
  EXPECT_NEAR(pitchOf(packets.all, 44100), 360.9, 0.9);
}

const char* const kAnnounce = "00 13 00 00 04 11 00 00 00 00 00 00 00 00";
const char* const kOffersNothingMore = "00 28 00 00 00 00 01";
const char* const kRates = "0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80";
const char* const kRateTaken = "0A 00 00 04";
const char* const kPlayFirst = "04 00 28 00 00 00 00";

/// What an accessory hears of the iPod.
class HeardIpod : public testing::Test {
 protected:
  /// Announces the accessory, and acknowledges the first rate.
  void connect() {
    for (const char* message : {kAnnounce, kOffersNothingMore, kRates, kRateTaken})
      bench.ask(message);
    bench.enter();
  }
  Playing playing() {
    bench.ipod.advance(bench.now);
    return playingOf(bench.ipod, at(bench.now));
  }
  /// Plays the tracks of the artist Anna: Able, Baker and Charlie.
  void playAnna() {
    bench.select(2, 0);
    bench.count(5);
    bench.ask(kPlayFirst);
  }

  Bench bench;
};

TEST_F(HeardIpod, IsSilentWithoutAnAccessory) {
  bench.ipod.pressPlay(bench.now);
  EXPECT_EQ(bench.ipod.player().state(), PlayState::kPlaying);
  EXPECT_FALSE(playing().isHeard);
}

TEST_F(HeardIpod, IsHeardAtTheRateOfTheTrack) {
  connect();
  EXPECT_FALSE(playing().isHeard);
  playAnna();
  EXPECT_TRUE(playing().isHeard);
  EXPECT_EQ(playing().streamRate, 44100u);
  EXPECT_EQ(playing().track, 2u);
}

TEST_F(HeardIpod, IsSilentUntilANewRateIsAcknowledged) {
  connect();
  playAnna();
  bench.ipod.pressNext(bench.now);
  bench.ipod.pressNext(bench.now);
  bench.take();
  EXPECT_FALSE(playing().isHeard);
  bench.ask(kRateTaken);
  EXPECT_TRUE(playing().isHeard);
  EXPECT_EQ(playing().streamRate, 48000u);
}

TEST_F(HeardIpod, IsSilentInAPauseWhileItIsWoundAndWithoutACable) {
  connect();
  playAnna();
  bench.ipod.pressPause(bench.now);
  EXPECT_FALSE(playing().isHeard);
  bench.ipod.pressPlay(bench.now);
  EXPECT_TRUE(playing().isHeard);
  bench.ask("04 00 29 05");
  EXPECT_FALSE(playing().isHeard);
  bench.ask("04 00 29 07");
  EXPECT_TRUE(playing().isHeard);
  bench.ipod.unplug(bench.now);
  bench.ipod.pressPlay(bench.now);
  EXPECT_FALSE(playing().isHeard);
}

TEST_F(HeardIpod, ContinuesWhileItPlays) {
  connect();
  playAnna();
  const Playing before = playing();
  bench.wait(seconds(3));
  EXPECT_TRUE(playing().continues(before));
  bench.ipod.pressPrevious(bench.now);
  EXPECT_FALSE(playing().continues(before));
}

TEST_F(HeardIpod, IsConvertedToARateThatTheAccessoryPlays) {
  MusicLibrary library = smallLibrary();
  library.tracks[2].sampleRate = 22050;
  Bench other(Personality{}, library);
  for (const char* message : {kAnnounce, kOffersNothingMore, kRates, kRateTaken})
    other.ask(message);
  other.enter();
  other.select(2, 0);
  other.count(5);
  other.ask(kPlayFirst);
  const Playing heardThere = playingOf(other.ipod, at(other.now));
  EXPECT_EQ(heardThere.trackRate, 22050u);
  EXPECT_EQ(heardThere.streamRate, 44100u);
}

}  // namespace
}  // namespace audio
}  // namespace simulator
