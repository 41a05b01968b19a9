// Whole sessions over each end of the wire that a device can be mapped to. Both ends record them,
// and have seen the same bytes.

#include <gtest/gtest.h>
#include <ipodctl.h>

#include <cstdlib>

#include "support/eventually.h"
#include "support/host_folder.h"
#include "support/host_screen.h"
#include "support/program.h"
#include "support/pty_pair.h"
#include "support/recorded_trace.h"

namespace session {
namespace {

using host_test::DeviceMapping;
using simulator::Program;

constexpr char kReady[] = "iPod ready on ";

/// Returns the bytes of a direction, '<' or '>', however they are divided into lines.
std::string bytesOf(const std::string& path, char direction) {
  const std::string prefix = std::string("IPD1: ") + direction;
  std::string bytes;
  for (const std::string& line : recorded::textsOf(path)) {
    const std::string text = line.rfind("COM1: ", 0) == 0 ? "IPD1: " + line.substr(6) : line;
    if (text.rfind(prefix, 0) == 0) bytes += text.substr(prefix.size());
  }
  return bytes;
}

/// The acknowledgement of the track's sample rate, and the one of the end, which nobody awaits.
constexpr char kRateTaken[] = " 55 04 0A 00 00 04 EE";
constexpr char kEndAcknowledged[] = " 55 04 00 02 00 06 F4";

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

class WireEnds : public testing::Test {
 protected:
  WireEnds() { setenv("IPODCTL_TRACE", atTheHost.c_str(), 1); }
  ~WireEnds() override { unsetenv("IPODCTL_TRACE"); }

  std::unique_ptr<Program> runIpod(std::vector<std::string> options) {
    options.insert(options.end(), {"--record", atTheIpod});
    return std::make_unique<Program>(IPODSIM_PROGRAM, options);
  }

  /// Reads a few names and plays a track, with a trace that is complete at the end.
  void playRecorded(const std::string& end, Program& ipod) {
    const DeviceMapping devices("IPD1:=" + end);
    ASSERT_EQ(IpodConnect(), 1);
    EXPECT_EQ(ipodName(), "Demo iPod");
    IpodGetFirstItem(0, IPOD_ARTISTS, 0);
    EXPECT_NE(IpodGetNextItem(), nullptr);
    IpodGetFirstItem(1, IPOD_TRACKS, 1);
    EXPECT_NE(IpodGetNextItem(), nullptr);
    IpodSongPlay(0);
    EXPECT_TRUE(eventually([&] { return endsWith(bytesOf(atTheHost, '>'), kRateTaken); }));
    IpodDisconnect();
    EXPECT_TRUE(ipod.readUntil(" -- the accessory closed the link"));
    ipod.signal(SIGTERM);
    EXPECT_EQ(ipod.waitForEnd(), 0);
    endTrace();
  }

  /// A failed connection without the variable.
  static void endTrace() {
    unsetenv("IPODCTL_TRACE");
    EXPECT_EQ(IpodConnect(), 0);
    IpodDisconnect();
  }

  /// The iPod's last acknowledgement can be too late for the host.
  void expectEqualTraces(const std::string& sync = "") const {
    const std::string written = bytesOf(atTheHost, '>');
    EXPECT_GT(written.size(), 300u);
    EXPECT_EQ(written, bytesOf(atTheIpod, '>'));
    std::string sent = bytesOf(atTheIpod, '<');
    const std::string received = bytesOf(atTheHost, '<');
    EXPECT_GT(received.size(), 300u);
    if (sent != received) EXPECT_EQ(sent, received + sync + kEndAcknowledged);
  }

  const HostFolder folder;
  const std::string link = (folder / "ipod").string();
  const std::string atTheHost = (folder / "host.trace").string();
  const std::string atTheIpod = (folder / "ipod.trace").string();
};

TEST_F(WireEnds, APseudoTerminal) {
  const auto ipod = runIpod({"--link", link});
  ASSERT_EQ(ipod->readLine(), kReady + link) << ipod->errors();
  playRecorded(link, *ipod);
  expectEqualTraces();
  EXPECT_EQ(bytesOf(atTheHost, '>').substr(0, 9), " 55 0E 00");
}

TEST_F(WireEnds, AnIpodOnASerialLine) {
  const auto ipod = runIpod({"--serial", "--link", link});
  ASSERT_EQ(ipod->readLine(), kReady + link) << ipod->errors();
  playRecorded("serial:" + link + "@57600", *ipod);
  expectEqualTraces(" FF");
  EXPECT_EQ(bytesOf(atTheHost, '>').substr(0, 12), " FF 55 0E 00");
}

TEST_F(WireEnds, ATcpPort) {
  const auto ipod = runIpod({"--listen", "0"});
  const std::string line = ipod->readLine().value_or("");
  ASSERT_EQ(line.rfind(kReady, 0), 0u) << ipod->errors();
  playRecorded("tcp:" + line.substr(std::string(kReady).size()), *ipod);
  expectEqualTraces();
}

/// On a serial line an iPod ignores frames without a sync byte.
TEST_F(WireEnds, AnIpodOnASerialLineDoesNotAnswerWithoutTheMapping) {
  const auto ipod = runIpod({"--serial", "--link", link});
  ASSERT_EQ(ipod->readLine(), kReady + link) << ipod->errors();
  const DeviceMapping devices("IPD1:=" + link);
  EXPECT_EQ(IpodConnect(), 0);
  IpodDisconnect();
  ipod->signal(SIGTERM);
  EXPECT_EQ(ipod->waitForEnd(), 0);
  endTrace();
  EXPECT_EQ(bytesOf(atTheHost, '<'), "");
  EXPECT_NE(bytesOf(atTheHost, '>'), "");
}

}  // namespace
}  // namespace session
