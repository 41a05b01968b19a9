#include "support/pty_pair.h"

#include <gtest/gtest.h>

namespace {

using host_test::DeviceMapping;
using host_test::PtyPair;

/// The near end, opened without the platform.
class NearEnd {
 public:
  explicit NearEnd(const PtyPair& wire)
      : descriptor(::open(wire.path().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {}
  NearEnd(const NearEnd&) = delete;
  NearEnd& operator=(const NearEnd&) = delete;
  ~NearEnd() { ::close(descriptor); }

  const int descriptor;
};

TEST(PtyPair, CarriesBytesBothWaysUnchanged) {
  PtyPair wire;
  const NearEnd nearEnd(wire);
  const Bytes special = {0x00, 0x03, 0x0a, 0x0d, 0x11, 0xff};
  EXPECT_TRUE(wire.send(special));
  Bytes received(special.size());
  for (std::size_t got = 0; got < received.size();) {
    const ssize_t n = ::read(nearEnd.descriptor, received.data() + got, received.size() - got);
    ASSERT_GT(n, 0);
    got += static_cast<std::size_t>(n);
  }
  EXPECT_EQ(received, special);
  EXPECT_EQ(::write(nearEnd.descriptor, special.data(), special.size()), 6);
  EXPECT_EQ(wire.receive(6), special);
}

TEST(PtyPair, ReportsThatBytesHaveArrived) {
  PtyPair wire;
  const NearEnd nearEnd(wire);
  EXPECT_TRUE(wire.sendAndArrive({1, 2, 3}));
  int arrived = 0;
  EXPECT_EQ(ioctl(nearEnd.descriptor, FIONREAD, &arrived), 0);
  EXPECT_EQ(arrived, 3);
}

TEST(PtyPair, ReportsWhetherTheDeviceIsOpen) {
  const PtyPair wire;
  EXPECT_FALSE(wire.isDeviceOpen());
  {
    const NearEnd nearEnd(wire);
    EXPECT_TRUE(wire.isDeviceOpen());
  }
  EXPECT_FALSE(wire.isDeviceOpen());
  EXPECT_TRUE(wire.waitUntilDeviceCloses());
}

TEST(PtyPair, HangUpFailsTheReadOfTheDevice) {
  PtyPair wire;
  const NearEnd nearEnd(wire);
  wire.hangUp();
  std::uint8_t byte = 0;
  EXPECT_LE(::read(nearEnd.descriptor, &byte, 1), 0);
}

TEST(DeviceMapping, IsUndoneAtItsEnd) {
  const PtyPair wire;
  const DeviceMapping outer("COM1:=/outer");
  {
    const DeviceMapping inner("IPD1:", wire);
    EXPECT_EQ(getenv("IPODCTL_DEVICES"), "IPD1:=" + wire.path());
  }
  EXPECT_STREQ(getenv("IPODCTL_DEVICES"), "COM1:=/outer");
}

}  // namespace
