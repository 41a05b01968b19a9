// What the audio library does with the samples that arrive. The test is the iPod's end of the
// socket.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <isochplay_desk.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include "sound/alsa_output.h"
#include "support/eventually.h"
#include "support/pty_pair.h"
#include "support/temporary_folder.h"

namespace isochplay_sound {
namespace {

using session::eventually;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;
using testing::StartsWith;
using Samples = std::vector<int16_t>;  ///< left, right, left, ...

struct Wav {
  uint32_t rate = 0;  ///< 0: there is no such file
  Samples samples;
};

uint32_t numberAt(const std::string& bytes, size_t at) {
  uint32_t number = 0;
  if (at + sizeof number <= bytes.size()) std::memcpy(&number, bytes.data() + at, sizeof number);
  return number;
}

/// Reads the file by the lengths in its heads.
Wav readWav(const std::string& file) {
  std::stringstream content;
  content << std::ifstream(file, std::ios::binary).rdbuf();
  const std::string bytes = content.str();
  Wav wav;
  constexpr size_t kFirstChunk = 12;
  constexpr size_t kChunkHead = 8;
  for (size_t at = kFirstChunk; at + kChunkHead <= bytes.size();) {
    const std::string name = bytes.substr(at, 4);
    const uint32_t size = numberAt(bytes, at + 4);
    at += kChunkHead;
    if (name == "fmt ") wav.rate = numberAt(bytes, at + 4);
    if (name == "data") {
      wav.samples.resize(std::min<size_t>(size, bytes.size() - at) / sizeof(int16_t));
      std::memcpy(wav.samples.data(), bytes.data() + at, wav.samples.size() * sizeof(int16_t));
    }
    at += size + size % 2;
  }
  return wav;
}

WAVEFORMATEX stereo(DWORD sampleRate) {
  WAVEFORMATEX format = {};
  format.wFormatTag = WAVE_FORMAT_PCM;
  format.nChannels = 2;
  format.nSamplesPerSec = sampleRate;
  format.wBitsPerSample = 16;
  return format;
}

void start(DWORD rate) {
  const WAVEFORMATEX format = stereo(rate);
  StartIpodAudioPlay(&format);
}

/// The iPod's end of the socket.
class IpodEnd {
 public:
  explicit IpodEnd(const std::string& path)
      : listener(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, 1) != 0) {
      throw std::runtime_error("no socket");
    }
  }
  IpodEnd(const IpodEnd&) = delete;
  IpodEnd& operator=(const IpodEnd&) = delete;
  ~IpodEnd() {
    hangUp();
    close(listener);
  }

  /// Returns false when no connection arrives in time.
  bool accept() {
    if (!waitFor(listener)) return false;
    connection = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    return connection >= 0;
  }
  void hangUp() {
    if (connection >= 0) close(std::exchange(connection, -1));
  }

  /// Returns the next bandwidth that was selected; -1 when none arrives in time.
  int bandwidth() const {
    uint8_t selected = 0;
    if (!waitFor(connection) || recv(connection, &selected, 1, 0) != 1) return -1;
    return selected;
  }

