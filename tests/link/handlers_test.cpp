#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "link/link_kinds.h"
#include "link/listener.h"
#include "support/scripted_platform.h"

namespace ipodctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Digital Audio TrackNewAudioAttributes without data, General iPodAck with one byte, and an
/// Extended Interface command that has the same low byte.
const Bytes kAudioFrame = {0x55, 0x02, 0x0A, 0x04, 0xF0};
const Bytes kAckFrame = {0x55, 0x03, 0x00, 0x02, 0x07, 0xF4};
const Bytes kExtendedFrame = {0x55, 0x03, 0x04, 0x01, 0x02, 0xF6};

class Handlers : public ScriptedPlatformTest {
 protected:
  /// Lets the reader read these bytes, then calls `afterwards` on it, then ends it.
  void receive(const Bytes& frames, std::function<void()> afterwards = nullptr) {
    ASSERT_TRUE(transport->open("IPD1:"));
    ASSERT_TRUE(transport->startReadData());
    platform.arrive(frames);
    platform.arrivals.push_back({{}, true, std::move(afterwards)});
    platform.runThread();
    platform.arrivals.clear();
  }

  const std::unique_ptr<Transport> transport = kUsbKind.create();
  std::vector<std::string> heard;
  Listener anna{"anna", heard};
  Listener berta{"berta", heard};
};

TEST_F(Handlers, ReceiveTheMessagesOfTheirLingoAndCommand) {
  EXPECT_TRUE(transport->addHandler(&anna, Listener::first, 0x04, 0x0A));
  EXPECT_TRUE(transport->addHandler(&berta, Listener::first, 0x02, 0x00));
  receive(kAudioFrame + kAckFrame + kAudioFrame);
  EXPECT_THAT(heard, ElementsAre("anna first 10/4/0", "berta first 0/2/1", "anna first 10/4/0"));
}

TEST_F(Handlers, AreCalledInsteadOfQueueing) {
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x04, 0x0A));
  receive(kAudioFrame + kAckFrame + kAudioFrame, [&] {
    const auto message = transport->getMessage(0, 1);
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->getCommand(), 0x02);
    EXPECT_EQ(transport->getMessage(0, 1), nullptr);
  });
}

TEST_F(Handlers, AreMatchedByAll16BitsOfTheCommand) {
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x0002, 0x04));
  ASSERT_TRUE(transport->addHandler(&berta, Listener::first, 0x0102, 0x04));
  receive(kExtendedFrame);
  EXPECT_THAT(heard, ElementsAre("berta first 4/258/0"));
}

TEST_F(Handlers, AreNotCalledForAnotherLingo) {
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x02, 0x0A));
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x0102, 0x00));
  receive(kAckFrame + kExtendedFrame);
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(Handlers, AreAllCalledInTheOrderOfRegistration) {
  ASSERT_TRUE(transport->addHandler(&berta, Listener::second, 0x02, 0x00));
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x02, 0x00));
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x04, 0x0A));
  ASSERT_TRUE(transport->addHandler(&berta, Listener::first, 0x02, 0x00));
  receive(kAckFrame);
  EXPECT_THAT(heard, ElementsAre("berta second 0/2/1", "anna first 0/2/1", "berta first 0/2/1"));
}

TEST_F(Handlers, AreCalledOncePerRegistration) {
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x02, 0x00));
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x02, 0x00));
  receive(kAckFrame);
  EXPECT_THAT(heard, ElementsAre("anna first 0/2/1", "anna first 0/2/1"));
}

TEST_F(Handlers, NeedAnObjectAndAFunction) {
  EXPECT_FALSE(transport->addHandler(nullptr, Listener::first, 0x02, 0x00));
  EXPECT_FALSE(transport->addHandler(&anna, nullptr, 0x02, 0x00));
  EXPECT_FALSE(transport->removeHandler(nullptr, Listener::first, 0x02, 0x00));
  EXPECT_FALSE(transport->removeHandler(&anna, nullptr, 0x02, 0x00));
  EXPECT_FALSE(transport->removeHandlers(nullptr));
}

TEST_F(Handlers, StayRegisteredWhenTheReaderEnds) {
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x02, 0x00));
  receive(kAckFrame);
  receive(kAckFrame);
  EXPECT_THAT(heard, ElementsAre("anna first 0/2/1", "anna first 0/2/1"));
}

TEST_F(Handlers, ReceiveOnlyTheMessagesOfTheirTransport) {
  const std::unique_ptr<Transport> other = kUsbKind.create();
  ASSERT_TRUE(other->addHandler(&anna, Listener::first, 0x02, 0x00));
  receive(kAckFrame);
  EXPECT_THAT(heard, IsEmpty());
}

