// The devices of the deterministic platform keep the contract of real ones.
#include <desk.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/bytes.h"
#include "virtual/failures.h"
#include "virtual/virtual_world.h"

namespace virtual_platform {
namespace {

using std::chrono::milliseconds;

// Delivers bytes at a certain time and accepts a few bytes.
class ScriptedDevice final : public VirtualDevice {
 public:
  bool canBeOpened() const override { return isThere; }
  void opened(Time) override {}
  void closed(Time) override { ++closes; }
  Readiness readReadiness(Time now) override {
    if (!toRead.empty() && now >= readableFrom) return Readiness::kReady;
    return atEnd;
  }
  Readiness writeReadiness(Time) override {
    return written.size() < room ? Readiness::kReady : Readiness::kWaits;
  }
  std::size_t read(Time, BYTE* buffer, std::size_t count) override {
    const std::size_t some = std::min(count, toRead.size());
    std::copy_n(toRead.begin(), some, buffer);
    toRead.erase(toRead.begin(), toRead.begin() + static_cast<std::ptrdiff_t>(some));
    return some;
  }
  std::size_t write(Time, const BYTE* bytes, std::size_t count) override {
    const std::size_t some = std::min(count, room - written.size());
    written.insert(written.end(), bytes, bytes + some);
    return some;
  }
  std::optional<Time> nextWake() const override { return readableFrom; }

