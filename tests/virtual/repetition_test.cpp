// A session makes the same calls of the platform whatever the sessions before it were: the library
// keeps only what it promises to keep. Each test begins in a process that has had no session.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <isochplay_desk.h>

#include <algorithm>

#include "api/library_state.h"
#include "support/host_folder.h"
#include "support/slice.h"
#include "virtual/forged_frame.h"
#include "virtual/serial_host.h"
#include "virtual/story.h"
#include "virtual/sweep.h"

using namespace ipodctl;

namespace virtual_session::repetition {
namespace {

using virtual_platform::ComingFrame;
using virtual_platform::Direction;
using virtual_platform::FrameRewriter;

constexpr uint64_t kSeed = 3;
constexpr uint8_t kExtendedInterface = static_cast<uint8_t>(simulator::Lingo::kExtendedInterface);
constexpr uint8_t kRefused = 4;

using Disturb = std::function<void(VirtualSession&)>;

void disturbNothing(VirtualSession&) {}

/// Changes every message of the iPod in the Extended Interface lingo.
Disturb changed(std::vector<ComingFrame> (*change)(std::size_t number, const ForgedFrame& frame)) {
  return [change](VirtualSession& session) {
    session.cable.rewrite([change](std::size_t number, const Bytes& bytes) {
      const ForgedFrame frame(bytes);
      return frame.lingo() == kExtendedInterface ? change(number, frame) : atOnce({bytes});
    });
  };
}

std::vector<ComingFrame> silent(std::size_t, const ForgedFrame&) { return {}; }

std::vector<ComingFrame> refused(std::size_t, const ForgedFrame& frame) {
  return atOnce({frame.acknowledgement(kRefused, frame.request())});
}

std::vector<ComingFrame> lossy(std::size_t number, const ForgedFrame& frame) {
  return number % 3 == 0 ? atOnce({}) : atOnce({frame.itself()});
}

struct Session {
  std::string name;
  const char* script;
  Disturb disturb;
};

void PrintTo(const Session& session, std::ostream* stream) { *stream << session.name; }

/// Omits the result of a look at a signal: the end of a session may leave it set, and the next
/// start resets it.
std::string withoutSignal(const std::string& line) {
  const std::size_t look = line.find(", 0) = ");
  const bool isOfASignal = look != std::string::npos && line.find("semaphore") < look;
  return isOfASignal ? line.substr(0, look) : line;
}

/// The calls of the platform, and what the exports returned and wrote.
Lines recordOf(const Session& each) {
  VirtualSession session(kSeed, scriptCalled(each.script));
  each.disturb(session);
  Calls calls;
  EXPECT_EQ(session.run([&] { calls = session.play(); }), "") << each.name;
  Lines record;
  for (const std::string& line : session.world.trace()) {
    if (!tellsOfState(line)) record.push_back(withoutSignal(line));
  }
  const Lines results = resultsOf(calls);
  record.insert(record.end(), results.begin(), results.end());
  return record;
}

/// Sessions of every kind.
std::vector<Session> allSessions() {
  std::vector<Session> all;
  for (const char* const script : kScripts) {
    const std::string name = script;
    all.push_back({name + "_silent", script, changed(silent)});
    all.push_back({name + "_refused", script, changed(refused)});
    all.push_back({name + "_lossy", script, changed(lossy)});
    all.push_back({name, script, disturbNothing});
  }
  return all;
}

/// The sessions in between: others, and some that fail.
std::vector<Session> histories() {
  constexpr std::size_t kPulledAt = 900;
  std::vector<Session> all = allSessions();
  for (const auto loss : kLosses) {
    all.push_back({"pulled_" + nameOf(loss), "reference", [loss](VirtualSession& session) {
                     session.cable.unplugAfter(Direction::kFromIpod, kPulledAt, loss);
                   }});
  }
  all.push_back({"without_a_device", "reference", [](VirtualSession& session) {
                   session.cable.unplug(session.world.now(), virtual_platform::Loss::kGone);
                 }});
  return all;
}

class Repetition : public testing::TestWithParam<Session> {
 protected:
  // The first session creates all permanent objects.
  Repetition() {
    libraryLock.ensure();
    SerialHost::prepare();
  }

  const session::HostFolder folder;
};

INSTANTIATE_TEST_SUITE_P(All, Repetition, testing::ValuesIn(allSessions()),
                         [](const auto& each) { return each.param.name; });

TEST_P(Repetition, OfASessionIsTheSameAfterEveryOther) {
  const Lines first = recordOf(GetParam());
  const std::vector<Session> others = histories();
  for (std::size_t i = 0; i < others.size(); i += kSliceThinning) {
    const Session& history = others[i];
    recordOf(history);
    const Lines again = recordOf(GetParam());
    const auto [was, is] = std::mismatch(first.begin(), first.end(), again.begin(), again.end());
    ASSERT_TRUE(was == first.end() && is == again.end())
        << "after " << history.name << ": " << (is != again.end() ? *is : "nothing")
        << "\nat first: " << (was != first.end() ? *was : "nothing");
  }
}

}  // namespace
}  // namespace virtual_session::repetition
