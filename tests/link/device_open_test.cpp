#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "link/link_kinds.h"
#include "support/console.h"
#include "support/row_name.h"
#include "support/scripted_platform.h"

namespace ipodctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// GENERIC_READ | GENERIC_WRITE and OPEN_EXISTING as decimal numbers, as the platform records them.
std::string createFile(const std::string& name) {
  return "CreateFileW(\"" + name + "\", 3221225472, 0, null, 3, 0, null)";
}

HANDLE noHandle() { return reinterpret_cast<HANDLE>(uintptr_t{0x77}); }

class SerialOpen : public ScriptedPlatformTest {
 protected:
  /// Returns a state with all bits set.
  static DCB busyState() {
    DCB state;
    std::memset(&state, 0xFF, sizeof(state));
    return state;
  }

  HANDLE handle = noHandle();
};

TEST_F(SerialOpen, OpensThePortAndSetsItUp) {
  EXPECT_EQ(serialOpen(handle, "COM3:", 57600), 0);
  EXPECT_EQ(platform.nameOf(handle), "device 1");
  EXPECT_THAT(platform.calls,
              ElementsAre(createFile("COM3:"), "GetCommState(device 1)", "SetCommState(device 1)",
                          "GetCommState(device 1)", "GetCommTimeouts(device 1)",
                          "SetCommTimeouts(device 1)"));
}

TEST_F(SerialOpen, Sets57600Baud8N1WithoutRtsControl) {
  platform.driverState = busyState();
  ASSERT_EQ(serialOpen(handle, "COM1:", 57600), 0);
  EXPECT_EQ(platform.stateSet.BaudRate, 57600u);
  EXPECT_EQ(platform.stateSet.ByteSize, 8);
  EXPECT_EQ(platform.stateSet.Parity, 0);
  EXPECT_EQ(platform.stateSet.StopBits, 0);
  EXPECT_EQ(platform.stateSet.fRtsControl, 0u);
}

TEST_F(SerialOpen, SetsTheGivenBaudRate) {
  ASSERT_EQ(serialOpen(handle, "COM1:", 19200), 0);
  EXPECT_EQ(platform.stateSet.BaudRate, 19200u);
}

TEST_F(SerialOpen, LeavesOtherSettingsAsTheDriverReportsThem) {
  for (const bool set : {false, true}) {
    SCOPED_TRACE(set);
    platform.reset();
    platform.driverState = set ? busyState() : DCB{};
    ASSERT_EQ(serialOpen(handle, "COM1:", 57600), 0);
    DCB expected = platform.driverState;
    expected.BaudRate = 57600;
    expected.ByteSize = 8;
    expected.Parity = 0;
    expected.StopBits = 0;
    expected.fRtsControl = 0;
    expected.DCBlength = platform.stateSet.DCBlength;
    EXPECT_EQ(std::memcmp(&platform.stateSet, &expected, sizeof(DCB)), 0);
  }
}

TEST_F(SerialOpen, SetsTimeoutsThatLetReadsReturnAtOnce) {
  platform.driverTimeouts = {1, 2, 3, 4, 5};
  ASSERT_EQ(serialOpen(handle, "COM1:", 57600), 0);
  EXPECT_EQ(platform.timeoutsSet.ReadIntervalTimeout, 0xFFFFFFFFu);
  EXPECT_EQ(platform.timeoutsSet.ReadTotalTimeoutMultiplier, 0u);
  EXPECT_EQ(platform.timeoutsSet.ReadTotalTimeoutConstant, 0u);
  EXPECT_EQ(platform.timeoutsSet.WriteTotalTimeoutMultiplier, 0u);
  EXPECT_EQ(platform.timeoutsSet.WriteTotalTimeoutConstant, 0u);
}

TEST_F(SerialOpen, LogsTheSettingsReadBackWhileTheDebugFlagIsSet) {
  platform.stateReadBack.BaudRate = 9600;
  platform.stateReadBack.Parity = 2;
  platform.stateReadBack.ByteSize = 7;
  platform.stateReadBack.StopBits = 1;
  platform.stateReadBack.fRtsControl = 3;
  EXPECT_EQ(printedInDebug([&] { serialOpen(handle, "COM1:", 57600); }),
            "OPENING DEVICE COM1:\n"
            "COM aperta correttamente\n"
            "com baudrate = 9600\n"
            "com parity = 2\n"
            "com byte size = 7\n"
            "com stop bits = 1\n"
            "com rts flow control = 3\n");
}

