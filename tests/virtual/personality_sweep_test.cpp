// Kinds of iPods, each pulled at every frame.
#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "device/personality_settings.h"
#include "support/replay.h"
#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using simulator::Personality;
using virtual_platform::Direction;
using virtual_platform::Loss;

// After a refusal, which can arrive at any time, the library waits another second for the
// acknowledgement.
constexpr std::chrono::seconds kRefusals(1);

// The last frame of each direction, pulled in every way. In some orders of the threads the link
// closes before it is read.
constexpr int kFarewells = 10;

/// The models, and one model with other behaviour.
std::vector<std::string> kinds() {
  std::vector<std::string> all = simulator::personalityNames();
  for (const char* const setting : {"silent-identifications=1",
                                    "identification-end=mode",
                                    "accessory-info-patience=0",
                                    "repeats-accessory-info=no",
                                    "acknowledges-accessory-info=yes",
                                    "audio-attributes-delay=150",
                                    "audio-ack-opens-notifications=yes",
                                    "silent-before-identification=yes",
                                    "refuses-second-identification=yes",
                                    "accessory-info-delay=1",
                                    "accessory-info-delay=20",
                                    "accessory-info-delay=100",
                                    "unknown-command=failed",
                                    "unknown-command=silence",
                                    "outside-extended-mode=silence",
                                    "display-needs-extended-mode=yes",
                                    "mode-change-pending=300",
                                    "mode-change-together=yes",
                                    "play-pending=500",
                                    "sound-delay=200",
                                    "answer-delay=100",
                                    "acknowledgement-delay=300",
                                    "count-before-select=no",
                                    "deselects-playlists=no",
                                    "track-selection=alone",
                                    "track-order=name",
                                    "previous-restarts-after=0",
                                    "bad-track-index=failed",
                                    "tells-genre=no",
                                    "position-interval=20",
                                    "notification-jitter=60",
                                    "colour=no"})
    all.emplace_back(setting);
  return all;
}

/// The screen stays as small as the script's, because the script's bounds depend on its rows.
Personality personalityOf(const std::string& kind, const Personality& usual) {
  Personality other = usual;
  if (kind.find('=') != std::string::npos) {
    simulator::applySetting(other, kind);
  } else {
    other = simulator::personality(kind);
    other.display.limits = usual.display.limits;
  }
  return other;
}

/// Returns the script with an iPod of this kind, and with its results.
Script scriptWith(const Script& usual, const std::string& kind) {
  Script script = usual;
  script.model = personalityOf(kind, usual.model);
  VirtualSession session(1, script);
  session.run([&] { script.results = resultsOf(session.play()); });
  return script;
}

bool connects(const Script& script) {
  return std::any_of(script.results.begin(), script.results.end(), [](const std::string& result) {
    return result == "IpodConnect 1" || result == "connect 1";
  });
}

std::vector<std::size_t> frameEndsOf(const Script& script, Direction direction) {
  VirtualSession session(1, script);
  session.run([&] { session.play(); });
  return session.cable.frameEnds(direction);
}

class PersonalitySweep : public Sweep,
                         public testing::WithParamInterface<std::tuple<const char*, std::string>> {
 protected:
  PersonalitySweep()
      : kind(std::get<1>(GetParam())),
        script(scriptWith(scriptCalled(std::get<0>(GetParam())), kind)) {
    thinning = 8;
  }

  void pullAt(Direction direction, std::size_t at) {
    for (const Loss loss : kLosses) {
      Case made{script,
                kind + ":" + nameOf(direction) + ":" + std::to_string(at) + ":" + nameOf(loss),
                at + 1,
                [=](VirtualSession& session) { session.cable.unplugAfter(direction, at, loss); },
                [](VirtualSession& session) { return !session.cable.isPlugged(); },
                Outcome::kConnection};
      made.stall = kRefusals;
      tryPoint(made);
    }
  }

  const std::string kind;
  const Script script;
};

std::string nameOfTest(const testing::TestParamInfo<PersonalitySweep::ParamType>& info) {
  std::string kind = std::get<1>(info.param);
  std::replace(kind.begin(), kind.end(), '=', '_');
  return identifierOf({std::get<0>(info.param), kind});
}

INSTANTIATE_TEST_SUITE_P(All, PersonalitySweep,
                         testing::Combine(testing::Values("short", "reference"),
                                          testing::ValuesIn(kinds())),
                         nameOfTest);

INSTANTIATE_TEST_SUITE_P(Models, PersonalitySweep,
                         testing::Combine(testing::Values("serial"),
                                          testing::ValuesIn(simulator::personalityNames())),
                         nameOfTest);

TEST_P(PersonalitySweep, IsPulledAtEveryFrame) {
  EXPECT_TRUE(connects(script));
  for (const Direction direction : kDirections) {
    for (const std::size_t at : frameEndsOf(script, direction))
      pullAt(direction, at);
  }
  if (isReplay()) return;
  EXPECT_GE(strikes + kFarewells, cases * 9 / 10);
}

}  // namespace
}  // namespace virtual_session
