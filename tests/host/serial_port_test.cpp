#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <cstring>
#include <ostream>

#include "support/background_call.h"
#include "support/device_calls.h"
#include "support/pty_pair.h"

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
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// Much longer than any test waits.
constexpr DWORD kLong = 60000;
constexpr auto kGenerous = std::chrono::seconds(5);

/// More than a pseudo-terminal buffers for an end that does not read.
constexpr std::size_t kTooMuch = 1000000;

class SerialPort : public testing::Test {
 protected:
  void setTimeouts(COMMTIMEOUTS timeouts) const {
    ASSERT_TRUE(SetCommTimeouts(port.get(), &timeouts));
  }

  // Sets the time-outs of reads.
  void setReadTimeouts(DWORD interval, DWORD multiplier, DWORD constant) const {
    setTimeouts({interval, multiplier, constant, 0, 0});
  }

  BackgroundCall<Transfer> readInBackground(DWORD count) const {
    return BackgroundCall<Transfer>(
        [handle = port.get(), count] { return readDevice(handle, count); });
  }

  BackgroundCall<Transfer> writeTooMuchInBackground() const {
    return BackgroundCall<Transfer>(
        [handle = port.get()] { return writeDevice(handle, Bytes(kTooMuch, 0x55)); });
  }

  PtyPair wire;
  DeviceMapping devices{"COM1:", wire};
  OwnedHandle port{openDevice(u"COM1:")};
};

TEST_F(SerialPort, WithoutTimeoutsReadWaitsForEveryByte) {
  setReadTimeouts(0, 0, 0);
  EXPECT_TRUE(wire.sendAndArrive({1}));
  BackgroundCall<Transfer> read = readInBackground(3);
  EXPECT_TRUE(wire.send({2}));
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_FALSE(read.isDone());
  EXPECT_TRUE(wire.send({3, 4}));
  EXPECT_EQ(read.result(), success({1, 2, 3}));
}

TEST_F(SerialPort, WithIntervalMaximumAndNoTotalsReadReturnsAtOnceWithNothing) {
  setReadTimeouts(MAXDWORD, 0, 0);
  const auto start = Clock::now();
  for (int i = 0; i < 1000; ++i)
    ASSERT_EQ(readDevice(port.get(), 10), success({}));
  EXPECT_LT(Clock::now() - start, kGenerous);
}

TEST_F(SerialPort, WithIntervalMaximumAndNoTotalsReadReturnsAtOnceWithWhatHasArrived) {
  setReadTimeouts(MAXDWORD, 0, 0);
  EXPECT_TRUE(wire.sendAndArrive({1, 2, 3}));
  EXPECT_EQ(readDevice(port.get(), 2), success({1, 2}));
  EXPECT_EQ(readDevice(port.get(), 10), success({3}));
  EXPECT_EQ(readDevice(port.get(), 10), success({}));
}

/// Waits 50 ms.
TEST_F(SerialPort, WithIntervalAndMultiplierMaximumReadWaitsTheConstantForAByte) {
  setReadTimeouts(MAXDWORD, MAXDWORD, 50);
  const auto start = Clock::now();
  EXPECT_EQ(readDevice(port.get(), 10), success({}));
  EXPECT_GE(Clock::now() - start, milliseconds(50));
  EXPECT_LT(Clock::now() - start, kGenerous);
}

TEST_F(SerialPort, WithIntervalAndMultiplierMaximumReadReturnsWithTheFirstByte) {
  setReadTimeouts(MAXDWORD, MAXDWORD, kLong);
  BackgroundCall<Transfer> read = readInBackground(10);
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(wire.send({1}));
  EXPECT_EQ(read.result(), success({1}));
}

TEST_F(SerialPort, WithIntervalMaximumAndTotalsReadReturnsWithTheFirstByte) {
  setReadTimeouts(MAXDWORD, 0, kLong);
  BackgroundCall<Transfer> read = readInBackground(10);
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(wire.send({1}));
  EXPECT_EQ(read.result(), success({1}));
}

