// The socket with the samples, and the thread that sends them. The test is the accessory's end.

#include "audio/audio_socket.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cstring>
#include <fstream>
#include <optional>

#include "audio/audio_output.h"
#include "link/pty_ipod.h"
#include "support/hex.h"
#include "support/host_end.h"
#include "support/ipod_bench.h"
#include "support/patience.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace audio_socket {
namespace {

namespace fs = std::filesystem;

/// A packet as it arrives.
struct Received {
  uint32_t number = 0;
  uint32_t rate = 0;
  std::vector<int16_t> samples;
};

/// The accessory's end.
class Accessory {
 public:
  explicit Accessory(const fs::path& path)
      : socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.native().copy(address.sun_path, sizeof address.sun_path - 1);
    isConnected =
        ::connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  }

  bool isThere() const { return isConnected; }
  void select(uint8_t bandwidth) const {
    EXPECT_EQ(::send(socket.get(), &bandwidth, 1, MSG_NOSIGNAL), 1);
  }
  /// Returns the next packet that has arrived already.
  std::optional<Received> take() {
    uint8_t bytes[4096];
    const ssize_t size = recv(socket.get(), bytes, sizeof bytes, 0);
    isClosed = size == 0;
    if (size < 8) return std::nullopt;
    Received packet;
    std::memcpy(&packet.number, bytes, 4);
    std::memcpy(&packet.rate, bytes + 4, 4);
    packet.samples.resize((static_cast<size_t>(size) - 8) / 2);
    std::memcpy(packet.samples.data(), bytes + 8, packet.samples.size() * 2);
    return packet;
  }
  /// Waits for the next packet.
  std::optional<Received> wait() {
    pollfd ready = {socket.get(), POLLIN, 0};
    poll(&ready, 1, host_test::Patience().left());
    return take();
  }
  /// Returns whether no packet arrives for some time. Without a pause there are packets for ever.
  bool becomesSilent() {
    constexpr int kSilence = 200;
    for (const host_test::Patience patience; !patience.isOver(); take()) {
      pollfd ready = {socket.get(), POLLIN, 0};
      if (poll(&ready, 1, kSilence) == 0) return true;
    }
    return false;
  }
  bool wasClosed() {
    take();
    return isClosed;
  }

 private:
  FileDescriptor socket;
  bool isConnected = false;
  bool isClosed = false;
};

class AudioSocketTest : public testing::Test {
 protected:
  void send(AudioSocket& socket, int16_t value) {
    const Frame frame = {value, value};
    socket.packet(44100, &frame, 1);
    socket.serve();
  }
  std::string refusal() const {
    try {
      const AudioSocket socket(path);
    } catch (const AudioSocketError& error) {
      return error.what();
    }
    return "";
  }

  const TemporaryFolder folder;
  const fs::path path = folder / "ipod.audio";
};

