// The controller over a real terminal with its real reader thread; the test is the iPod. Where a
// test waits for a stated time-out, its name says so.

#include <desk.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "controller/ipod_controller.h"
#include "support/background_call.h"
#include "support/pty_pair.h"

namespace ipodctl {
namespace {

using host_test::BackgroundCall;
using host_test::DeviceMapping;
using host_test::Patience;
using host_test::PtyPair;

// From the accessory.
const Bytes kIdentify = {0x55, 0x0E, 0x00, 0x13, 0x00, 0x00, 0x04, 0x11, 0x00,
                         0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xCA};
const Bytes kSampleRates = {0x55, 0x12, 0x0A, 0x03, 0x00, 0x00, 0x1F, 0x40, 0x00, 0x00, 0x7D,
                            0x00, 0x00, 0x00, 0xAC, 0x44, 0x00, 0x00, 0xBB, 0x80, 0xDA};
const Bytes kRequestVersion0 = {0x55, 0x03, 0x00, 0x0F, 0x00, 0xEE};
const Bytes kRequestVersion4 = {0x55, 0x03, 0x00, 0x0F, 0x04, 0xEA};
const Bytes kRequestVersion10 = {0x55, 0x03, 0x00, 0x0F, 0x0A, 0xE4};
const Bytes kExitExtendedMode = {0x55, 0x02, 0x00, 0x06, 0xF8};
const Bytes kAttributesAcknowledged = {0x55, 0x04, 0x0A, 0x00, 0x00, 0x04, 0xEE};
const Bytes kGetShuffle = {0x55, 0x03, 0x04, 0x00, 0x2C, 0xCD};
const Bytes kSetShuffle = {0x55, 0x04, 0x04, 0x00, 0x2E, 0x01, 0xC9};

// From the iPod.
const Bytes kGetSampleRates = {0x55, 0x02, 0x0A, 0x02, 0xF2};
const Bytes kVersionOfLingo0 = {0x55, 0x05, 0x00, 0x10, 0x00, 0x01, 0x07, 0xE3};
const Bytes kVersionOfLingo4 = {0x55, 0x05, 0x00, 0x10, 0x04, 0x01, 0x0D, 0xD9};
const Bytes kVersionOfLingo10 = {0x55, 0x05, 0x00, 0x10, 0x0A, 0x01, 0x02, 0xDE};
const Bytes kRate48000 = {0x55, 0x0E, 0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0x00,
                          0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xA9};
const Bytes kShuffleIsTracks = {0x55, 0x04, 0x04, 0x00, 0x2D, 0x01, 0xCA};
const Bytes kSetShuffleRefused = {0x55, 0x06, 0x04, 0x00, 0x01, 0x04, 0x00, 0x2E, 0xC3};
const Bytes kBadChecksum = {0x55, 0x02, 0x00, 0x01, 0x00};

std::atomic<int> callbacks{0};
std::atomic<int32_t> calledWith{0};

int remember(int32_t rate) {
  calledWith = rate;
  return ++callbacks;
}

template <class Condition>
bool comesTrue(const Condition& condition) {
  for (const Patience patience; !patience.isOver(); Patience::pause()) {
    if (condition()) return true;
  }
  return false;
}

template <class Call>
std::chrono::milliseconds durationOf(const Call& call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                               start);
}

/// A controller on one end of a wire; at its end no thread and no handle of it may be left.
class ControllerOnAWire : public testing::Test {
 protected:
  ControllerOnAWire(const char* device, int transportKind)
      : name(device), devices(device, wire), handlesBefore(handlesWithoutController()) {
    callbacks = 0;
    calledWith = 0;
    controller = std::make_unique<IpodController>(transportKind);
    controller->setResampleCallback(remember);
  }

  void TearDown() override {
    controller.reset();
    EXPECT_EQ(deskRunningThreads(), 0u);
    EXPECT_EQ(deskOpenHandles(), handlesBefore);
  }

  BackgroundCall<bool> startConnecting() {
    return BackgroundCall<bool>([this] { return controller->connect(name, nullptr); });
  }

  PtyPair wire;
  std::unique_ptr<IpodController> controller;

 private:
  /// What the first controller of a process leaves open is not a later one's.
  static unsigned handlesWithoutController() {
    std::make_unique<IpodController>(kUsbLink)->connect("IPD9:", nullptr);
    return deskOpenHandles();
  }