TEST_F(SerialOpen, LeavesTheHandleIfThePortDoesNotOpen) {
  platform.devicesFail = true;
  EXPECT_EQ(serialOpen(handle, "COM1:", 57600), -1);
  EXPECT_EQ(handle, noHandle());
  EXPECT_THAT(platform.calls, ElementsAre(createFile("COM1:")));
}

TEST_F(SerialOpen, LogsThatThePortDoesNotOpenWhileTheDebugFlagIsSet) {
  platform.devicesFail = true;
  EXPECT_EQ(printedInDebug([&] { serialOpen(handle, "COM9:", 57600); }),
            "OPENING DEVICE COM9:\nERRORE DI APERTURA\n");
}

TEST_F(SerialOpen, IgnoresTheResultsOfTheSettingsCalls) {
  platform.commCallsFail = true;
  EXPECT_EQ(serialOpen(handle, "COM1:", 57600), 0);
  EXPECT_EQ(platform.nameOf(handle), "device 1");
  EXPECT_EQ(platform.calls.size(), 6u);
}

TEST_F(SerialOpen, WidensTheNameByteByByte) {
  ASSERT_EQ(serialOpen(handle, "C\xC3\xA9:", 57600), 0);
  EXPECT_EQ(platform.calls[0], createFile("C<195><169>:"));
}

TEST_F(SerialOpen, IsSilentWithoutTheDebugFlag) {
  EXPECT_EQ(printedQuietly([&] { serialOpen(handle, "COM1:", 57600); }), "");
  platform.devicesFail = true;
  EXPECT_EQ(printedQuietly([&] { serialOpen(handle, "COM1:", 57600); }), "");
}

class UsbOpen : public ScriptedPlatformTest {
 protected:
  HANDLE handle = noHandle();
};

TEST_F(UsbOpen, OpensTheDeviceWithoutSettings) {
  EXPECT_EQ(usbOpen(handle, "IPD1:"), 0);
  EXPECT_EQ(platform.nameOf(handle), "device 1");
  EXPECT_THAT(platform.calls, ElementsAre(createFile("IPD1:")));
}

TEST_F(UsbOpen, LeavesTheHandleIfTheDeviceDoesNotOpen) {
  platform.devicesFail = true;
  EXPECT_EQ(usbOpen(handle, "IPD1:"), -1);
  EXPECT_EQ(handle, noHandle());
}

TEST_F(UsbOpen, WidensTheNameByteByByte) {
  ASSERT_EQ(usbOpen(handle, "I\xFF:"), 0);
  EXPECT_EQ(platform.calls[0], createFile("I<255>:"));
}

TEST_F(UsbOpen, LogsWhetherTheDeviceOpensWhileTheDebugFlagIsSet) {
  EXPECT_EQ(printedInDebug([&] { usbOpen(handle, "IPD1:"); }),
            "OPENING DEVICE\nUSB aperta correttamente\n");
  platform.devicesFail = true;
  EXPECT_EQ(printedInDebug([&] { usbOpen(handle, "IPD1:"); }),
            "OPENING DEVICE\nERRORE DI APERTURA\n");
}

TEST_F(UsbOpen, IsSilentWithoutTheDebugFlag) {
  EXPECT_EQ(printedQuietly([&] { usbOpen(handle, "IPD1:"); }), "");
  platform.devicesFail = true;
  EXPECT_EQ(printedQuietly([&] { usbOpen(handle, "IPD1:"); }), "");
}

/// Opening and closing a transport of either kind.
class OpenAndClose : public ScriptedPlatformTest, public testing::WithParamInterface<LinkKind> {
 protected:
  OpenAndClose() {
    platform.stateReadBack.BaudRate = 57600;
    platform.stateReadBack.ByteSize = 8;
  }

  const LinkKind& kind() const { return GetParam(); }

  const std::unique_ptr<Transport> transport = kind().create();
};

TEST_P(OpenAndClose, StartsClosed) { EXPECT_FALSE(transport->isOpen()); }

TEST_P(OpenAndClose, OpensTheNamedDevice) {
  EXPECT_TRUE(transport->open(kind().deviceName));
  EXPECT_TRUE(transport->isOpen());
  EXPECT_THAT(platform.callsOf("CreateFileW"), ElementsAre(createFile(kind().deviceName)));
}

