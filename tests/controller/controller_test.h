#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "controller/live_messages.h"
#include "controller/scripted_controller.h"
#include "lingo/received_message.h"

namespace ipodctl {

/// A followed message of these bytes (lingo, command, data).
inline std::unique_ptr<LingoMessage> receivedMessage(const Bytes& payload) {
  auto message = makeReceivedMessage(payload.data(), static_cast<uint16_t>(payload.size()));
  followMessage(message.get());
  return message;
}

/// A controller with an iPod of the test's making. No message may outlive the controller.
template <class Controller>
class ControllerFixture : public testing::Test {
 protected:
  ControllerFixture() : owned(std::make_unique<Scripted<Controller>>(followMessage)) {
    callLog().clear();
  }

  void TearDown() override {
    owned.reset();
    EXPECT_EQ(liveMessages(), 0u);
  }

  Scripted<Controller>& controller() { return *owned; }
  FakeTransport& ipod() { return owned->ipod(); }

  /// Destroys the controller and its link.
  void destroyController() { owned.reset(); }

 private:
  std::unique_ptr<Scripted<Controller>> owned;
};

using ControllerTest = ControllerFixture<IpodController>;

}  // namespace ipodctl