  const char* const name;
  const DeviceMapping devices;
  const unsigned handlesBefore;
};

class UsbController : public ControllerOnAWire {
 protected:
  UsbController() : ControllerOnAWire("IPD1:", kUsbLink) {}

  /// Connects with an iPod that completes the identification with its first message.
  bool connect() {
    auto connecting = startConnecting();
    return wire.receive(kIdentify.size()) == kIdentify && wire.send(kVersionOfLingo10) &&
           connecting.result() == true;
  }

  /// A command and its reply, after everything that has arrived.
  bool answersGetShuffle() {
    PlayMode mode{};
    BackgroundCall asking([&] { return controller->GetShuffle(mode); });
    return wire.receive(kGetShuffle.size()) == kGetShuffle && wire.send(kShuffleIsTracks) &&
           asking.result() == true && mode == PlayMode::kTracks;
  }

  /// The next frame that the controller sends.
  Bytes nextFrame() {
    Bytes frame = wire.receive(2);
    if (frame.size() < 2) return frame;
    const Bytes rest = wire.receive(frame[1] + 1u);
    frame.insert(frame.end(), rest.begin(), rest.end());
    return frame;
  }
};

TEST_F(UsbController, IsIdentifiedInTheFirstAttempt) {
  auto connecting = startConnecting();
  EXPECT_EQ(wire.receive(17), kIdentify);
  wire.send(kGetSampleRates);
  EXPECT_EQ(wire.receive(21), kSampleRates);
  EXPECT_EQ(wire.receive(6), kRequestVersion0);
  wire.send(kVersionOfLingo0);
  EXPECT_EQ(wire.receive(6), kRequestVersion4);
  wire.send(kVersionOfLingo4);
  EXPECT_EQ(wire.receive(6), kRequestVersion10);
  wire.send(kVersionOfLingo10);
  EXPECT_EQ(connecting.result(), true);
  EXPECT_EQ(controller->isIdentified(), 1);
}

TEST_F(UsbController, IsIdentifiedInTheSecondAttemptAfterASecondOfSilence) {
  auto connecting = startConnecting();
  EXPECT_EQ(wire.receive(17), kIdentify);
  EXPECT_EQ(wire.receive(17), kIdentify);
  wire.send(kVersionOfLingo10);
  EXPECT_EQ(connecting.result(), true);
  EXPECT_EQ(controller->isIdentified(), 1);
}

TEST_F(UsbController, IsNotIdentifiedInTheThirdAttemptAfterTwoSecondsOfSilence) {
  auto connecting = startConnecting();
  EXPECT_EQ(wire.receive(17), kIdentify);
  EXPECT_EQ(wire.receive(17), kIdentify);
  EXPECT_EQ(wire.receive(17), kIdentify);
  wire.send(kVersionOfLingo10);
  EXPECT_EQ(connecting.result(), false);
  EXPECT_EQ(controller->isIdentified(), 0);
}

TEST_F(UsbController, DoesNotConnectToADeviceThatIsNotThere) {
  EXPECT_FALSE(controller->connect("IPD2:", nullptr));
  EXPECT_EQ(controller->isIdentified(), 0);
}

TEST_F(UsbController, LeavesTheModeAndTheWireWhenItCloses) {
  ASSERT_TRUE(connect());
  EXPECT_TRUE(controller->CloseIpod());
  EXPECT_EQ(wire.receive(5), kExitExtendedMode);
  EXPECT_TRUE(wire.waitUntilDeviceCloses());
  EXPECT_TRUE(controller->CloseIpod());
}

TEST_F(UsbController, ConnectsAgainAfterClosing) {
  ASSERT_TRUE(connect());
  EXPECT_TRUE(controller->CloseIpod());
  EXPECT_EQ(wire.receive(5), kExitExtendedMode);
  ASSERT_TRUE(connect());
  wire.send(kRate48000);
  EXPECT_EQ(wire.receive(7), kAttributesAcknowledged);
  EXPECT_TRUE(comesTrue([] { return callbacks == 1; }));
}

TEST_F(UsbController, ConnectsAgainWithoutClosing) {
  ASSERT_TRUE(connect());
  ASSERT_TRUE(connect());
  wire.send(kRate48000);
  EXPECT_EQ(wire.receive(7), kAttributesAcknowledged);
  EXPECT_TRUE(answersGetShuffle());
  EXPECT_EQ(callbacks, 1);
}

TEST_F(UsbController, FollowsANotificationOfANewRate) {
  ASSERT_TRUE(connect());
  wire.send(kRate48000);
  EXPECT_EQ(wire.receive(7), kAttributesAcknowledged);
  EXPECT_TRUE(comesTrue([] { return callbacks == 1; }));
  EXPECT_EQ(calledWith, 48000);
  uint32_t rate = 0;
  EXPECT_TRUE(controller->getSampleRate(rate));
  EXPECT_EQ(rate, 48000u);
}

TEST_F(UsbController, CallsBackOnceForEachNotification) {
  ASSERT_TRUE(connect());
  wire.send(kRate48000);
  wire.send(kRate48000);
  EXPECT_EQ(wire.receive(7), kAttributesAcknowledged);
  EXPECT_EQ(wire.receive(7), kAttributesAcknowledged);
  EXPECT_TRUE(answersGetShuffle());
  EXPECT_EQ(callbacks, 2);
}

TEST_F(UsbController, TakesTheRateFromANotificationDuringTheIdentification) {
  auto connecting = startConnecting();
  EXPECT_EQ(wire.receive(17), kIdentify);
  wire.send(kRate48000);
  EXPECT_EQ(wire.receive(7), kAttributesAcknowledged);
  wire.send(kVersionOfLingo10);
  EXPECT_EQ(connecting.result(), true);
  EXPECT_EQ(callbacks, 0);
  uint32_t rate = 0;
  EXPECT_TRUE(controller->getSampleRate(rate));
  EXPECT_EQ(rate, 48000u);
}

TEST_F(UsbController, AnswersNotificationsBetweenItsOwnCommands) {
  constexpr int kRounds = 50;
  ASSERT_TRUE(connect());
  int answered = 0;
  BackgroundCall asking([&] {
    for (int i = 0; i < kRounds; ++i) {
      PlayMode mode{};
      if (controller->GetShuffle(mode) && mode == PlayMode::kTracks) ++answered;
    }
    return true;
  });
  int acknowledged = 0;
  for (int asked = 0; asked < kRounds || acknowledged < 2 * kRounds;) {
    const Bytes frame = nextFrame();
    if (frame == kAttributesAcknowledged) {
      ++acknowledged;
      continue;
    }
    ASSERT_EQ(frame, kGetShuffle);
    ++asked;
    wire.send(kRate48000);
    wire.send(kShuffleIsTracks);
    wire.send(kRate48000);
  }
  EXPECT_EQ(asking.result(), true);
  EXPECT_EQ(answered, kRounds);
  EXPECT_TRUE(comesTrue([] { return callbacks == 2 * kRounds; }));
}

class DestroyedController : public UsbController, public testing::WithParamInterface<unsigned> {};

TEST_P(DestroyedController, MayGoWhileNotificationsArrive) {
  constexpr int kNotifications = 150;
  ASSERT_TRUE(connect());
  Bytes flood;
  for (int i = 0; i < kNotifications; ++i)
    flood.insert(flood.end(), kRate48000.begin(), kRate48000.end());
  ASSERT_TRUE(wire.send(flood));
  const unsigned acknowledged = GetParam();
  EXPECT_EQ(wire.receive(acknowledged * 7).size(), acknowledged * 7);
  BackgroundCall destroying([&] {
    controller.reset();
    return true;
  });
  EXPECT_EQ(destroying.result(), true);
}

INSTANTIATE_TEST_SUITE_P(AfterAcknowledgements, DestroyedController,
                         testing::Values(0, 1, 2, 5, 20, 60));

TEST_F(UsbController, FailsAfterASecondWithoutAnAnswer) {
  ASSERT_TRUE(connect());
  PlayMode mode{7};
  bool result = true;
  const auto duration = durationOf([&] { result = controller->GetShuffle(mode); });
  EXPECT_FALSE(result);
  EXPECT_EQ(mode, PlayMode{7});
  EXPECT_GE(duration.count(), 1000);
}

TEST_F(UsbController, FailsASecondAfterARefusal) {
  ASSERT_TRUE(connect());
  BackgroundCall setting(
      [&] { return durationOf([&] { controller->SetShuffle(PlayMode::kTracks); }); });
  EXPECT_EQ(wire.receive(7), kSetShuffle);
  wire.send(kSetShuffleRefused);
  const auto duration = setting.result();
  ASSERT_TRUE(duration.has_value());
  EXPECT_GE(duration->count(), 1000);
}

TEST_F(UsbController, FailsAtOnceAfterABadFrameAndConnectsAgain) {
  constexpr int kCalls = 10;
  ASSERT_TRUE(connect());
  wire.send(kBadChecksum);
  ASSERT_TRUE(wire.waitUntilDeviceCloses());
  ASSERT_TRUE(comesTrue([] { return deskRunningThreads() == 0; }));
  const auto duration = durationOf([&] {
    PlayMode mode{};
    for (int i = 0; i < kCalls; ++i)
      EXPECT_FALSE(controller->GetShuffle(mode));
  });
  EXPECT_LT(duration.count(), kCalls * 1000 / 2);
  EXPECT_TRUE(connect());
}

TEST_F(UsbController, DoesNotConnectWhenItsIdentificationIsCutByABadFrame) {
  auto connecting = startConnecting();
  EXPECT_EQ(wire.receive(17), kIdentify);
  wire.send(kBadChecksum);
  EXPECT_EQ(connecting.result(), false);
  EXPECT_TRUE(connect());
}

TEST_F(UsbController, FailsInEverythingWhenItIsUnplugged) {
  ASSERT_TRUE(connect());
  wire.hangUp();
  ASSERT_TRUE(comesTrue([] { return deskRunningThreads() == 0; }));
  PlayMode mode{};
  EXPECT_FALSE(controller->GetShuffle(mode));
  EXPECT_FALSE(controller->SetShuffle(PlayMode::kTracks));
  EXPECT_TRUE(controller->CloseIpod());
}

// Over serial lines each frame begins with FF.

class SerialController : public ControllerOnAWire {
 protected:
  SerialController() : ControllerOnAWire("COM1:", kSerialLink) {}
};

const Bytes kSerialIdentify = {0xFF, 0x55, 0x0E, 0x00, 0x13, 0x00, 0x00, 0x04, 0x11,
                               0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xCA};

TEST_F(SerialController, IsIdentifiedByEnteringTheMode) {
  auto connecting = startConnecting();
  EXPECT_EQ(wire.receive(18), kSerialIdentify);
  wire.send({0xFF, 0x55, 0x04, 0x00, 0x02, 0x00, 0x13, 0xE7});
  wire.send({0xFF, 0x55, 0x03, 0x00, 0x04, 0x01, 0xF8});
  EXPECT_EQ(wire.receive(6), (Bytes{0xFF, 0x55, 0x02, 0x00, 0x05, 0xF9}));
  wire.send({0xFF, 0x55, 0x04, 0x00, 0x02, 0x00, 0x05, 0xF5});
  EXPECT_EQ(connecting.result(), true);
  EXPECT_EQ(controller->isIdentified(), 1);
}

TEST_F(SerialController, FollowsANotificationOfANewRate) {
  auto connecting = startConnecting();
  EXPECT_EQ(wire.receive(18), kSerialIdentify);
  wire.send({0xFF, 0x55, 0x05, 0x00, 0x10, 0x0A, 0x01, 0x02, 0xDE});
  EXPECT_EQ(connecting.result(), true);
  Bytes notification = {0xFF};
  notification.insert(notification.end(), kRate48000.begin(), kRate48000.end());
  wire.send(notification);
  EXPECT_EQ(wire.receive(8), (Bytes{0xFF, 0x55, 0x04, 0x0A, 0x00, 0x00, 0x04, 0xEE}));
  EXPECT_TRUE(comesTrue([] { return callbacks == 1; }));
  EXPECT_EQ(calledWith, 48000);
}

// A pipe has no size that could be compared with the header's numbers.
TEST(LogoBitmap, IsNotReadFromAPipe) {
  const std::string pipe = testing::TempDir() + "logo-pipe-" + std::to_string(getpid());
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const int writer = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
  const Bytes header = {'B',  'M',  0x42, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                        0x36, 0x00, 0x00, 0x00, 0x28, 0x00, 0x00, 0x00, 0x04, 0x00,
                        0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x00, 0x18, 0x00};
  Bytes file(66);
  std::copy(header.begin(), header.end(), file.begin());
  EXPECT_EQ(write(writer, file.data(), file.size()), 66);
  LogoBitmap logo;
  EXPECT_FALSE(logo.read(pipe.c_str()));
  close(writer);
  unlink(pipe.c_str());
}

}  // namespace
}  // namespace ipodctl
