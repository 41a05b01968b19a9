#include "iaptrace/check_stage.h"

#include <cstddef>

namespace iaptrace::checking {
namespace {

struct StageRow {
  const char* name;
  const char* meaning;
  bool canStop;
  bool canPrecedeALoss;
};

constexpr StageRow kStageRows[] = {
    {"open", "the device was opened", false, true},
    {"identify", "the iPod accepts the host's announcement of its lingoes", true, true},
    {"accessory-info", "the iPod asks about the host, and the host answers", true, true},
    {"sample-rates", "the iPod asks for the host's sample rates, and the host answers", true, true},
    {"versions", "the iPod returns the versions of its lingoes", true, true},
    {"logo", "the iPod accepts the packets of the logo", true, true},
    {"mode", "the iPod enters the Extended Interface mode", true, false},
    {"connected", "the iPod is in the Extended Interface mode", false, true},
    {"browse", "a request of the database was answered", false, true},
    {"play", "the iPod plays, or acknowledged the request to play", false, true},
};

const StageRow& rowOf(Stage stage) { return kStageRows[static_cast<size_t>(stage)]; }

std::vector<Stage> stagesWith(bool StageRow::*property) {
  std::vector<Stage> stages;
  for (size_t i = 0; i < sizeof kStageRows / sizeof *kStageRows; ++i) {
    if (kStageRows[i].*property) stages.push_back(static_cast<Stage>(i));
  }
  return stages;
}

}  // namespace

const char* nameOf(Stage stage) { return rowOf(stage).name; }

const char* meaningOf(Stage stage) { return rowOf(stage).meaning; }

std::vector<Stage> stagesThatStop() { return stagesWith(&StageRow::canStop); }

std::vector<Stage> stagesBeforeALoss() { return stagesWith(&StageRow::canPrecedeALoss); }

}  // namespace iaptrace::checking
