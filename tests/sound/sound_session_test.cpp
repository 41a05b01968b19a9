// Whole sessions with sound: the library, ipodsim, and a WAV file in which another program measures
// the pitch.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ipodctl.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

#include "support/eventually.h"
#include "support/host_folder.h"
#include "support/program.h"
#include "support/pty_pair.h"

namespace session {
namespace {

using simulator::Program;
using Seconds = std::chrono::duration<double>;
using Clock = std::chrono::steady_clock;

/// A part of the recording with one pitch.
struct Stretch {
  double pitch;  ///< Hz
  double start;  ///< seconds
  double length;
};

std::ostream& operator<<(std::ostream& out, const Stretch& stretch) {
  return out << stretch.pitch << " Hz for " << stretch.length << " s";
}

struct Recording {
  std::vector<Stretch> stretches;
  double length = 0;  ///< seconds
};

Recording recordingOf(const std::string& file) {
  Program pitch(PITCH_PROGRAM, {file});
  Recording recording;
  while (const std::optional<std::string> line = pitch.readLine()) {
    std::istringstream words(*line);
    Stretch stretch = {};
    if (line->rfind("end ", 0) == 0) {
      words.ignore(4) >> recording.length;
    } else if (words >> stretch.pitch >> stretch.start >> stretch.length) {
      recording.stretches.push_back(stretch);
    }
  }
  EXPECT_EQ(pitch.waitForEnd(), 0) << pitch.errors();
  return recording;
}

MATCHER_P(IsPitch, hertz, "") { return arg.pitch > hertz * 0.995 && arg.pitch < hertz * 1.005; }

uintmax_t sizeOf(const std::string& file) {
  std::error_code error;
  const uintmax_t size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

int position() {
  int position = -1;
  IpodGetCurrentTrackPosition(&position);
  return position;
}

class SoundSession : public testing::Test {
 protected:
  SoundSession() {
    setenv("IPODCTL_AUDIO", wav.c_str(), 1);
    testing::internal::CaptureStderr();
  }
  ~SoundSession() override { unsetenv("IPODCTL_AUDIO"); }

  /// Starts an iPod that has been switched on by hand, so that it has a current track.
  std::unique_ptr<Program> playingIpod(std::vector<std::string> options) {
    options.insert(options.end(), {"--link", link, "--interactive"});
    auto ipod = std::make_unique<Program>(IPODSIM_PROGRAM, options);
    EXPECT_TRUE(ipod->readUntil("iPod ready on ")) << ipod->errors();
    ipod->type("play");
    ipod->type("status");
    EXPECT_TRUE(ipod->readUntil("plays: "));
    return ipod;
  }

  /// Returns the messages of the sound, after the disconnection.
  static std::string complaints() {
    std::istringstream lines(testing::internal::GetCapturedStderr());
    std::string found;
    for (std::string line; std::getline(lines, line);) {
      if (line.find("IPODCTL_AUDIO") != std::string::npos) found += line + "\n";
    }
    return found;
  }

  /// Waits until the track has played so long.
  static void playUntil(int milliseconds) {
    ASSERT_TRUE(eventually([=] {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      return position() >= milliseconds;
    }));
  }

  /// Waits until the file has its last samples: it does not grow for several of its steps.
  void settleFile() const {
    uintmax_t before = 0;
    EXPECT_TRUE(eventually([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
      return std::exchange(before, sizeOf(wav)) == before;
    }));
  }

  const HostFolder folder;
  const std::string link = (folder / "ipod").string();
  const std::string wav = (folder / "heard.wav").string();
  const host_test::DeviceMapping devices{"IPD1:=" + link};
};

constexpr char kThreeRates[] = R"({"tracks": [
  {"title": "A", "artist": "X", "lengthMs": 60000, "sampleRate": 48000},
  {"title": "B", "artist": "X", "lengthMs": 60000, "sampleRate": 44100},
  {"title": "C", "artist": "X", "lengthMs": 60000, "sampleRate": 32000}]})";

/// The tunes of the first three tracks of a library.
constexpr double kFirstTune = 165.0;
constexpr double kSecondTune = 360.9;
constexpr double kThirdTune = 789.5;

class ThreeRates : public SoundSession {
 protected:
  void SetUp() override {
    std::ofstream(folder / "music.json") << kThreeRates;
    ipod = playingIpod({"--library", (folder / "music.json").string()});
    ASSERT_EQ(IpodConnect(), 1);
    ASSERT_TRUE(opensTracks());
  }

