// Runs threads one at a time, in an order that the seed decides, and owns their clock.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fiber.h"
#include "virtual_time.h"

namespace virtual_platform {

/// The owner of a thread: the host, or the library that made it.
enum class Owner { kHost, kLibrary };

/// What a thread waits for.
struct Wait {
  std::function<std::string()> what;  ///< for the report of a run that cannot continue
  std::optional<Time> deadline;       ///< no value: without limit
  std::function<bool()> isOver;       ///< must not switch threads
  std::function<std::optional<Time>()>
      nextChange;  ///< when isOver may change by itself; may be null
};

class Scheduler {
 public:
  explicit Scheduler(std::uint64_t seed);
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  /// `onKill` is called in the thread when the system kills it.
  void spawn(Owner owner, std::function<void()> body, std::function<void()> onKill = nullptr);

  /// Runs until every thread has ended, or the host's threads have ended and the time of the others
  /// is over, or no thread can ever run again, or a loop of calls does not end. Returns an empty
  /// text, or what went wrong.
  std::string run();

  /// In a thread: lets a moment pass, in which other threads may run.
  void pass();
  /// In a thread: lets other threads run, as the seed decides.
  void yield();
  /// In a thread: holds it after so many more calls, until resume() or until no other thread can
  /// ever run.
  void holdAfter(unsigned calls);
  /// Resumes all threads that are held; returns false when there is none.
  bool resume();
  /// Preempts a thread of this owner at the place where it could be switched, after so many such
  /// places: it does not run until no other thread can.
  void preemptAfter(Owner owner, unsigned switches);
  /// Returns whether that preemption is still to happen.
  bool isToPreempt(Owner owner) const {
    return switchesToPreemption[static_cast<int>(owner)].has_value();
  }
  /// Kills the library's thread that makes the call after so many calls of all threads.
  void killAfter(unsigned calls);
  /// Returns whether the thread is still to be killed.
  bool isToKill() const { return callsToKill.has_value(); }
  /// In a thread: waits. Returns false when the deadline passes first.
  bool await(Wait wait);

  Time now() const { return clock; }
  const std::string& threadName() const;
  DWORD& lastError();
  unsigned libraryThreads() const { return running[static_cast<int>(Owner::kLibrary)]; }

 private:
  struct Thread;

  static bool isDue(std::optional<unsigned>& callsLeft);
  bool clear(bool Thread::*flag);
  void end();
  void leave();
  void switchFrom(Thread& thread);
  Thread* next();
  Thread* pickRunnable();
  bool isRunnable(const Thread& thread) const;
  bool jump();
  bool mayGoOn();
  std::string complaint() const;
  void reap();
  std::uint64_t draw();

  std::uint64_t random;
  Time clock{0};
  unsigned callsSinceJump = 0;
  unsigned running[2] = {0, 0};  ///< by owner
  unsigned made[2] = {0, 0};
  std::optional<unsigned> callsToKill;
  std::optional<unsigned> switchesToPreemption[2];  ///< by owner
  std::optional<Time> hostsEnded;
  std::string failure;
  std::unique_ptr<Fiber> outside;
  std::vector<std::unique_ptr<Thread>> threads;
  std::vector<Thread*> runnable;
  Thread* current = nullptr;
};

}  // namespace virtual_platform