/// Has four registrations that each differ from the first in one field.
class RemoveHandler : public Handlers {
 protected:
  RemoveHandler() {
    transport->addHandler(&anna, Listener::first, 0x02, 0x00);
    transport->addHandler(&berta, Listener::first, 0x02, 0x00);
    transport->addHandler(&anna, Listener::second, 0x02, 0x00);
    transport->addHandler(&anna, Listener::first, 0x04, 0x00);
    transport->addHandler(&anna, Listener::first, 0x02, 0x0A);
  }
};

TEST_F(RemoveHandler, RemovesTheFirstEqualRegistration) {
  EXPECT_TRUE(transport->removeHandler(&anna, Listener::second, 0x02, 0x00));
  receive(kAckFrame);
  EXPECT_THAT(heard, ElementsAre("anna first 0/2/1", "berta first 0/2/1"));
}

TEST_F(RemoveHandler, ComparesAllFieldsOfARegistration) {
  EXPECT_TRUE(transport->removeHandler(&anna, Listener::first, 0x02, 0x0A));
  EXPECT_TRUE(transport->removeHandler(&anna, Listener::first, 0x04, 0x00));
  EXPECT_TRUE(transport->removeHandler(&berta, Listener::first, 0x02, 0x00));
  receive(kAckFrame);
  EXPECT_THAT(heard, ElementsAre("anna first 0/2/1", "anna second 0/2/1"));
}

TEST_F(RemoveHandler, FailsWhenNoneIsEqual) {
  EXPECT_FALSE(transport->removeHandler(&berta, Listener::second, 0x02, 0x00));
  EXPECT_FALSE(transport->removeHandler(&anna, Listener::first, 0x0102, 0x00));
  EXPECT_FALSE(transport->removeHandler(&anna, Listener::first, 0x02, 0x04));
  EXPECT_TRUE(transport->removeHandler(&anna, Listener::first, 0x02, 0x00));
  EXPECT_FALSE(transport->removeHandler(&anna, Listener::first, 0x02, 0x00));
}

TEST_F(RemoveHandler, RemovesOneOfTwoEqualRegistrations) {
  transport->addHandler(&anna, Listener::first, 0x02, 0x00);
  EXPECT_TRUE(transport->removeHandler(&anna, Listener::first, 0x02, 0x00));
  receive(kAckFrame);
  EXPECT_THAT(heard, ElementsAre("berta first 0/2/1", "anna second 0/2/1", "anna first 0/2/1"));
}

TEST_F(RemoveHandler, LetsMessagesQueueAfterTheLastRemoval) {
  EXPECT_TRUE(transport->removeHandler(&anna, Listener::first, 0x02, 0x00));
  EXPECT_TRUE(transport->removeHandler(&berta, Listener::first, 0x02, 0x00));
  EXPECT_TRUE(transport->removeHandler(&anna, Listener::second, 0x02, 0x00));
  receive(kAckFrame, [&] { EXPECT_NE(transport->getMessage(0, 1), nullptr); });
  EXPECT_THAT(heard, IsEmpty());
}

class RemoveHandlers : public Handlers {
 protected:
  /// Registers handlers of one message in this order: a for Anna, b for Berta.
  void registerInOrder(const std::string& order) {
    for (const char who : order)
      ASSERT_TRUE(transport->addHandler(who == 'a' ? &anna : &berta, Listener::first, 0x02, 0x00));
  }

  /// Returns whose handlers are still called, in the same letters.
  std::string stillCalled() {
    receive(kAckFrame);
    std::string order;
    for (const std::string& line : heard)
      order += line[0];
    return order;
  }
};

TEST_F(RemoveHandlers, RemovesASingleRegistration) {
  registerInOrder("ba");
  EXPECT_TRUE(transport->removeHandlers(&anna));
  EXPECT_EQ(stillCalled(), "b");
}

TEST_F(RemoveHandlers, LeavesTheSecondOfTwoAdjacentRegistrations) {
  registerInOrder("aab");
  EXPECT_TRUE(transport->removeHandlers(&anna));
  EXPECT_EQ(stillCalled(), "ab");
}

TEST_F(RemoveHandlers, RemovesRegistrationsThatAreNotAdjacent) {
  registerInOrder("abab");
  EXPECT_TRUE(transport->removeHandlers(&anna));
  EXPECT_EQ(stillCalled(), "bb");
}

