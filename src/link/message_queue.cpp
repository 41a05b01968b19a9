#include "link/message_queue.h"

#include <utility>

namespace ipodctl {

MessageQueue::MessageQueue(const SharedValue<uint8_t>& active) : readerActive(active) { prepare(); }

MessageQueue::~MessageQueue() {
  queueMutex.releaseAndClose();
  messageReady.releaseAndClose();
}

bool MessageQueue::prepare() {
  if (!queueMutex.ensure()) return false;
  if (messageReady.exists()) return true;
  if (!messageReady.ensure()) return false;
  messageReady.reset();
  return true;
}

void MessageQueue::append(std::unique_ptr<LingoMessage>&& message) {
  bool isOnly = false;
  {
    const SemaphoreHold hold(queueMutex);
    isOnly = messageQueue.append(std::move(message)) && messageQueue.size() == 1;
  }
  if (isOnly) messageReady.signal();
}

bool MessageQueue::awaitSignal(uint32_t nanoseconds, uint32_t seconds) {
  return messageReady.await(nanoseconds, seconds);
}

bool MessageQueue::takeFirst(std::unique_ptr<LingoMessage>& oldest) {
  uint32_t left = 0;
  {
    const SemaphoreHold hold(queueMutex);
    if (messageQueue.empty()) return false;
    oldest = messageQueue.takeFirst();
    left = messageQueue.size();
  }
  if (left > 0) messageReady.signal();
  return true;
}

void MessageQueue::flush() {
  const SemaphoreHold hold(queueMutex);
  if (messageQueue.empty()) return;
  messageQueue.clear();
  resetSignal();
}

void MessageQueue::wake() {
  const SemaphoreHold hold(queueMutex);
  if (!readerActive) messageReady.signal();
}

void MessageQueue::clearSignal() {
  const SemaphoreHold hold(queueMutex);
  messageReady.reset();
}

/// Resets the signal of messages that are gone, whether it was consumed or not. A stopped reader's
/// signal stays, because it is for all waiters.
void MessageQueue::resetSignal() {
  messageReady.reset();
  if (!readerActive) messageReady.signal();
}

}  // namespace ipodctl
