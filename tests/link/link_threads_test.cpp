#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <string>
#include <thread>

#include "lingo/general_message.h"
#include "link/device_link.h"

namespace ipodctl {

// Several threads in one transport or in two. All use USB devices, whose reads need no polling.

namespace {

using host_test::BackgroundCall;

/// A thread that calls `step` repeatedly until end().
class Repeating {
 public:
  template <class Step>
  explicit Repeating(Step step)
      : call([this, step]() mutable {
          while (!ended)
            step();
          return true;
        }) {}
  Repeating(const Repeating&) = delete;
  Repeating& operator=(const Repeating&) = delete;

  ~Repeating() {
    if (!ended) end();
  }

  /// Returns false when the last step hangs.
  bool end() {
    ended = true;
    return call.result().has_value();
  }

 private:
  std::atomic<bool> ended{false};
  BackgroundCall<bool> call;
};

class LinkThreads : public testing::Test {
 protected:
  Transport& transport() { return *link.transport; }

  /// Sends a frame and returns whether its message arrives, after those that are already under way.
  bool works() {
    bool came = false;
    return link.send(kFrame3) && eventually([&] {
             const auto message = transport().getMessage(0, 1);
             came = message != nullptr && message->getCommand() == 3;
             return came || !transport().isOpen();
           }) &&
           came;
  }