TEST_P(OpenAndClose, OpensTheDeviceOfTheNewNameAfterAnother) {
  EXPECT_TRUE(transport->open("DEV1:"));
  EXPECT_TRUE(transport->close());
  EXPECT_TRUE(transport->open("DEV2:"));
  EXPECT_THAT(platform.callsOf("CreateFileW"),
              ElementsAre(createFile("DEV1:"), createFile("DEV2:")));
}

TEST_P(OpenAndClose, OpensAnEmptyNameForANullOne) {
  EXPECT_TRUE(transport->open(nullptr));
  EXPECT_TRUE(transport->open(""));
  EXPECT_THAT(platform.callsOf("CreateFileW"), ElementsAre(createFile(""), createFile("")));
}

TEST_P(OpenAndClose, StaysClosedWhenTheDeviceDoesNotOpen) {
  platform.devicesFail = true;
  EXPECT_FALSE(transport->open(kind().deviceName));
  EXPECT_FALSE(transport->isOpen());
  EXPECT_THAT(platform.callsOf("CloseHandle(device"), IsEmpty());
}

TEST_P(OpenAndClose, ClosesBeforeItOpensAgain) {
  ASSERT_TRUE(transport->open(kind().deviceName));
  platform.calls.clear();
  int opensBeforeClose = 0;
  platform.onCreateFile = [&] {
    opensBeforeClose += platform.callsOf("CloseHandle(device 1)").empty() ? 1 : 0;
  };
  EXPECT_TRUE(transport->open(kind().deviceName));
  EXPECT_EQ(opensBeforeClose, 0);
  EXPECT_THAT(platform.callsOf("CloseHandle(device"), ElementsAre("CloseHandle(device 1)"));
  EXPECT_TRUE(transport->isOpen());
}

TEST_P(OpenAndClose, LeavesNothingOpenWhenTheSecondOpenFails) {
  ASSERT_TRUE(transport->open(kind().deviceName));
  platform.devicesFail = true;
  EXPECT_FALSE(transport->open(kind().deviceName));
  EXPECT_FALSE(transport->isOpen());
  EXPECT_THAT(platform.callsOf("CloseHandle(device"), ElementsAre("CloseHandle(device 1)"));
}

TEST_P(OpenAndClose, ClosesTheDeviceOnce) {
  ASSERT_TRUE(transport->open(kind().deviceName));
  EXPECT_TRUE(transport->close());
  EXPECT_FALSE(transport->isOpen());
  EXPECT_TRUE(transport->close());
  EXPECT_THAT(platform.callsOf("CloseHandle(device"), ElementsAre("CloseHandle(device 1)"));
}

TEST_P(OpenAndClose, ClosesTheDeviceInTheDestructor) {
  {
    const std::unique_ptr<Transport> other = kind().create();
    ASSERT_TRUE(other->open(kind().deviceName));
  }
  EXPECT_THAT(platform.callsOf("CloseHandle(device"), ElementsAre("CloseHandle(device 1)"));
}

TEST_P(OpenAndClose, ClosesAllHandlesInTheDestructor) {
  platform.calls.clear();
  {
    const std::unique_ptr<Transport> other = kind().create();
    ASSERT_TRUE(other->open(kind().deviceName));
  }
  EXPECT_EQ(platform.callsOf("CloseHandle(semaphore").size(),
            platform.callsOf("CreateSemaphoreW").size());
}

TEST_P(OpenAndClose, LogsWhatItDoesWhileTheDebugFlagIsSet) {
  EXPECT_EQ(printedInDebug([&] { transport->open(kind().deviceName); }), kind().openText);
  EXPECT_EQ(printedInDebug([&] { transport->close(); }), kind().closedText);
}

TEST_P(OpenAndClose, LogsNothingIfItIsAlreadyClosed) {
  EXPECT_EQ(printedInDebug([&] { transport->close(); }), "");
}

TEST_P(OpenAndClose, LogsTheCloseOfThePreviousDevice) {
  ASSERT_TRUE(transport->open(kind().deviceName));
  EXPECT_EQ(printedInDebug([&] { transport->open(kind().deviceName); }),
            std::string(kind().closedText) + kind().openText);
}

