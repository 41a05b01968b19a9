// Switches of a model that change what the iPod sends. The reference session, which uses every
// export, meets each of them.
#include <algorithm>
#include <deque>
#include <functional>
#include <string>

#include "device/personality_settings.h"
#include "faults/fault_text.h"
#include "support/slice.h"
#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using simulator::Lingo;
using simulator::Message;
using simulator::Traffic;

using History = std::deque<Traffic>;
using Seen = std::function<bool(const History&)>;

constexpr std::uint64_t kOrders = 20 / kSliceThinning;

/// The only result that differs.
struct Change {
  std::string usual;
  std::string now;
};

struct Switch {
  const char* name;
  const char* setting;
  const char* fault;  ///< that the session needs to meet it; "": none
  Seen isMet;
  Outcome outcome;
  Change change = {};  ///< of a full session
};

void PrintTo(const Switch& each, std::ostream* out) { *out << each.setting; }

History::const_iterator findSent(History::const_iterator from, const History& history,
                                 const Message& message) {
  return std::find_if(from, history.end(), [&](const Traffic& each) {
    return each.kind == Traffic::Kind::kSent && each.message == message;
  });
}

History::const_iterator findReceived(const History& history, Lingo lingo, uint16_t command) {
  return std::find_if(history.begin(), history.end(), [&](const Traffic& each) {
    return each.kind == Traffic::Kind::kReceived && each.message.is(lingo, command);
  });
}

Seen says(const Message& message) {
  return [=](const History& history) {
    return findSent(history.begin(), history, message) != history.end();
  };
}

Seen saysInARow(const Message& first, const Message& second) {
  return [=](const History& history) {
    const auto found = findSent(history.begin(), history, first);
    return found != history.end() && found + 1 != history.end() && (found + 1)->at == found->at &&
           (found + 1)->message == second;
  };
}

/// Long after the message of this command.
Seen saysLater(Lingo lingo, uint16_t command, simulator::Time atLeast, const Message& message) {
  return [=](const History& history) {
    const auto asked = findReceived(history, lingo, command);
    const auto said = findSent(asked, history, message);
    return said != history.end() && said->at - asked->at >= atLeast;
  };
}

// The second acknowledgement of the mode and the question that is repeated after five seconds can
// replace an answer. The second announcement is sent because an answer was lost.
const Switch kSwitches[] = {
    {"BothAcknowledgementsOfTheModeInOneWrite", "mode-change-together=yes", "",
     saysInARow({0x00, 0x02, {0x06, 0x05, 0x00, 0x00, 0x01, 0x2C}}, {0x00, 0x02, {0x00, 0x05}}),
     Outcome::kConnection},
    {"QuestionAfterTheIdentification", "accessory-info-delay=100", "",
     saysLater(Lingo::kGeneral, simulator::kEnterRemoteUiMode, simulator::milliseconds(90),
               {0x00, 0x27, {0x00}}),
     Outcome::kConnection},
    {"FailureOfATitle", "bad-track-index=failed", "", says({0x04, 0x0001, {0x02, 0x00, 0x20}}),
     Outcome::kFullSession},
    {"FailureOfAnArtist", "bad-track-index=failed", "", says({0x04, 0x0001, {0x02, 0x00, 0x22}}),
     Outcome::kFullSession},
    {"FailureOfAnAlbum", "bad-track-index=failed", "", says({0x04, 0x0001, {0x02, 0x00, 0x24}}),
     Outcome::kFullSession},
    {"RefusedGenre",
     "tells-genre=no",
     "",
     says({0x04, 0x0001, {0x04, 0x00, 0x0C}}),
     Outcome::kFullSession,
     {"IpodGetTrackInfo 0 0 A01 B1 T01 <5>G1 UnKnown",
      "IpodGetTrackInfo 0 0 A01 B1 T01 - UnKnown"}},
    {"RefusedSecondIdentification", "refuses-second-identification=yes", "lost@00:0F#1",
     says({0x00, 0x02, {0x04, 0x13}}), Outcome::kConnection},
    {"PlaylistThatStaysSelected", "deselects-playlists=no", "",
     says({0x04, 0x0001, {0x04, 0x00, 0x17}}), Outcome::kFullSession},
    {"LateSound", "sound-delay=200", "",
     saysLater(Lingo::kExtendedInterface, simulator::kPlayCurrentSelection,
               simulator::milliseconds(200), {0x04, 0x0001, {0x00, 0x00, 0x28}}),
     Outcome::kFullSession},
};

Script scriptWith(const Switch& each) {
  Script script = referenceScript();
  simulator::applySetting(script.model, each.setting);
  std::replace(script.results.begin(), script.results.end(), each.change.usual, each.change.now);
  return script;
}

class SwitchTest : public Sweep, public testing::WithParamInterface<Switch> {};

INSTANTIATE_TEST_SUITE_P(All, SwitchTest, testing::ValuesIn(kSwitches),
                         [](const auto& each) { return each.param.name; });

TEST_P(SwitchTest, IsMetByTheReferenceSession) {
  const Switch& each = GetParam();
  const Script script = scriptWith(each);
  for (std::uint64_t seed = 1; seed <= kOrders; ++seed) {
    tryCase({script, each.setting, seed,
             [&](VirtualSession& session) {
               if (*each.fault != '\0') simulator::addFault(session.ipod.faults(), each.fault);
             },
             [&](VirtualSession& session) { return each.isMet(session.ipod.history()); },
             each.outcome});
  }
  EXPECT_EQ(strikes, cases);
}

}  // namespace
}  // namespace virtual_session
