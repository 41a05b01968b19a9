#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace race {

/// A thread that repeats a step until it is destroyed.
class StoppableThread {
 public:
  using Pause = std::chrono::microseconds;

  /// `step` returns how long to wait before the next one.
  explicit StoppableThread(std::function<Pause()> step)
      : thread([this, step = std::move(step)] { run(step); }) {}
  ~StoppableThread() {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      stopping = true;
    }
    stopped.notify_all();
    thread.join();
  }
  StoppableThread(const StoppableThread&) = delete;
  StoppableThread& operator=(const StoppableThread&) = delete;

 private:
  void run(const std::function<Pause()>& step) {
    std::unique_lock<std::mutex> lock(mutex);
    while (!stopping) {
      lock.unlock();
      const Pause pause = step();
      lock.lock();
      stopped.wait_for(lock, pause, [this] { return stopping; });
    }
  }

  std::mutex mutex;
  std::condition_variable stopped;
  bool stopping = false;
  std::thread thread;  // declared last because it uses the others
};

}  // namespace race
