// The order of a message's virtual operations is known to other code.

#include <gtest/gtest.h>

#include "lingo/lingo_message.h"
#include "support/slot_of.h"

namespace ipodctl {
namespace {

TEST(MessageSlots, AreInTheirOrder) {
  using M = LingoMessage;
  EXPECT_EQ(slotOf(&M::getLingo), 1u);
  EXPECT_EQ(slotOf(&M::getCommand), 2u);
  EXPECT_EQ(slotOf(&M::setCommand), 3u);
  EXPECT_EQ(slotOf(&M::getData), 4u);
  EXPECT_EQ(slotOf(&M::setData), 5u);
  EXPECT_EQ(slotOf(&M::encode), 6u);
  EXPECT_EQ(slotOf(&M::getDataLength), 7u);
  EXPECT_EQ(slotOf(&M::dump), 8u);
  EXPECT_EQ(slotOf(&M::appendData), 9u);
}

}  // namespace
}  // namespace ipodctl
