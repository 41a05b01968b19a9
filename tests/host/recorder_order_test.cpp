// A writing thread that loses the processor directly after it has written. This program replaces
// write() for that.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>

#include "support/device_calls.h"
#include "support/eventually.h"
#include "support/pty_pair.h"
#include "support/recorded_trace.h"
#include "support/temporary_folder.h"

extern "C" ssize_t write(int descriptor, const void* bytes, size_t count) {
  constexpr useconds_t kAway = 5000;
  const ssize_t result = syscall(SYS_write, descriptor, bytes, count);
  if (isatty(descriptor) != 0) usleep(kAway);
  return result;
}

namespace {

using host_test::DeviceMapping;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::PtyPair;
using host_test::readDevice;
using host_test::success;
using host_test::writeDevice;

/// The other end answers at once, so that the reading thread is faster than the writing one.
TEST(Recorder, RecordsARequestBeforeItsAnswer) {
  constexpr size_t kRequests = 20;
  const simulator::TemporaryFolder folder;
  const std::string path = (folder / "car.trace").string();
  PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  setenv("IPODCTL_TRACE", path.c_str(), 1);
  OwnedHandle device(openDevice(u"IPD1:"));
  std::atomic<size_t> answers{0};
  std::thread reader([&answers, handle = device.get()] {
    for (; answers < kRequests; ++answers)
      EXPECT_EQ(readDevice(handle, 1), success({0xBB}));
  });
  for (size_t i = 0; i < kRequests; ++i) {
    std::thread ipod([&wire] {
      EXPECT_EQ(wire.receive(1), Bytes{0xAA});
      EXPECT_TRUE(wire.send({0xBB}));
    });
    EXPECT_EQ(writeDevice(device.get(), {0xAA}), success({0xAA}));
    ipod.join();
    EXPECT_TRUE(session::eventually([&] { return answers > i; }));
  }
  reader.join();
  EXPECT_TRUE(device.close());
  unsetenv("IPODCTL_TRACE");
  openDevice(u"none");
  const recorded::Lines lines = recorded::textsOf(path);
  ASSERT_EQ(lines.size(), 2 * kRequests + 2);
  for (size_t i = 1; i + 1 < lines.size(); i += 2) {
    ASSERT_EQ(lines[i], "IPD1: > AA");
    ASSERT_EQ(lines[i + 1], "IPD1: < BB");
  }
}

}  // namespace
