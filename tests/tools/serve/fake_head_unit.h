// A head unit without an iPod, for the tests of the HTTP server.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "ipodctl/serve/head_unit.h"

namespace serving {

using tool::Outcome;
using tool::Wanted;

/// Notes what it is asked, and answers at once; "slow" in a path: only when nobody waits any more.
class FakeHeadUnit : public tool::HeadUnit {
 public:
  nlohmann::json state() const override {
    return {{"version", 1}, {"generation", 3}, {"playback", {{"title", "L\u00e4ngtan"}}}};
  }

  Outcome list(const tool::ListRequest& request, const Wanted& isWanted) override {
    note("list " + request.path + " " + std::to_string(request.generation) + " " +
         std::to_string(request.offset) + " " + std::to_string(request.count));
    if (request.path == "slow") awaitNobody(isWanted);
    if (request.generation == 3) return {{{"count", 12}, {"items", {}}}, {}, "", ""};
    return {{}, tool::Refusal::kStaleGeneration, "stale-generation", "Ask for /v1/state again."};
  }

  Outcome tabs(const tool::ListRequest& request, const Wanted&) override {
    note("tabs " + request.path + " " + std::to_string(request.count));
    return {{{"tabs", {}}}, {}, "", ""};
  }

  Outcome play(const tool::PlayRequest& request, const Wanted&) override {
    return done("play " + request.path + " " + std::to_string(request.index));
  }
  Outcome command(const std::string& name, const Wanted&) override {
    return done("command " + name);
  }
  Outcome setModes(const std::string& shuffle, const std::string& repeat, const Wanted&) override {
    return done("modes " + shuffle + "/" + repeat);
  }
  Outcome setLogo(const std::string& bitmap, const Wanted&) override {
    return done("logo of " + std::to_string(bitmap.size()) + " bytes");
  }
  Outcome reconnect(const Wanted&) override { return done("reconnect"); }

  std::vector<std::string> asked() const {
    const std::lock_guard lock(mutex);
    return calls;
  }

  std::atomic<int> dropped{0};  ///< requests that nobody waited for

 private:
  Outcome done(const std::string& call) {
    note(call);
    return {};
  }

  void note(const std::string& call) {
    const std::lock_guard lock(mutex);
    if (calls.size() < kMostNoted) calls.push_back(call);
  }

  void awaitNobody(const Wanted& isWanted) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (isWanted() && std::chrono::steady_clock::now() < end)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    ++dropped;
  }

  static constexpr size_t kMostNoted = 1000;
  mutable std::mutex mutex;
  std::vector<std::string> calls;  ///< guarded by mutex
};

}  // namespace serving
