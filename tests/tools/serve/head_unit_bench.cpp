#include "head_unit_bench.h"

#include <gtest/gtest.h>

#include <iostream>
#include <utility>

namespace serve_test {
namespace {

/// The head unit takes what is written to standard output, also what GoogleTest writes there.
class FailuresOnError : public testing::EmptyTestEventListener {
  void OnTestPartResult(const testing::TestPartResult& result) override {
    if (!result.failed()) return;
    std::cerr << (result.file_name() != nullptr ? result.file_name() : "") << ':'
              << result.line_number() << ": " << result.message() << std::endl;
  }
};

[[maybe_unused]] const bool kIsAdded = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new FailuresOnError);
  return true;
}();

}  // namespace

HeadUnitBench::HeadUnitBench(simulator::Personality model, simulator::MusicLibrary music)
    : device(std::move(model), std::move(music)),
      headUnit(tool::makeHeadUnit(log, {device.folder / ""})) {}

bool HeadUnitBench::waitFor(const std::function<bool(const json&)>& holds,
                            std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  const auto reader = log.read({tool::Topic::kState});
  for (json current = state(); !holds(current);) {
    if (std::chrono::steady_clock::now() >= end) return false;
    const auto event = reader->next(std::chrono::milliseconds(50));
    if (event) current = json::parse(event->data);
  }
  return true;
}

bool HeadUnitBench::waitForStage(const std::string& stage, std::chrono::milliseconds limit) {
  return waitFor([&](const json& state) { return state["connection"]["stage"] == stage; }, limit);
}

tool::Outcome HeadUnitBench::list(const std::string& path, int offset, int count) {
  return headUnit->list({path, generation(), offset, count}, waiting);
}

tool::Outcome HeadUnitBench::play(const std::string& path, int index) {
  return headUnit->play({path, generation(), index}, waiting);
}

tool::Outcome HeadUnitBench::command(const std::string& name) {
  return headUnit->command(name, waiting);
}

}  // namespace serve_test