  HandleBalance balance;
  DeviceLink link{kUsbKind};
};

TEST_F(LinkThreads, ReopenAtOnceAfterAFailure200Times) {
  ASSERT_TRUE(link.start());
  for (int i = 0; i < 200; ++i) {
    SCOPED_TRACE(i);
    ASSERT_TRUE(link.send(kBadFrame));
    ASSERT_EQ(link.takenCommand(), -1);
    ASSERT_TRUE(returnsInTime([&] { EXPECT_TRUE(link.start()); }));
    ASSERT_LE(deskRunningThreads(), 1u);
    ASSERT_TRUE(works());
  }
}

TEST_F(LinkThreads, ReopenWhileTheReaderIsFailing200Times) {
  ASSERT_TRUE(link.start());
  for (int i = 0; i < 200; ++i) {
    SCOPED_TRACE(i);
    ASSERT_TRUE(link.send(kBadFrame));
    ASSERT_TRUE(returnsInTime([&] { EXPECT_TRUE(link.start()); }));
    ASSERT_LE(deskRunningThreads(), 1u);
  }
  EXPECT_TRUE(eventually([&] { return link.start() && works(); }));
}

TEST_F(LinkThreads, OpenAndCloseLeaveNoHandleOpen) {
  ASSERT_TRUE(link.start());
  const unsigned handles = deskOpenHandles();
  for (int i = 0; i < 20; ++i) {
    ASSERT_TRUE(link.start());
    ASSERT_EQ(deskOpenHandles(), handles);
  }
}

TEST_F(LinkThreads, CloseTheDeviceOnceFromTwoThreadsAtOnce) {
  std::atomic<int> rounds{0};
  std::atomic<int> closed{0};
  Repeating closer([&] {
    if (closed == rounds) return;
    transport().close();
    ++closed;
  });
  for (int i = 0; i < 1000; ++i) {
    ASSERT_TRUE(transport().open(link.kind.deviceName));
    ++rounds;
    transport().close();
    ASSERT_TRUE(eventually([&] { return closed == rounds; }));
    ASSERT_EQ(refusedCloses(), 0);
  }
  EXPECT_TRUE(closer.end());
}

TEST_F(LinkThreads, CloseAtAnyMomentOfTheReadersStart) {
  for (int i = 0; i < 100; ++i) {
    ASSERT_TRUE(link.start());
    for (int yields = 0; yields < i % 10; ++yields)
      std::this_thread::yield();
    ASSERT_TRUE(returnsInTime([&] { transport().close(); }));
    ASSERT_TRUE(transport().awaitReader());
  }
  ASSERT_TRUE(link.start());
  EXPECT_TRUE(works());
}

TEST_F(LinkThreads, DestroyATransportWhoseReaderIsBusy) {
  for (int i = 0; i < 20; ++i) {
    ASSERT_TRUE(link.start());
    for (int frames = 0; frames < 10; ++frames)
      ASSERT_TRUE(link.send(kFrame1));
    ASSERT_TRUE(returnsInTime([&] { link.transport.reset(); }));
    ASSERT_EQ(deskRunningThreads(), 0u);
    link.transport = link.kind.create();
  }
}

TEST_F(LinkThreads, DestroyATransportWhoseReaderIsFailing) {
  for (int i = 0; i < 50; ++i) {
    ASSERT_TRUE(link.start());
    ASSERT_TRUE(link.send(kBadFrame));
    ASSERT_TRUE(returnsInTime([&] { link.transport.reset(); }));
    ASSERT_EQ(deskRunningThreads(), 0u);
    link.transport = link.kind.create();
  }
}

TEST_F(LinkThreads, FlushWhileAnotherThreadWaitsForAMessage) {
  ASSERT_TRUE(link.start());
  Repeating waiter([&] { transport().getMessage(1000000, 0); });
  Repeating flusher([&] { transport().flushMessages(); });
  for (int i = 0; i < 500; ++i)
    ASSERT_TRUE(link.send(kFrame1));
  EXPECT_TRUE(flusher.end());
  EXPECT_TRUE(waiter.end());
  EXPECT_TRUE(works());
}

TEST_F(LinkThreads, FlushWhileAnotherThreadWaitsWithoutLimit) {
  ASSERT_TRUE(link.start());
  BackgroundCall waiter([&] { return transport().getMessage(0, 0) != nullptr; });
  for (int i = 0; i < 100; ++i)
    ASSERT_TRUE(returnsInTime([&] { transport().flushMessages(); }));
  ASSERT_TRUE(link.send(kFrame1));
  EXPECT_EQ(waiter.result(), true);
}

TEST_F(LinkThreads, WaitWithoutLimitUntilTheReaderIsStopped) {
  ASSERT_TRUE(link.start());
  std::atomic<int> returned{0};
  // An emulator has other threads, which wait now and then.
  std::array<std::atomic<pid_t>, 3> waiting{};
  std::atomic<size_t> begun{0};
  const auto areAllWaiting = [&] {
    return std::all_of(waiting.begin(), waiting.end(), [](pid_t thread) {
      return sleepsIn("/proc/self/task/" + std::to_string(thread), host_test::kFutexCalls);
    });
  };
  const auto waitForever = [&] {
    waiting[begun++] = gettid();
    const bool gotNothing = transport().getMessage(0, 0) == nullptr;
    ++returned;
    return gotNothing;
  };
  BackgroundCall first(waitForever);
  BackgroundCall second(waitForever);
  BackgroundCall third(waitForever);
  ASSERT_TRUE(eventually(areAllWaiting));
  EXPECT_TRUE(returnsInTime([&] { transport().close(); }));
  EXPECT_TRUE(eventually([&] { return returned == 3; })) << returned << " of 3 have returned";
  // Wakes those that still wait, so that the test ends.
  EXPECT_TRUE(eventually([&] { return returned == 3 || (link.start() && !link.send(kFrame1)); }));
  EXPECT_EQ(first.result(), true);
  EXPECT_EQ(second.result(), true);
  EXPECT_EQ(third.result(), true);
}

TEST_F(LinkThreads, FlushAfterTheSignalWasConsumed) {
  ASSERT_TRUE(link.start());
  ASSERT_TRUE(link.send(kFrame1 + kFrame2));
  ASSERT_EQ(link.takenCommand(), 1);
  ASSERT_TRUE(link.start());
  EXPECT_TRUE(returnsInTime([&] { transport().flushMessages(); }));
  EXPECT_TRUE(works());
}

TEST_F(LinkThreads, TakeEveryMessageOnce) {
  constexpr int kMessages = 400;
  ASSERT_TRUE(link.start());
  std::atomic<int> taken{0};
  const auto takeAll = [&] {
    while (taken < kMessages)
      if (transport().getMessage(1000000, 0) != nullptr) ++taken;
    return true;
  };
  BackgroundCall first(takeAll);
  BackgroundCall second(takeAll);
  BackgroundCall third(takeAll);
  for (int i = 0; i < kMessages; ++i)
    ASSERT_TRUE(link.send(kFrame1));
  EXPECT_TRUE(eventually([&] { return taken == kMessages; }));
  EXPECT_TRUE(first.result() && second.result() && third.result());
  EXPECT_EQ(taken, kMessages);
  EXPECT_EQ(transport().getMessage(1000000, 0), nullptr);
}

TEST_F(LinkThreads, StopAndRestartWhileOthersTakeAndFlush) {
  ASSERT_TRUE(link.start());
  Repeating taker([&] { transport().getMessage(1000000, 0); });
  Repeating otherTaker([&] { transport().getMessage(2000000, 0); });
  Repeating flusher([&] {
    transport().flushMessages();
    std::this_thread::yield();
  });
  for (int i = 0; i < 50; ++i) {
    ASSERT_TRUE(link.send(kFrame1 + kFrame2));
    ASSERT_TRUE(returnsInTime([&] { EXPECT_TRUE(link.start()); }));
  }
  EXPECT_TRUE(taker.end());
  EXPECT_TRUE(otherTaker.end());
  EXPECT_TRUE(flusher.end());
  // Messages that the last stop left in the queue have no signal any more.
  transport().flushMessages();
  EXPECT_TRUE(works());
}

/// Returns General command 0x20 with 300 bytes of one value, as it is on the wire.
Bytes longFrame(uint8_t value, uint8_t checksum) {
  return Bytes{0x55, 0x00, 0x01, 0x2E, 0x00, 0x20} + Bytes(300, value) + Bytes{checksum};
}

TEST_F(LinkThreads, SendAtOnceWithoutMixingTheirFrames) {
  constexpr int kFrames = 100;
  const Bytes frames[] = {longFrame('A', 0x85), longFrame('B', 0x59)};
  ASSERT_TRUE(link.start());
  const auto sendAll = [&](uint8_t value) {
    GeneralMessage message;
    receive(message, 0x20, Bytes(300, value));
    bool sent = true;
    for (int i = 0; i < kFrames; ++i)
      sent = transport().sendMessage(message) && sent;
    return sent;
  };
  BackgroundCall first([&] { return sendAll('A'); });
  BackgroundCall second([&] { return sendAll('B'); });
  for (int i = 0; i < 2 * kFrames; ++i) {
    const Bytes frame = link.wire.receive(frames[0].size());
    ASSERT_TRUE(frame == frames[0] || frame == frames[1]) << testing::PrintToString(frame);
  }
  EXPECT_EQ(first.result(), true);
  EXPECT_EQ(second.result(), true);
}

TEST_F(LinkThreads, CloseDuringABlockedWrite) {
  ASSERT_TRUE(link.start());
  BackgroundCall sender([&] {
    GeneralMessage message;
    receive(message, 0x20, Bytes(30000, 0x00));
    int sent = 0;
    while (transport().sendMessage(message))
      ++sent;
    return sent;
  });
  for (int looks = 0; looks < 50; ++looks)
    ASSERT_TRUE(sender.waitUntilBlocked());
  EXPECT_TRUE(returnsInTime([&] { transport().close(); }));
  EXPECT_TRUE(sender.result().has_value());
}

/// Counts its messages.
struct Counter {
  std::atomic<int> count{0};
  static void handle(void* object, std::unique_ptr<LingoMessage> message) {
    static_cast<Counter*>(object)->count += message->getCommand() == 0x01 ? 1 : 1000000;
  }
};

TEST_F(LinkThreads, AddAndRemoveHandlersWhileMessagesFlow) {
  constexpr int kMessages = 1000;
  Counter counter;
  Counter bystander;
  ASSERT_TRUE(link.start());
  Repeating registrar([&] {
    transport().addHandler(&bystander, Counter::handle, 0x02, 0x00);
    transport().addHandler(&counter, Counter::handle, 0x01, 0x00);
    std::this_thread::yield();
    transport().removeHandler(&counter, Counter::handle, 0x01, 0x00);
    transport().removeHandlers(&bystander);
  });
  std::atomic<int> taken{0};
  Repeating taker([&] { taken += transport().getMessage(1000000, 0) != nullptr ? 1 : 0; });
  for (int i = 0; i < kMessages; ++i)
    ASSERT_TRUE(link.send(kFrame1));
  EXPECT_TRUE(eventually([&] { return counter.count + taken >= kMessages; }));
  EXPECT_TRUE(registrar.end());
  EXPECT_TRUE(taker.end());
  EXPECT_EQ(counter.count + taken, kMessages);
  EXPECT_EQ(bystander.count, 0);
  transport().close();
  EXPECT_TRUE(transport().awaitReader());
}

/// Acknowledges each message on the reader thread.
struct Acknowledger {
  Transport& transport;
  static void handle(void* object, std::unique_ptr<LingoMessage>) {
    GeneralMessage answer;
    answer.setCommand(0x05);
    EXPECT_TRUE(static_cast<Acknowledger*>(object)->transport.sendMessage(answer));
  }
};

TEST_F(LinkThreads, SendFromAHandlerWhileAHostThreadSends) {
  constexpr int kMessages = 200;
  const Bytes acknowledgement = {0x55, 0x02, 0x00, 0x05, 0xF9};
  const Bytes command = {0x55, 0x02, 0x00, 0x07, 0xF7};
  Acknowledger acknowledger{transport()};
  ASSERT_TRUE(transport().addHandler(&acknowledger, Acknowledger::handle, 0x01, 0x00));
  ASSERT_TRUE(link.start());
  BackgroundCall sender([&] {
    GeneralMessage message;
    message.setCommand(0x07);
    bool sent = true;
    for (int i = 0; i < kMessages; ++i)
      sent = transport().sendMessage(message) && sent;
    return sent;
  });
  int acknowledged = 0;
  for (int i = 0; i < kMessages; ++i)
    ASSERT_TRUE(link.send(kFrame1));
  for (int i = 0; i < 2 * kMessages; ++i) {
    const Bytes frame = link.wire.receive(5);
    ASSERT_TRUE(frame == acknowledgement || frame == command) << testing::PrintToString(frame);
    acknowledged += frame == acknowledgement ? 1 : 0;
  }
  EXPECT_EQ(acknowledged, kMessages);
  EXPECT_EQ(sender.result(), true);
  transport().close();
  EXPECT_TRUE(transport().awaitReader());
}

/// Two links at once, each with its own device name.
class TwoLinks : public testing::Test {
 protected:
  TwoLinks()
      : devices("IPD1:=" + firstWire.path() + ",IPD2:=" + secondWire.path()),
        first(kUsbKind.create()),
        second(kUsbKind.create()) {}

