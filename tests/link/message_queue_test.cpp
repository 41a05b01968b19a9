#include "link/message_queue.h"

#include <gtest/gtest.h>

#include "lingo/general_message.h"
#include "link/scripted_platform.h"

namespace {

class MessageQueueTest : public ScriptedPlatformTest {
 protected:
  void append(uint16_t command) {
    auto message = std::make_unique<GeneralMessage>();
    message->setCommand(command);
    queue.append(std::move(message));
  }

  MessageQueue queue;
};

TEST_F(MessageQueueTest, HasNoMessageBehindASignalThatOnlyWakes) {
  queue.wake();
  EXPECT_TRUE(queue.awaitSignal(0, 1));
  EXPECT_EQ(queue.takeFirst(), nullptr);
}

TEST_F(MessageQueueTest, GoesOnAfterItWasFoundEmpty) {
  EXPECT_EQ(queue.takeFirst(), nullptr);
  append(7);
  EXPECT_TRUE(queue.awaitSignal(0, 1));
  const std::unique_ptr<LingoMessage> message = queue.takeFirst();
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->getCommand(), 7);
}

}  // namespace