/// Waits 60 ms: 10 for each of 3 bytes and 30.
TEST_F(SerialPort, TotalReadTimeoutGrowsWithTheRequestedBytes) {
  setReadTimeouts(0, 10, 30);
  const auto start = Clock::now();
  EXPECT_EQ(readDevice(port.get(), 3), success({}));
  EXPECT_GE(Clock::now() - start, milliseconds(60));
  EXPECT_LT(Clock::now() - start, kGenerous);
}

/// Waits 50 ms.
TEST_F(SerialPort, TotalReadTimeoutReturnsWhatHasArrived) {
  setReadTimeouts(0, 0, 50);
  EXPECT_TRUE(wire.sendAndArrive({1, 2}));
  const auto start = Clock::now();
  EXPECT_EQ(readDevice(port.get(), 3), success({1, 2}));
  EXPECT_GE(Clock::now() - start, milliseconds(50));
  EXPECT_LT(Clock::now() - start, kGenerous);
}

TEST_F(SerialPort, TotalReadTimeoutDoesNotDelayACompleteRead) {
  setReadTimeouts(0, 0, kLong);
  EXPECT_TRUE(wire.sendAndArrive({1, 2}));
  EXPECT_EQ(readDevice(port.get(), 2), success({1, 2}));
}

TEST_F(SerialPort, GreatestTotalReadTimeoutDoesNotOverflow) {
  setReadTimeouts(0, MAXDWORD, MAXDWORD);
  BackgroundCall<Transfer> read = readInBackground(1000000);
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(port.close());
  EXPECT_EQ(read.result(), failure(ERROR_OPERATION_ABORTED));
}

/// Waits 50 ms.
TEST_F(SerialPort, IntervalTimeoutEndsAReadAfterThePause) {
  setReadTimeouts(50, 0, 0);
  EXPECT_TRUE(wire.sendAndArrive({1, 2}));
  const auto start = Clock::now();
  EXPECT_EQ(readDevice(port.get(), 10), success({1, 2}));
  EXPECT_GE(Clock::now() - start, milliseconds(50));
  EXPECT_LT(Clock::now() - start, kGenerous);
}

/// Waits 1 ms again and again, 20 times.
TEST_F(SerialPort, IntervalTimeoutDoesNotRunBeforeTheFirstByte) {
  setReadTimeouts(1, 0, 0);
  BackgroundCall<Transfer> read = readInBackground(10);
  EXPECT_TRUE(read.waitUntilBlocked());
  Sleep(20);
  EXPECT_FALSE(read.isDone());
  EXPECT_TRUE(wire.send({1}));
  EXPECT_EQ(read.result(), success({1}));
}

/// Waits 50 ms, not the interval.
TEST_F(SerialPort, TotalReadTimeoutEndsAReadWithinALongInterval) {
  setReadTimeouts(kLong, 0, 50);
  EXPECT_TRUE(wire.sendAndArrive({1}));
  EXPECT_EQ(readDevice(port.get(), 10), success({1}));
}

/// Waits 80 ms.
TEST_F(SerialPort, TotalWriteTimeoutReturnsTheNumberOfWrittenBytes) {
  setTimeouts({0, 0, 0, 0, 80});
  const auto start = Clock::now();
  const Transfer write = writeDevice(port.get(), Bytes(kTooMuch, 0x55));
  EXPECT_GE(Clock::now() - start, milliseconds(80));
  EXPECT_LT(Clock::now() - start, kGenerous);
  EXPECT_TRUE(write.result);
  EXPECT_GT(write.bytes.size(), 0u);
  EXPECT_LT(write.bytes.size(), kTooMuch);
  EXPECT_EQ(wire.receive(write.bytes.size()), write.bytes);
}

TEST_F(SerialPort, WithoutWriteTimeoutsWriteWaits) {
  BackgroundCall<Transfer> write = writeTooMuchInBackground();
  EXPECT_TRUE(write.waitUntilBlocked());
  EXPECT_FALSE(write.isDone());
  EXPECT_EQ(wire.receive(kTooMuch), Bytes(kTooMuch, 0x55));
  EXPECT_EQ(write.result(), success(Bytes(kTooMuch, 0x55)));
}

