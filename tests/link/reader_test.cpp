#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <future>
#include <thread>

#include "link/link_kinds.h"
#include "support/console.h"
#include "support/scripted_platform.h"

namespace ipodctl::reader {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

const Bytes kFrame1 = {0x55, 0x02, 0x00, 0x01, 0xFD};
const Bytes kFrame2 = {0x55, 0x03, 0x00, 0x02, 0x07, 0xF4};
const Bytes kFrame3 = {0x55, 0x02, 0x00, 0x03, 0xFB};
const Bytes kBadFrame = {0x55, 0x02, 0x00, 0x01, 0xFE};
const Bytes kUnknownLingoFrame = {0x55, 0x02, 0x03, 0x00, 0xFB};
const Bytes kGeneralWithoutCommand = {0x55, 0x01, 0x00, 0xFF};
const Bytes kExtendedWithHalfACommand = {0x55, 0x02, 0x04, 0x00, 0xFA};

/// Returns the command of the next message, or -1 when there is none.
int takenCommand(Transport& transport) {
  const std::unique_ptr<LingoMessage> message = transport.getMessage(0, 1);
  return message ? message->getCommand() : -1;
}

/// A USB transport. The test runs its reader on the test's own thread.
class Reader : public ScriptedPlatformTest {
 protected:
  Reader() { start(); }

  void start() {
    EXPECT_TRUE(transport->open("IPD1:"));
    EXPECT_TRUE(transport->startReadData());
    platform.calls.clear();
  }

  /// Adds an action that runs while the reader reads, after the bytes that have arrived.
  void meanwhile(std::function<void()> action) {
    platform.arrivals.push_back({{}, true, std::move(action)});
  }

  /// Returns the milliseconds that `action` waits in vain.
  template <class Action>
  uint64_t waited(const Action& action) {
    const uint64_t before = platform.waited;
    action();
    return platform.waited - before;
  }

  const std::unique_ptr<Transport> transport = kUsbKind.create();
};

TEST_F(Reader, QueuesMessagesInTheOrderOfArrival) {
  platform.arrive(kFrame1 + kFrame2 + kFrame3);
  std::vector<int> commands;
  meanwhile([&] {
    for (int i = 0; i < 3; ++i)
      commands.push_back(takenCommand(*transport));
  });
  platform.runThread();
  EXPECT_THAT(commands, ElementsAre(1, 2, 3));
}

TEST_F(Reader, ReturnsTheMessageWithItsData) {
  platform.arrive(kFrame2);
  meanwhile([&] {
    const std::unique_ptr<LingoMessage> message = transport->getMessage(0, 1);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->getLingo(), 0x00);
    EXPECT_EQ(dataOf(*message), (Bytes{0x07}));
  });
  platform.runThread();
}

TEST_F(Reader, LetsGetMessageWaitForTheGivenTime) {
  meanwhile([&] {
    EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); }), 1000u);
    EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(250000000, 2), nullptr); }), 2250u);
  });
  platform.runThread();
}

TEST_F(Reader, LetsGetMessageWaitAgainOnceAfterASignalWithoutAMessage) {
  platform.arrive(kFrame1 + kFrame2);
  meanwhile([&] {
    platform.releasedByName = "semaphore 1";  // the queue's lock
    platform.afterRelease = [&] { transport->flushMessages(); };
    EXPECT_EQ(takenCommand(*transport), 1);
    EXPECT_FALSE(platform.afterRelease);
    EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); }), 1000u);
  });
  platform.runThread();
}

TEST_F(Reader, LetsGetMessageWaitNotMoreThanTwice) {
  meanwhile([&] {
    // Two signals, and each time the lock of the empty queue.
    platform.waitResults = {WAIT_OBJECT_0, WAIT_OBJECT_0, WAIT_OBJECT_0, WAIT_OBJECT_0};
    EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); }), 0u);
    EXPECT_THAT(platform.waitResults, IsEmpty());
  });
  platform.runThread();
}

TEST_F(Reader, LetsGetMessageWaitWithoutLimitUntilItIsStopped) {
  bool stopped = false;
  meanwhile([&] {
    platform.whileBlocked = [&] {
      stopped = true;
      transport->close();
    };
    EXPECT_EQ(transport->getMessage(0, 0), nullptr);
  });
  platform.runThread();
  EXPECT_TRUE(stopped);
}

TEST_F(Reader, ReturnsNoMessageTwice) {
  platform.arrive(kFrame1);
  meanwhile([&] {
    EXPECT_EQ(takenCommand(*transport), 1);
    EXPECT_EQ(takenCommand(*transport), -1);
  });
  platform.runThread();
}