TEST_F(AudioSocketTest, IsForTheUserAlone) {
  const AudioSocket socket(path);
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(AudioSocketTest, IsRemovedAtTheEnd) {
  { const AudioSocket socket(path); }
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(AudioSocketTest, ReplacesOneThatADeadProcessLeft) {
  fs::create_directory(folder / "old");
  { const AudioSocket socket(folder / "old" / "one"); }
  const FileDescriptor left(::socket(AF_UNIX, SOCK_SEQPACKET, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.native().copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(left.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  EXPECT_EQ(refusal(), "");
}

TEST_F(AudioSocketTest, ReplacesNoFileAndNoSocketThatIsServed) {
  {
    const AudioSocket served(path);
    EXPECT_EQ(refusal(), "no sound: cannot make the socket " + path.string() +
                             ": another program serves it; end that program");
  }
  std::ofstream(path) << "mine";
  EXPECT_EQ(refusal(), "no sound: cannot make the socket " + path.string() +
                           ": there is a file of this name; remove it, or use another link");
  EXPECT_TRUE(fs::is_regular_file(path));
}

TEST_F(AudioSocketTest, RefusesALongPath) {
  const std::string name(200, 'x');
  EXPECT_THROW(AudioSocket(folder / name), AudioSocketError);
}

TEST_F(AudioSocketTest, SendsNumberedPacketsWhileTheFullBandwidthIsSelected) {
  AudioSocket socket(path);
  Accessory accessory(path);
  socket.serve();
  send(socket, 1);
  EXPECT_FALSE(accessory.take());
  accessory.select(1);
  socket.serve();
  EXPECT_TRUE(socket.isWanted());
  send(socket, 2);
  send(socket, 3);
  const std::optional<Received> first = accessory.take();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->number, 0u);
  EXPECT_EQ(first->rate, 44100u);
  EXPECT_EQ(first->samples, (std::vector<int16_t>{2, 2}));
  EXPECT_EQ(accessory.take()->number, 1u);
  accessory.select(0);
  socket.serve();
  EXPECT_FALSE(socket.isWanted());
  send(socket, 4);
  EXPECT_FALSE(accessory.take());
}

TEST_F(AudioSocketTest, HasOneAccessory) {
  AudioSocket socket(path);
  auto first = std::make_unique<Accessory>(path);
  socket.serve();
  Accessory second(path);
  socket.serve();
  EXPECT_TRUE(second.wasClosed());
  EXPECT_FALSE(first->wasClosed());
  first.reset();
  Accessory third(path);
  socket.serve();
  EXPECT_FALSE(third.wasClosed());
}

TEST_F(AudioSocketTest, NumbersEachConnectionFromZero) {
  AudioSocket socket(path);
  for (int connection = 0; connection < 2; ++connection) {
    Accessory accessory(path);
    accessory.select(1);
    socket.serve();
    send(socket, 1);
    const std::optional<Received> packet = accessory.take();
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->number, 0u);
  }
}

TEST_F(AudioSocketTest, KeepsTwoSecondsForALateAccessory) {
  AudioSocket socket(path);
  Accessory accessory(path);
  accessory.select(1);
  socket.serve();
  for (int16_t value = 0; value < 2000; ++value)
    send(socket, value);
  for (uint32_t expected = 0; expected < 2000; ++expected) {
    std::optional<Received> packet = accessory.take();
    if (!packet) {
      socket.serve();
      packet = accessory.take();
    }
    ASSERT_TRUE(packet) << expected;
    ASSERT_EQ(packet->number, expected);
    ASSERT_EQ(packet->samples.front(), static_cast<int16_t>(expected));
  }
}

TEST_F(AudioSocketTest, LeavesOutTheNumbersOfWhatIsLost) {
  AudioSocket socket(path);
  Accessory accessory(path);
  accessory.select(1);
  socket.serve();
  constexpr uint32_t kSent = 10000;
  for (uint32_t i = 0; i < kSent; ++i)
    send(socket, 1);
  uint32_t received = 0;
  while (accessory.take()) {
    ++received;
    socket.serve();
  }
  EXPECT_GE(received, 2000u);
  EXPECT_LT(received, kSent);
  send(socket, 1);
  EXPECT_EQ(accessory.take()->number, kSent);
}

TEST_F(AudioSocketTest, ForgetsWhatWaitsWithTheBandwidth) {
  AudioSocket socket(path);
  Accessory accessory(path);
  accessory.select(1);
  socket.serve();
  for (int i = 0; i < 2000; ++i)
    send(socket, 1);
  accessory.select(0);
  socket.serve();
  uint32_t last = 0;
  while (const std::optional<Received> packet = accessory.take())
    last = packet->number;
  EXPECT_LT(last, 1999u);
  accessory.select(1);
  socket.serve();
  send(socket, 2);
  const std::optional<Received> next = accessory.take();
  ASSERT_TRUE(next);
  EXPECT_EQ(next->number, last + 1);
  EXPECT_EQ(next->samples.front(), 2);
}

/// The thread, with a real iPod at a pseudo-terminal.
class AudioOutputTest : public AudioSocketTest {
 protected:
  AudioOutputTest() {
    output->follow(pty);
    pty.start();
    output->start(path, [](const std::string& text) { ADD_FAILURE() << text; });
  }
  /// Connects as an accessory with all rates, and lets the first track play.
  void playFirst(HostEnd& host) {
    size_t sent = 0;
    for (const char* message : {"00 13 00 00 04 11 00 00 00 00 00 00 00 00", "00 28 00 00 00 00 01",
                                "0A 03 00 00 7D 00 00 00 AC 44 00 00 BB 80", "0A 00 00 04"}) {
      ASSERT_TRUE(host.write(toHex(usbFrame(hex(message)))));
      ++sent;
      // A frame that is read in two parts with a long pause would be dropped.
      ASSERT_TRUE(pty.waitUntil(
          [&](const SimulatedIpod& device) { return device.counters().messagesReceived == sent; },
          seconds(10)));
    }
    ASSERT_TRUE(pty.waitUntil(
        [](const SimulatedIpod& device) { return device.audioRate() == 44100; }, seconds(10)));
    press(&SimulatedIpod::pressPlay);
  }
  void press(void (SimulatedIpod::*button)(Time)) {
    pty.act([&](SimulatedIpod& device, Time now) { (device.*button)(now); });
  }

  SimulatedIpod ipod{Personality{}, smallLibrary()};
  std::unique_ptr<AudioOutput> output = makeAudioOutput();
  PtyIpod pty{ipod, FrameKind::kUsb};
};

TEST_F(AudioOutputTest, SendsEachPacketOnceAsLongAsTheTrackPlays) {
  HostEnd host(pty.slavePath());
  Accessory accessory(path);
  accessory.select(1);
  ASSERT_NO_FATAL_FAILURE(playFirst(host));
  size_t samples = 0;
  for (uint32_t number = 0; number < 300; ++number) {
    const std::optional<Received> packet = accessory.wait();
    ASSERT_TRUE(packet) << number;
    ASSERT_EQ(packet->number, number);
    ASSERT_EQ(packet->rate, 44100u);
    samples += packet->samples.size();
  }
  EXPECT_EQ(samples, 2 * 44100u * 300 / 1000);
  // Not earlier than they are due.
  const Time position =
      pty.act([](SimulatedIpod& device, Time now) { return device.player().position(now); });
  EXPECT_GE(position, milliseconds(300));
}

TEST_F(AudioOutputTest, IsSilentWithoutACable) {
  HostEnd host(pty.slavePath());
  Accessory accessory(path);
  accessory.select(1);
  ASSERT_NO_FATAL_FAILURE(playFirst(host));
  ASSERT_TRUE(accessory.wait());
  pty.unplug();
  press(&SimulatedIpod::pressPlay);
  EXPECT_TRUE(accessory.becomesSilent());
}

}  // namespace
}  // namespace audio_socket
}  // namespace simulator
