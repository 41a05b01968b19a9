#pragma once

#include <windows.h>

#include <functional>

#include "support/event_log.h"

/// In programs that link quick_time these replace the platform's Sleep and WaitForSingleObject.

/// While a QuickSleep lives, every Sleep is an event of the log, "Sleep(80)", and takes a
/// millisecond at most. One at a time.
class QuickSleep {
 public:
  explicit QuickSleep(EventLog& log);
  ~QuickSleep();
  QuickSleep(const QuickSleep&) = delete;
  QuickSleep& operator=(const QuickSleep&) = delete;
};

/// While a QuickTimeOuts lives, a wait of a second takes 100 ms at most, or ends as soon as
/// `condition` holds, if there is one: for tests in which answers do not arrive. One at a time.
class QuickTimeOuts {
 public:
  explicit QuickTimeOuts(std::function<bool()> condition = nullptr);
  ~QuickTimeOuts();
  QuickTimeOuts(const QuickTimeOuts&) = delete;
  QuickTimeOuts& operator=(const QuickTimeOuts&) = delete;

  /// Returns the number of waits of a second that ended without a result.
  int passed() const;

 private:
  const std::function<bool()> condition;
};

/// Detects whether a thread has begun to wait for this object without limit. One at a time.
class EndlessWaits {
 public:
  explicit EndlessWaits(HANDLE object);
  ~EndlessWaits();
  EndlessWaits(const EndlessWaits&) = delete;
  EndlessWaits& operator=(const EndlessWaits&) = delete;

  bool any() const;
};
