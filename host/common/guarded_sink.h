// Holds a callback of a host program. It can be set, changed and called on any thread.
#pragma once

#include <mutex>
#include <shared_mutex>

/// Function is a pointer to a function whose first argument is the context.
template <typename Function>
class GuardedSink {
 public:
  /// When it returns, no call of the previous function is running.
  void set(Function newFunction, void* newContext) {
    const std::lock_guard alone(mutex);
    function = newFunction;
    context = newContext;
  }

  /// Returns false when there is no function.
  template <typename... Arguments>
  bool call(Arguments... arguments) {
    const std::shared_lock shared(mutex);
    if (function == nullptr) return false;
    function(context, arguments...);
    return true;
  }

 private:
  std::shared_mutex mutex;
  Function function = nullptr;  ///< guarded by mutex, like context
  void* context = nullptr;
};