  /// Sends frames whose samples all have this value.
  void send(uint32_t number, size_t frames, int16_t value) const {
    std::string bytes(2 * sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    for (size_t i = 0; i < 2 * frames; ++i)
      bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    EXPECT_EQ(::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }

 private:
  static bool waitFor(int descriptor) {
    pollfd wait = {descriptor, POLLIN, 0};
    return poll(&wait, 1, host_test::Patience().left()) > 0;
  }

  const int listener;
  int connection = -1;
};

void ignoreCall(void*, const IsochplayCall*) {}

class IsochplaySound : public testing::Test {
 protected:
  IsochplaySound() {
    isochplaySetSink(ignoreCall, nullptr);
    listenTo(wav);
    testing::internal::CaptureStderr();
  }
  ~IsochplaySound() override {
    unsetenv("IPODCTL_AUDIO");
    SelectZeroBandwithInterface();
    isochplaySetSink(nullptr, nullptr);
    if (capturing) {
      testing::internal::GetCapturedStderr();
    }
  }

  static void listenTo(const std::string& output) { setenv("IPODCTL_AUDIO", output.c_str(), 1); }

  /// Begins with a stream of this rate, as IpodConnect does.
  void startStream(DWORD rate) {
    SelectZeroBandwithInterface();
    SelectFullBandwithInterface();
    ASSERT_TRUE(ipod.accept());
    ASSERT_EQ(ipod.bandwidth(), 1);
    start(rate);
  }

  /// Ends the stream, and returns the file after everything is written.
  Wav finished() {
    StopIpodAudioPlay();
    unsetenv("IPODCTL_AUDIO");
    SelectZeroBandwithInterface();
    return readWav(wav);
  }

  std::string complaints() {
    capturing = false;
    return testing::internal::GetCapturedStderr();
  }

  const simulator::TemporaryFolder folder;
  const std::string wav = (folder / "heard.wav").string();
  const host_test::DeviceMapping devices{"IPD1:=" + (folder / "ipod").string()};
  IpodEnd ipod{(folder / "ipod.audio").string()};
  bool capturing = true;
};

constexpr char kPrefix[] = "ipodctl: IPODCTL_AUDIO: ";

TEST_F(IsochplaySound, WritesWhatArrivesInOrder) {
  startStream(44100);
  ipod.send(0, 2, 7);
  ipod.send(1, 1, -32768);
  ipod.send(2, 1, 9);
  const Wav heard = finished();
  EXPECT_EQ(heard.rate, 44100u);
  EXPECT_THAT(heard.samples, ElementsAre(7, 7, 7, 7, -32768, -32768, 9, 9));
  EXPECT_EQ(complaints(), "");
}

TEST_F(IsochplaySound, MakesAFileThatOnlyTheUserReads) {
  startStream(44100);
  finished();
  struct stat status = {};
  ASSERT_EQ(stat(wav.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(IsochplaySound, IsSilentWithoutAStart) {
  SelectFullBandwithInterface();
  ASSERT_TRUE(ipod.accept());
  ipod.send(0, 1, 7);
  EXPECT_EQ(finished().rate, 0u);
}

TEST_F(IsochplaySound, IsSilentWhenTheStartPrecedesTheBandwidth) {
  SelectZeroBandwithInterface();
  start(44100);
  SelectFullBandwithInterface();
  ASSERT_TRUE(ipod.accept());
  ipod.send(0, 1, 7);
  EXPECT_THAT(finished().samples, SizeIs(0));
}

TEST_F(IsochplaySound, DropsWhatArrivesBeforeTheStart) {
  SelectFullBandwithInterface();
  ASSERT_TRUE(ipod.accept());
  ipod.send(0, 1, 7);
  start(44100);
  ipod.send(1, 1, 8);
  EXPECT_THAT(finished().samples, ElementsAre(8, 8));
}

TEST_F(IsochplaySound, DropsWhatArrivesAfterTheStop) {
  startStream(44100);
  ipod.send(0, 1, 7);
  StopIpodAudioPlay();
  ipod.send(1, 1, 8);
  EXPECT_THAT(finished().samples, ElementsAre(7, 7));
}

TEST_F(IsochplaySound, NeedsANewStartAfterZeroBandwidth) {
  startStream(44100);
  SelectZeroBandwithInterface();
  EXPECT_EQ(ipod.bandwidth(), 0);
  SelectFullBandwithInterface();
  EXPECT_EQ(ipod.bandwidth(), 1);
  ipod.send(0, 1, 7);
  EXPECT_THAT(finished().samples, SizeIs(0));
}

TEST_F(IsochplaySound, IsSilentAtAnImpossibleRate) {
  startStream(44100);
  for (const int rate : {0, -1, 1000000000}) {
    SelectFrequency(rate);
    ipod.send(0, 1, 7);
  }
  EXPECT_THAT(finished().samples, SizeIs(0));
}

TEST_F(IsochplaySound, DoesNotStartAtAnImpossibleRateOrWithAFailure) {
  startStream(0);
  ipod.send(0, 1, 7);
  isochplaySetResult(kStartIpodAudioPlay, -1);
  start(44100);
  isochplaySetResult(kStartIpodAudioPlay, 0);
  ipod.send(1, 1, 7);
  EXPECT_EQ(finished().rate, 0u);
  EXPECT_EQ(complaints(), "");
}

// Each sample has the rate that was set when it arrived. The iPod's rate is not looked at.
TEST_F(IsochplaySound, ConvertsFromTheRateThatWasSet) {
  startStream(44100);
  ipod.send(0, 100, 7);
  SelectFrequency(22050);
  for (uint32_t number = 1; number <= 10; ++number)
    ipod.send(number, 100, 1000);
  SelectFrequency(44100);
  ipod.send(11, 100, 9);
  const Wav heard = finished();
  EXPECT_EQ(heard.rate, 44100u);
  ASSERT_THAT(heard.samples, SizeIs(2 * (100 + 2000 + 100)));
  const auto part = [&](size_t first, size_t last) {
    return Samples(heard.samples.begin() + static_cast<std::ptrdiff_t>(2 * first),
                   heard.samples.begin() + static_cast<std::ptrdiff_t>(2 * last));
  };
  EXPECT_THAT(part(0, 100), Each(7));
  EXPECT_THAT(part(1000, 1200), Each(testing::AllOf(testing::Ge(990), testing::Le(1010))));
  EXPECT_THAT(part(2100, 2200), Each(9));
}

TEST_F(IsochplaySound, KeepsTheFilesRateWhenTheStreamStartsAgain) {
  startStream(44100);
  ipod.send(0, 10, 7);
  StopIpodAudioPlay();
  start(22050);
  ipod.send(1, 100, 8);
  const Wav heard = finished();
  EXPECT_EQ(heard.rate, 44100u);
  EXPECT_THAT(heard.samples, SizeIs(2 * (10 + 200)));
}

TEST_F(IsochplaySound, FindsALostPacket) {
  startStream(44100);
  ipod.send(0, 1, 7);
  ipod.send(3, 1, 8);
  ipod.send(4, 1, 9);
  EXPECT_THAT(finished().samples, ElementsAre(7, 7, 8, 8, 9, 9));
  EXPECT_EQ(complaints(), std::string(kPrefix) +
                              "2 packets are missing before packet 3; this program or the iPod's "
                              "was too slow\n");
}

TEST_F(IsochplaySound, FindsADoublePacket) {
  startStream(44100);
  ipod.send(0, 1, 7);
  ipod.send(1, 1, 8);
  ipod.send(1, 1, 8);
  ipod.send(2, 1, 9);
  EXPECT_THAT(finished().samples, ElementsAre(7, 7, 8, 8, 8, 8, 9, 9));
  EXPECT_EQ(complaints(), std::string(kPrefix) + "packet 1 has arrived twice; restart ipodsim\n");
}

TEST_F(IsochplaySound, ConnectsAgainWithTheNextFullBandwidth) {
  startStream(44100);
  ipod.send(0, 1, 7);
  ipod.hangUp();
  startStream(44100);
  ipod.send(0, 1, 8);
  EXPECT_THAT(finished().samples, ElementsAre(7, 7, 8, 8));
  EXPECT_EQ(complaints(), "");
}

TEST_F(IsochplaySound, OverwritesItsOwnFile) {
  startStream(44100);
  ipod.send(0, 3, 7);
  finished();
  ipod.hangUp();
  listenTo(wav);
  startStream(32000);
  ipod.send(0, 1, 8);
  const Wav heard = finished();
  EXPECT_EQ(heard.rate, 32000u);
  EXPECT_THAT(heard.samples, ElementsAre(8, 8));
  EXPECT_EQ(complaints(), "");
}

TEST_F(IsochplaySound, KeepsTheFileOfAnotherProgram) {
  // A WAV file without the name of the library.
  const std::string others(
      "RIFF\x26\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x44\xAC\0\0\x88\x58\1\0\2\0\x10\0"
      "data\2\0\0\0\1\0",
      46);
  std::ofstream(wav, std::ios::binary) << others;
  startStream(44100);
  ipod.send(0, 1, 7);
  finished();
  std::stringstream content;
  content << std::ifstream(wav, std::ios::binary).rdbuf();
  EXPECT_EQ(content.str(), others);
  EXPECT_EQ(complaints(), kPrefix + ("cannot write " + wav) +
                              ": it is there and was not recorded by this library; name another "
                              "file\n");
}

TEST_F(IsochplaySound, SaysOnceThatTheDiskIsFull) {
  rlimit before = {};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small = {20000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  startStream(44100);
  for (uint32_t number = 0; number < 100; ++number)
    ipod.send(number, 100, 7);
  std::error_code none;
  EXPECT_TRUE(eventually([&] { return std::filesystem::file_size(wav, none) == small.rlim_cur; }));
  setrlimit(RLIMIT_FSIZE, &before);
  ipod.send(100, 100, 8);
  EXPECT_THAT(finished().samples, testing::AllOf(SizeIs(testing::Le(10000u)), Each(7)));
  EXPECT_EQ(complaints(), kPrefix + ("cannot write " + wav) +
                              ": File too large; make room or name another file, and start "
                              "again\n");
}

TEST_F(IsochplaySound, ExplainsAMissingSocketOnce) {
  const host_test::DeviceMapping elsewhere("IPD1:=" + (folder / "none").string());
  SelectFullBandwithInterface();
  SelectFullBandwithInterface();
  start(44100);
  finished();
  EXPECT_EQ(complaints(), kPrefix + ("there is no sound from " + (folder / "none.audio").string()) +
                              ": No such file or directory; start an ipodsim with this --link\n");
}

TEST_F(IsochplaySound, ExplainsAnUnknownOutput) {
  listenTo("loudspeaker");
  SelectFullBandwithInterface();
  start(44100);
  EXPECT_EQ(complaints(),
            std::string(kPrefix) +
                "\"loudspeaker\" is not an output; write alsa, or the name of a .wav file\n");
}

TEST_F(IsochplaySound, ExplainsAMissingSoundCardOnce) {
  listenTo("alsa:no-such-card");
  startStream(44100);
  ipod.send(0, 1, 7);
  SelectFrequency(48000);
  ipod.send(1, 1, 7);
  finished();
  EXPECT_THAT(complaints(),
              testing::MatchesRegex(std::string(kPrefix) +
                                    "cannot play on the sound card \"no-such-card\": [^\n]*; "
                                    "connect one, or record with IPODCTL_AUDIO=FILE.wav\n"));
}

/// ALSA writes what it plays to a file.
class IsochplaySoundCard : public IsochplaySound {
 protected:
  IsochplaySoundCard() {
    std::ofstream(folder / "asound.conf")
        << "pcm.nothing { type null }\n"
        << "pcm.card { type file slave.pcm nothing file \"" << raw << "\" format raw }\n";
    setenv("ALSA_CONFIG_PATH", (folder / "asound.conf").c_str(), 1);
    listenTo("alsa:card");
  }

  const std::string raw = (folder / "played.raw").string();
};

TEST_F(IsochplaySoundCard, PlaysTheSamples) {
  startStream(44100);
  ipod.send(0, 2, 7);
  ipod.send(1, 1, 8);
  finished();
  std::stringstream content;
  content << std::ifstream(raw, std::ios::binary).rdbuf();
  EXPECT_EQ(content.str().substr(0, 12), std::string("\7\0\7\0\7\0\7\0\x8\0\x8\0", 12));
  EXPECT_EQ(complaints(), "");
}

TEST_F(IsochplaySoundCard, PlaysOnlyTheLastSecondWhenItIsLate) {
  const auto output = isochplay::makeAlsaOutput("card");
  isochplay::Frames frames(8000, isochplay::Frame{1, 1});
  frames.resize(16000, isochplay::Frame{2, 2});
  output->start(8000);
  output->play(8000, frames);
  output->stop();
  std::ifstream played(raw, std::ios::binary);
  int16_t first = 0;
  EXPECT_TRUE(played.read(reinterpret_cast<char*>(&first), sizeof first));
  EXPECT_EQ(first, 2);
}

// The threads are in the parent.
TEST_F(IsochplaySound, IsSilentInAForkedProcess) {
  startStream(44100);
  const pid_t child = fork();
  if (child == 0) {
    StopIpodAudioPlay();
    SelectZeroBandwithInterface();
    _exit(0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  ipod.send(0, 1, 7);
  SelectZeroBandwithInterface();
  EXPECT_EQ(ipod.bandwidth(), 0);
  SelectFullBandwithInterface();
  EXPECT_EQ(ipod.bandwidth(), 1);
  EXPECT_THAT(finished().samples, ElementsAre(7, 7));
}

}  // namespace
}  // namespace isochplay_sound
