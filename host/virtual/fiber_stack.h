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

  // The stack is never used again: the fiber was given up in the middle, and others may still use
  // what lies here.
  void keep();

  void* bottom() const { return lowest; }
  static std::size_t size();  // bytes

 private:
  void* lowest;
  bool isKept = false;
};

}  // namespace virtual_platform

#endif
