#include <gtest/gtest.h>

#include "faults/fault_text.h"
#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

/// An accessory that sends random messages. The iPod must survive them, which the sanitizers check,
/// and must answer afterwards.
class HostileAccessory : public testing::TestWithParam<std::string> {
 protected:
  Bytes randomBytes(uint32_t most) {
    Bytes bytes(random.below(most + 1));
    for (uint8_t& byte : bytes)
      byte = static_cast<uint8_t>(random.below(256));
    return bytes;
  }

  // Returns mostly known commands, with data of about the right size and often small numbers.
  Bytes randomPayload() {
    const uint8_t lingoes[] = {0x00, 0x02, 0x04, 0x04, 0x04, 0x04, 0x0A, 0x03};
    Bytes payload{lingoes[random.below(8)]};
    if (payload[0] == 0x04) payload.push_back(0x00);
    payload.push_back(static_cast<uint8_t>(random.below(0x3C)));
    for (uint32_t left = random.below(14); left > 0; --left) {
      const bool small = random.below(4) != 0;
      payload.push_back(static_cast<uint8_t>(small ? random.below(9) : random.below(256)));
    }
    return payload;
  }

  void sayAnything(Bench& bench) {
    const uint32_t choice = random.below(20);
    if (choice == 0) {
      bench.ipod.receive(bench.now, randomBytes(40));
    } else if (choice == 1) {
      bench.ipod.hangUp(bench.now);
    } else {
      bench.ipod.receive(bench.now, usbFrame(randomPayload()));
    }
    bench.ipod.takeOutput(bench.now);
    bench.now += milliseconds(random.below(random.below(10) == 0 ? 8000 : 30));
  }

  Random random{42};
};

TEST_P(HostileAccessory, DoesNoHarm) {
  Personality model = personality(GetParam());
  Bench bench(model);
  for (int i = 0; i < 5000; ++i)
    sayAnything(bench);
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.ask("00 0F 00"), Payloads{"00 10 00 01 09"});
}

TEST_P(HostileAccessory, DoesNoHarmToAnIpodThatIsFaulty) {
  Bench bench(personality(GetParam()));
  addFault(bench.ipod.faults(), "random=30");
  addFault(bench.ipod.faults(), "long-listing=3");
  addFault(bench.ipod.faults(), "shuffled-listing");
  addFault(bench.ipod.faults(), "notifications-between=1");
  addFault(bench.ipod.faults(), "drift=-2");
  for (int i = 0; i < 3000; ++i)
    sayAnything(bench);
  bench.ipod.faults().clear();
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.ask("00 0F 00"), Payloads{"00 10 00 01 09"});
}

TEST_P(HostileAccessory, DoesNoHarmToAnEmptyIpod) {
  Bench bench(personality(GetParam()), MusicLibrary{});
  for (int i = 0; i < 3000; ++i)
    sayAnything(bench);
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.ask("00 0F 00"), Payloads{"00 10 00 01 09"});
}

INSTANTIATE_TEST_SUITE_P(All, HostileAccessory, testing::ValuesIn(personalityNames()),
                         [](const testing::TestParamInfo<std::string>& name) {
                           return name.param;
                         });

}  // namespace
}  // namespace simulator
