#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "link/device_link.h"
#include "support/console.h"

namespace ipodctl {
namespace {

using host_test::BackgroundCall;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/// Either kind of transport over a pseudo terminal, with its own reader thread. The serial kind
/// polls every 100 ms.
class DeviceLinkTest : public testing::TestWithParam<LinkKind> {
 protected:
  Transport& transport() { return *link.transport; }

  HandleBalance balance;
  DeviceLink link{GetParam()};
};

TEST_P(DeviceLinkTest, ReceivesMessages) {
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(link.send(kFrame1));
  EXPECT_EQ(link.takenCommand(), 1);
  ASSERT_TRUE(link.send(kFrame2 + link.onWire(kFrame3)));
  EXPECT_EQ(link.takenCommand(), 2);
  EXPECT_EQ(link.takenCommand(), 3);
}

TEST_P(DeviceLinkTest, SendsMessages) {
  ASSERT_TRUE(link.start());
  ExtendedInterfaceMessage message;
  ASSERT_TRUE(message.buildSelectDbRecord(Category::kArtists, 7));
  EXPECT_TRUE(transport().sendMessage(message));
  const Bytes expected =
      link.onWire({0x55, 0x08, 0x04, 0x00, 0x17, 0x02, 0x00, 0x00, 0x00, 0x07, 0xD4});
  EXPECT_EQ(link.wire.receive(expected.size()), expected);
}

TEST_P(DeviceLinkTest, SendsWithoutItsReader) {
  ASSERT_TRUE(transport().open(link.kind.deviceName));
  EXPECT_TRUE(transport().sendSyncByte());
  EXPECT_EQ(link.wire.receive(1), Bytes{0xFF});
}

TEST_P(DeviceLinkTest, DoesNotOpenAnUnknownDevice) {
  EXPECT_FALSE(transport().open("XYZ9:"));
  EXPECT_FALSE(transport().isOpen());
  EXPECT_FALSE(transport().startReadData());
}

TEST_P(DeviceLinkTest, DoesNotOpenADeviceThatIsAlreadyOpen) {
  ASSERT_TRUE(transport().open(link.kind.deviceName));
  EXPECT_FALSE(link.kind.create()->open(link.kind.deviceName));
}

TEST_P(DeviceLinkTest, StartsItsReaderOnce) {
  ASSERT_TRUE(link.start());
  EXPECT_FALSE(transport().startReadData());
  EXPECT_EQ(deskRunningThreads(), 1u);
}

TEST_P(DeviceLinkTest, OpensAgainWhileItsReaderRuns) {
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(link.start());
  EXPECT_EQ(deskRunningThreads(), 1u);
  ASSERT_TRUE(link.send(kFrame3));
  EXPECT_EQ(link.takenCommand(), 3);
}

TEST_P(DeviceLinkTest, ClosesDuringABlockedRead) {
  ASSERT_TRUE(link.start());
  if (link.kind.sync.empty()) {
    ASSERT_TRUE(eventually(isAReaderBlocked));
  }
  EXPECT_TRUE(returnsInTime([&] { transport().close(); }));
  EXPECT_FALSE(transport().isOpen());
  EXPECT_TRUE(transport().awaitReader());
  EXPECT_EQ(deskRunningThreads(), 0u);
  EXPECT_TRUE(link.wire.waitUntilDeviceCloses());
}

TEST_P(DeviceLinkTest, ClosesTwice) {
  ASSERT_TRUE(link.start());
  EXPECT_TRUE(returnsInTime([&] {
    transport().close();
    transport().close();
    transport().stopReadData();
  }));
  EXPECT_FALSE(transport().isOpen());
}

TEST_P(DeviceLinkTest, ClosesOnTwoThreadsAtOnce) {
  for (int i = 0; i < 5; ++i) {
    ASSERT_TRUE(link.start());
    BackgroundCall other([&] { return transport().close(); });
    EXPECT_TRUE(returnsInTime([&] { transport().close(); }));
    EXPECT_TRUE(other.result().has_value());
  }
}

TEST_P(DeviceLinkTest, EndsItsReaderWhenTheOtherSideHangsUp) {
  ASSERT_TRUE(link.start());
  BackgroundCall waiter([&] { return transport().getMessage(0, 0) == nullptr; });
  link.wire.hangUp();
  EXPECT_EQ(waiter.result(), true);
  EXPECT_TRUE(eventually([&] { return !transport().isOpen(); }));
  EXPECT_TRUE(transport().awaitReader());
  EXPECT_EQ(transport().getMessage(0, 0), nullptr);
}

TEST_P(DeviceLinkTest, WakesAWaiterWithoutLimitWhenItCloses) {
  ASSERT_TRUE(link.start());
  BackgroundCall waiter([&] { return transport().getMessage(0, 0) == nullptr; });
  EXPECT_TRUE(returnsInTime([&] { transport().close(); }));
  EXPECT_EQ(waiter.result(), true);
}

TEST_P(DeviceLinkTest, HandsAQueuedMessageToAWaiterAtOnce) {
  ASSERT_TRUE(link.start());
  BackgroundCall waiter([&] { return link.takenCommand(); });
  ASSERT_TRUE(link.send(kFrame2));
  EXPECT_EQ(waiter.result(), 2);
}

TEST_P(DeviceLinkTest, EndsItsReaderAtABadChecksum) {
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(link.send(kBadFrame));
  EXPECT_EQ(link.takenCommand(), -1);
  EXPECT_TRUE(transport().awaitReader());
  EXPECT_FALSE(transport().isOpen());
  EXPECT_EQ(transport().getMessage(0, 0), nullptr);
}

TEST_P(DeviceLinkTest, RunsAgainAfterAFailure) {
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(link.send(kBadFrame));
  EXPECT_EQ(link.takenCommand(), -1);
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(link.send(kFrame3));
  EXPECT_EQ(link.takenCommand(), 3);
}

/// Handlers that run on the reader thread and act on the transport.
class ActingHandler : public DeviceLinkTest {
 protected:
  /// Lets the reader call `action` with the transport, and waits until it returns.
  void actOnReader(std::function<void(Transport&)> action) {
    act = std::move(action);
    ASSERT_TRUE(transport().addHandler(this, handle, 0x01, 0x00));
    ASSERT_TRUE(link.start());
    ASSERT_TRUE(link.send(kFrame1));
    EXPECT_EQ(done.get_future().wait_for(host_test::kPatience), std::future_status::ready);
  }