TEST_F(Reader, SignalsAMessageThatArrivesAfterTheQueueWasEmptied) {
  platform.arrive(kFrame1);
  platform.arrivals.push_back(
      {kFrame2 + kFrame3, false, [&] { EXPECT_EQ(takenCommand(*transport), 1); }});
  meanwhile([&] {
    EXPECT_EQ(takenCommand(*transport), 2);
    EXPECT_EQ(takenCommand(*transport), 3);
    EXPECT_EQ(takenCommand(*transport), -1);
  });
  platform.runThread();
}

TEST_F(Reader, DropsPayloadsThatMakeNoMessage) {
  platform.arrive(kUnknownLingoFrame + kGeneralWithoutCommand + kExtendedWithHalfACommand +
                  kFrame2);
  meanwhile([&] { EXPECT_EQ(takenCommand(*transport), 2); });
  platform.runThread();
}

TEST_F(Reader, ReturnsNoMessageOnceItHasEnded) {
  platform.arrive(kFrame1);
  platform.runThread();
  EXPECT_EQ(transport->getMessage(0, 0), nullptr);
  EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); }), 0u);
}

TEST_F(Reader, ClosesTheDeviceWhenItFails) {
  platform.runThread();
  EXPECT_FALSE(transport->isOpen());
  EXPECT_THAT(platform.callsOf("CloseHandle(device"), SizeIs(1));
}

// The close of a driver can be slow.
TEST_F(Reader, DelaysTheNextOpenForASecondAtMostWhileItCloses) {
  uint64_t waitedToOpen = 0;
  platform.onClose = [&] {
    waitedToOpen = waited([&] { EXPECT_FALSE(transport->open("IPD1:")); });
  };
  platform.runThread();
  EXPECT_EQ(waitedToOpen, 1000u);
  EXPECT_TRUE(transport->open("IPD1:"));
}

TEST_F(Reader, LetsNobodyWaitForAMessageWhileItCloses) {
  uint64_t waitedForAMessage = 1;
  platform.onClose = [&] {
    waitedForAMessage = waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); });
  };
  platform.runThread();
  EXPECT_EQ(waitedForAMessage, 0u);
}

TEST_F(Reader, ClosesTheDeviceAfterABadChecksum) {
  platform.arrive(kBadFrame + kFrame1);
  platform.runThread();
  EXPECT_FALSE(transport->isOpen());
  EXPECT_EQ(transport->getMessage(0, 1), nullptr);
  EXPECT_THAT(platform.readSizes, SizeIs(1));
}

TEST_F(Reader, ClosesAllLiveTransportsWhenItFails) {
  const std::unique_ptr<Transport> serial = kSerialKind.create();
  const std::unique_ptr<Transport> usb = kUsbKind.create();
  kUsbKind.create();
  ASSERT_TRUE(serial->open("COM1:"));
  ASSERT_TRUE(usb->open("IPD2:"));
  platform.arrive(kBadFrame);
  platform.runThread();
  EXPECT_FALSE(transport->isOpen());
  EXPECT_FALSE(serial->isOpen());
  EXPECT_FALSE(usb->isOpen());
  EXPECT_THAT(platform.callsOf("CloseHandle(device"), SizeIs(3));
}

TEST_F(Reader, LogsWhatItDoesWhileTheDebugFlagIsSet) {
  platform.arrive(kFrame2);
  EXPECT_EQ(printedInDebug([&] { platform.runThread(); }),
            "begin thReadDat >>>>>>>>>>\n"
            "readDataActive  = 1  >>>>>>>>>>\n"
            "begin READ....\n"
            "received msg dim 3\n"
            "Lingo=0\tCommand=0x2 Data=0x7 \n"
            "begin READ....\n"
            "received msg dim -1\n"
            "usb closed\n"
            "exit from thReadDataLocal\n");
}

TEST_F(Reader, LogsABadChecksumWhileTheDebugFlagIsSet) {
  platform.arrive(kBadFrame);
  EXPECT_EQ(printedInDebug([&] { platform.runThread(); }),
            "begin thReadDat >>>>>>>>>>\n"
            "readDataActive  = 1  >>>>>>>>>>\n"
            "begin READ....\n"
            "checksum Error\n"
            "received msg dim 0\n"
            "usb closed\n"
            "exit from thReadDataLocal\n");
}

