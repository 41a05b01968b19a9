// The memory of a fiber's stack.
#pragma once

#include <cstddef>

namespace virtual_platform {

/// Below the lowest byte is a page without access, so that an overflow ends the program. Stacks are
/// reused: a world makes many threads, and a sweep makes many worlds.
class FiberStack {
 public:
  /// Throws std::bad_alloc.
  FiberStack();
  ~FiberStack();
  FiberStack(const FiberStack&) = delete;
  FiberStack& operator=(const FiberStack&) = delete;

  /// Keeps the stack from being reused: the fiber was abandoned while it ran, and other threads may
  /// still use its variables.
  void keep();

  /// Clears a sanitizer's marks of the functions of the fiber, which ends at the frame `last` and
  /// never returns from them.
  void forgetFrames(const void* last);

  void* bottom() const { return lowest; }
  static std::size_t size();  ///< bytes

 private:
  void* lowest;
  bool isKept = false;
};

}  // namespace virtual_platform
