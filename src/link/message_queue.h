#pragma once

#include <cstdint>
#include <memory>

#include "base/fifo.h"
#include "base/semaphore.h"
#include "base/shared_value.h"
#include "lingo/lingo_message.h"

namespace ipodctl {

/// The received messages that no handler took, oldest first. The reader thread appends messages;
/// the host's threads remove them. `queueMutex` is held for a few steps only. `messageReady` is a
/// signal. It is set while the queue holds messages and while the reader is stopped. A waiter
/// consumes the signal before it removes a message.
///
/// The signal is set after the lock is released, so that the thread that it wakes finds the lock
/// free. Another thread can empty the queue before that; the signal is then set without a message.
class MessageQueue {
 public:
  /// `readerActive` is 0 while no reader runs.
  explicit MessageQueue(const SharedValue<uint8_t>& readerActive);
  ~MessageQueue();
  MessageQueue(const MessageQueue&) = delete;
  MessageQueue& operator=(const MessageQueue&) = delete;

  /// Creates the missing semaphores. Returns false when the system has none left.
  bool prepare();

  Semaphore& lock() { return queueMutex; }

  /// Appends a message, and signals it if it is the only one. Without memory the message is lost.
  void append(std::unique_ptr<LingoMessage>&& message);

  /// Waits for the signal as long as semMutexTake does, and consumes it. Returns false after the
  /// time.
  bool awaitSignal(uint32_t nanoseconds, uint32_t seconds);

  /// Removes the oldest message. Returns false when there is none. Sets the signal if other
  /// messages remain.
  bool takeFirst(std::unique_ptr<LingoMessage>& oldest);

  /// Destroys all messages, starting with the oldest, and resets their signal.
  void flush();

  /// Wakes a waiter if the reader is stopped. Does nothing if the next reader already runs.
  void wake();

  /// Resets the signal. Messages already queued do not signal again until the queue has been
  /// emptied once.
  void clearSignal();

 private:
  void resetSignal() IPODCTL_REQUIRES(queueMutex);

  const SharedValue<uint8_t>& readerActive;
  Semaphore queueMutex;
  Semaphore messageReady;
  Fifo<std::unique_ptr<LingoMessage>> messageQueue IPODCTL_GUARDED_BY(queueMutex);
};

}  // namespace ipodctl
