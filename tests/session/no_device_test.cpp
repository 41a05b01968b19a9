// "IPD1:" is mapped to nothing, or to something that is not an iPod.

#include <desk.h>
#include <gtest/gtest.h>
#include <ipodctl.h>

#include <fstream>

#include "support/host_screen.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using host_test::DeviceMapping;

class NoDevice : public testing::Test {
 protected:
  void TearDown() override { IpodDisconnect(); }

  static void expectNoConnection() {
    const unsigned handles = handlesAfterAConnection();
    EXPECT_LT(durationOf([] { EXPECT_EQ(IpodConnect(), 0); }), simulator::seconds(1));
    EXPECT_EQ(IpodIsConnect(), 0);
    EXPECT_EQ(ipodName(), "");
    EXPECT_EQ(deskOpenHandles(), handles);
    EXPECT_EQ(deskRunningThreads(), 0u);
  }
  // The first connection of a process makes the library lock.
  static unsigned handlesAfterAConnection() {
    IpodConnect();
    return deskOpenHandles();
  }

  const HostFolder folder;
};

TEST_F(NoDevice, ConnectingFailsForANameThatIsNotMapped) {
  const DeviceMapping devices("COM1:=/dev/null,IPD2:=/dev/null");
  expectNoConnection();
}

TEST_F(NoDevice, ConnectingFailsForAPathThatDoesNotExist) {
  const DeviceMapping devices("IPD1:=" + (folder / "nothing").string());
  expectNoConnection();
}

TEST_F(NoDevice, ConnectingFailsForAnEmptyMapping) {
  const DeviceMapping devices("IPD1:=");
  expectNoConnection();
}

TEST_F(NoDevice, ConnectingFailsForARegularFileOrAFolder) {
  std::ofstream(folder / "file") << "precious";
  for (const char* name : {"file", ""}) {
    const DeviceMapping devices("IPD1:=" + (folder / name).string());
    expectNoConnection();
  }
  EXPECT_EQ(contentOf(folder / "file"), "precious");
}

// Takes three seconds, one for each attempt of the identification.
TEST_F(NoDevice, ConnectingFailsIfATerminalIsSilent) {
  const host_test::PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const auto time = durationOf([] { EXPECT_EQ(IpodConnect(), 0); });
  EXPECT_GE(time, simulator::seconds(3));
  EXPECT_LT(time, simulator::seconds(6));
}

}  // namespace
}  // namespace session