  bool isThere = true;
  Bytes toRead;
  Time readableFrom{0};
  Readiness atEnd = Readiness::kWaits;
  Bytes written;
  std::size_t room = 1000;
  int closes = 0;
};

HANDLE openDevice(LPCWSTR name = u"IPD1:") {
  return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

struct Moved {
  BOOL result = FALSE;
  DWORD error = ERROR_SUCCESS;
  DWORD count = 0;
};

bool operator==(const Moved& left, const Moved& right) {
  return left.result == right.result && left.error == right.error && left.count == right.count;
}

std::ostream& operator<<(std::ostream& out, const Moved& moved) {
  return out << (moved.result != FALSE) << " error " << moved.error << ", " << moved.count
             << " bytes";
}

Moved readSome(HANDLE device, DWORD count) {
  Bytes buffer(count);
  Moved moved;
  SetLastError(ERROR_SUCCESS);
  moved.result = ReadFile(device, buffer.data(), count, &moved.count, nullptr);
  moved.error = GetLastError();
  return moved;
}

Moved writeBytes(HANDLE device, const Bytes& bytes) {
  Moved moved;
  SetLastError(ERROR_SUCCESS);
  moved.result =
      WriteFile(device, bytes.data(), static_cast<DWORD>(bytes.size()), &moved.count, nullptr);
  moved.error = GetLastError();
  return moved;
}

class VirtualDeviceTest : public testing::TestWithParam<std::uint64_t> {
 protected:
  VirtualDeviceTest() {
    world.addDevice("IPD1:", device);
    world.addDevice("COM1:", port);
  }
  void run(const std::function<void()>& host) {
    const unsigned before = deskOpenHandles();
    EXPECT_EQ(world.run(host), "");
    EXPECT_EQ(deskOpenHandles(), before);
  }

  ScriptedDevice device;
  ScriptedDevice port;
  VirtualWorld world{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Seed, VirtualDeviceTest, testing::Range<std::uint64_t>(1, 6));

TEST_P(VirtualDeviceTest, OpensByNameWhateverTheCaseAndUnshared) {
  run([&] {
    EXPECT_EQ(openDevice(u"IPD2:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    const HANDLE handle = openDevice(u"ipd1:");
    EXPECT_NE(handle, INVALID_HANDLE_VALUE);
    EXPECT_EQ(openDevice(), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
    EXPECT_TRUE(CloseHandle(handle));
    EXPECT_FALSE(CloseHandle(handle));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(device.closes, 1);
    EXPECT_TRUE(CloseHandle(openDevice()));
    device.isThere = false;
    EXPECT_EQ(openDevice(), INVALID_HANDLE_VALUE);
  });
}

TEST_P(VirtualDeviceTest, ShowsTheFirstBytesThatWereMoved) {
  device.toRead = {0x55, 0x02};
  run([&] {
    const HANDLE handle = openDevice();
    readSome(handle, 9);
    writeBytes(handle, {0x00, 0xF9});
    writeBytes(handle, Bytes(65, 0xAA));
    CloseHandle(handle);
  });
  std::string longLine = "4 host 1: WriteFile(device 1, 65): error 0, 65 bytes";
  for (int i = 0; i < 64; ++i)
    longLine += " AA";
  EXPECT_EQ(world.trace()[1], "2 host 1: ReadFile(device 1, 9): error 0, 2 bytes 55 02");
  EXPECT_EQ(world.trace()[2], "3 host 1: WriteFile(device 1, 2): error 0, 2 bytes 00 F9");
  EXPECT_EQ(world.trace()[3], longLine + " ...");
}

TEST_P(VirtualDeviceTest, ReadWaitsForAByteAndDeliversWhatThereIs) {
  device.toRead = {0x55, 0x02, 0x00};
  device.readableFrom = milliseconds(700);
  run([&] {
    const HANDLE handle = openDevice();
    EXPECT_EQ(readSome(handle, 2), (Moved{TRUE, ERROR_SUCCESS, 2}));
    EXPECT_GE(world.now(), milliseconds(700));
    EXPECT_LT(world.now(), milliseconds(701));
    EXPECT_EQ(readSome(handle, 2), (Moved{TRUE, ERROR_SUCCESS, 1}));
    CloseHandle(handle);
  });
}

TEST_P(VirtualDeviceTest, FailureFollowsTheBytes) {
  device.toRead = {0x55};
  device.atEnd = Readiness::kFailed;
  run([&] {
    const HANDLE handle = openDevice();
    EXPECT_EQ(readSome(handle, 10), (Moved{TRUE, ERROR_SUCCESS, 1}));
    EXPECT_EQ(readSome(handle, 10), (Moved{FALSE, ERROR_GEN_FAILURE, 0}));
    CloseHandle(handle);
  });
}

TEST_P(VirtualDeviceTest, CallFailsOnceOnDemand) {
  device.toRead = {0x55, 0x02};
  failuresOf("ReadFile").arm({1, false});
  run([&] {
    const HANDLE handle = openDevice();
    EXPECT_EQ(readSome(handle, 1), (Moved{TRUE, ERROR_SUCCESS, 1}));
    EXPECT_EQ(readSome(handle, 1), (Moved{FALSE, ERROR_GEN_FAILURE, 0}));
    EXPECT_EQ(readSome(handle, 1), (Moved{TRUE, ERROR_SUCCESS, 1}));
    CloseHandle(handle);
  });
  disarmAllFailures();
}

TEST_P(VirtualDeviceTest, CallFailsFromThenOnUntilItIsMended) {
  failuresOf("CreateFileW").arm({0, true});
  run([&] {
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(openDevice(), INVALID_HANDLE_VALUE);
      EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    }
    disarmAllFailures();
    EXPECT_TRUE(CloseHandle(openDevice()));
  });
}

TEST_P(VirtualDeviceTest, EndOfFileIsAReadOfNothing) {
  device.atEnd = Readiness::kEnded;
  run([&] {
    const HANDLE handle = openDevice();
    EXPECT_EQ(readSome(handle, 10), (Moved{TRUE, ERROR_SUCCESS, 0}));
    CloseHandle(handle);
  });
}

TEST_P(VirtualDeviceTest, CloseReleasesAReadAndAWriteAndTheNextWrite) {
  HANDLE handle = nullptr;
  std::vector<Moved> results(3);
  device.room = 4;
  world.spawn([&] {
    Sleep(10);
    results[0] = readSome(handle, 1);
  });
  world.spawn([&] {
    Sleep(10);
    results[1] = writeBytes(handle, Bytes(10));
  });
  world.spawn([&] {
    Sleep(20);
    results[2] = writeBytes(handle, Bytes(10));
  });
  run([&] {
    handle = openDevice();
    Sleep(100);
    EXPECT_TRUE(CloseHandle(handle));
    EXPECT_EQ(device.closes, 1);
  });
  EXPECT_EQ(results[0], (Moved{FALSE, ERROR_OPERATION_ABORTED, 0}));
  EXPECT_EQ(results[1], (Moved{FALSE, ERROR_OPERATION_ABORTED, 4}));
  EXPECT_EQ(results[2], (Moved{FALSE, ERROR_OPERATION_ABORTED, 0}));
}

TEST_P(VirtualDeviceTest, WritesOfTwoThreadsDoNotMix) {
  HANDLE handle = nullptr;
  for (const BYTE value : {BYTE{1}, BYTE{2}}) {
    world.spawn([&handle, value] {
      Sleep(10);
      EXPECT_EQ(writeBytes(handle, Bytes(300, value)), (Moved{TRUE, ERROR_SUCCESS, 300}));
    });
  }
  run([&] {
    handle = openDevice();
    Sleep(100);
    CloseHandle(handle);
  });
  ASSERT_EQ(device.written.size(), 600u);
  EXPECT_EQ(std::count(device.written.begin(), device.written.begin() + 300, device.written[0]),
            300);
}

TEST_P(VirtualDeviceTest, PortKeepsItsSettings) {
  run([&] {
    const HANDLE handle = openDevice(u"COM1:");
    DCB state = {};
    EXPECT_TRUE(GetCommState(handle, &state));
    EXPECT_EQ(state.BaudRate, 9600u);
    state.BaudRate = CBR_57600;
    state.fRtsControl = RTS_CONTROL_DISABLE;
    EXPECT_TRUE(SetCommState(handle, &state));
    state = {};
    EXPECT_TRUE(GetCommState(handle, &state));
    EXPECT_EQ(state.BaudRate, 57600u);
    EXPECT_EQ(state.fRtsControl, RTS_CONTROL_DISABLE);
    state.BaudRate = 57601;
    EXPECT_FALSE(SetCommState(handle, &state));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    CloseHandle(handle);
  });
}

TEST_P(VirtualDeviceTest, PortReadFollowsItsTimeouts) {
  run([&] {
    const HANDLE handle = openDevice(u"COM1:");
    COMMTIMEOUTS timeouts = {};
    timeouts.ReadTotalTimeoutConstant = 250;
    EXPECT_TRUE(SetCommTimeouts(handle, &timeouts));
    EXPECT_EQ(readSome(handle, 4), (Moved{TRUE, ERROR_SUCCESS, 0}));
    EXPECT_GE(world.now(), milliseconds(250));
    timeouts.ReadIntervalTimeout = MAXDWORD;
    timeouts.ReadTotalTimeoutConstant = 0;
    EXPECT_TRUE(SetCommTimeouts(handle, &timeouts));
    port.toRead = {1, 2};
    EXPECT_EQ(readSome(handle, 4), (Moved{TRUE, ERROR_SUCCESS, 2}));
    EXPECT_EQ(readSome(handle, 4), (Moved{TRUE, ERROR_SUCCESS, 0}));
    EXPECT_LT(world.now(), milliseconds(260));
    CloseHandle(handle);
  });
}

TEST_P(VirtualDeviceTest, StreamDeviceHasNoSerialSettings) {
  run([&] {
    const HANDLE handle = openDevice();
    DCB state = {};
    EXPECT_FALSE(GetCommState(handle, &state));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    CloseHandle(handle);
  });
}

}  // namespace
}  // namespace virtual_platform
