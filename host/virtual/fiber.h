// A flow of control with a separate stack. All fibers share one thread of the system.
#pragma once

#include <ucontext.h>

#include <cstddef>
#include <functional>
#include <memory>

#include "fiber_stack.h"

namespace virtual_platform {

/// What a sanitizer must know about a fiber; empty without a sanitizer.
struct FiberMarks {
  const void* stackBottom = nullptr;
  std::size_t stackSize = 0;
  void* threadMark = nullptr;
};

class Fiber {
 public:
  /// Represents the system's thread that runs now.
  Fiber();
  /// Runs `body` when it is switched to for the first time. The body must not return: it switches
  /// away for ever.
  explicit Fiber(std::function<void()> body);
  ~Fiber();
  Fiber(const Fiber&) = delete;
  Fiber& operator=(const Fiber&) = delete;

  /// Called in this fiber: continues in `next`, and returns when another fiber switches back.
  void switchTo(Fiber& next);
  /// Continues in `next`; no fiber will switch back.
  void leaveTo(Fiber& next);

 private:
  static void enter();
  void swap(Fiber& next, void** fakeStack);
  __attribute__((noinline)) void exchange(Fiber& next);
  __attribute__((noinline)) void continueThere();

  std::unique_ptr<FiberStack> stack;  ///< none for the system's thread
  std::function<void()> body;
  ucontext_t context = {};
  void* place[5] = {};    ///< where a quick switch continues; the compiler decides on the content
  bool hasPlace = false;  ///< without it the fiber continues at its context
  bool isInside = false;  ///< its body has begun and not ended
  FiberMarks marks;
};

}  // namespace virtual_platform
