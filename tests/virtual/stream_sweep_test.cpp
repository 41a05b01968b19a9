// An iPod that does not stop sending: after a frame it repeats the same message.
#include <string>
#include <vector>

#include "virtual/forged_sweep.h"

namespace virtual_session {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using virtual_platform::Loss;

struct Stream {
  const char* name;
  Bytes payload;
};

const std::vector<Stream>& streams() {
  static const std::vector<Stream> all{
      {"records", {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x00, 'N', 'o', 0x00}},
      {"positions", {0x04, 0x00, 0x27, 0x04, 0x00, 0x00, 0x03, 0xE8}},
      {"refusals", {0x04, 0x00, 0x01, 0x04, 0x00, 0x28}},
      {"pending", {0x00, 0x02, 0x06, 0x05, 0x00, 0x00, 0x03, 0xE8}},
      {"sample-rates", {0x0A, 0x04, 0, 0, 0x7D, 0x00, 0, 0, 0, 0, 0, 0, 0, 0}}};
  return all;
}

class StreamSweep : public ForgedSweep {
 protected:
  /// How long the library can wait for an acknowledgement.
  void streamFromEachFrameOn(const std::string& name, std::size_t count, milliseconds interval,
                             const Forge& after) {
    for (std::size_t number = 0; number < frames.size(); ++number) {
      for (const Stream& stream : streams()) {
        Case made = forgedCase(
            number, {name + stream.name, streamOf(stream.payload, count, interval), after});
        made.stall = count * interval;
        tryPoint(made);
      }
    }
    expectStrikes(0.9);
  }
};

INSTANTIATE_TEST_SUITE_P(All, StreamSweep, testing::ValuesIn(kScripts));

TEST_P(StreamSweep, ContinuesBetweenTheAnswers) {
  streamFromEachFrameOn("endless-", 3000, milliseconds(20), nullptr);
}

TEST_P(StreamSweep, ContinuesInsteadOfTheAnswers) {
  streamFromEachFrameOn("nothing-but-", 70, milliseconds(900),
                        [](const ForgedFrame&) { return atOnce({}); });
}

// Only the cable ends a wait for an acknowledgement then.
TEST_P(StreamSweep, EndsWithTheCable) {
  constexpr milliseconds kInterval(400);
  constexpr std::size_t kCount = 1500;
  constexpr seconds kPatience(5);
  for (std::size_t number = 0; number < frames.size(); ++number) {
    for (const Loss loss : kLosses) {
      const Stream& stream = streams()[number % streams().size()];
      const Forge forge = streamOf(stream.payload, kCount, kInterval);
      Case made = forgedCase(number, {});
      made.place = "pulled-among-" + std::string(stream.name) + ":" + std::to_string(number) + ":" +
                   nameOf(loss);
      made.stall = kPatience;
      made.disturb = [=](VirtualSession& session) {
        session.cable.rewrite([=, &session](std::size_t at, const Bytes& frame) {
          if (at != number) return at < number ? atOnce({frame}) : atOnce({});
          session.cable.unplugAt(session.world.now() + kPatience, loss);
          return forge(ForgedFrame(frame));
        });
      };
      tryPoint(made);
    }
  }
  expectStrikes(0.9);
}

// One record was requested: the first that arrives ends the wait, however many follow.
TEST(RecordStream, KeepsNoNameWaiting) {
  const session::HostFolder folder;
  const Forge stream = streamOf(streams().front().payload, 3000, milliseconds(20));
  VirtualSession session(1);
  session.cable.rewrite([&](std::size_t, const Bytes& bytes) {
    const ForgedFrame frame(bytes);
    const bool isRecord =
        frame.is(simulator::Lingo::kExtendedInterface, simulator::kReturnCategorizedDatabaseRecord);
    return isRecord ? stream(frame) : atOnce({bytes});
  });
  Calls calls;
  EXPECT_EQ(session.run([&] { calls = session.play(); }), "");
  EXPECT_TRUE(session.cable.hasRewritten());
  for (const Call& call : calls) {
    if (call.name != "IpodGetItemName") continue;
    EXPECT_LT(call.took, milliseconds(100));
  }
}

}  // namespace
}  // namespace virtual_session
