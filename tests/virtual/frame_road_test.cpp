#include "virtual/frame_road.h"

#include <gtest/gtest.h>

namespace virtual_platform {
namespace {

using simulator::Bytes;
using std::chrono::milliseconds;
using Frames = std::vector<Bytes>;

const Bytes kFirst{0x55, 0x01};
const Bytes kSecond{0x55, 0x02};

TEST(FrameRoad, DeliversFramesUnchanged) {
  FrameRoad road;
  road.send(milliseconds(1), kFirst);
  road.send(milliseconds(1), kSecond);
  EXPECT_EQ(road.takeArrived(milliseconds(1)), (Frames{kFirst, kSecond}));
  EXPECT_EQ(road.takeArrived(milliseconds(1)), Frames{});
  EXPECT_FALSE(road.hasRewritten());
}

TEST(FrameRoad, DeliversOthersInTheirPlaceAndLate) {
  FrameRoad road;
  road.rewrite([](std::size_t number, const Bytes& frame) {
    if (number == 0) return std::vector<ComingFrame>{};
    return std::vector<ComingFrame>{{milliseconds(5), frame}, {milliseconds(0), {0x77}}};
  });
  road.send(milliseconds(1), kFirst);
  EXPECT_TRUE(road.hasRewritten());
  EXPECT_EQ(road.nextArrival(), std::nullopt);
  road.send(milliseconds(2), kSecond);
  EXPECT_EQ(road.takeArrived(milliseconds(2)), (Frames{{0x77}}));
  EXPECT_EQ(road.nextArrival(), Time(milliseconds(7)));
  EXPECT_EQ(road.takeArrived(milliseconds(6)), Frames{});
  EXPECT_EQ(road.takeArrived(milliseconds(7)), Frames{kSecond});
}

TEST(FrameRoad, DropsWhatWasUnderWayWhenItWasHealed) {
  FrameRoad road;
  road.rewrite([](std::size_t, const Bytes& frame) {
    return std::vector<ComingFrame>{{milliseconds(5), frame}};
  });
  road.send(milliseconds(1), kFirst);
  road.heal();
  EXPECT_EQ(road.nextArrival(), std::nullopt);
  road.send(milliseconds(2), kSecond);
  EXPECT_EQ(road.takeArrived(milliseconds(9)), Frames{kSecond});
}

}  // namespace
}  // namespace virtual_platform
