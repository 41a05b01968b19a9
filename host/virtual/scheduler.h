// Runs threads one at a time, in an order that the seed decides, and owns their clock.
#ifndef VIRTUAL_SCHEDULER_H
#define VIRTUAL_SCHEDULER_H

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

// Whose thread it is: the host's own, or one that the library made.
enum class Owner { kHost, kLibrary };

// What a thread waits for.
struct Wait {
  std::string what;                                 // for the report of a run that cannot go on
  std::optional<Time> deadline;                     // none: without limit
  std::function<bool()> isOver;                     // must not switch
  std::function<std::optional<Time>()> nextChange;  // when isOver may change by itself; may be null
};

class Scheduler {
 public:
  explicit Scheduler(std::uint64_t seed);
  ~Scheduler();
  Scheduler(const Scheduler&) = delete;
  Scheduler& operator=(const Scheduler&) = delete;

  // `onKill` is called in the thread when the system ends it.
  void spawn(Owner owner, std::function<void()> body, std::function<void()> onKill = nullptr);

  // Runs until every thread has ended, or the host's have and the others had their time to, or
  // nobody can run ever again, or a loop of calls has no end. Returns what went wrong; empty:
  // nothing.
  std::string run();

  // In a thread: lets a moment pass, and perhaps other threads run.
  void pass();
  // In a thread: perhaps other threads run.
  void yield();
  // In a thread: after so many calls more the processor is taken from it until somebody resumes it,
  // or until nobody else can ever run.
  void holdAfter(unsigned calls);
  // All that are held; false when none is.
  bool resume();
  // Where a thread of this owner could be switched, after so many such places: it does not run
  // until no other thread can.
  void preemptAfter(Owner owner, unsigned switches);
  // Whether that is still to come.
  bool isToPreempt(Owner owner) const {
    return switchesToPreemption[static_cast<int>(owner)].has_value();
  }
  // The system ends the library's thread that makes the call after so many of them all.
  void killAfter(unsigned calls);
  // Whether that is still to come.
  bool isToKill() const { return callsToKill.has_value(); }
  // In a thread: false when the deadline came first.
  bool await(Wait wait);

  Time now() const { return clock; }
  std::string threadName() const;
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
  unsigned running[2] = {0, 0};  // by owner
  unsigned made[2] = {0, 0};
  std::optional<unsigned> callsToKill;
  std::optional<unsigned> switchesToPreemption[2];  // by owner
  std::optional<Time> hostsEnded;
  std::string failure;
  std::unique_ptr<Fiber> outside;
  std::vector<std::unique_ptr<Thread>> threads;
  std::vector<Thread*> runnable;
  Thread* current = nullptr;
};

}  // namespace virtual_platform

#endif