TEST_F(Reader, LogsTheLengthOfAPayloadThatMakesNoMessage) {
  platform.arrive(kUnknownLingoFrame);
  EXPECT_EQ(printedInDebug([&] { platform.runThread(); }),
            "begin thReadDat >>>>>>>>>>\n"
            "readDataActive  = 1  >>>>>>>>>>\n"
            "begin READ....\n"
            "received msg dim 2\n"
            "begin READ....\n"
            "received msg dim -1\n"
            "usb closed\n"
            "exit from thReadDataLocal\n");
}

TEST_F(Reader, ReadsNothingIfItIsStoppedBeforeItsThreadRuns) {
  platform.arrive(kFrame1);
  const std::string text = printedInDebug([&] {
    transport->stopReadData();
    transport->awaitReader();
  });
  EXPECT_EQ(text,
            "usb closed\n"
            "begin thReadDat >>>>>>>>>>\n"
            "readDataActive  = 0  >>>>>>>>>>\n"
            "exit from thReadDataLocal\n");
  EXPECT_THAT(platform.readSizes, IsEmpty());
}

TEST_F(Reader, IsSilentWithoutTheDebugFlag) {
  platform.arrive(kFrame1 + kBadFrame);
  EXPECT_EQ(printedQuietly([&] { platform.runThread(); }), "");
}

TEST_F(Reader, DoesNothingWithoutATransport) {
  EXPECT_EQ(printedInDebug([&] { EXPECT_EQ(platform.threadStart(nullptr), 0u); }),
            "begin thReadDat >>>>>>>>>>\n");
}

TEST_F(Reader, ReturnsZeroFromItsThread) {
  EXPECT_EQ(platform.threadStart(platform.threadArgument), 0u);
}

TEST_F(Reader, IsStartedOnlyOnce) {
  EXPECT_FALSE(transport->startReadData());
  EXPECT_THAT(platform.callsOf("CreateThread"), IsEmpty());
  meanwhile([&] { EXPECT_FALSE(transport->startReadData()); });
  platform.runThread();
}

// A reader that fails is no longer active while it closes the transports before its own.
TEST_F(Reader, IsNotStartedWhileTheOneBeforeIsStillLeaving) {
  platform.runThread();
  const std::unique_ptr<Transport> second = kUsbKind.create();
  ASSERT_TRUE(transport->open("IPD1:"));
  ASSERT_TRUE(second->open("IPD2:"));
  ASSERT_TRUE(second->startReadData());
  platform.calls.clear();
  uint64_t waitedToStart = 0;
  platform.onClose = [&] {
    EXPECT_TRUE(second->isOpen());
    waitedToStart = waited([&] { EXPECT_FALSE(second->startReadData()); });
  };
  platform.runThread();
  EXPECT_EQ(waitedToStart, 1000u);
  EXPECT_THAT(platform.callsOf("CreateThread"), IsEmpty());
}

TEST_F(Reader, IsNotStartedOnAClosedDevice) {
  platform.runThread();
  EXPECT_FALSE(transport->startReadData());
  EXPECT_FALSE(kUsbKind.create()->startReadData());
}

TEST_F(Reader, RunsAgainOnceTheDeviceIsOpenAgain) {
  platform.runThread();
  start();
  platform.arrive(kFrame2);
  meanwhile([&] { EXPECT_EQ(takenCommand(*transport), 2); });
  platform.runThread();
}

TEST_F(Reader, RestartsWithoutThePartOfAFrameFromTheLostLink) {
  platform.arrive(Bytes{0x55, 0x02, 0x00});
  platform.runThread();
  start();
  platform.arrive(kFrame2);
  meanwhile([&] { EXPECT_EQ(takenCommand(*transport), 2); });
  platform.runThread();
}

TEST_F(Reader, RestartsWithoutTheSignalOfItsEnd) {
  platform.runThread();
  start();
  meanwhile(
      [&] { EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); }), 1000u); });
  platform.runThread();
}

TEST_F(Reader, IsNotRunningIfItHasNoThread) {
  platform.runThread();
  ASSERT_TRUE(transport->open("IPD1:"));
  platform.threadsFail = true;
  platform.lastError = ERROR_NOT_ENOUGH_MEMORY;
  EXPECT_FALSE(transport->startReadData());
  EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); }), 0u);

  platform.threadsFail = false;
  EXPECT_TRUE(transport->startReadData());
}

TEST_F(Reader, IsNotRunningIfItHasNoThreadAndTheSystemReportsNoError) {
  platform.runThread();
  ASSERT_TRUE(transport->open("IPD1:"));
  platform.threadsFail = true;
  platform.lastError = ERROR_SUCCESS;
  EXPECT_FALSE(transport->startReadData());
}

