#include "link/message_queue.h"

#include <gtest/gtest.h>

#include "lingo/general_message.h"
#include "support/scripted_platform.h"

namespace ipodctl {
namespace {

class MessageQueueTest : public ScriptedPlatformTest {
 protected:
  void append(uint16_t command) {
    auto message = std::make_unique<GeneralMessage>();
    message->setCommand(command);
    queue.append(std::move(message));
  }

  std::unique_ptr<LingoMessage> take() {
    std::unique_ptr<LingoMessage> message;
    const bool taken = queue.takeFirst(message);
    EXPECT_EQ(taken, message != nullptr);
    return message;
  }

  SharedValue<uint8_t> readerActive{1};
  MessageQueue queue{readerActive};
};

TEST_F(MessageQueueTest, HasNoMessageAfterAWake) {
  readerActive = 0;
  queue.wake();
  EXPECT_TRUE(queue.awaitSignal(0, 1));
  EXPECT_EQ(take(), nullptr);
}

TEST_F(MessageQueueTest, WorksAfterATakeFromTheEmptyQueue) {
  EXPECT_EQ(take(), nullptr);
  append(7);
  EXPECT_TRUE(queue.awaitSignal(0, 1));
  const std::unique_ptr<LingoMessage> message = take();
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->getCommand(), 7);
}

TEST_F(MessageQueueTest, SignalsOnceWithoutAMessageAfterAFlushAndAnAppendBetweenWaitAndTake) {
  append(1);
  EXPECT_TRUE(queue.awaitSignal(0, 1));
  queue.flush();
  append(2);
  EXPECT_EQ(take()->getCommand(), 2);
  EXPECT_TRUE(queue.awaitSignal(0, 1));
  EXPECT_EQ(take(), nullptr);
  EXPECT_FALSE(queue.awaitSignal(0, 1));
}

TEST_F(MessageQueueTest, SignalsTheRemainingMessagesWhenItsLockIsFree) {
  append(1);
  append(2);
  EXPECT_TRUE(queue.awaitSignal(0, 1));
  platform.releasedByName = "semaphore 1";  // the lock, which the queue creates first
  platform.afterRelease = [&] { EXPECT_FALSE(queue.awaitSignal(0, 1)); };
  EXPECT_EQ(take()->getCommand(), 1);
  EXPECT_FALSE(platform.afterRelease);
  EXPECT_TRUE(queue.awaitSignal(0, 1));
}

TEST_F(MessageQueueTest, SignalsAnAppendedMessageWhenItsLockIsFree) {
  platform.releasedByName = "semaphore 1";
  platform.afterRelease = [&] { EXPECT_FALSE(queue.awaitSignal(0, 1)); };
  append(1);
  EXPECT_FALSE(platform.afterRelease);
  EXPECT_TRUE(queue.awaitSignal(0, 1));
}

TEST_F(MessageQueueTest, KeepsTheSignalOfAStoppedReaderInATake) {
  append(1);
  EXPECT_TRUE(queue.awaitSignal(0, 1));
  readerActive = 0;
  queue.wake();
  EXPECT_NE(take(), nullptr);
  EXPECT_TRUE(queue.awaitSignal(0, 0));
}

TEST_F(MessageQueueTest, KeepsTheSignalOfAStoppedReaderInAFlush) {
  append(1);
  readerActive = 0;
  queue.wake();
  queue.flush();
  EXPECT_TRUE(queue.awaitSignal(0, 0));
}

TEST_F(MessageQueueTest, DoesNotWakeForAReaderThatRunsAgain) {
  queue.wake();
  EXPECT_FALSE(queue.awaitSignal(0, 1));
}

}  // namespace
}  // namespace ipodctl
