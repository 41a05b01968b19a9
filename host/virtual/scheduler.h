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

  void spawn(Owner owner, std::function<void()> body);

  // Runs until every thread has ended, or the host's have and the others had their time to, or
  // nobody can run ever again, or a loop of calls has no end. Returns what went wrong; empty:
  // nothing.
  std::string run();

  // In a thread: lets a moment pass, and perhaps other threads run.
  void pass();
  // In a thread: perhaps other threads run.
  void yield();
  // In a thread: false when the deadline came first.
  bool await(Wait wait);

  Time now() const { return clock; }
  std::string threadName() const;
  DWORD& lastError();
  unsigned libraryThreads() const { return running[static_cast<int>(Owner::kLibrary)]; }

 private:
  struct Thread;

  void end();
  void switchFrom(Thread& thread);
  Thread* next();
  Thread* pickRunnable();
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
  std::optional<Time> hostsEnded;
  std::string failure;
  std::unique_ptr<Fiber> outside;
  std::vector<std::unique_ptr<Thread>> threads;
  std::vector<Thread*> runnable;
  Thread* current = nullptr;
};

}  // namespace virtual_platform

#endif