 private:
  static void handle(void* object, std::unique_ptr<LingoMessage>) {
    auto& self = *static_cast<ActingHandler*>(object);
    self.act(self.transport());
    self.done.set_value();
  }

  std::function<void(Transport&)> act;
  std::promise<void> done;
};

TEST_P(ActingHandler, StopsTheReader) {
  actOnReader([](Transport& own) { EXPECT_TRUE(own.stopReadData()); });
  EXPECT_TRUE(transport().awaitReader());
  EXPECT_FALSE(transport().isOpen());
}

TEST_P(ActingHandler, ClosesTheTransport) {
  actOnReader([](Transport& own) { EXPECT_TRUE(own.close()); });
  EXPECT_TRUE(transport().awaitReader());
  EXPECT_FALSE(transport().isOpen());
}

TEST_P(ActingHandler, SendsAMessage) {
  actOnReader([](Transport& own) {
    GeneralMessage message;
    message.setCommand(0x05);
    EXPECT_TRUE(own.sendMessage(message));
  });
  const Bytes expected = link.onWire({0x55, 0x02, 0x00, 0x05, 0xF9});
  EXPECT_EQ(link.wire.receive(expected.size()), expected);
}

TEST_P(ActingHandler, FlushesTheQueue) {
  actOnReader([](Transport& own) { EXPECT_EQ(own.flushMessages(), 0); });
  ASSERT_TRUE(link.send(kFrame2));
  EXPECT_EQ(link.takenCommand(), 2);
}

TEST_P(ActingHandler, AllowsTheDestructionOfTheTransportThatItStopped) {
  actOnReader([](Transport& own) { own.stopReadData(); });
  EXPECT_TRUE(returnsInTime([&] { link.transport.reset(); }));
}

TEST_P(DeviceLinkTest, CanBeDestroyedWhileItsReaderWaits) {
  ASSERT_TRUE(link.start());
  EXPECT_TRUE(returnsInTime([&] { link.transport.reset(); }));
  EXPECT_EQ(deskRunningThreads(), 0u);
}

TEST_P(DeviceLinkTest, CanBeDestroyedWithMessagesQueued) {
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(link.send(kFrame1 + link.onWire(kFrame2)));
  EXPECT_EQ(link.takenCommand(), 1);
  EXPECT_TRUE(returnsInTime([&] { link.transport.reset(); }));
}

TEST_P(DeviceLinkTest, LogsItsLifeWhileTheDebugFlagIsSet) {
  const std::string text = printedInDebug([&] {
    ASSERT_TRUE(link.start());
    EXPECT_TRUE(eventually([] { return deskRunningThreads() == 1; }));
    EXPECT_TRUE(link.send(kFrame2));
    EXPECT_EQ(link.takenCommand(), 2);
    transport().close();
    EXPECT_TRUE(transport().awaitReader());
  });
  EXPECT_NE(text.find(link.kind.openText), std::string::npos) << text;
  EXPECT_NE(text.find("received msg dim 3\nLingo=0\tCommand=0x2 Data=0x7 \n"), std::string::npos)
      << text;
  EXPECT_NE(text.find(link.kind.closedText), std::string::npos) << text;
  EXPECT_NE(text.find("exit from thReadDataLocal\n"), std::string::npos) << text;
}

INSTANTIATE_TEST_SUITE_P(Kinds, DeviceLinkTest, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);
INSTANTIATE_TEST_SUITE_P(Kinds, ActingHandler, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);

TEST(SerialDevice, OpensWith57600Baud8N1) {
  DeviceLink link(kSerialKind);
  EXPECT_EQ(printedInDebug([&] { EXPECT_TRUE(link.transport->open("COM1:")); }),
            kSerialKind.openText);
  const termios settings = link.wire.settings();
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B57600});
  EXPECT_EQ(settings.c_cflag & (CSIZE | PARENB | CSTOPB), tcflag_t{CS8});
}

