#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "base/growable_array.h"
#include "base/semaphore.h"
#include "lingo/lingo_message.h"

namespace ipodctl {

/// The received messages that no handler took, oldest first. The reader thread appends, the host's
/// threads take. `queueMutex` guards the messages and is held for a few steps only. `messageReady`
/// is a signal: set while there are messages to take and while the reader is stopped. A waiter
/// consumes it before it takes a message; another thread may empty and refill the queue in between.
class MessageQueue {
 public:
  /// `readerActive` is 0 while no reader runs.
  explicit MessageQueue(const std::atomic<uint8_t>& readerActive);
  ~MessageQueue();
  MessageQueue(const MessageQueue&) = delete;
  MessageQueue& operator=(const MessageQueue&) = delete;

  /// Makes the semaphores that are missing; false when the system has none left.
  bool prepare();

  Semaphore& lock() { return queueMutex; }

  /// Appends a message and, when it is the only one, signals it. Without memory the message is
  /// lost.
  void append(std::unique_ptr<LingoMessage> message);

  /// Waits for the signal and consumes it. The time as semMutexTake has it; false when it was over.
  bool awaitSignal(uint32_t nanoseconds, uint32_t seconds);

  /// Removes the oldest message, null when there is none. The signal is then set if others remain
  /// and reset if none do.
  std::unique_ptr<LingoMessage> takeFirst();

  /// Destroys all messages, the oldest first, and resets their signal.
  void flush();

  /// Wakes a waiter if the reader is stopped. A caller may come too late, when the next reader
  /// runs.
  void wake();

  /// Resets the signal. Messages already queued do not signal again until the queue has been
  /// emptied once.
  void clearSignal();

 private:
  void resetSignal() IPODCTL_REQUIRES(queueMutex);

  const std::atomic<uint8_t>& readerActive;
  Semaphore queueMutex;
  Semaphore messageReady;
  GrowableArray<std::unique_ptr<LingoMessage>> messageQueue IPODCTL_GUARDED_BY(queueMutex);
};

}  // namespace ipodctl