  /// As a host does it: after an odd answer it leaves the iPod alone for a second.
  static bool opensTracks() {
    for (int attempt = 0; attempt < 3; ++attempt) {
      IpodGetFirstItem(0, IPOD_TRACKS, 0);
      if (IpodGetNextItem() != nullptr) return true;
      std::this_thread::sleep_for(std::chrono::seconds(1));
    }
    return false;
  }

  std::unique_ptr<Program> ipod;
};

TEST_F(ThreeRates, HaveTheirPitches) {
  IpodSongPlay(0);
  playUntil(700);
  IpodCommand(IPOD_NEXT_TRACK);
  playUntil(700);
  IpodCommand(IPOD_NEXT_TRACK);
  playUntil(700);
  IpodDisconnect();
  settleFile();
  EXPECT_THAT(recordingOf(wav).stretches,
              testing::ElementsAre(IsPitch(kFirstTune), IsPitch(kSecondTune), IsPitch(kThirdTune)));
  EXPECT_EQ(complaints(), "");
}

TEST_F(ThreeRates, AreRecordedAsLongAsTheyPlay) {
  const auto start = Clock::now();
  IpodSongPlay(0);
  playUntil(500);
  const int first = position();
  IpodCommand(IPOD_NEXT_TRACK);
  playUntil(500);
  const int second = position();
  IpodDisconnect();
  const Seconds elapsed = Clock::now() - start;
  settleFile();
  const Recording recording = recordingOf(wav);
  // A stretch starts when the library has acknowledged the track's rate.
  constexpr double kAcknowledgement = 0.1;
  EXPECT_GT(recording.length, (first + second) / 1000.0 - kAcknowledgement);
  EXPECT_LT(recording.length, elapsed.count());
  EXPECT_EQ(complaints(), "");
}

TEST_F(ThreeRates, AreSilentInAPauseAndAfterTheDisconnection) {
  IpodSongPlay(0);
  playUntil(300);
  IpodCommand(IPOD_PAUSE);
  settleFile();
  const uintmax_t atThePause = sizeOf(wav);
  EXPECT_GT(atThePause, 48000u);
  // The file grows every 20 ms while a track plays.
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(sizeOf(wav), atThePause);
  IpodCommand(IPOD_PLAY);
  EXPECT_TRUE(eventually([&] { return sizeOf(wav) > atThePause; }));
  IpodDisconnect();
  settleFile();
  const uintmax_t atTheEnd = sizeOf(wav);
  ipod->type("play");
  ipod->type("status");
  EXPECT_TRUE(ipod->readUntil("plays: "));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_EQ(sizeOf(wav), atTheEnd);
  EXPECT_EQ(complaints(), "");
}

// The host's list has another order.
TEST_F(SoundSession, DecodesEveryFormat) {
  const auto ipod = playingIpod({"--music", TEST_MUSIC_FOLDER});
  ASSERT_EQ(IpodConnect(), 1);
  IpodCommand(IPOD_PLAY);
  constexpr int kTracks = 8;
  for (int track = 0; track < kTracks; ++track) {
    playUntil(400);
    ipod->type("next");
    int index = 0;
    const int next = (track + 1) % kTracks;
    EXPECT_TRUE(eventually([&] { return IpodGetTrackIndex(&index) != 0 && index != track; }));
    if (next != 0) EXPECT_EQ(index, next);
  }
  IpodDisconnect();
  settleFile();
  EXPECT_THAT(recordingOf(wav).stretches,
              testing::ElementsAre(IsPitch(294), IsPitch(349), IsPitch(220), IsPitch(330),
                                   IsPitch(262), IsPitch(247), IsPitch(392), IsPitch(440)));
  EXPECT_EQ(complaints(), "");
}

TEST_F(SoundSession, IsWithoutSoundOverATcpPort) {
  Program ipod(IPODSIM_PROGRAM, {"--listen", "0"});
  const std::string ready = ipod.readLine().value_or("");
  const host_test::DeviceMapping tcp("IPD1:=tcp:" + ready.substr(ready.rfind(' ') + 1));
  for (int connection = 0; connection < 2; ++connection) {
    EXPECT_EQ(IpodConnect(), 1);
    IpodDisconnect();
  }
  EXPECT_EQ(complaints(),
            "ipodctl: IPODCTL_AUDIO: there is no sound from this IPD1:; map it to the link of an "
            "ipodsim, like /tmp/ipod\n");
}

}  // namespace
}  // namespace session
