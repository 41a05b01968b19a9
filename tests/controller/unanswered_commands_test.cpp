#include <gtest/gtest.h>

#include "controller/controller_test.h"
#include "controller/operations.h"
#include "support/row_name.h"

namespace ipodctl {
namespace {

class Unanswered : public ControllerFixture<IpodController>,
                   public testing::WithParamInterface<UnansweredOperation> {
 protected:
  const UnansweredOperation& row() const { return GetParam(); }
};

TEST_P(Unanswered, IsSentAndNotWaitedFor) {
  EXPECT_EQ(row().call(controller()), row().result);
  EXPECT_EQ(callLog(), (Calls{"flush", "send " + row().request}));
}

TEST_P(Unanswered, ClearsTheRepliesFromBeforeAndTakesNoneAfter) {
  ipod().arrive({{0x00, 0x02, 0x00, 0x06}});
  ipod().answer(row().request, {{0x00, 0x02, 0x00, 0x06}});
  EXPECT_EQ(row().call(controller()), row().result);
  EXPECT_EQ(ipod().queued(), 1u);
  EXPECT_EQ(liveMessages(), 1u);
}

TEST_P(Unanswered, HasTheSameResultWhenTheLinkDoesNotTakeIt) {
  ipod().sends = false;
  EXPECT_EQ(row().call(controller()), row().result);
}

TEST_P(Unanswered, LeavesTheIdentificationAsItIs) {
  for (const uint8_t identified : Bytes{0, 1}) {
    controller().setIdentified(identified);
    row().call(controller());
    EXPECT_EQ(controller().isIdentified(), identified);
  }
}

TEST_P(Unanswered, FailsWithoutALinkAndSendsNothing) {
  IpodController unlinked(kNoLink);
  EXPECT_FALSE(row().call(unlinked));
  EXPECT_EQ(callLog(), Calls{});
}

INSTANTIATE_TEST_SUITE_P(Command, Unanswered, testing::ValuesIn(unansweredOperations()),
                         rowName<UnansweredOperation>);

}  // namespace
}  // namespace ipodctl
