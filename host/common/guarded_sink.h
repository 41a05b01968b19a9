// A place where a host program's callback can be set, changed and called on any thread.
#ifndef HOST_GUARDED_SINK_H
#define HOST_GUARDED_SINK_H

#include <mutex>
#include <shared_mutex>

// Function is a pointer to a function whose first argument is the context.
template <typename Function>
class GuardedSink {
 public:
  // When it returns, no call of the function before is running any more.
  void set(Function newFunction, void* newContext) {
    const std::lock_guard alone(mutex);
    function = newFunction;
    context = newContext;
  }

  // False when there is no function.
  template <typename... Arguments>
  bool call(Arguments... arguments) {
    const std::shared_lock shared(mutex);
    if (function == nullptr) return false;
    function(context, arguments...);
    return true;
  }

 private:
  std::shared_mutex mutex;
  Function function = nullptr;  // guarded by mutex, like context
  void* context = nullptr;
};

#endif