/// Waits for a stated time-out: one second.
TEST(GetMessage, ReturnsNullAfterTheGivenTime) {
  DeviceLink link(kUsbKind);
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(eventually(isAReaderBlocked));
  const auto start = Clock::now();
  EXPECT_EQ(link.transport->getMessage(0, 1), nullptr);
  EXPECT_GE(Clock::now() - start, milliseconds(1000));
  EXPECT_TRUE(link.transport->isOpen());
}

/// A USB link whose reader is stuck in a handler until it is released.
class StuckReader : public testing::Test {
 protected:
  StuckReader() {
    link.transport->addHandler(&handler, StuckHandler::handle, 0x01, 0x00);
    EXPECT_TRUE(link.start());
    EXPECT_TRUE(link.send(kFrame1));
    EXPECT_TRUE(handler.isEntered());
  }

  void release() {
    handler.release();
    link.transport->close();
    EXPECT_TRUE(link.transport->awaitReader());
  }

  HandleBalance balance;
  StuckHandler handler;
  DeviceLink link{kUsbKind};
};

/// Waits for a stated time-out: 300 ms.
TEST_F(StuckReader, DelaysAStopBy300Milliseconds) {
  const auto start = Clock::now();
  EXPECT_TRUE(link.transport->stopReadData());
  EXPECT_GE(Clock::now() - start, milliseconds(300));
  EXPECT_EQ(deskRunningThreads(), 1u);
  release();
}

/// Waits for a stated time-out: 300 ms.
TEST_F(StuckReader, DoesNotDelayTheWakeOfAWaiter) {
  BackgroundCall waiter([&] { return link.transport->getMessage(0, 0) == nullptr; });
  EXPECT_TRUE(link.transport->stopReadData());
  EXPECT_EQ(waiter.result(), true);
  release();
}

TEST_F(StuckReader, DoesNotBlockTheHandlerTable) {
  Transport& transport = *link.transport;
  EXPECT_TRUE(returnsInTime([&] {
    EXPECT_TRUE(transport.addHandler(this, StuckHandler::handle, 0x02, 0x00));
    EXPECT_TRUE(transport.removeHandlers(this));
  }));
  release();
}

/// Waits for two stated time-outs: 300 ms to stop the reader and a second for its end.
TEST_F(StuckReader, PreventsTheNextOpen) {
  EXPECT_FALSE(link.start());
  EXPECT_EQ(deskRunningThreads(), 1u);
  release();
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(link.send(kFrame2));
  EXPECT_EQ(link.takenCommand(), 2);
}

/// Waits for two stated time-outs: 300 ms to stop the reader and a second in which others give up.
TEST_F(StuckReader, IsAwaitedWithoutLimitByTheDestructor) {
  BackgroundCall end([&] {
    link.transport.reset();
    return true;
  });
  EXPECT_TRUE(link.wire.waitUntilDeviceCloses());
  std::this_thread::sleep_for(milliseconds(1500));
  EXPECT_FALSE(end.isDone());
  handler.release();
  EXPECT_EQ(end.result(), true);
  EXPECT_EQ(deskRunningThreads(), 0u);
}

}  // namespace
}  // namespace ipodctl
