#include <gtest/gtest.h>

#include "link/pty_ipod.h"
#include "support/hex.h"
#include "support/host_end.h"
#include "support/ipod_bench.h"

namespace simulator::scripted_host {
namespace {

/// Conversations frame by frame, as on a USB link; on a serial line each frame has FF before it.
struct Turn {
  std::vector<const char*> host;  // sent one after the other
  std::vector<const char*> ipod;  // expected in answer
};
using Script = std::vector<Turn>;

const char* const kAnnounce = "55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA";
const char* const kAnnounced = "55 04 00 02 00 13 E7";
const char* const kAskCapabilities = "55 03 00 27 00 D6";
const char* const kCapabilities = "55 07 00 28 00 00 00 00 01 D0";
const char* const kAttributes = "55 0E 0A 04 00 00 AC 44 00 00 00 00 00 00 00 00 F4";
const char* const kAudioAck = "55 04 0A 00 00 04 EE";
const char* const kEnter = "55 02 00 05 F9";
const char* const kEntered = "55 04 00 02 00 05 F5";

/// Ends when the iPod has sent the version of the Digital Audio lingo.
const Script kVersionChain = {
    {{kAnnounce}, {kAnnounced, kAskCapabilities}},
    {{kCapabilities}, {"55 02 0A 02 F2"}},
    {{"55 12 0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80 DA", "55 03 00 0F 00 EE"},
     {kAttributes, "55 05 00 10 00 01 09 E1"}},
    {{kAudioAck, "55 03 00 0F 04 EA"}, {"55 05 00 10 04 01 0E D8"}},
    {{"55 03 00 0F 0A E4"}, {"55 05 00 10 0A 01 02 DE"}},
    {{kEnter}, {kEntered}},
    {{"55 04 04 00 18 02 DE"}, {"55 07 04 00 19 00 00 00 03 D9"}},
};

/// Ends when the iPod has acknowledged the mode that it sent without a request.
const Script kModeUnasked = {
    {{kAnnounce}, {kAnnounced, kAskCapabilities}},
    {{kCapabilities}, {kAttributes, "55 03 00 04 01 F8"}},
    {{kAudioAck, kEnter}, {kEntered}},
    {{"55 04 04 00 18 02 DE"}, {"55 07 04 00 19 00 00 00 03 D9"}},
};

struct Case {
  const char* name;
  const char* preset;
  FrameKind kind;
  const Script& script;
};

const Case kCases[] = {
    {"ClassicUsb", "classic", FrameKind::kUsb, kVersionChain},
    {"ClassicSerial", "classic", FrameKind::kSerial, kVersionChain},
    {"StrictUsb", "strict", FrameKind::kUsb, kVersionChain},
    {"VideoUsb", "video", FrameKind::kUsb, kModeUnasked},
    {"VideoSerial", "video", FrameKind::kSerial, kModeUnasked},
    {"MiniSerial", "mini", FrameKind::kSerial, kModeUnasked},
};

std::string joined(const std::vector<const char*>& frames, FrameKind kind) {
  std::string all;
  for (const char* frame : frames) {
    if (!all.empty()) all += " ";
    if (kind == FrameKind::kSerial) all += "FF ";
    all += frame;
  }
  return all;
}

class ScriptedHost : public testing::TestWithParam<Case> {
 protected:
  std::string sent(const Turn& turn) const { return joined(turn.host, GetParam().kind); }
  std::string expected(const Turn& turn) const { return joined(turn.ipod, GetParam().kind); }

  SimulatedIpod ipod{personality(GetParam().preset), smallLibrary()};
};

TEST_P(ScriptedHost, IdentifiesOverTheCore) {
  Time now(0);
  ipod.plugIn(now, GetParam().kind);
  for (const Turn& turn : GetParam().script) {
    ipod.receive(now, hex(sent(turn)));
    Bytes answer;
    for (const Bytes& write : ipod.takeOutput(now)) {
      answer.insert(answer.end(), write.begin(), write.end());
    }
    EXPECT_EQ(toHex(answer), expected(turn)) << "to " << sent(turn);
    now += milliseconds(10);
  }
}

TEST_P(ScriptedHost, IdentifiesByteByByte) {
  Time now(0);
  ipod.plugIn(now, GetParam().kind);
  for (const Turn& turn : GetParam().script) {
    Bytes answer;
    for (uint8_t byte : hex(sent(turn))) {
      now += milliseconds(1);
      ipod.receive(now, Bytes{byte});
      for (const Bytes& write : ipod.takeOutput(now)) {
        answer.insert(answer.end(), write.begin(), write.end());
      }
    }
    EXPECT_EQ(toHex(answer), expected(turn)) << "to " << sent(turn);
  }
}

TEST_P(ScriptedHost, IdentifiesOverThePseudoTerminal) {
  PtyIpod pty(ipod, GetParam().kind);
  pty.start();
  for (int round = 0; round < 2; ++round) {
    HostEnd host(pty.slavePath());
    for (const Turn& turn : GetParam().script) {
      ASSERT_TRUE(host.write(sent(turn)));
      const std::string answer = expected(turn);
      ASSERT_EQ(host.read(hex(answer).size()), answer) << "to " << sent(turn);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, ScriptedHost, testing::ValuesIn(kCases),
                         [](const testing::TestParamInfo<Case>& each) {
                           return std::string(each.param.name);
                         });

class SilentAttempts : public testing::TestWithParam<unsigned> {};

/// A host waits one second for an answer and pauses for 100 ms before each of its three attempts.
TEST_P(SilentAttempts, IdentifiesInTheAttemptAfterThem) {
  Personality slow;
  slow.silentIdentifications = GetParam();
  Bench bench(slow);
  unsigned attempts = 0;
  Payloads answer;
  while (answer.empty() && attempts < 3) {
    bench.wait(milliseconds(100));
    bench.sendRaw(kAnnounce);
    answer = bench.wait(seconds(1));
    ++attempts;
  }
  EXPECT_EQ(answer.empty(), GetParam() == 3);
  EXPECT_EQ(attempts, std::min(GetParam() + 1, 3u));
}

INSTANTIATE_TEST_SUITE_P(All, SilentAttempts, testing::Values(0u, 1u, 2u, 3u));

}  // namespace
}  // namespace simulator::scripted_host
