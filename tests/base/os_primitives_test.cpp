#include "base/os_primitives.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <utility>

#include "support/console.h"
#include "support/row_name.h"
#include "support/scripted_platform.h"

namespace ipodctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr DWORD kWaitAbandoned = 0x80;

HANDLE fakeHandle(uintptr_t value) { return reinterpret_cast<HANDLE>(value); }

/// Returns what `action` prints while the semaphore trace flag is set and the debug flag is not.
template <class Action>
std::string traced(const Action& action) {
  semTraceFlag = 1;
  const std::string text = printedQuietly(action);
  semTraceFlag = 0;
  return text;
}

class Semaphores : public ScriptedPlatformTest {
 protected:
  Semaphores() {
    semMutexCreate(semaphore);
    platform.calls.clear();
  }
  ~Semaphores() override { semMutexDelete(semaphore); }

  HANDLE semaphore = nullptr;
};

TEST_F(Semaphores, AreCreatedFree) {
  HANDLE handle = nullptr;
  EXPECT_EQ(semMutexCreate(handle), 0u);
  EXPECT_THAT(platform.calls, ElementsAre("CreateSemaphoreW(null, 1, 1, null)"));
  EXPECT_EQ(platform.nameOf(handle), "semaphore 2");
  semMutexDelete(handle);
}

