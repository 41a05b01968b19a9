#include "virtual/byte_fault.h"

#include <gtest/gtest.h>
#include "support/bytes.h"

namespace virtual_platform {
namespace {

using Kind = ByteFault::Kind;

Bytes carried(const ByteFault& fault) {
  const Bytes first{0x55, 0x02};
  const Bytes second{0x00, 0x03};
  SpoiledLine line;
  line.spoil(fault);
  Bytes arrived = line.carry(first.data(), first.size());
  const Bytes rest = line.carry(second.data(), second.size());
  arrived.insert(arrived.end(), rest.begin(), rest.end());
  EXPECT_TRUE(line.hasStruck());
  return arrived;
}

TEST(SpoiledLine, FlipsBitsOfOneByte) {
  EXPECT_EQ(carried({Kind::kFlipped, 1, 0x80}), (Bytes{0x55, 0x82, 0x00, 0x03}));
}

TEST(SpoiledLine, LosesOneByte) {
  EXPECT_EQ(carried({Kind::kLost, 2, 0}), (Bytes{0x55, 0x02, 0x03}));
}

TEST(SpoiledLine, DoublesOneByte) {
  EXPECT_EQ(carried({Kind::kDoubled, 0, 0}), (Bytes{0x55, 0x55, 0x02, 0x00, 0x03}));
}

TEST(SpoiledLine, InsertsAByteBeforeAnother) {
  EXPECT_EQ(carried({Kind::kInserted, 3, 0x55}), (Bytes{0x55, 0x02, 0x00, 0x55, 0x03}));
}

TEST(SpoiledLine, CarriesBytesUnchangedOnceHealed) {
  const Bytes bytes{0x55, 0x02};
  SpoiledLine line;
  line.spoil({Kind::kLost, 0, 0});
  line.heal();
  EXPECT_EQ(line.carry(bytes.data(), bytes.size()), bytes);
  EXPECT_FALSE(line.hasStruck());
}

}  // namespace
}  // namespace virtual_platform
