#pragma once

#include <windows.h>

#include <functional>

#include "support/event_log.h"

/// Programs that link quick_time have these in front of the platform's Sleep and
/// WaitForSingleObject.

/// While one lives, every Sleep is an event of the log, "Sleep(80)", and takes a millisecond at
/// most. One at a time.
class QuickSleep {
 public:
  explicit QuickSleep(EventLog& log);
  ~QuickSleep();
  QuickSleep(const QuickSleep&) = delete;
  QuickSleep& operator=(const QuickSleep&) = delete;
};

/// While one lives, a wait of a second takes 25 ms at most, or ends as soon as `condition` holds,
/// if there is one: for tests in which answers do not come. One at a time.
class QuickTimeOuts {
 public:
  explicit QuickTimeOuts(std::function<bool()> condition = nullptr);
  ~QuickTimeOuts();
  QuickTimeOuts(const QuickTimeOuts&) = delete;
  QuickTimeOuts& operator=(const QuickTimeOuts&) = delete;

  /// The waits of a second that were over without a result.
  int passed() const;

 private:
  const std::function<bool()> condition;
};

/// Tells whether a thread has begun to wait for this object without limit. One at a time.
class EndlessWaits {
 public:
  explicit EndlessWaits(HANDLE object);
  ~EndlessWaits();
  EndlessWaits(const EndlessWaits&) = delete;
  EndlessWaits& operator=(const EndlessWaits&) = delete;

  bool any() const;
};