  bool startFirst() { return first->open("IPD1:") && first->startReadData(); }
  bool startSecond() { return second->open("IPD2:") && second->startReadData(); }

  HandleBalance balance;
  host_test::PtyPair firstWire;
  host_test::PtyPair secondWire;
  host_test::DeviceMapping devices;
  std::unique_ptr<Transport> first;
  std::unique_ptr<Transport> second;
};

TEST_F(TwoLinks, AreBothClosedByABadChecksumOnOne) {
  ASSERT_TRUE(startFirst());
  ASSERT_TRUE(startSecond());
  BackgroundCall waiter([&] { return second->getMessage(0, 0) == nullptr; });
  ASSERT_TRUE(firstWire.send(kBadFrame));
  EXPECT_EQ(waiter.result(), true);
  EXPECT_TRUE(first->awaitReader());
  EXPECT_TRUE(second->awaitReader());
  EXPECT_FALSE(first->isOpen());
  EXPECT_FALSE(second->isOpen());
}

/// A reader that closes all transports waits for the first one, whose own reader is stuck.
/// Meanwhile the second one, which it closes next, is opened again. Waits for a stated time-out:
/// 300 ms.
TEST_F(TwoLinks, KeepADeviceThatIsOpenedWhileTheOldReaderEnds) {
  StuckHandler stuck;
  ASSERT_TRUE(first->addHandler(&stuck, StuckHandler::handle, 0x01, 0x00));
  ASSERT_TRUE(startFirst());
  ASSERT_TRUE(startSecond());
  ASSERT_TRUE(firstWire.send(kFrame1));
  ASSERT_TRUE(stuck.isEntered());
  ASSERT_TRUE(secondWire.send(kBadFrame));
  ASSERT_TRUE(firstWire.waitUntilDeviceCloses());

  EXPECT_TRUE(startSecond());
  ASSERT_TRUE(secondWire.send(kFrame2));
  const auto message = second->getMessage(0, 10);
  EXPECT_NE(message, nullptr);
  EXPECT_TRUE(second->isOpen());
  stuck.release();
  EXPECT_TRUE(first->awaitReader());
}

TEST_F(TwoLinks, FailAtOnce) {
  for (int i = 0; i < 50; ++i) {
    SCOPED_TRACE(i);
    ASSERT_TRUE(firstWire.send(kBadFrame));
    ASSERT_TRUE(secondWire.send(kBadFrame));
    ASSERT_TRUE(returnsInTime([&] { startFirst(); }));
    ASSERT_TRUE(returnsInTime([&] { startSecond(); }));
    ASSERT_TRUE(returnsInTime([&] {
      first->close();
      second->close();
    }));
    ASSERT_TRUE(first->awaitReader());
    ASSERT_TRUE(second->awaitReader());
    ASSERT_EQ(deskRunningThreads(), 0u);
  }
}

TEST_F(TwoLinks, SurviveADestructionDuringAFailureOfTheOther) {
  for (int i = 0; i < 50; ++i) {
    SCOPED_TRACE(i);
    // The destructor of the second one stops its reader, which closes the first one, too. The first
    // one has perhaps not read its bad frame then. It fails as soon as it starts in the next round,
    // and closes both.
    ASSERT_TRUE(startSecond());
    ASSERT_TRUE(startFirst());
    ASSERT_TRUE(firstWire.send(kBadFrame));
    ASSERT_TRUE(returnsInTime([&] { second.reset(); }));
    ASSERT_TRUE(first->awaitReader());
    second = kUsbKind.create();
  }
}

TEST_F(TwoLinks, OpenDuringAFailureOfTheOther) {
  for (int i = 0; i < 20; ++i) {
    SCOPED_TRACE(i);
    ASSERT_TRUE(startFirst());
    ASSERT_TRUE(firstWire.send(kBadFrame));
    ASSERT_TRUE(returnsInTime([&] { startSecond(); }));
    ASSERT_TRUE(first->awaitReader());
  }
  first->close();
  ASSERT_TRUE(first->awaitReader());
  second->close();
  ASSERT_TRUE(second->awaitReader());
  EXPECT_TRUE(startSecond());
  ASSERT_TRUE(secondWire.send(kFrame2));
  const auto message = second->getMessage(0, 10);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->getCommand(), 2);
}

}  // namespace
}  // namespace ipodctl
