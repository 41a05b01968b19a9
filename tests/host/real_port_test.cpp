// A pseudo-terminal does not have the output queue, the RTS line and the exclusive mode of a real
// port. This program replaces ioctl() and fstat(), so that the platform sees them. It also replaces
// read(), to count the reads that find nothing.
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <optional>
#include <utility>

#include "support/background_call.h"
#include "support/device_calls.h"
#include "support/pty_pair.h"

namespace {

enum class Rts { kNeverDriven, kLowered, kRaised };

/// Bytes in the queue; each query finds `drainedByLook` fewer than the previous one.
std::atomic<int> queued{0};
std::atomic<int> drainedByLook{0};
std::atomic<int> looks{0};
std::atomic<int> emptyReads{0};
std::atomic<Rts> rts{Rts::kNeverDriven};
std::atomic<bool> isExclusive{false};
std::atomic<bool> isRealPort{false};

void see(unsigned long request, void* argument) {
  if (request == TIOCOUTQ) {
    ++looks;
    *static_cast<int*>(argument) = queued.fetch_sub(drainedByLook);
  }
  if (request == TIOCEXCL) isExclusive = true;
  if (request != TIOCMBIS && request != TIOCMBIC) return;
  EXPECT_EQ(*static_cast<const int*>(argument), TIOCM_RTS);
  rts = request == TIOCMBIS ? Rts::kRaised : Rts::kLowered;
}

}  // namespace

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  const auto result = static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
  see(request, argument);
  // A driver may still report its queue after its line was closed.
  return request == TIOCOUTQ ? 0 : result;
}

extern "C" int fstat(int descriptor, struct stat* status) noexcept {
  constexpr unsigned kUsbSerialMajor = 188;
  const int result = fstatat(descriptor, "", status, AT_EMPTY_PATH);
  if (isRealPort) status->st_rdev = makedev(kUsbSerialMajor, 0);
  return result;
}

extern "C" ssize_t read(int descriptor, void* buffer, size_t count) {
  const ssize_t result = syscall(SYS_read, descriptor, buffer, count);
  if (result < 0 && errno == EAGAIN) ++emptyReads;
  return result;
}

namespace {

using host_test::BackgroundCall;
using host_test::DeviceMapping;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::PtyPair;

class OutputQueue : public testing::Test {
 protected:
  void SetUp() override {
    setQueue(0, 0);
    isRealPort = true;
    port = OwnedHandle(openDevice(u"COM1:"));
    isRealPort = false;
  }

  static void setQueue(int bytes, int drained) {
    queued = bytes;
    drainedByLook = drained;
  }

  // The result and the last error.
  using Flushed = std::pair<BOOL, DWORD>;

  BackgroundCall<Flushed> flushInBackground() const {
    return BackgroundCall<Flushed>([handle = port.get()] {
      const BOOL result = FlushFileBuffers(handle);
      return Flushed(result, GetLastError());
    });
  }

  PtyPair wire;
  DeviceMapping devices{"COM1:", wire};
  OwnedHandle port{nullptr};
};

TEST_F(OutputQueue, IsWaitedForUntilItIsEmpty) {
  setQueue(30, 10);
  EXPECT_TRUE(FlushFileBuffers(port.get()));
  EXPECT_LE(queued, 0);
}

TEST_F(OutputQueue, KeepsAFlushWaitingWhileItIsStuck) {
  setQueue(1, 0);
  BackgroundCall<Flushed> flush = flushInBackground();
  EXPECT_TRUE(flush.waitUntilBlocked());
  EXPECT_FALSE(flush.isDone());
  setQueue(0, 0);
  const std::optional<Flushed> result = flush.result();
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->first);
}

TEST_F(OutputQueue, StuckDoesNotBlockAFlushAfterClose) {
  setQueue(1, 0);
  BackgroundCall<Flushed> flush = flushInBackground();
  EXPECT_TRUE(flush.waitUntilBlocked());
  EXPECT_TRUE(port.close());
  EXPECT_EQ(flush.result(), Flushed(FALSE, ERROR_OPERATION_ABORTED));
}

TEST_F(OutputQueue, StuckDoesNotBlockAFlushAfterHangUp) {
  setQueue(1, 0);
  BackgroundCall<Flushed> flush = flushInBackground();
  EXPECT_TRUE(flush.waitUntilBlocked());
  wire.hangUp();
  EXPECT_EQ(flush.result(), Flushed(FALSE, ERROR_GEN_FAILURE));
}

TEST(PseudoTerminal, IsNotAskedForItsOutputQueueBecauseItHasNone) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const OwnedHandle device(openDevice(u"IPD1:"));
  looks = 0;
  EXPECT_EQ(host_test::writeDevice(device.get(), {1}), host_test::success({1}));
  EXPECT_TRUE(FlushFileBuffers(device.get()));
  EXPECT_EQ(looks, 0);
}

TEST(StreamDevice, ReadsOnlyWhenBytesHaveArrived) {
  PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const OwnedHandle device(openDevice(u"IPD1:"));
  emptyReads = 0;
  BackgroundCall read([handle = device.get()] { return host_test::readDevice(handle, 100); });
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(wire.send({0x55}));
  EXPECT_EQ(read.result(), host_test::success({0x55}));
  EXPECT_EQ(emptyReads, 0);
}

TEST(ExclusiveMode, IsSetOnlyOnRealPortsBecauseAPseudoTerminalWouldKeepIt) {
  const PtyPair wire;
  const DeviceMapping devices("COM1:", wire);
  isExclusive = false;
  EXPECT_TRUE(OwnedHandle(openDevice(u"COM1:")).isOpen());
  EXPECT_FALSE(isExclusive);
  isRealPort = true;
  EXPECT_TRUE(OwnedHandle(openDevice(u"COM1:")).isOpen());
  EXPECT_TRUE(isExclusive);
  isRealPort = false;
}

TEST(RtsLine, FollowsTheState) {
  const PtyPair wire;
  const DeviceMapping devices("COM1:", wire);
  const OwnedHandle port(openDevice(u"COM1:"));
  rts = Rts::kNeverDriven;
  DCB state = {};
  ASSERT_TRUE(GetCommState(port.get(), &state));
  EXPECT_EQ(rts, Rts::kNeverDriven);
  state.fRtsControl = RTS_CONTROL_DISABLE;
  EXPECT_TRUE(SetCommState(port.get(), &state));
  EXPECT_EQ(rts, Rts::kLowered);
  state.fRtsControl = RTS_CONTROL_ENABLE;
  EXPECT_TRUE(SetCommState(port.get(), &state));
  EXPECT_EQ(rts, Rts::kRaised);
}

}  // namespace
