#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "controller/controller_test.h"

namespace ipodctl {
namespace {

const Bytes kRate48000 = {0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 1, 2, 3, 4, 5, 6, 7, 8};
const Bytes kRate32000 = {0x0A, 0x04, 0x00, 0x00, 0x7D, 0x00, 0, 0, 0, 0, 0, 0, 0, 0};
const Bytes kElevenBytes = {0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0};
const Bytes kThirteenBytes = {0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0};

const Calls kAcknowledged = {"send 55 04 0A 00 00 04"};
const Calls kWait = {"wait 0 ns 1 s"};

std::vector<int32_t> calledWith;

int remember(int32_t rate) {
  calledWith.push_back(rate);
  return 1;
}

class AudioNotification : public ControllerTest {
 protected:
  AudioNotification() {
    calledWith.clear();
    controller().setResampleCallback(remember);
  }

  uint32_t sampleRate() {
    uint32_t rate = 0;
    controller().getSampleRate(rate);
    return rate;
  }

  int receive(const Bytes& payload) {
    return controller().onIncomingMessage(receivedMessage(payload));
  }
};

TEST_F(AudioNotification, IsAcknowledgedStoredAndPassedToTheHost) {
  EXPECT_EQ(receive(kRate48000), 0);
  EXPECT_EQ(callLog(), kAcknowledged);
  EXPECT_EQ(sampleRate(), 48000u);
  EXPECT_EQ(calledWith, (std::vector<int32_t>{48000}));
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(AudioNotification, WithTheSameRateIsAcknowledgedAndPassedOnAgain) {
  receive(kRate48000);
  receive(kRate48000);
  EXPECT_EQ(callLog(), repeated(2, kAcknowledged));
  EXPECT_EQ(calledWith, (std::vector<int32_t>{48000, 48000}));
}

TEST_F(AudioNotification, OfAnotherLengthIsAcknowledgedAndPassedOnWithTheOldRate) {
  for (const Bytes& payload : {kElevenBytes, kThirteenBytes, Bytes{0x0A, 0x04}}) {
    EXPECT_EQ(receive(payload), 0);
    EXPECT_EQ(sampleRate(), 44100u);
  }
  EXPECT_EQ(callLog(), repeated(3, kAcknowledged));
  EXPECT_EQ(calledWith, (std::vector<int32_t>{44100, 44100, 44100}));
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(AudioNotification, WithoutACallbackIsStoredAndAcknowledged) {
  EXPECT_TRUE(controller().setResampleCallback(nullptr));
  receive(kRate32000);
  EXPECT_EQ(callLog(), kAcknowledged);
  EXPECT_EQ(sampleRate(), 32000u);
  EXPECT_TRUE(calledWith.empty());
}

TEST_F(AudioNotification, CallsTheCallbackThatWasSetLast) {
  static int otherCalls;
  otherCalls = 0;
  EXPECT_TRUE(controller().setResampleCallback([](int32_t /*rate*/) { return ++otherCalls; }));
  receive(kRate32000);
  EXPECT_EQ(otherCalls, 1);
  EXPECT_TRUE(calledWith.empty());
}

TEST_F(AudioNotification, IsPassedOnEvenIfTheAcknowledgementFails) {
  ipod().sends = false;
  receive(kRate48000);
  EXPECT_EQ(calledWith, (std::vector<int32_t>{48000}));
}

TEST_F(AudioNotification, DoesNotTouchTheRepliesOfARunningCommand) {
  ipod().arrive({{0x04, 0x00, 0x01, 0x00, 0x00, 0x29}});
  receive(kRate48000);
  EXPECT_EQ(ipod().queued(), 1u);
}

TEST_F(AudioNotification, OfNoMessageIsNothing) {
  EXPECT_EQ(controller().onIncomingMessage(nullptr), 0);
  EXPECT_EQ(callLog(), Calls{});
}

TEST_F(AudioNotification, OfAnyOtherLingoOrCommandIsDestroyedWithoutAReply) {
  for (const Bytes& payload :
       {Bytes{0x00, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0},
        Bytes{0x02, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0},
        Bytes{0x04, 0x00, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0}, Bytes{0x0A, 0x02},
        Bytes{0x0A, 0x03, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0}}) {
    EXPECT_EQ(receive(payload), 0);
    EXPECT_EQ(liveMessages(), 0u);
  }
  EXPECT_EQ(callLog(), Calls{});
  EXPECT_TRUE(calledWith.empty());
  EXPECT_EQ(sampleRate(), 44100u);
}

constexpr const char* kIdentify = "55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00";

class ConnectedNotification : public AudioNotification {
 protected:
  void SetUp() override { connect(); }

  void connect() {
    ipod().answer(kIdentify, {{0x00, 0x10, 0x0A, 0x01, 0x02}});
    ASSERT_TRUE(controller().connect("IPD1:", nullptr));
    callLog().clear();
  }
};

TEST_F(ConnectedNotification, ReachesTheController) {
  ipod().notify(kRate48000);
  EXPECT_EQ(callLog(), kAcknowledged);
  EXPECT_EQ(sampleRate(), 48000u);
  EXPECT_EQ(calledWith, (std::vector<int32_t>{48000}));
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(ConnectedNotification, DoesNotReachAClosedController) {
  controller().CloseIpod();
  callLog().clear();
  ipod().notify(kRate48000);
  EXPECT_EQ(callLog(), Calls{});
  EXPECT_TRUE(calledWith.empty());
}

TEST_F(ConnectedNotification, IsFollowedWhileTheControllerIsDestroyed) {
  FakeTransport& link = ipod();
  link.onCall = [&](const std::string& call) {
    if (call == "removeHandlers") link.notify(kRate48000);
  };
  destroyController();
  EXPECT_EQ(calledWith, (std::vector<int32_t>{48000}));
}

TEST_F(ConnectedNotification, IsPassedOnOnceAfterClosingAndConnectingAgain) {
  controller().CloseIpod();
  connect();
  ipod().notify(kRate48000);
  EXPECT_EQ(calledWith, (std::vector<int32_t>{48000}));
}

TEST_F(ConnectedNotification, LeavesItsRateToTheNextConnection) {
  ipod().notify(kRate48000);
  controller().CloseIpod();
  EXPECT_EQ(sampleRate(), 48000u);
  connect();
  EXPECT_EQ(sampleRate(), 48000u);
}

class AudioAttributes : public AudioNotification {
 protected:
  bool waitWith(const Payloads& messages) {
    callLog().clear();
    ipod().arriveAfterFlush(messages);
    return controller().waitAudioAttributes(rate);
  }

  uint32_t rate = 0x12345678;
};

TEST_F(AudioAttributes, AreStoredAcknowledgedAndReturned) {
  EXPECT_TRUE(waitWith({kRate48000}));
  EXPECT_EQ(callLog(), Calls{"flush"} + kWait + kAcknowledged);
  EXPECT_EQ(rate, 48000u);
  EXPECT_EQ(sampleRate(), 48000u);
}

TEST_F(AudioAttributes, DoNotCallTheHostBack) {
  EXPECT_TRUE(waitWith({kRate48000}));
  EXPECT_TRUE(calledWith.empty());
}

TEST_F(AudioAttributes, AreTakenAsTheThirdMessage) {
  EXPECT_TRUE(waitWith({{0x0A, 0x02}, {0x00, 0x04, 0x01}, kRate32000}));
  EXPECT_EQ(callLog(), Calls{"flush"} + repeated(3, kWait) + kAcknowledged);
  EXPECT_EQ(rate, 32000u);
}

TEST_F(AudioAttributes, AreTakenAfterTwoSecondsOfSilence) {
  EXPECT_TRUE(waitWith({kSilence, kSilence, kRate48000}));
  EXPECT_EQ(rate, 48000u);
}

TEST_F(AudioAttributes, AreNotTakenAsTheFourthMessage) {
  EXPECT_FALSE(waitWith({{0x0A, 0x02}, {0x00, 0x04, 0x01}, {0x04, 0x00, 0x04}, kRate48000}));
  EXPECT_EQ(callLog(), Calls{"flush"} + repeated(3, kWait));
  EXPECT_EQ(ipod().queued(), 1u);
  EXPECT_EQ(sampleRate(), 44100u);
}

TEST_F(AudioAttributes, OfASilentIpodLeaveTheOutputAsItWas) {
  EXPECT_FALSE(waitWith({}));
  EXPECT_EQ(callLog(), Calls{"flush"} + repeated(3, kWait));
  EXPECT_EQ(rate, 0x12345678u);
}

TEST_F(AudioAttributes, FromBeforeTheRequestAreIgnored) {
  ipod().arrive({kRate48000});
  EXPECT_FALSE(waitWith({}));
  EXPECT_EQ(rate, 0x12345678u);
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(AudioAttributes, OfAnotherLengthReturnTheOldRate) {
  EXPECT_TRUE(waitWith({kElevenBytes}));
  EXPECT_EQ(callLog(), Calls{"flush"} + kWait + kAcknowledged);
  EXPECT_EQ(rate, 44100u);
}

TEST_F(AudioAttributes, OfAnotherLingoAreNone) {
  EXPECT_FALSE(waitWith({{0x04, 0x00, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0},
                         {0x00, 0x04, 0x01},
                         {0x02, 0x04}}));
  EXPECT_EQ(linesOf(callLog(), "send"), Calls{});
}

TEST_F(AudioAttributes, KeepTheirMessagesAliveUntilTheControllerCloses) {
  EXPECT_TRUE(waitWith({{0x0A, 0x02}, {0x04, 0x00, 0x27, 0x01}, kRate48000}));
  EXPECT_EQ(liveMessages(), 3u);
  EXPECT_FALSE(waitWith({{0x0A, 0x02}, {0x00, 0x04, 0x01}, {0x02, 0x00}}));
  EXPECT_EQ(liveMessages(), 6u);
  PlayMode mode{};
  controller().GetShuffle(mode);
  EXPECT_EQ(liveMessages(), 6u);
  controller().CloseIpod();
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(AudioAttributes, AreDestroyedWithTheController) {
  EXPECT_TRUE(waitWith({{0x0A, 0x02}, kRate48000}));
  destroyController();
  EXPECT_EQ(liveMessages(), 0u);
}

}  // namespace
}  // namespace ipodctl