TEST_F(SerialPort, CloseWakesAReadThatAlreadyHasSomeBytes) {
  setReadTimeouts(0, 0, 0);
  EXPECT_TRUE(wire.sendAndArrive({1}));
  BackgroundCall<Transfer> read = readInBackground(2);
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(port.close());
  EXPECT_EQ(read.result(), failure(ERROR_OPERATION_ABORTED));
}

TEST_F(SerialPort, HangUpDuringAReadReturnsItsBytesAndFailsTheNext) {
  setReadTimeouts(0, 0, 0);
  EXPECT_TRUE(wire.sendAndArrive({1, 2}));
  BackgroundCall<Transfer> read = readInBackground(3);
  EXPECT_TRUE(read.waitUntilBlocked());
  wire.hangUp();
  EXPECT_EQ(read.result(), success({1, 2}));
  EXPECT_EQ(readDevice(port.get(), 3), failure(ERROR_GEN_FAILURE));
}

TEST_F(SerialPort, HangUpFailsAReadThatReturnsAtOnce) {
  setReadTimeouts(MAXDWORD, 0, 0);
  EXPECT_EQ(readDevice(port.get(), 1), success({}));
  wire.hangUp();
  EXPECT_EQ(readDevice(port.get(), 1), failure(ERROR_GEN_FAILURE));
}

TEST_F(SerialPort, HangUpFailsWritesAndSettings) {
  DCB state = {};
  ASSERT_TRUE(GetCommState(port.get(), &state));
  wire.hangUp();
  EXPECT_EQ(writeDevice(port.get(), {1}), failure(ERROR_GEN_FAILURE));
  EXPECT_FALSE(GetCommState(port.get(), &state));
  EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
  EXPECT_FALSE(SetCommState(port.get(), &state));
  EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
}

TEST_F(SerialPort, TimeoutsAreZeroAtFirstAndReadBackAsSet) {
  COMMTIMEOUTS timeouts = {1, 1, 1, 1, 1};
  EXPECT_TRUE(GetCommTimeouts(port.get(), &timeouts));
  const COMMTIMEOUTS none = {};
  EXPECT_EQ(std::memcmp(&timeouts, &none, sizeof none), 0);
  COMMTIMEOUTS some = {1, 2, 3, 4, 5};
  EXPECT_TRUE(SetCommTimeouts(port.get(), &some));
  EXPECT_TRUE(GetCommTimeouts(port.get(), &timeouts));
  EXPECT_EQ(std::memcmp(&timeouts, &some, sizeof some), 0);
}

