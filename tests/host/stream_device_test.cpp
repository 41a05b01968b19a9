#include <gtest/gtest.h>
#include <windows.h>

#include <optional>
#include <thread>

#include "support/background_call.h"
#include "support/device_calls.h"
#include "support/pty_pair.h"

namespace stream_device {
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

/// More than a pseudo-terminal buffers for an end that does not read.
constexpr std::size_t kTooMuch = 1000000;

class StreamDevice : public testing::Test {
 protected:
  BackgroundCall<Transfer> readInBackground(DWORD count) const {
    return BackgroundCall<Transfer>(
        [handle = device.get(), count] { return readDevice(handle, count); });
  }

  BackgroundCall<Transfer> writeInBackground(std::size_t count, std::uint8_t value = 0x55) const {
    return BackgroundCall<Transfer>([handle = device.get(), bytes = Bytes(count, value)] {
      return writeDevice(handle, bytes);
    });
  }

  PtyPair wire;
  DeviceMapping devices{"IPD1:", wire};
  OwnedHandle device{openDevice(u"IPD1:")};
};

TEST_F(StreamDevice, ReadWaitsForAByte) {
  BackgroundCall<Transfer> read = readInBackground(100);
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_FALSE(read.isDone());
  EXPECT_TRUE(wire.send({0x55}));
  EXPECT_EQ(read.result(), success({0x55}));
}

TEST_F(StreamDevice, ReadReturnsAtMostTheRequestedBytesAndKeepsTheRest) {
  EXPECT_TRUE(wire.send({1, 2, 3, 4, 5}));
  EXPECT_EQ(readDevice(device.get(), 1), success({1}));
  EXPECT_EQ(readDevice(device.get(), 1), success({2}));
  Bytes rest;
  while (rest.size() < 3) {
    const Transfer part = readDevice(device.get(), 100);
    ASSERT_TRUE(part.result);
    rest.insert(rest.end(), part.bytes.begin(), part.bytes.end());
  }
  EXPECT_EQ(rest, (Bytes{3, 4, 5}));
}

TEST_F(StreamDevice, ReadOfNothingReturnsAtOnce) {
  DWORD read = 7;
  EXPECT_TRUE(ReadFile(device.get(), nullptr, 0, &read, nullptr));
  EXPECT_EQ(read, 0u);
}

TEST_F(StreamDevice, ReadReturnsBytesThatArrivedBeforeTheOpen) {
  EXPECT_TRUE(device.close());
  EXPECT_TRUE(wire.send({0x55, 0x02}));
  const OwnedHandle again(openDevice(u"IPD1:"));
  EXPECT_EQ(readDevice(again.get(), 1), success({0x55}));
  EXPECT_EQ(readDevice(again.get(), 1), success({0x02}));
}

TEST_F(StreamDevice, WriteSendsEveryByteUnchanged) {
  Bytes all;
  for (unsigned value = 0; value < 256; ++value)
    all.push_back(static_cast<std::uint8_t>(value));
  EXPECT_EQ(writeDevice(device.get(), all), success(all));
  EXPECT_EQ(wire.receive(256), all);
}

TEST_F(StreamDevice, WriteOfNothingReturnsAtOnce) {
  DWORD written = 7;
  EXPECT_TRUE(WriteFile(device.get(), nullptr, 0, &written, nullptr));
  EXPECT_EQ(written, 0u);
}

TEST_F(StreamDevice, WriteWaitsForAnEndThatDoesNotReadAndThenContinues) {
  BackgroundCall<Transfer> write = writeInBackground(kTooMuch);
  EXPECT_TRUE(write.waitUntilBlocked());
  EXPECT_FALSE(write.isDone());
  EXPECT_EQ(wire.receive(kTooMuch), Bytes(kTooMuch, 0x55));
  EXPECT_EQ(write.result(), success(Bytes(kTooMuch, 0x55)));
}

TEST_F(StreamDevice, WritesOfTwoThreadsDoNotMix) {
  BackgroundCall<Transfer> first = writeInBackground(kTooMuch, 0xaa);
  EXPECT_TRUE(first.waitUntilBlocked());
  BackgroundCall<Transfer> second = writeInBackground(10, 0xbb);
  EXPECT_EQ(wire.receive(kTooMuch), Bytes(kTooMuch, 0xaa));
  EXPECT_EQ(wire.receive(10), Bytes(10, 0xbb));
  EXPECT_EQ(first.result(), success(Bytes(kTooMuch, 0xaa)));
  EXPECT_EQ(second.result(), success(Bytes(10, 0xbb)));
}

TEST_F(StreamDevice, ReadsAndWritesAtTheSameTime) {
  BackgroundCall<Transfer> read = readInBackground(1);
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_EQ(writeDevice(device.get(), {0x01}), success({0x01}));
  EXPECT_TRUE(FlushFileBuffers(device.get()));
  EXPECT_EQ(wire.receive(1), (Bytes{0x01}));
  EXPECT_FALSE(read.isDone());
  EXPECT_TRUE(wire.send({0x02}));
  EXPECT_EQ(read.result(), success({0x02}));
}

TEST_F(StreamDevice, CloseWakesARead) {
  BackgroundCall<Transfer> read = readInBackground(1);
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(device.close());
  EXPECT_EQ(read.result(), failure(ERROR_OPERATION_ABORTED));
  EXPECT_FALSE(wire.isDeviceOpen());
}

TEST_F(StreamDevice, CloseWakesEveryRead) {
  BackgroundCall<Transfer> first = readInBackground(1);
  BackgroundCall<Transfer> second = readInBackground(1);
  EXPECT_TRUE(first.waitUntilBlocked());
  EXPECT_TRUE(second.waitUntilBlocked());
  EXPECT_TRUE(device.close());
  EXPECT_EQ(first.result(), failure(ERROR_OPERATION_ABORTED));
  EXPECT_EQ(second.result(), failure(ERROR_OPERATION_ABORTED));
}

TEST_F(StreamDevice, CloseWakesAWriteAndTheNextOne) {
  BackgroundCall<Transfer> write = writeInBackground(kTooMuch);
  EXPECT_TRUE(write.waitUntilBlocked());
  BackgroundCall<Transfer> next = writeInBackground(1);
  EXPECT_TRUE(device.close());
  const std::optional<Transfer> result = write.result();
  ASSERT_TRUE(result);
  EXPECT_FALSE(result->result);
  EXPECT_EQ(result->error, ERROR_OPERATION_ABORTED);
  EXPECT_LT(result->bytes.size(), kTooMuch);
  EXPECT_GT(result->bytes.size(), 0u);
  const std::optional<Transfer> nextResult = next.result();
  ASSERT_TRUE(nextResult);
  EXPECT_FALSE(nextResult->result);
}

TEST_F(StreamDevice, CanBeOpenedAgainAsSoonAsItIsClosed) {
  for (int round = 0; round < 50; ++round) {
    BackgroundCall<Transfer> read = readInBackground(1);
    EXPECT_TRUE(read.waitUntilBlocked());
    EXPECT_TRUE(device.close());
    device = OwnedHandle(openDevice(u"IPD1:"));
    ASSERT_TRUE(device.isOpen());
    EXPECT_EQ(read.result(), failure(ERROR_OPERATION_ABORTED));
  }
}

TEST_F(StreamDevice, RefusesASecondCloseAndLaterUse) {
  const HANDLE handle = device.get();
  EXPECT_TRUE(device.close());
  EXPECT_FALSE(CloseHandle(handle));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_EQ(readDevice(handle, 1), failure(ERROR_INVALID_HANDLE));
  EXPECT_EQ(writeDevice(handle, {1}), failure(ERROR_INVALID_HANDLE));
  EXPECT_FALSE(FlushFileBuffers(handle));
}

TEST_F(StreamDevice, HangUpFailsARead) {
  BackgroundCall<Transfer> read = readInBackground(1);
  EXPECT_TRUE(read.waitUntilBlocked());
  wire.hangUp();
  EXPECT_EQ(read.result(), failure(ERROR_GEN_FAILURE));
}

TEST_F(StreamDevice, HangUpAfterDataFailsOnlyTheNextRead) {
  EXPECT_TRUE(wire.send({0x55}));
  EXPECT_EQ(readDevice(device.get(), 10), success({0x55}));
  wire.hangUp();
  EXPECT_EQ(readDevice(device.get(), 10), failure(ERROR_GEN_FAILURE));
  EXPECT_EQ(readDevice(device.get(), 10), failure(ERROR_GEN_FAILURE));
}

TEST_F(StreamDevice, HangUpFailsAWriteThatWaits) {
  BackgroundCall<Transfer> write = writeInBackground(kTooMuch);
  EXPECT_TRUE(write.waitUntilBlocked());
  wire.hangUp();
  const std::optional<Transfer> result = write.result();
  ASSERT_TRUE(result);
  EXPECT_FALSE(result->result);
  EXPECT_EQ(result->error, ERROR_GEN_FAILURE);
}

TEST_F(StreamDevice, HangUpFailsALaterWriteAndFlush) {
  wire.hangUp();
  EXPECT_EQ(writeDevice(device.get(), {1}), failure(ERROR_GEN_FAILURE));
  EXPECT_FALSE(FlushFileBuffers(device.get()));
  EXPECT_EQ(GetLastError(), ERROR_GEN_FAILURE);
}

TEST_F(StreamDevice, FlushDoesNotWaitForTheOtherEndToRead) {
  EXPECT_EQ(writeDevice(device.get(), {1, 2, 3}), success({1, 2, 3}));
  EXPECT_TRUE(FlushFileBuffers(device.get()));
  EXPECT_EQ(wire.receive(3), (Bytes{1, 2, 3}));
}

TEST_F(StreamDevice, HasNoSerialSettings) {
  DCB state = {};
  COMMTIMEOUTS timeouts = {};
  EXPECT_FALSE(GetCommState(device.get(), &state));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_FALSE(SetCommState(device.get(), &state));
  EXPECT_FALSE(GetCommTimeouts(device.get(), &timeouts));
  EXPECT_FALSE(SetCommTimeouts(device.get(), &timeouts));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(StreamDevice, RefusesMissingPointersAndOverlappedCalls) {
  BYTE byte = 0;
  DWORD moved = 7;
  static char anything;
  const auto overlapped = reinterpret_cast<LPOVERLAPPED>(&anything);
  EXPECT_FALSE(ReadFile(device.get(), nullptr, 1, &moved, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(moved, 0u);
  EXPECT_FALSE(WriteFile(device.get(), nullptr, 1, &moved, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(ReadFile(device.get(), &byte, 1, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(WriteFile(device.get(), &byte, 1, nullptr, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_FALSE(ReadFile(device.get(), &byte, 1, &moved, overlapped));
  EXPECT_FALSE(WriteFile(device.get(), &byte, 1, &moved, overlapped));
}

TEST_F(StreamDevice, CloseIsReportedToTheOtherSide) {
  EXPECT_TRUE(wire.isDeviceOpen());
  EXPECT_TRUE(device.close());
  EXPECT_TRUE(wire.waitUntilDeviceCloses());
}

}  // namespace
}  // namespace stream_device
