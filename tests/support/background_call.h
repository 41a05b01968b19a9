// A call that may block, on a separate thread.
#pragma once

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <future>
#include <initializer_list>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "support/kernel_calls.h"
#include "support/pty_pair.h"

namespace host_test {

/// A call that never returns makes the test fail, but not hang: its thread is abandoned.
template <typename Result>
class BackgroundCall {
 public:
  template <typename Call>
  explicit BackgroundCall(Call call) {
    std::promise<pid_t> threadId;
    std::promise<Result> promisedResult;
    std::future<pid_t> id = threadId.get_future();
    future = promisedResult.get_future();
    std::thread([call = std::move(call), threadId = std::move(threadId),
                 promisedResult = std::move(promisedResult)]() mutable {
      threadId.set_value(static_cast<pid_t>(syscall(SYS_gettid)));
      promisedResult.set_value(call());
    }).detach();
    statusPath = "/proc/self/task/" + std::to_string(id.get()) + "/syscall";
  }

  /// Waits until the call sleeps in poll(), as a device call does when it has to wait.
  bool waitUntilBlocked() const {
    for (const Patience patience; !patience.isOver(); Patience::pause()) {
      std::string number;
      std::ifstream(statusPath) >> number;
      const auto isCurrent = [&](long call) { return number == std::to_string(call); };
      if (std::any_of(kPollCalls.begin(), kPollCalls.end(), isCurrent)) return true;
    }
    return false;
  }

  bool isDone() const {
    return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  }

  /// Returns the result; no value when the call does not return in time. May be called once.
  std::optional<Result> result() {
    if (future.wait_for(kPatience) != std::future_status::ready) return std::nullopt;
    return future.get();
  }

 private:
  std::future<Result> future;
  std::string statusPath;
};

template <typename Call>
BackgroundCall(Call) -> BackgroundCall<std::invoke_result_t<Call>>;

}  // namespace host_test