TEST_F(Semaphores, ReturnTheSystemsErrorIfTheyCannotBeCreated) {
  platform.semaphoresFail = true;
  platform.lastError = ERROR_NOT_ENOUGH_MEMORY;
  HANDLE handle = nullptr;
  EXPECT_EQ(semMutexCreate(handle), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(Semaphores, AreMissingIfTheSystemHasNoneAndReportsNoError) {
  platform.semaphoresFail = true;
  platform.lastError = ERROR_SUCCESS;
  HANDLE handle = nullptr;
  EXPECT_FALSE(semMutexEnsure(handle));
}

TEST_F(Semaphores, AreCreatedOnceByEnsure) {
  HANDLE handle = nullptr;
  EXPECT_TRUE(semMutexEnsure(handle));
  const HANDLE created = handle;
  EXPECT_TRUE(semMutexEnsure(handle));
  EXPECT_EQ(handle, created);
  semMutexDelete(handle);
}

TEST_F(Semaphores, AreClosedByDelete) {
  HANDLE handle = nullptr;
  semMutexCreate(handle);
  platform.calls.clear();
  EXPECT_EQ(semMutexDelete(handle), 0);
  EXPECT_THAT(platform.calls, ElementsAre("CloseHandle(semaphore 2)"));
}

TEST_F(Semaphores, ReportSuccessEvenIfTheSystemRefusesToCloseThem) {
  EXPECT_EQ(semMutexDelete(fakeHandle(0x30)), 0);
  EXPECT_EQ(std::exchange(platform.wrongCloses, 0), 1);
}

TEST_F(Semaphores, AreNotFreeOnceTaken) {
  EXPECT_EQ(semMutexTake(semaphore, 0, 1), 0);
  EXPECT_EQ(semMutexTake(semaphore, 0, 1), -1);
  EXPECT_EQ(semMutexTryLock(semaphore), -1);
}

TEST_F(Semaphores, AreFreeOnceAfterTwoReleases) {
  semMutexTake(semaphore, 0, 0);
  EXPECT_EQ(semMutexGive(semaphore), 0);
  EXPECT_EQ(semMutexGive(semaphore), -1);
  EXPECT_EQ(semMutexTake(semaphore, 0, 1), 0);
  EXPECT_EQ(semMutexTake(semaphore, 0, 1), -1);
}

TEST_F(Semaphores, AreReleasedByOneCount) {
  semMutexGive(semaphore);
  EXPECT_THAT(platform.calls, ElementsAre("ReleaseSemaphore(semaphore 1, 1)"));
}

TEST_F(Semaphores, DoNotWaitInATryLock) {
  EXPECT_EQ(semMutexTryLock(semaphore), 0);
  EXPECT_THAT(platform.calls, ElementsAre("WaitForSingleObject(semaphore 1, 0)"));
}

TEST_F(Semaphores, ReturnOtherWaitResultsUnchanged) {
  platform.waitResults = {kWaitAbandoned, kWaitAbandoned};
  EXPECT_EQ(semMutexTake(semaphore, 0, 1), 0x80);
  EXPECT_EQ(semMutexTryLock(semaphore), 0x80);
  platform.waitResults = {WAIT_FAILED, WAIT_FAILED};
  EXPECT_EQ(semMutexTake(semaphore, 0, 1), -1);
  EXPECT_EQ(semMutexTryLock(semaphore), -1);
}

TEST_F(Semaphores, LogWhatTheyDoWhileTheTraceFlagIsSet) {
  const HANDLE handle = fakeHandle(0xAB30);
  platform.waitResults = {WAIT_OBJECT_0, WAIT_TIMEOUT, kWaitAbandoned, WAIT_OBJECT_0, WAIT_TIMEOUT};
  EXPECT_EQ(traced([&] { semMutexTake(handle, 0, 1); }), "semMutexTake HANDLE ab30 ret = 0\n");
  EXPECT_EQ(traced([&] { semMutexTake(handle, 0, 1); }), "semMutexTake HANDLE ab30 ret = 258\n");
  EXPECT_EQ(traced([&] { semMutexTake(handle, 0, 1); }), "semMutexTake HANDLE ab30 ret = 128\n");
  EXPECT_EQ(traced([&] { semMutexTryLock(handle); }), "semMutexTryLock HANDLE ab30 ret = 0\n");
  EXPECT_EQ(traced([&] { semMutexTryLock(handle); }), "semMutexTryLock HANDLE ab30 ret = 258\n");
}

TEST_F(Semaphores, LogTheReleaseBeforeItAndAlwaysAsZero) {
  platform.onRelease = [] { std::printf("released\n"); };
  EXPECT_EQ(traced([] { semMutexGive(fakeHandle(0xAB30)); }),
            "semMutexGive HANDLE ab30 ret = 0\nreleased\n");
}

TEST_F(Semaphores, AreSilentWithoutTheTraceFlag) {
  EXPECT_EQ(semTraceFlag, 0);
  EXPECT_EQ(printedInDebug([&] {
              semMutexTake(semaphore, 0, 1);
              semMutexTryLock(semaphore);
              semMutexGive(semaphore);
            }),
            "");
}

struct Timeout : NamedRow {
  uint32_t nanoseconds;
  uint32_t seconds;
  const char* milliseconds;
};

class SemMutexTake : public ScriptedPlatformTest, public testing::WithParamInterface<Timeout> {};

TEST_P(SemMutexTake, Waits) {
  platform.waitResults = {WAIT_TIMEOUT};
  EXPECT_EQ(semMutexTake(nullptr, GetParam().nanoseconds, GetParam().seconds), -1);
  EXPECT_THAT(platform.calls, ElementsAre("WaitForSingleObject(null, " +
                                          std::string(GetParam().milliseconds) + ")"));
}

const Timeout kTimeouts[] = {
    {"WithoutLimitForNoTime", 0, 0, "INFINITE"},
    {"OneSecond", 0, 1, "1000"},
    {"NanosecondsOfMoreThanASecond", 1500000000, 0, "1500"},
    {"TheSumOfBoth", 250000000, 2, "2250"},
    {"OneMillisecond", 1000000, 0, "1"},
    {"WholeMillisecondsOnly", 1999999, 0, "1"},
    {"WithoutLimitForLessThanAMillisecond", 999999, 0, "INFINITE"},
    {"TheMostNanoseconds", 4294967295u, 0, "4294"},
    {"In32BitMilliseconds", 0, 4294968, "704"},
};

INSTANTIATE_TEST_SUITE_P(Times, SemMutexTake, testing::ValuesIn(kTimeouts), rowName<Timeout>);

class Threads : public ScriptedPlatformTest {};

DWORD WINAPI sayHello(LPVOID argument) {
  *static_cast<int*>(argument) = 42;
  return 0;
}

TEST_F(Threads, StartAtOnceWithTheDefaultStack) {
  HANDLE handle = nullptr;
  int said = 0;
  EXPECT_EQ(threadCreate(handle, sayHello, &said), 0u);
  EXPECT_THAT(platform.calls, ElementsAre("CreateThread(null, 0, pointer, 0)"));
  EXPECT_EQ(platform.nameOf(handle), "thread 1");
  platform.runThread();
  EXPECT_EQ(said, 42);
}

TEST_F(Threads, ReturnTheSystemsErrorIfTheyCannotStart) {
  platform.threadsFail = true;
  platform.lastError = ERROR_NOT_ENOUGH_MEMORY;
  HANDLE handle = nullptr;
  EXPECT_EQ(threadCreate(handle, sayHello, nullptr), ERROR_NOT_ENOUGH_MEMORY);
}

TEST_F(Threads, AreJoinedWithATimeoutInMilliseconds) {
  platform.waitResults = {WAIT_OBJECT_0, WAIT_TIMEOUT, kWaitAbandoned};
  EXPECT_EQ(threadJoin(fakeHandle(0x30), 300), 0);
  EXPECT_EQ(threadJoin(fakeHandle(0x30), 0), -1);
  EXPECT_EQ(threadJoin(fakeHandle(0x30), INFINITE), 0x80);
  EXPECT_THAT(platform.calls,
              ElementsAre("WaitForSingleObject(unknown, 300)", "WaitForSingleObject(unknown, 0)",
                          "WaitForSingleObject(unknown, INFINITE)"));
}

class TaskSleepMicro : public ScriptedPlatformTest {};

TEST_F(TaskSleepMicro, SleepsWholeMilliseconds) {
  for (const int32_t microseconds : {100000, 999, 1000, 1999, 5000, 0, -999})
    EXPECT_EQ(taskSleepMicro(microseconds), 0);
  EXPECT_THAT(platform.calls, ElementsAre("Sleep(100)", "Sleep(0)", "Sleep(1)", "Sleep(1)",
                                          "Sleep(5)", "Sleep(0)", "Sleep(0)"));
}

/// Has an open device.
class Devices : public ScriptedPlatformTest {
 protected:
  HANDLE device = platform.createDevice();
  uint8_t buffer[4] = {0xEE, 0xEE, 0xEE, 0xEE};
};

using DeviceWrite = Devices;

const uint8_t kBytes[] = {0x55, 0x02, 0x00, 0x01, 0xFD};

TEST_F(DeviceWrite, WritesAndThenFlushes) {
  EXPECT_EQ(deviceWrite(device, kBytes, 5), 5);
  EXPECT_THAT(platform.writes, ElementsAre(Bytes{0x55, 0x02, 0x00, 0x01, 0xFD}));
  EXPECT_THAT(platform.calls,
              ElementsAre("WriteFile(device 1, 5, null)", "FlushFileBuffers(device 1)"));
}

TEST_F(DeviceWrite, ReturnsTheNumberOfBytesWritten) {
  platform.writeLimit = 3;
  EXPECT_EQ(deviceWrite(device, kBytes, 5), 3);
}

TEST_F(DeviceWrite, ReturnsZeroAndFlushesIfTheWriteFails) {
  platform.writesFail = true;
  EXPECT_EQ(deviceWrite(device, kBytes, 5), 0);
  EXPECT_THAT(platform.calls,
              ElementsAre("WriteFile(device 1, 5, null)", "FlushFileBuffers(device 1)"));
}

TEST_F(DeviceWrite, ReturnsZeroIfTheWriteFailsWithACount) {
  platform.writesFail = true;
  platform.countOfFailedWrite = 5;
  EXPECT_EQ(deviceWrite(device, kBytes, 5), 0);
}

TEST_F(DeviceWrite, FailsOnAnInvalidHandleWithoutASystemCall) {
  EXPECT_EQ(deviceWrite(INVALID_HANDLE_VALUE, kBytes, 5), -1);
  EXPECT_THAT(platform.calls, IsEmpty());
}

TEST_F(DeviceWrite, PassesANullHandleToTheSystem) {
  EXPECT_EQ(deviceWrite(nullptr, kBytes, 5), 0);
  EXPECT_THAT(platform.calls, ElementsAre("WriteFile(null, 5, null)", "FlushFileBuffers(null)"));
}

TEST_F(DeviceWrite, LogsTheNumberOfBytesWhileTheDebugFlagIsSet) {
  EXPECT_EQ(printedInDebug([&] { deviceWrite(device, kBytes, 5); }),
            "\nWRITE!!!\nbytes inviati 5 \n");
  platform.writesFail = true;
  EXPECT_EQ(printedInDebug([&] { deviceWrite(device, kBytes, 5); }),
            "\nWRITE!!!\nbytes inviati 0 \n");
}

TEST_F(DeviceWrite, LogsAnInvalidHandleWhileTheDebugFlagIsSet) {
  EXPECT_EQ(printedInDebug([] { deviceWrite(INVALID_HANDLE_VALUE, kBytes, 5); }),
            "COM non aperta\n");
}

TEST_F(DeviceWrite, IsSilentWithoutTheDebugFlag) {
  EXPECT_EQ(printedQuietly([&] {
              deviceWrite(device, kBytes, 5);
              deviceWrite(INVALID_HANDLE_VALUE, kBytes, 5);
            }),
            "");
}

using SerialRead = Devices;

TEST_F(SerialRead, ReturnsWhatHasArrived) {
  platform.arrive(Bytes{0x01, 0x02});
  EXPECT_EQ(serialRead(device, buffer, 4), 2);
  EXPECT_EQ(Bytes(buffer, buffer + 4), (Bytes{0x01, 0x02, 0xEE, 0xEE}));
  EXPECT_THAT(platform.calls, ElementsAre("ReadFile(device 1, 4, null)"));
}

TEST_F(SerialRead, ReturnsAtMostItsMaximum) {
  platform.arrive(Bytes{0x01, 0x02, 0x03});
  EXPECT_EQ(serialRead(device, buffer, 2), 2);
  EXPECT_EQ(Bytes(buffer, buffer + 4), (Bytes{0x01, 0x02, 0xEE, 0xEE}));
}

TEST_F(SerialRead, PollsEvery100MillisecondsUntilBytesArrive) {
  platform.arrive(Bytes{}, Bytes{}, Bytes{0x01});
  EXPECT_EQ(serialRead(device, buffer, 4), 1);
  EXPECT_THAT(platform.calls, ElementsAre("ReadFile(device 1, 4, null)", "Sleep(100)",
                                          "ReadFile(device 1, 4, null)", "Sleep(100)",
                                          "ReadFile(device 1, 4, null)"));
}

TEST_F(SerialRead, FailsWhenThePortFails) {
  platform.arrive(Bytes{});
  EXPECT_EQ(serialRead(device, buffer, 4), -1);
  EXPECT_THAT(platform.calls, ElementsAre("ReadFile(device 1, 4, null)", "Sleep(100)",
                                          "ReadFile(device 1, 4, null)"));
}

using UsbRead = Devices;

TEST_F(UsbRead, ReturnsTheBytesOfOneRead) {
  platform.arrive(Bytes{0x01, 0x02}, Bytes{0x03});
  EXPECT_EQ(usbRead(device, buffer, 4), 2);
  EXPECT_EQ(Bytes(buffer, buffer + 4), (Bytes{0x01, 0x02, 0xEE, 0xEE}));
  EXPECT_THAT(platform.calls, ElementsAre("ReadFile(device 1, 4, null)"));
}

TEST_F(UsbRead, ReturnsZeroAfterAReadOfNoBytes) {
  platform.arrive(Bytes{}, Bytes{0x03});
  EXPECT_EQ(usbRead(device, buffer, 4), 0);
  EXPECT_THAT(platform.calls, ElementsAre("ReadFile(device 1, 4, null)"));
}

TEST_F(UsbRead, FailsWhenTheDeviceFails) {
  platform.arrivals.push_back({{}, true});
  EXPECT_EQ(usbRead(device, buffer, 4), -1);
}

}  // namespace
}  // namespace ipodctl
