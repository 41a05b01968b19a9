// An iPod on the deterministic platform is pulled while a thread writes to it.
#include "virtual/virtual_ipod.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "support/bytes.h"
#include "support/small_library.h"
#include "virtual/virtual_world.h"

namespace virtual_platform {
namespace {

using std::chrono::milliseconds;

const Bytes kSixBytes(6, 0x00);

class VirtualIpodTest : public testing::Test {
 protected:
  VirtualIpodTest() { world.addDevice("IPD1:", cable); }

  static HANDLE openDevice() {
    return CreateFileW(u"IPD1:", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                       nullptr);
  }
  static DWORD writeSix(HANDLE device) {
    DWORD written = 0;
    WriteFile(device, kSixBytes.data(), 6, &written, nullptr);
    return written;
  }

  simulator::SimulatedIpod ipod{simulator::Personality{}, simulator::smallLibrary()};
  VirtualIpod cable{ipod, simulator::FrameKind::kUsb};
  VirtualWorld world{1};
};

TEST_F(VirtualIpodTest, AcceptsNoMoreBytesUntilItIsPulled) {
  cable.stopReading(9, milliseconds(700), Loss::kGone);
  EXPECT_EQ(world.run([&] {
    const HANDLE device = openDevice();
    EXPECT_EQ(writeSix(device), 6u);
    EXPECT_FALSE(cable.hasStoppedReading());
    EXPECT_EQ(writeSix(device), 3u);
    EXPECT_TRUE(cable.hasStoppedReading());
    EXPECT_GE(world.now(), milliseconds(700));
    EXPECT_LT(world.now(), milliseconds(701));
    EXPECT_FALSE(cable.isPlugged());
    CloseHandle(device);
  }),
            "");
}

TEST_F(VirtualIpodTest, LetsAFlushWaitForWhatItDoesNotTake) {
  cable.stopReading(6, milliseconds(700), Loss::kSilence);
  EXPECT_EQ(world.run([&] {
    const HANDLE device = openDevice();
    EXPECT_EQ(writeSix(device), 6u);
    EXPECT_LT(world.now(), milliseconds(1));
    EXPECT_TRUE(FlushFileBuffers(device));
    EXPECT_GE(world.now(), milliseconds(700));
    CloseHandle(device);
  }),
            "");
}

TEST_F(VirtualIpodTest, ReleasesAWaitingWriteWhenTheDeviceIsClosed) {
  cable.stopReading(0, milliseconds(700), Loss::kSilence);
  HANDLE device = nullptr;
  world.spawn([&] {
    Sleep(10);
    CloseHandle(device);
  });
  EXPECT_EQ(world.run([&] {
    device = openDevice();
    EXPECT_EQ(writeSix(device), 0u);
    EXPECT_EQ(GetLastError(), ERROR_OPERATION_ABORTED);
    EXPECT_LT(world.now(), milliseconds(20));
  }),
            "");
}

TEST_F(VirtualIpodTest, IsPulledAtAMomentUnlessItIsPluggedAgain) {
  cable.unplugAt(milliseconds(50), Loss::kReadError);
  EXPECT_EQ(world.run([&] {
    const HANDLE device = openDevice();
    BYTE byte = 0;
    DWORD count = 0;
    EXPECT_FALSE(ReadFile(device, &byte, 1, &count, nullptr));
    EXPECT_GE(world.now(), milliseconds(50));
    EXPECT_LT(world.now(), milliseconds(51));
    cable.unplugAt(milliseconds(60), Loss::kReadError);
    cable.plug(world.now());
    Sleep(20);
    EXPECT_EQ(writeSix(device), 6u);
    EXPECT_TRUE(cable.isPlugged());
    CloseHandle(device);
  }),
            "");
}

}  // namespace
}  // namespace virtual_platform
