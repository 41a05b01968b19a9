#include "base/fifo.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace ipodctl {
namespace {

TEST(Fifo, IsEmptyAtFirst) {
  const Fifo<int> fifo;
  EXPECT_TRUE(fifo.empty());
  EXPECT_EQ(fifo.size(), 0u);
}

TEST(Fifo, ReturnsTheItemsInTheirOrder) {
  Fifo<int> fifo;
  for (int i = 0; i < 5; ++i)
    ASSERT_TRUE(fifo.append(i));
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(fifo.takeFirst(), i);
  EXPECT_TRUE(fifo.empty());
}

// 8 places at first: the ring ends and begins at each of them, also while it grows.
TEST(Fifo, KeepsTheOrderWhereverTheRingBeginsWhenItGrows) {
  for (int start = 0; start < 8; ++start) {
    Fifo<int> fifo;
    for (int i = 0; i < start; ++i) {
      ASSERT_TRUE(fifo.append(-1));
      EXPECT_EQ(fifo.takeFirst(), -1);
    }
    for (int i = 0; i < 40; ++i)
      ASSERT_TRUE(fifo.append(i));
    EXPECT_EQ(fifo.size(), 40u);
    for (int i = 0; i < 40; ++i)
      EXPECT_EQ(fifo.takeFirst(), i) << "start " << start;
  }
}

TEST(Fifo, ReusesTheFreedPlaces) {
  Fifo<int> fifo;
  for (int i = 0; i < 7; ++i)
    ASSERT_TRUE(fifo.append(i));
  for (int i = 7; i < 1000; ++i) {
    ASSERT_TRUE(fifo.append(i));
    EXPECT_EQ(fifo.takeFirst(), i - 7);
  }
  EXPECT_EQ(fifo.size(), 7u);
}

struct Witness {
  int number;
  std::vector<int>* destroyed;
  ~Witness() { destroyed->push_back(number); }
};

TEST(Fifo, DestroysItsItemsFromTheFirstOnWhenItIsCleared) {
  std::vector<int> destroyed;
  Fifo<std::unique_ptr<Witness>> fifo;
  for (int i = 0; i < 6; ++i)
    ASSERT_TRUE(fifo.append(std::unique_ptr<Witness>(new Witness{i, &destroyed})));
  fifo.takeFirst();
  ASSERT_TRUE(fifo.append(std::unique_ptr<Witness>(new Witness{6, &destroyed})));
  destroyed.clear();
  fifo.clear();
  EXPECT_EQ(destroyed, (std::vector<int>{1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(fifo.empty());
}

TEST(Fifo, KeepsNoItemThatWasTaken) {
  std::vector<int> destroyed;
  {
    Fifo<std::unique_ptr<Witness>> fifo;
    ASSERT_TRUE(fifo.append(std::unique_ptr<Witness>(new Witness{1, &destroyed})));
    fifo.takeFirst();
    EXPECT_EQ(destroyed, (std::vector<int>{1}));
  }
  EXPECT_EQ(destroyed, (std::vector<int>{1}));
}

}  // namespace
}  // namespace ipodctl