TEST_F(RemoveHandlers, RemovesEverySecondOfManyAdjacentRegistrations) {
  registerInOrder("aaaaa");
  EXPECT_TRUE(transport->removeHandlers(&anna));
  EXPECT_EQ(stillCalled(), "aa");
}

TEST_F(RemoveHandlers, SucceedsWithoutAnyRegistration) {
  registerInOrder("b");
  EXPECT_TRUE(transport->removeHandlers(&anna));
  EXPECT_EQ(stillCalled(), "b");
}

TEST_F(RemoveHandlers, RemovesRegistrationsOfAllLingoesAndCommands) {
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x04, 0x0A));
  ASSERT_TRUE(transport->addHandler(&berta, Listener::first, 0x02, 0x00));
  ASSERT_TRUE(transport->addHandler(&anna, Listener::second, 0x02, 0x00));
  EXPECT_TRUE(transport->removeHandlers(&anna));
  receive(kAudioFrame + kAckFrame);
  EXPECT_THAT(heard, ElementsAre("berta first 0/2/1"));
}

/// A handler that changes the registrations while it is called.
struct Meddler {
  Transport& transport;
  std::function<void(Transport&, Meddler&)> meddle;

  static void handle(void* object, std::unique_ptr<LingoMessage>) {
    Meddler& meddler = *static_cast<Meddler*>(object);
    meddler.meddle(meddler.transport, meddler);
  }
};

class HandlersFromAHandler : public Handlers {
 protected:
  /// Registers a meddler before Anna and Berta, and receives one message for all three.
  void receiveWith(std::function<void(Transport&, Meddler&)> meddle) {
    Meddler meddler{*transport, std::move(meddle)};
    ASSERT_TRUE(transport->addHandler(&meddler, Meddler::handle, 0x02, 0x00));
    ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x02, 0x00));
    ASSERT_TRUE(transport->addHandler(&berta, Listener::first, 0x02, 0x00));
    receive(kAckFrame);
    transport->removeHandlers(&meddler);
  }
};

TEST_F(HandlersFromAHandler, RemovingItselfLeavesTheOthersTheirMessage) {
  receiveWith([](Transport& own, Meddler& self) {
    EXPECT_TRUE(own.removeHandler(&self, Meddler::handle, 0x02, 0x00));
  });
  EXPECT_THAT(heard, ElementsAre("anna first 0/2/1", "berta first 0/2/1"));
}

TEST_F(HandlersFromAHandler, RemovingTheNextOneLeavesTheOneAfterItsMessage) {
  receiveWith([&](Transport& own, Meddler&) { EXPECT_TRUE(own.removeHandlers(&anna)); });
  EXPECT_THAT(heard, ElementsAre("berta first 0/2/1"));
}

TEST_F(HandlersFromAHandler, RemovingAllOthersEndsTheDispatch) {
  receiveWith([&](Transport& own, Meddler&) {
    EXPECT_TRUE(own.removeHandlers(&anna));
    EXPECT_TRUE(own.removeHandlers(&berta));
  });
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(HandlersFromAHandler, TheLastOneMayRemoveAnother) {
  Meddler meddler{*transport,
                  [&](Transport& own, Meddler&) { EXPECT_TRUE(own.removeHandlers(&anna)); }};
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x02, 0x00));
  ASSERT_TRUE(transport->addHandler(&meddler, Meddler::handle, 0x02, 0x00));
  receive(kAckFrame + kAckFrame);
  EXPECT_THAT(heard, ElementsAre("anna first 0/2/1"));
}

TEST_F(HandlersFromAHandler, AddingOneForAnotherMessageDoesNotDisturbTheDispatch) {
  receiveWith([&](Transport& own, Meddler&) {
    EXPECT_TRUE(own.addHandler(&anna, Listener::second, 0x04, 0x0A));
  });
  EXPECT_THAT(heard, ElementsAre("anna first 0/2/1", "berta first 0/2/1"));
}

TEST_F(HandlersFromAHandler, StoppingTheReaderEndsItAfterThisMessage) {
  Meddler meddler{*transport, [](Transport& own, Meddler&) { EXPECT_TRUE(own.stopReadData()); }};
  ASSERT_TRUE(transport->addHandler(&meddler, Meddler::handle, 0x02, 0x00));
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x04, 0x0A));
  receive(kAckFrame + kAudioFrame);
  EXPECT_THAT(heard, IsEmpty());
  EXPECT_FALSE(transport->isOpen());
}

}  // namespace
}  // namespace ipodctl