TEST_F(Reader, RestartsWithoutTheSignalOfAStopThatEndsLater) {
  platform.onClose = [&] {
    platform.runThread();
    start();
  };
  EXPECT_TRUE(transport->stopReadData());
  meanwhile(
      [&] { EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); }), 1000u); });
  platform.runThread();
}

TEST_F(Reader, RunsOnAThreadWithTheDefaultStack) {
  platform.runThread();
  ASSERT_TRUE(transport->open("IPD1:"));
  ASSERT_TRUE(transport->startReadData());
  EXPECT_THAT(platform.callsOf("CreateThread"), ElementsAre("CreateThread(null, 0, pointer, 0)"));
}

TEST_F(Reader, IsAwaitedFor300MillisecondsAtMostByAStop) {
  meanwhile([&] { EXPECT_EQ(waited([&] { EXPECT_TRUE(transport->stopReadData()); }), 300u); });
  platform.runThread();
}

TEST_F(Reader, IsNotTakenForKilledIfItEndsDuringItsStart) {
  platform.runThread();
  platform.threadsRunAtOnce = true;
  ASSERT_TRUE(transport->open("IPD1:"));
  EXPECT_TRUE(transport->startReadData());
  platform.calls.clear();
  transport->releaseLocksOfKilledReader();
  EXPECT_THAT(platform.callsOf("ReleaseSemaphore"), IsEmpty());
}

TEST_F(Reader, IsNotAwaitedIfItDoesNotRun) {
  platform.runThread();
  EXPECT_EQ(waited([&] { EXPECT_TRUE(transport->stopReadData()); }), 0u);
}

TEST_F(Reader, IsStoppedByClosingTheTransport) {
  platform.arrive(kFrame1);
  platform.arrivals.push_back({kFrame2, false, [&] { EXPECT_TRUE(transport->close()); }});
  platform.runThread();
  EXPECT_FALSE(transport->isOpen());
  EXPECT_THAT(platform.readSizes, SizeIs(2));
}

TEST_F(Reader, IsStoppedByOpeningTheTransportAgain) {
  platform.arrivals.push_back({kFrame1, false, [&] { transport->open("IPD1:"); }});
  platform.runThread();
  EXPECT_THAT(platform.readSizes, SizeIs(1));
  EXPECT_THAT(platform.callsOf("CloseHandle(device 1)"), SizeIs(1));
  EXPECT_EQ(transport->getMessage(0, 1), nullptr);
}

TEST_F(Reader, ClosesItsThreadHandles) {
  platform.runThread();
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(transport->open("IPD1:"));
    EXPECT_TRUE(transport->startReadData());
    platform.runThread();
  }
  EXPECT_TRUE(transport->awaitReader());
  EXPECT_THAT(platform.callsOf("CloseHandle(thread"), SizeIs(4));
}

TEST_F(Reader, IsAwaitedForASecondAtMost) {
  meanwhile([&] { EXPECT_EQ(waited([&] { EXPECT_FALSE(transport->awaitReader()); }), 1000u); });
  platform.runThread();
  EXPECT_TRUE(transport->awaitReader());
}

TEST_F(Reader, HasEndedAfterShutDown) {
  transport->shutDown();
  EXPECT_FALSE(transport->isOpen());
  EXPECT_THAT(platform.callsOf("CloseHandle(thread"), SizeIs(1));
  EXPECT_EQ(transport->flushMessages(), 0);
}

TEST_F(Reader, ReleasesTheQueuesSemaphoresBeforeItClosesThem) {
  platform.calls.clear();
  kUsbKind.create();
  int givenAndClosed = 0;
  for (size_t i = 1; i < platform.calls.size(); ++i) {
    const std::string& call = platform.calls[i];
    if (call.rfind("CloseHandle(semaphore", 0) != 0) continue;
    const std::string name =
        call.substr(strlen("CloseHandle("), call.size() - strlen("CloseHandle()"));
    givenAndClosed += platform.calls[i - 1] == "ReleaseSemaphore(" + name + ", 1)" ? 1 : 0;
  }
  EXPECT_GE(givenAndClosed, 2) << "the queue's lock and its signal";
}

using FlushMessages = Reader;

