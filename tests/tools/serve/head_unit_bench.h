#pragma once

#include <chrono>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/head_unit.h"
#include "support/session_ipod.h"

namespace serve_test {

using nlohmann::json;

/// A head unit whose iPod is in the same process. One at a time.
class HeadUnitBench {
 public:
  explicit HeadUnitBench(simulator::Personality model = {},
                         simulator::MusicLibrary music = simulator::builtInLibrary());

  tool::HeadUnit& unit() { return *headUnit; }
  session::SessionIpod& ipod() { return device; }
  tool::EventLog& events() { return log; }

  json state() const { return headUnit->state(); }
  std::string stage() const { return state()["connection"]["stage"]; }
  uint64_t generation() const { return state()["generation"]; }

  /// Waits until the published state holds. Returns false when it does not in time.
  bool waitFor(const std::function<bool(const json&)>& holds,
               std::chrono::milliseconds limit = std::chrono::seconds(20));
  bool waitForStage(const std::string& stage,
                    std::chrono::milliseconds limit = std::chrono::seconds(20));

  /// The requests, of the present generation and of a client that waits.
  tool::Outcome list(const std::string& path, int offset = 0, int count = 20);
  tool::Outcome play(const std::string& path, int index);
  tool::Outcome command(const std::string& name);

  /// A list that the iPod does not answer may be refused.
  bool mayRefuse = false;

  /// Ends the head unit.
  void end() { headUnit.reset(); }

 private:
  session::SessionIpod device;
  tool::EventLog log;
  std::unique_ptr<tool::HeadUnit> headUnit;
};

/// A client that waits for its answer.
inline bool waiting() { return true; }

}  // namespace serve_test
