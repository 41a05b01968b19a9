#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

Personality small(bool colour) {
  Personality personality;
  personality.display.limits = {120, 65};
  personality.display.colour = colour;
  return personality;
}

TEST(ExtendedDisplay, ReturnsItsLimits) {
  Bench bench(small(true));
  EXPECT_EQ(bench.ask("04 00 33"), Payloads{"04 00 34 00 78 00 41 01"});
  EXPECT_EQ(bench.ask("04 00 39"), Payloads{"04 00 3A 00 78 00 41 02 00 78 00 41 03"});
}

TEST(ExtendedDisplay, GreyScreenHasNoColourLimits) {
  Bench bench(small(false));
  EXPECT_EQ(bench.ask("04 00 39"), Payloads{"04 00 01 02 00 39"});
  EXPECT_EQ(bench.ask("04 00 33"), Payloads{"04 00 34 00 78 00 41 01"});
}

TEST(ExtendedDisplay, AcknowledgesAnImagePacketByPacket) {
  Bench bench;
  size_t shown = 0;
  bench.ipod.setImageHook([&](const Picture& picture) { shown += picture.pixels.size(); });
  const Payloads done = {"04 00 01 00 00 32"};
  EXPECT_EQ(bench.ask("04 00 32 00 00 02 00 02 00 02 00 00 00 04 00 F8 E0 07"), done);
  EXPECT_EQ(shown, 0u);
  EXPECT_EQ(bench.ask("04 00 32 00 01 1F 00 FF FF"), done);
  EXPECT_EQ(shown, 4u);
}

TEST(ExtendedDisplay, RefusesAPacketThatIsOutOfOrder) {
  Bench bench;
  EXPECT_EQ(bench.ask("04 00 32 00 01 FF FF"), Payloads{"04 00 01 04 00 32"});
  EXPECT_EQ(bench.ask("04 00 32 00"), Payloads{"04 00 01 04 00 32"});
}

TEST(ExtendedDisplay, AcceptsRowsThatNeedALongFrame) {
  Bench bench;
  std::string row;
  for (int i = 0; i < 320; ++i)
    row += " 00 F8";
  bench.ask("04 00 32 00 00 02 01 40 00 02 00 00 02 80" + row);
  EXPECT_EQ(bench.ask("04 00 32 00 01" + row), Payloads{"04 00 01 00 00 32"});
  ASSERT_TRUE(bench.ipod.display().shown());
  EXPECT_EQ(bench.ipod.display().shown()->at(319, 1), (Colour{255, 0, 0}));
}

TEST(ExtendedDisplay, ImageIsRemovedWhenTheAccessoryDisconnects) {
  Bench bench;
  bench.ask("04 00 32 00 00 02 00 01 00 01 00 00 00 02 00 F8");
  EXPECT_TRUE(bench.ipod.display().shown());
  bench.enter();
  EXPECT_TRUE(bench.ipod.display().shown());
  bench.ipod.hangUp(bench.now);
  EXPECT_FALSE(bench.ipod.display().shown());
}

}  // namespace
}  // namespace simulator
