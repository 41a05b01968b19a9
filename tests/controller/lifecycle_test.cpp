#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "controller/controller_test.h"
#include "controller/logo_file.h"

namespace ipodctl {
namespace {

template <class Controller>
class LinkOf : public Controller {
 public:
  using Controller::Controller;
  bool hasLink() const { return this->transport != nullptr; }
};

TEST(Controller, HasALinkForTheTwoKnownKindsOnly) {
  EXPECT_TRUE(LinkOf<IpodController>(0).hasLink());
  EXPECT_TRUE(LinkOf<IpodController>(1).hasLink());
  EXPECT_TRUE(LinkOf<IpodControllerBase>(0).hasLink());
  EXPECT_TRUE(LinkOf<IpodControllerBase>(1).hasLink());
  for (const int kind :
       {2, 3, -1, 256, 257, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(testing::Message() << "kind " << kind);
    EXPECT_FALSE(LinkOf<IpodController>(kind).hasLink());
    EXPECT_FALSE(LinkOf<IpodControllerBase>(kind).hasLink());
  }
}

TEST(Controller, StartsUnidentifiedWithoutLogoAt44100Hz) {
  IpodController controller(kNoLink);
  uint32_t rate = 0;
  EXPECT_EQ(controller.isIdentified(), 0);
  EXPECT_EQ(controller.logoImage(), nullptr);
  EXPECT_TRUE(controller.getSampleRate(rate));
  EXPECT_EQ(rate, 44100u);
}

TEST(ControllerWithoutALink, FailsInEveryStepOfAConnection) {
  IpodController controller(kNoLink);
  const LogoBitmap image;
  uint32_t rate = 0x12345678;
  EXPECT_FALSE(controller.connect("IPD1:", nullptr));
  EXPECT_FALSE(controller.connect("IPD1:", &image));
  EXPECT_FALSE(controller.IdentifyIpod("IPD1:", true));
  EXPECT_FALSE(controller.indentifyIpod());
  EXPECT_FALSE(controller.reenterExtendedMode());
  EXPECT_FALSE(controller.waitAudioAttributes(rate));
  EXPECT_EQ(rate, 0x12345678u);
  EXPECT_FALSE(controller.CloseIpod());
  EXPECT_EQ(controller.isIdentified(), 0);
}

TEST(ControllerWithoutALink, OfTheBaseFailsToo) {
  IpodControllerBase controller(kNoLink);
  EXPECT_FALSE(controller.IdentifyIpod("IPD1:", false));
  EXPECT_FALSE(controller.indentifyIpod());
  EXPECT_FALSE(controller.CloseIpod());
}

TEST(ControllerWithoutALink, StillLoadsAndFreesALogo) {
  IpodController controller(kNoLink);
  const LogoFile file(bitmap({}, Bytes(4 * 1 * 3)));
  EXPECT_TRUE(controller.LoadLogo(file.path()));
  ASSERT_NE(controller.logoImage(), nullptr);
  EXPECT_EQ(controller.logoImage()->width(), 4u);
  EXPECT_TRUE(controller.FreeLogo());
  EXPECT_EQ(controller.logoImage(), nullptr);
}

TEST(ControllerWithoutALink, StillCallsTheResampleCallback) {
  static int32_t toldRate;
  toldRate = 0;
  IpodController controller(kNoLink);
  EXPECT_TRUE(controller.setResampleCallback([](int32_t rate) {
    toldRate = rate;
    return 0;
  }));
  callLog().clear();
  const Bytes attributes = {0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(controller.onIncomingMessage(receivedMessage(attributes)), 0);
  EXPECT_EQ(toldRate, 48000);
  EXPECT_EQ(callLog(), Calls{});
}

using Closing = ControllerTest;

TEST_F(Closing, OfAnIdentifiedIpodLeavesTheExtendedInterfaceMode) {
  controller().setIdentified(1);
  EXPECT_TRUE(controller().CloseIpod());
  EXPECT_EQ(callLog(), (Calls{"removeHandlers", "flush", "send 55 02 00 06", "close", "flush"}));
  EXPECT_EQ(controller().isIdentified(), 0);
}

TEST_F(Closing, OfAnIpodThatIsNotIdentifiedSendsNothing) {
  EXPECT_TRUE(controller().CloseIpod());
  EXPECT_EQ(callLog(), (Calls{"removeHandlers", "close", "flush"}));
}

TEST_F(Closing, TwiceLeavesTheModeOnceAndClosesTwice) {
  controller().setIdentified(1);
  EXPECT_TRUE(controller().CloseIpod());
  callLog().clear();
  EXPECT_TRUE(controller().CloseIpod());
  EXPECT_EQ(callLog(), (Calls{"removeHandlers", "close", "flush"}));
}

TEST_F(Closing, SucceedsWhateverTheLinkSays) {
  ipod().closes = false;
  EXPECT_TRUE(controller().CloseIpod());
}

TEST_F(Closing, DestroysTheMessagesThatNobodyTook) {
  ipod().arrive({{0x00, 0x02, 0x00, 0x06}, {0x04, 0x00, 0x27, 0x01}});
  controller().CloseIpod();
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(Closing, DestroysTheAnswerThatItDoesNotWaitFor) {
  controller().setIdentified(1);
  ipod().answer("55 02 00 06", {{0x00, 0x02, 0x00, 0x06}});
  controller().CloseIpod();
  EXPECT_EQ(liveMessages(), 0u);
}

using BaseClosing = ControllerFixture<IpodControllerBase>;

TEST_F(BaseClosing, KeepsItsHandlersAndReturnsWhatTheLinkReturns) {
  controller().setIdentified(1);
  EXPECT_TRUE(controller().CloseIpod());
  EXPECT_EQ(callLog(), (Calls{"flush", "send 55 02 00 06", "close", "flush"}));
  ipod().closes = false;
  EXPECT_FALSE(controller().CloseIpod());
}

using Destruction = ControllerTest;

TEST_F(Destruction, UnregistersItsHandlersBeforeTheLinkIsDestroyed) {
  destroyController();
  ASSERT_FALSE(callLog().empty());
  EXPECT_EQ(callLog().front(), "removeHandlers");
  EXPECT_EQ(callLog().back(), "destroyed");
}

TEST_F(Destruction, ShutsTheLinkDownBeforeItDestroysTheQueuedMessages) {
  destroyController();
  // The link shuts itself down once more.
  EXPECT_EQ(callLog(), (Calls{"removeHandlers", "close", "flush", "close", "destroyed"}));
}

TEST_F(Destruction, DoesNotTalkToTheIpod) {
  controller().setIdentified(1);
  destroyController();
  EXPECT_EQ(linesOf(callLog(), "send"), Calls{});
}

TEST_F(Destruction, DestroysQueuedMessages) {
  ipod().arrive({{0x00, 0x02, 0x00, 0x05}, {0x04, 0x00, 0x27, 0x01}});
  EXPECT_EQ(liveMessages(), 2u);
  destroyController();
  EXPECT_EQ(liveMessages(), 0u);
  EXPECT_NE(std::find(callLog().begin(), callLog().end(), "flush"), callLog().end());
}

TEST_F(Destruction, DestroysTheLogo) {
  const LogoFile file(bitmap({}, Bytes(4 * 1 * 3)));
  ASSERT_TRUE(controller().LoadLogo(file.path()));
  destroyController();
}

using BaseDestruction = ControllerFixture<IpodControllerBase>;

TEST_F(BaseDestruction, UnregistersItsHandlersBeforeTheLinkIsDestroyed) {
  destroyController();
  ASSERT_FALSE(callLog().empty());
  EXPECT_EQ(callLog().front(), "removeHandlers");
  EXPECT_EQ(callLog().back(), "destroyed");
}

TEST(BaseMessage, IsDestroyedWithoutAReply) {
  Scripted<IpodControllerBase> controller(followMessage);
  callLog().clear();
  EXPECT_EQ(controller.onIncomingMessage(nullptr), 0);
  const Bytes attributes = {0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(controller.onIncomingMessage(receivedMessage(attributes)), 0);
  EXPECT_EQ(callLog(), Calls{});
  EXPECT_EQ(liveMessages(), 0u);
}

using SampleRate = ControllerTest;

TEST_F(SampleRate, OfZeroIsNone) {
  controller().onIncomingMessage(receivedMessage({0x0A, 0x04, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  uint32_t rate = 7;
  EXPECT_FALSE(controller().getSampleRate(rate));
  EXPECT_EQ(rate, 0u);
}

TEST_F(SampleRate, CanBeAnyNumber) {
  controller().onIncomingMessage(
      receivedMessage({0x0A, 0x04, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0, 0, 0}));
  uint32_t rate = 0;
  EXPECT_TRUE(controller().getSampleRate(rate));
  EXPECT_EQ(rate, 0xFFFFFFFFu);
}

}  // namespace
}  // namespace ipodctl