TEST_F(FlushMessages, DestroysQueuedMessagesAndResetsTheirSignal) {
  platform.arrive(kFrame1 + kFrame2);
  meanwhile([&] {
    EXPECT_EQ(transport->flushMessages(), 0);
    EXPECT_EQ(waited([&] { EXPECT_EQ(transport->getMessage(0, 1), nullptr); }), 1000u);
  });
  platform.runThread();
}

TEST_F(FlushMessages, TakesOnlyTheLockOfAnEmptyQueue) {
  meanwhile([&] {
    platform.calls.clear();
    EXPECT_EQ(transport->flushMessages(), 0);
    ASSERT_THAT(platform.calls, SizeIs(2));
    const std::string lock =
        platform.calls[0].substr(strlen("WaitForSingleObject("),
                                 platform.calls[0].find(',') - strlen("WaitForSingleObject("));
    EXPECT_THAT(platform.calls, ElementsAre("WaitForSingleObject(" + lock + ", INFINITE)",
                                            "ReleaseSemaphore(" + lock + ", 1)"));
  });
  platform.runThread();
}

TEST_F(FlushMessages, LetsTheNextMessageSignal) {
  platform.arrive(kFrame1);
  platform.arrivals.push_back({kFrame2, false, [&] { transport->flushMessages(); }});
  meanwhile([&] { EXPECT_EQ(takenCommand(*transport), 2); });
  platform.runThread();
}

TEST_F(FlushMessages, ReturnsAfterARestartResetTheSignal) {
  platform.arrive(kFrame1);
  platform.runThread();
  start();
  EXPECT_EQ(transport->flushMessages(), 0);

  platform.arrive(kFrame2);
  meanwhile([&] {
    EXPECT_EQ(takenCommand(*transport), 2);
    EXPECT_EQ(takenCommand(*transport), -1);
  });
  platform.runThread();
}

TEST_F(FlushMessages, RestoresTheSignalThatARestartCleared) {
  platform.arrive(kFrame1);
  platform.runThread();
  start();
  platform.arrive(kFrame2);
  platform.arrivals.push_back({kFrame3, false, [&] {
                                 EXPECT_EQ(takenCommand(*transport), -1);
                                 transport->flushMessages();
                               }});
  meanwhile([&] { EXPECT_EQ(takenCommand(*transport), 3); });
  platform.runThread();
}

TEST_F(FlushMessages, ReturnsBeforeTheFirstOpen) {
  EXPECT_EQ(kUsbKind.create()->flushMessages(), 0);
}

/// The reader on its own thread, which never returns from the release of a semaphore. The platform
/// reports that the thread has ended: the system has killed it there.
class KilledReader : public ScriptedPlatformTest {
 protected:
  /// Runs the reader up to its n-th release. Returns false when it has fewer.
  bool runToRelease(int number) {
    const auto stopped = std::make_shared<std::promise<bool>>();
    std::thread([this, number, stopped] {
      platform.onRelease = [&stopped, left = number]() mutable {
        if (left-- > 0) return;
        stopped->set_value(true);
        for (;;)
          std::this_thread::sleep_for(std::chrono::hours(1));
      };
      platform.runThread();
      stopped->set_value(false);
    }).detach();
    const bool result = stopped->get_future().get();
    platform.onRelease = nullptr;
    platform.endThread();
    return result;
  }

  static void handle(void*, std::unique_ptr<LingoMessage>) {}
};

/// The reader has done its last step, but its thread has not ended.
TEST_F(Reader, IsNotTakenForKilledAfterItsLastStep) {
  platform.calls.clear();
  platform.runThread();
  const size_t releases = platform.callsOf("ReleaseSemaphore").size();
  start();
  transport->releaseLocksOfKilledReader();
  EXPECT_THAT(platform.callsOf("ReleaseSemaphore"), SizeIs(releases));
}

TEST_F(KilledReader, NeverBlocksDestruction) {
  int releases = 0;
  for (bool stopped = true; stopped; ++releases) {
    SCOPED_TRACE(releases);
    platform.reset();
    std::unique_ptr<Transport> transport = kUsbKind.create();
    ASSERT_TRUE(transport->addHandler(this, handle, 0x01, 0x00));
    ASSERT_TRUE(transport->open("IPD1:") && transport->startReadData());
    platform.arrive(kFrame1 + kFrame2);
    stopped = runToRelease(releases);
    transport->releaseLocksOfKilledReader();
    transport->removeHandlers(this);
    transport->shutDown();
    transport->flushMessages();
  }
  EXPECT_GT(releases, 6)
      << "of the handlers, the messages, their signal, the device, the transports";
}

}  // namespace
}  // namespace ipodctl::reader
