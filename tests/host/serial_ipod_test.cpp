// IPD1: mapped to a serial line: "serial:PATH@SPEED".
#include <gtest/gtest.h>
#include <termios.h>
#include <windows.h>

#include <cstdlib>

#include "support/background_call.h"
#include "support/device_calls.h"
#include "support/pty_pair.h"
#include "support/recorded_trace.h"
#include "support/temporary_folder.h"

namespace serial_ipod {
namespace {

using host_test::BackgroundCall;
using host_test::DeviceMapping;
using host_test::failure;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::PtyPair;
using host_test::readDevice;
using host_test::success;
using host_test::Transfer;
using host_test::writeDevice;

class SerialIpod : public testing::Test {
 protected:
  PtyPair wire;
  DeviceMapping devices{"IPD1:=serial:" + wire.path() + "@57600"};
  OwnedHandle device{openDevice(u"IPD1:")};
};

TEST_F(SerialIpod, SetsTheSpeedOfTheLine) {
  ASSERT_TRUE(device.isOpen());
  const termios settings = wire.settings();
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B57600});
  EXPECT_EQ(cfgetispeed(&settings), speed_t{B57600});
  EXPECT_EQ(settings.c_cflag & (CSIZE | PARENB | CSTOPB), tcflag_t{CS8});
}

TEST_F(SerialIpod, WritesASyncByteBeforeEachFrame) {
  EXPECT_EQ(writeDevice(device.get(), {0x55, 0x02, 0x00, 0x07, 0xF7}),
            success({0x55, 0x02, 0x00, 0x07, 0xF7}));
  EXPECT_EQ(writeDevice(device.get(), {0x55, 0x02}), success({0x55, 0x02}));
  EXPECT_EQ(writeDevice(device.get(), {0x55, 0xFF, 0xAA}), success({0x55, 0xFF, 0xAA}));
  EXPECT_TRUE(FlushFileBuffers(device.get()));
  EXPECT_EQ(wire.receive(12),
            (Bytes{0xFF, 0x55, 0x02, 0x00, 0x07, 0xF7, 0xFF, 0x55, 0x02, 0x55, 0xFF, 0xAA}));
}

TEST_F(SerialIpod, ReadsFramesWithoutTheSyncByte) {
  EXPECT_TRUE(wire.sendAndArrive({0xFF, 0x55, 0x03, 0x00, 0xFF, 0x55, 0xA9}));
  EXPECT_EQ(readDevice(device.get(), 100), success({0x55, 0x03, 0x00, 0xFF, 0x55, 0xA9}));
}

TEST_F(SerialIpod, ReadsAtMostTheRequestedBytesAndKeepsTheRest) {
  EXPECT_TRUE(wire.sendAndArrive({0xFF, 0x55, 0x02, 0x00, 0x07, 0xF7}));
  EXPECT_EQ(readDevice(device.get(), 1), success({0x55}));
  EXPECT_EQ(readDevice(device.get(), 2), success({0x02, 0x00}));
  EXPECT_EQ(readDevice(device.get(), 9), success({0x07, 0xF7}));
}

TEST_F(SerialIpod, WaitsAfterASyncByte) {
  EXPECT_TRUE(wire.sendAndArrive({0x13, 0xFF}));
  EXPECT_EQ(readDevice(device.get(), 100), success({0x13}));
  BackgroundCall<Transfer> read([handle = device.get()] { return readDevice(handle, 100); });
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_FALSE(read.isDone());
  EXPECT_TRUE(wire.send({0x55}));
  EXPECT_EQ(read.result(), success({0x55}));
}

TEST_F(SerialIpod, ReadsTheLastNoiseBeforeTheLineFails) {
  EXPECT_TRUE(wire.sendAndArrive({0x13, 0xFF}));
  EXPECT_EQ(readDevice(device.get(), 100), success({0x13}));
  wire.hangUp();
  EXPECT_EQ(readDevice(device.get(), 100), success({0xFF}));
  EXPECT_EQ(readDevice(device.get(), 100), failure(ERROR_GEN_FAILURE));
  EXPECT_EQ(writeDevice(device.get(), {0x55}), failure(ERROR_GEN_FAILURE));
}

TEST_F(SerialIpod, CloseWakesARead) {
  BackgroundCall<Transfer> read([handle = device.get()] { return readDevice(handle, 100); });
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(device.close());
  EXPECT_EQ(read.result(), failure(ERROR_OPERATION_ABORTED));
  EXPECT_TRUE(OwnedHandle(openDevice(u"IPD1:")).isOpen());
}

TEST_F(SerialIpod, BeginsAnewWhenItIsOpenedAgain) {
  EXPECT_EQ(writeDevice(device.get(), {0x55, 0x05, 0x00}), success({0x55, 0x05, 0x00}));
  EXPECT_EQ(wire.receive(4), (Bytes{0xFF, 0x55, 0x05, 0x00}));
  EXPECT_TRUE(device.close());
  device = OwnedHandle(openDevice(u"IPD1:"));
  EXPECT_EQ(writeDevice(device.get(), {0x55}), success({0x55}));
  EXPECT_EQ(wire.receive(2), (Bytes{0xFF, 0x55}));
}

/// What is wrong with a sync byte can only be seen in what was on the line.
TEST_F(SerialIpod, IsRecordedAsItIsOnTheLine) {
  const simulator::TemporaryFolder folder;
  const std::string path = (folder / "car.trace").string();
  setenv("IPODCTL_TRACE", path.c_str(), 1);
  EXPECT_TRUE(device.close());
  device = OwnedHandle(openDevice(u"IPD1:"));
  writeDevice(device.get(), {0x55, 0x02, 0x00, 0x07, 0xF7});
  EXPECT_TRUE(wire.sendAndArrive({0xFF, 0x55, 0x01}));
  readDevice(device.get(), 100);
  EXPECT_TRUE(device.close());
  unsetenv("IPODCTL_TRACE");
  openDevice(u"none");
  EXPECT_EQ(recorded::textsOf(path),
            (recorded::Lines{"# IPD1: open ok", "IPD1: > FF 55 02 00 07 F7", "IPD1: < FF 55 01",
                             "# IPD1: close"}));
}

}  // namespace
}  // namespace serial_ipod
