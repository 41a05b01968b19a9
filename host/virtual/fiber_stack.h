// The memory that a fiber's stack lies in.
#ifndef VIRTUAL_FIBER_STACK_H
#define VIRTUAL_FIBER_STACK_H

#include <cstddef>

namespace virtual_platform {

// Below the lowest byte lies a page that nobody may touch, so that an overflow ends the program.
// Stacks are used again: a world makes many threads, and a sweep many worlds.
class FiberStack {
 public:
  // Throws std::bad_alloc.
  FiberStack();
  ~FiberStack();
  FiberStack(const FiberStack&) = delete;
  FiberStack& operator=(const FiberStack&) = delete;

  void* bottom() const { return lowest; }
  static std::size_t size();  // bytes

 private:
  void* lowest;
};

}  // namespace virtual_platform

#endif
