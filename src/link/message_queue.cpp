#include "link/message_queue.h"

#include <utility>

#include "link/os_primitives.h"

MessageQueue::MessageQueue() { prepare(); }

MessageQueue::~MessageQueue() {
  semMutexGive(queueMutex);
  semMutexDelete(queueMutex);
  semMutexGive(messageReady);
  semMutexDelete(messageReady);
}

bool MessageQueue::prepare() {
  if (queueMutex == nullptr && semMutexCreate(queueMutex) != 0) return false;
  if (messageReady == nullptr) {
    if (semMutexCreate(messageReady) != 0) return false;
    semMutexTryLock(messageReady);
  }
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
  if (!messageQueue.empty()) semMutexGive(messageReady);
  return oldest;
}

void MessageQueue::flush() {
  const SemaphoreHold hold(queueMutex);
  if (messageQueue.empty()) return;
  messageQueue.clear();
  // The signal may be gone already: a waiter can consume it and then find its reader stopped.
  semMutexTryLock(messageReady);
}

void MessageQueue::wake() { semMutexGive(messageReady); }

void MessageQueue::clearSignal() { semMutexTryLock(messageReady); }
