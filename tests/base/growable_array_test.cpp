#include "base/growable_array.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace ipodctl {
namespace {

std::vector<int> itemsOf(const GrowableArray<int>& array) { return {array.begin(), array.end()}; }

void fill(GrowableArray<int>& array, int count) {
  for (int i = 0; i < count; ++i)
    ASSERT_TRUE(array.append(i));
}

TEST(GrowableArray, StartsEmpty) {
  const GrowableArray<int> array;
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(array.size(), 0u);
  EXPECT_EQ(array.begin(), array.end());
}

TEST(GrowableArray, KeepsTheOrderWhileItGrows) {
  GrowableArray<int> array;
  fill(array, 1000);
  ASSERT_EQ(array.size(), 1000u);
  for (int i = 0; i < 1000; ++i)
    ASSERT_EQ(array[static_cast<uint32_t>(i)], i);
}

TEST(GrowableArray, ClosesTheGapAfterRemoveAt) {
  GrowableArray<int> array;
  fill(array, 4);
  EXPECT_EQ(array.removeAt(1), 1);
  EXPECT_EQ(itemsOf(array), (std::vector<int>{0, 2, 3}));
  EXPECT_EQ(array.removeAt(2), 3);
  EXPECT_EQ(itemsOf(array), (std::vector<int>{0, 2}));
  EXPECT_EQ(array.removeAt(0), 0);
  EXPECT_EQ(array.removeAt(0), 2);
  EXPECT_TRUE(array.empty());
}

TEST(GrowableArray, GrowsAgainAfterClear) {
  GrowableArray<int> array;
  fill(array, 20);
  array.clear();
  EXPECT_TRUE(array.empty());
  fill(array, 3);
  EXPECT_EQ(itemsOf(array), (std::vector<int>{0, 1, 2}));
}

/// Appends its number to a list when it is destroyed.
class Mourned {
 public:
  Mourned(int itsNumber, std::vector<int>& itsList) : number(itsNumber), list(itsList) {}
  ~Mourned() { list.push_back(number); }

 private:
  int number;
  std::vector<int>& list;
};

TEST(GrowableArray, ClearDestroysTheFirstItemFirst) {
  std::vector<int> destroyed;
  GrowableArray<std::unique_ptr<Mourned>> array;
  for (int i = 0; i < 20; ++i)
    ASSERT_TRUE(array.append(std::make_unique<Mourned>(i, destroyed)));
  EXPECT_TRUE(destroyed.empty());
  array.clear();
  ASSERT_EQ(destroyed.size(), 20u);
  for (int i = 0; i < 20; ++i)
    EXPECT_EQ(destroyed[static_cast<size_t>(i)], i);
}

TEST(GrowableArray, RemoveAtMovesTheItemOut) {
  std::vector<int> destroyed;
  GrowableArray<std::unique_ptr<Mourned>> array;
  ASSERT_TRUE(array.append(std::make_unique<Mourned>(7, destroyed)));
  const std::unique_ptr<Mourned> taken = array.removeAt(0);
  EXPECT_NE(taken, nullptr);
  EXPECT_TRUE(destroyed.empty());
}

}  // namespace
}  // namespace ipodctl