TEST_P(OpenAndClose, IsSilentWithoutTheDebugFlag) {
  EXPECT_EQ(printedQuietly([&] {
              transport->open(kind().deviceName);
              transport->close();
            }),
            "");
}

/// Construction of a transport while the system has no semaphores left.
class WithoutSemaphores : public OpenAndClose {
 protected:
  std::unique_ptr<Transport> createWithoutSemaphores() {
    platform.semaphoresFail = true;
    platform.lastError = ERROR_NOT_ENOUGH_MEMORY;
    return kind().create();
  }
};

TEST_P(WithoutSemaphores, DoesNotOpen) {
  const std::unique_ptr<Transport> other = createWithoutSemaphores();
  EXPECT_FALSE(other->open(kind().deviceName));
  EXPECT_FALSE(other->isOpen());
  EXPECT_THAT(platform.callsOf("CreateFileW"), IsEmpty());
  EXPECT_FALSE(other->startReadData());
}

TEST_P(WithoutSemaphores, DoesNotOpenEvenIfTheSystemReportsNoError) {
  platform.semaphoresFail = true;
  platform.lastError = ERROR_SUCCESS;
  EXPECT_FALSE(kind().create()->open(kind().deviceName));
  EXPECT_THAT(platform.callsOf("CreateFileW"), IsEmpty());
}

TEST_P(WithoutSemaphores, HasNoMessages) {
  const std::unique_ptr<Transport> other = createWithoutSemaphores();
  EXPECT_EQ(other->getMessage(0, 1), nullptr);
  EXPECT_EQ(other->flushMessages(), 0);
  EXPECT_TRUE(other->close());
  EXPECT_TRUE(other->stopReadData());
}

TEST_P(WithoutSemaphores, OpensOnceTheyAreAvailableAgain) {
  const std::unique_ptr<Transport> other = createWithoutSemaphores();
  EXPECT_FALSE(other->open(kind().deviceName));
  platform.semaphoresFail = false;
  EXPECT_TRUE(other->open(kind().deviceName));
  EXPECT_TRUE(other->isOpen());
}

TEST_P(WithoutSemaphores, ClosesTheDeviceInTheDestructor) {
  platform.calls.clear();
  {
    const std::unique_ptr<Transport> other = createWithoutSemaphores();
    platform.semaphoresFail = false;
    ASSERT_TRUE(other->open(kind().deviceName));
    platform.calls.clear();
  }
  EXPECT_THAT(platform.callsOf("CloseHandle(device"), SizeIs(1));
}

class WithoutTwoSemaphores : public ScriptedPlatformTest,
                             public testing::WithParamInterface<LinkKind> {
 protected:
  static constexpr int kAsked =
      12;  ///< more than a transport creates in its constructor and in open

  /// Runs a transport that cannot create these two semaphores at first.
  void meet(int first, int second) {
    platform.reset();
    platform.semaphoresMissing = {first, second};
    platform.lastError = ERROR_NOT_ENOUGH_MEMORY;
    const std::unique_ptr<Transport> transport = GetParam().create();
    const bool opened = transport->open(GetParam().deviceName);
    EXPECT_EQ(transport->isOpen(), opened);
    platform.semaphoresMissing.clear();
    EXPECT_TRUE(transport->open(GetParam().deviceName));
    EXPECT_TRUE(transport->startReadData());
    platform.arrivals = {{GetParam().sync + Bytes{0x55, 0x02, 0x00, 0x01, 0xFD}},
                         {{}, true, [&] { EXPECT_NE(transport->getMessage(0, 1), nullptr); }}};
    platform.runThread();
  }
};

TEST_P(WithoutTwoSemaphores, WorksOnceTheyAreAvailable) {
  for (int first = 0; first < kAsked; ++first) {
    for (int second = first + 1; second <= kAsked; ++second) {
      SCOPED_TRACE(std::to_string(first) + " and " + std::to_string(second));
      meet(first, second);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, WithoutTwoSemaphores, testing::ValuesIn(kLinkKinds),
                         rowName<LinkKind>);
INSTANTIATE_TEST_SUITE_P(Kinds, WithoutSemaphores, testing::ValuesIn(kLinkKinds),
                         rowName<LinkKind>);
INSTANTIATE_TEST_SUITE_P(Kinds, OpenAndClose, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);

}  // namespace
}  // namespace ipodctl