TEST_F(SerialPort, TimeoutsAllMaximumAreRefused) {
  COMMTIMEOUTS timeouts = {MAXDWORD, MAXDWORD, MAXDWORD, 0, 0};
  EXPECT_FALSE(SetCommTimeouts(port.get(), &timeouts));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(SerialPort, StateDescribesARawLine) {
  termios line = wire.settings();
  cfsetspeed(&line, B19200);
  wire.changeSettings(line);
  DCB state;
  std::memset(&state, 0xff, sizeof state);
  EXPECT_TRUE(GetCommState(port.get(), &state));
  EXPECT_EQ(state.DCBlength, 28u);
  EXPECT_EQ(state.BaudRate, 19200u);
  EXPECT_EQ(state.ByteSize, 8);
  EXPECT_EQ(state.Parity, NOPARITY);
  EXPECT_EQ(state.StopBits, ONESTOPBIT);
  EXPECT_EQ(state.fBinary, 1u);
  EXPECT_EQ(state.fParity, 0u);
  EXPECT_EQ(state.fRtsControl, RTS_CONTROL_ENABLE);
  EXPECT_EQ(state.fDtrControl, DTR_CONTROL_ENABLE);
  EXPECT_EQ(state.fOutxCtsFlow | state.fOutxDsrFlow | state.fOutX | state.fInX, 0u);
}

TEST_F(SerialPort, StateReadsBackAsSet) {
  DCB state = {};
  ASSERT_TRUE(GetCommState(port.get(), &state));
  state.BaudRate = CBR_57600;
  state.ByteSize = 8;
  state.Parity = NOPARITY;
  state.StopBits = TWOSTOPBITS;
  state.fRtsControl = RTS_CONTROL_DISABLE;
  EXPECT_TRUE(SetCommState(port.get(), &state));
  DCB now = {};
  EXPECT_TRUE(GetCommState(port.get(), &now));
  EXPECT_EQ(std::memcmp(&now, &state, sizeof now), 0);
  const termios line = wire.settings();
  EXPECT_EQ(cfgetospeed(&line), speed_t{B57600});
}

TEST_F(SerialPort, SettingTheStateKeepsTheLineRaw) {
  DCB state = {};
  ASSERT_TRUE(GetCommState(port.get(), &state));
  state.BaudRate = 9600;
  ASSERT_TRUE(SetCommState(port.get(), &state));
  EXPECT_EQ(wire.settings().c_lflag & (ICANON | ECHO), 0u);
  EXPECT_TRUE(wire.send({0x03, 0x0d, 0x11}));
  EXPECT_EQ(readDevice(port.get(), 3), success({0x03, 0x0d, 0x11}));
}

/// Changes a valid state into one that a pseudo-terminal cannot have.
struct Spoil {
  const char* name;
  void (*change)(DCB&);
};

void PrintTo(const Spoil& spoil, std::ostream* out) { *out << spoil.name; }

class SerialPortState : public SerialPort, public testing::WithParamInterface<Spoil> {};

TEST_P(SerialPortState, ThatThePortCannotHaveIsRefusedAndChangesNothing) {
  DCB before = {};
  ASSERT_TRUE(GetCommState(port.get(), &before));
  DCB state = before;
  state.BaudRate = 115200;
  state.fRtsControl = RTS_CONTROL_DISABLE;
  GetParam().change(state);
  EXPECT_FALSE(SetCommState(port.get(), &state));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  DCB now = {};
  ASSERT_TRUE(GetCommState(port.get(), &now));
  EXPECT_EQ(std::memcmp(&now, &before, sizeof now), 0);
}

INSTANTIATE_TEST_SUITE_P(
    With, SerialPortState,
    testing::Values(Spoil{"UnusualSpeed", [](DCB& state) { state.BaudRate = 57601; }},
                    Spoil{"NoSpeed", [](DCB& state) { state.BaudRate = 0; }},
                    Spoil{"FourBits", [](DCB& state) { state.ByteSize = 4; }},
                    Spoil{"SevenBits", [](DCB& state) { state.ByteSize = 7; }},
                    Spoil{"EvenParity", [](DCB& state) { state.Parity = EVENPARITY; }},
                    Spoil{"UnknownParity", [](DCB& state) { state.Parity = 5; }},
                    Spoil{"OneAndAHalfStopBits", [](DCB& state) { state.StopBits = 1; }},
                    Spoil{"RtsHandshake", [](DCB& state) { state.fRtsControl = 2; }},
                    Spoil{"CtsFlow", [](DCB& state) { state.fOutxCtsFlow = 1; }},
                    Spoil{"XonXoffFlow", [](DCB& state) { state.fInX = 1; }},
                    Spoil{"NoBinaryMode", [](DCB& state) { state.fBinary = 0; }}));

TEST_F(SerialPort, RefusesMissingRecords) {
  EXPECT_FALSE(GetCommState(port.get(), nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(SetCommState(port.get(), nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(GetCommTimeouts(port.get(), nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(SetCommTimeouts(port.get(), nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST_F(SerialPort, NewTimeoutsDoNotAffectARunningRead) {
  setReadTimeouts(0, 0, 0);
  EXPECT_TRUE(wire.sendAndArrive({1}));
  BackgroundCall<Transfer> read = readInBackground(2);
  EXPECT_TRUE(read.waitUntilBlocked());
  setReadTimeouts(MAXDWORD, 0, 0);
  EXPECT_FALSE(read.isDone());
  EXPECT_TRUE(wire.send({2}));
  EXPECT_EQ(read.result(), success({1, 2}));
}

}  // namespace
