#include "fiber.h"

#include <cstdlib>
#include <utility>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/common_interface_defs.h>
#endif
#if defined(__SANITIZE_THREAD__)
/// The compiler's header does not declare them.
extern "C" {
void* __tsan_get_current_fiber();
void* __tsan_create_fiber(unsigned flags);
void __tsan_destroy_fiber(void* fiber);
void __tsan_switch_to_fiber(void* fiber, unsigned flags);
}
#endif

namespace virtual_platform {
namespace {

#if defined(__SANITIZE_ADDRESS__)
void beginSwitch(void** fakeStack, const FiberMarks& next) {
  __sanitizer_start_switch_fiber(fakeStack, next.stackBottom, next.stackSize);
}
void endSwitch(void* fakeStack, FiberMarks& before) {
  __sanitizer_finish_switch_fiber(fakeStack, &before.stackBottom, &before.stackSize);
}
#else
void beginSwitch(void**, const FiberMarks&) {}
void endSwitch(void*, FiberMarks&) {}
#endif

#if defined(__SANITIZE_THREAD__)
void* currentThreadMark() { return __tsan_get_current_fiber(); }
void* newThreadMark() { return __tsan_create_fiber(0); }
void dropThreadMark(void* mark) { __tsan_destroy_fiber(mark); }
void switchThreadMark(void* mark) { __tsan_switch_to_fiber(mark, 0); }
#else
void* currentThreadMark() { return nullptr; }
void* newThreadMark() { return nullptr; }
void dropThreadMark(void*) {}
void switchThreadMark(void*) {}
#endif

/// The fiber to which the present switch leads.
Fiber* arriving = nullptr;
FiberMarks* left = nullptr;

}  // namespace

Fiber::Fiber() { marks.threadMark = currentThreadMark(); }

Fiber::Fiber(std::function<void()> fiberBody)
    : stack(std::make_unique<FiberStack>()), body(std::move(fiberBody)) {
  getcontext(&context);
  context.uc_stack.ss_sp = stack->bottom();
  context.uc_stack.ss_size = FiberStack::size();
  context.uc_link = nullptr;
  makecontext(&context, &Fiber::enter, 0);
  // With a stack here AddressSanitizer would clear its marks of the whole stack at every switch.
  context.uc_stack = {};
  marks = {stack->bottom(), FiberStack::size(), newThreadMark()};
}

Fiber::~Fiber() {
  if (!stack) return;
  if (isInside) stack->keep();
  dropThreadMark(marks.threadMark);
}

void Fiber::switchTo(Fiber& next) {
  void* fakeStack = nullptr;
  swap(next, &fakeStack);
  endSwitch(fakeStack, *left);
}

void Fiber::leaveTo(Fiber& next) {
  isInside = false;
  stack->forgetFrames(__builtin_frame_address(0));
  swap(next, nullptr);
}

void Fiber::enter() {
  endSwitch(nullptr, *left);
  arriving->isInside = true;
  arriving->body();
  std::abort();
}

void Fiber::swap(Fiber& next, void** fakeStack) {
  arriving = &next;
  left = &marks;
  beginSwitch(fakeStack, next.marks);
  switchThreadMark(next.marks.threadMark);
  exchange(next);
}

#if defined(VIRTUAL_QUICK_SWITCH) && defined(__clang__) && defined(__x86_64__)
/// swapcontext calls the system to exchange the signal masks, but no fiber changes its mask. Only
/// the first switch to a fiber needs its context.
void Fiber::exchange(Fiber& next) {
  if (__builtin_setjmp(place) != 0) return;
  hasPlace = true;
  next.continueThere();
  std::abort();  // so that the call above is not a jump that drops the frame of this function
}

void Fiber::continueThere() {
  if (hasPlace) __builtin_longjmp(place, 1);
  setcontext(&context);
}
#else
void Fiber::exchange(Fiber& next) { swapcontext(&context, &next.context); }
#endif

}  // namespace virtual_platform
