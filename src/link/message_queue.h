#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>

#include "lingo/growable_array.h"
#include "lingo/lingo_message.h"

/// The received messages that no handler took, oldest first. The reader thread appends, the host's
/// threads take. `queueMutex` guards the messages and is held for a few steps only; `messageReady`
/// is a signal: set when the queue is no longer empty, and again by each taker that leaves some.
class MessageQueue {
 public:
  MessageQueue();
  ~MessageQueue();
  MessageQueue(const MessageQueue&) = delete;
  MessageQueue& operator=(const MessageQueue&) = delete;

  /// Makes the semaphores that are missing; false when the system has none left.
  bool prepare();

  /// Gives the guard for a thread that never will.
  void freeGuard();

  /// Appends a message and, when it is the only one, signals it. Without memory the message is
  /// lost.
  void append(std::unique_ptr<LingoMessage> message);

  /// Waits for the signal and consumes it. The time as semMutexTake has it; false when it was over.
  bool awaitSignal(uint32_t nanoseconds, uint32_t seconds);

  /// Removes the oldest message, null when there is none, and signals again if others remain.
  std::unique_ptr<LingoMessage> takeFirst();

  /// Destroys all messages, the oldest first, and takes their signal back.
  void flush();

  /// Lets whoever waits for the signal go on.
  void wake();

  /// Takes the signal back. Messages that are still queued are then silent until the queue has been
  /// emptied.
  void clearSignal();

 private:
  HANDLE queueMutex = nullptr;
  HANDLE messageReady = nullptr;
  GrowableArray<std::unique_ptr<LingoMessage>> messageQueue;  ///< guarded by queueMutex
};
