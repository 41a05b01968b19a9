// Other code depends on the order of a link's virtual operations.

#include <gtest/gtest.h>

#include "link/transport.h"
#include "support/slot_of.h"

namespace ipodctl {
namespace {

TEST(TransportSlots, KeepTheirOrder) {
  using T = Transport;
  EXPECT_EQ(slotOf(&T::open), 1u);
  EXPECT_EQ(slotOf(&T::close), 2u);
  EXPECT_EQ(slotOf(&T::startReadData), 3u);
  EXPECT_EQ(slotOf(&T::stopReadData), 4u);
  EXPECT_EQ(slotOf(&T::readFrame), 5u);
  EXPECT_EQ(slotOf(&T::getMessage), 6u);
  EXPECT_EQ(slotOf(&T::isOpen), 7u);
  EXPECT_EQ(slotOf(&T::sendSyncByte), 8u);
  EXPECT_EQ(slotOf(&T::sendMessage), 9u);
  EXPECT_EQ(slotOf(&T::flushMessages), 10u);
  EXPECT_EQ(slotOf(&T::addHandler), 11u);
  EXPECT_EQ(slotOf(&T::removeHandler), 12u);
  EXPECT_EQ(slotOf(&T::removeHandlers), 13u);
  EXPECT_EQ(slotOf(&T::thReadDataLocal), 14u);
  EXPECT_EQ(slotOf(&T::checkChecksum), 15u);
  EXPECT_EQ(slotOf(&T::computeChecksum), 16u);
  EXPECT_EQ(slotOf(&T::writeData), 17u);
}

}  // namespace
}  // namespace ipodctl
