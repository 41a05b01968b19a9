#include "link/message_queue.h"

#include <utility>

#include "base/os_primitives.h"

namespace ipodctl {

MessageQueue::MessageQueue(const std::atomic<uint8_t>& active) : readerActive(active) { prepare(); }

MessageQueue::~MessageQueue() {
  semMutexGive(queueMutex);
  semMutexDelete(queueMutex);
  semMutexGive(messageReady);
  semMutexDelete(messageReady);
}

bool MessageQueue::prepare() {
  if (!semMutexEnsure(queueMutex)) return false;
  if (messageReady != nullptr) return true;
  if (!semMutexEnsure(messageReady)) return false;
  semMutexTryLock(messageReady);
  return true;
}

void MessageQueue::freeGuard() { semMutexGive(queueMutex); }

void MessageQueue::append(std::unique_ptr<LingoMessage> message) {
  const SemaphoreHold hold(queueMutex);
  const bool first = messageQueue.empty();
  if (messageQueue.append(std::move(message)) && first) semMutexGive(messageReady);
}

bool MessageQueue::awaitSignal(uint32_t nanoseconds, uint32_t seconds) {
  return semMutexTake(messageReady, nanoseconds, seconds) == 0;
}

std::unique_ptr<LingoMessage> MessageQueue::takeFirst() {
  const SemaphoreHold hold(queueMutex);
  if (messageQueue.empty()) return nullptr;
  std::unique_ptr<LingoMessage> oldest = messageQueue.removeAt(0);
  if (messageQueue.empty()) {
    resetSignal();
  } else {
    semMutexGive(messageReady);
  }
  return oldest;
}

void MessageQueue::flush() {
  const SemaphoreHold hold(queueMutex);
  if (messageQueue.empty()) return;
  messageQueue.clear();
  resetSignal();
}

void MessageQueue::wake() {
  const SemaphoreHold hold(queueMutex);
  if (!readerActive) semMutexGive(messageReady);
}

void MessageQueue::clearSignal() {
  const SemaphoreHold hold(queueMutex);
  semMutexTryLock(messageReady);
}

/// Resets the signal of messages that are gone, consumed or not. The reader's last signal stays: it
/// is for every waiter. Call with queueMutex held.
void MessageQueue::resetSignal() {
  semMutexTryLock(messageReady);
  if (!readerActive) semMutexGive(messageReady);
}

}  // namespace ipodctl
