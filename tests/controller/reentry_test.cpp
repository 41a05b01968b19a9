#include <gtest/gtest.h>

#include <initializer_list>

#include "controller/controller_test.h"
#include "support/console.h"

namespace ipodctl::reentry {
namespace {

const Bytes kGetSampleRates = {0x0A, 0x02};
const Bytes kEntered = {0x00, 0x02, 0x00, 0x05};
const Bytes kUnrelated = {0x04, 0x00, 0x27, 0x01};

const Calls kFlush = {"flush"};
const Calls kWait = {"wait 0 ns 1 s"};
const Calls kSampleRates = {"send 55 12 0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80",
                            "send 55 03 00 0F 00"};

/// An iPod that starts the exchange itself: the replies are cleared, so the first of its messages
/// arrive after the clearing.
class Reentry : public ControllerTest {
 protected:
  bool reenterWith(const Payloads& messages) {
    callLog().clear();
    ipod().arriveAfterFlush(messages);
    return controller().reenterExtendedMode();
  }

  /// What the accessory says to these messages before the iPod confirms the mode.
  Calls repliesTo(Payloads messages) {
    messages.push_back(kEntered);
    EXPECT_TRUE(reenterWith(messages));
    EXPECT_EQ(liveMessages(), 0u);
    return linesOf(callLog(), "send");
  }
};

TEST_F(Reentry, WalksTheVersionsAndEntersTheMode) {
  ipod().answer("55 03 00 0F 00", {{0x00, 0x10, 0x00, 0x01, 0x07}});
  ipod().answer("55 03 00 0F 04", {{0x00, 0x10, 0x04, 0x01, 0x0D}});
  ipod().answer("55 03 00 0F 0A", {{0x00, 0x10, 0x0A, 0x01, 0x02}});
  ipod().answer("55 02 00 05", {kEntered});
  EXPECT_TRUE(reenterWith({kGetSampleRates}));
  EXPECT_EQ(callLog(), kFlush + kWait + kSampleRates + kWait + Calls{"send 55 03 00 0F 04"} +
                           kWait + Calls{"send 55 03 00 0F 0A"} + kWait +
                           Calls{"send 55 02 00 05"} + kWait);
}

TEST_F(Reentry, EndsAtOnceWithTheAcknowledgement) {
  EXPECT_TRUE(reenterWith({kEntered, kGetSampleRates}));
  EXPECT_EQ(callLog(), kFlush + kWait);
  EXPECT_EQ(ipod().queued(), 1u);
}

TEST_F(Reentry, EndsWithAnAcknowledgementThatHasAWaitTime) {
  EXPECT_TRUE(reenterWith({{0x00, 0x02, 0x00, 0x05, 0x2C, 0x01, 0x00, 0x00}}));
}

TEST_F(Reentry, IsNotEndedByAnAcknowledgementFromBefore) {
  ipod().arrive({kEntered});
  EXPECT_FALSE(controller().reenterExtendedMode());
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(Reentry, OfASilentIpodWaitsTenTimesAndSendsNothing) {
  EXPECT_FALSE(reenterWith({}));
  EXPECT_EQ(callLog(), kFlush + repeated(10, kWait));
}

TEST_F(Reentry, GoesOnAfterASecondOfSilence) {
  EXPECT_TRUE(reenterWith({kSilence, kGetSampleRates, kSilence, kEntered}));
  EXPECT_EQ(callLog(), kFlush + kWait + kWait + kSampleRates + kWait + kWait);
}

TEST_F(Reentry, TakesTheAcknowledgementAsTheTenthMessage) {
  Payloads messages(9, kUnrelated);
  messages.push_back(kEntered);
  EXPECT_TRUE(reenterWith(messages));
  EXPECT_EQ(callLog(), kFlush + repeated(10, kWait));
}

TEST_F(Reentry, DoesNotTakeAnEleventhMessage) {
  Payloads messages(10, kUnrelated);
  messages.push_back(kEntered);
  EXPECT_FALSE(reenterWith(messages));
  EXPECT_EQ(callLog(), kFlush + repeated(10, kWait));
  EXPECT_EQ(ipod().queued(), 1u);
  EXPECT_EQ(liveMessages(), 1u);
}

TEST_F(Reentry, IgnoresOtherAcknowledgements) {
  EXPECT_EQ(repliesTo({{0x00, 0x02, 0x04, 0x05},
                       {0x00, 0x02, 0x06, 0x05, 0x2C, 0x01, 0x00, 0x00},
                       {0x00, 0x02, 0x00, 0x13},
                       {0x00, 0x02, 0x00, 0x05, 0x00},
                       {0x00, 0x02}}),
            Calls{});
}

TEST_F(Reentry, IgnoresWhatOnlyTheIdentificationAnswers) {
  EXPECT_EQ(repliesTo({{0x00, 0x04, 0x01},
                       {0x00, 0x27, 0x00},
                       {0x00, 0x27, 0x03, 0x04},
                       {0x00, 0x10, 0x03, 0x01, 0x00},
                       {0x00, 0x10, 0x0A, 0x01}}),
            Calls{});
}

TEST_F(Reentry, IgnoresOtherLingoes) {
  EXPECT_EQ(repliesTo({{0x02, 0x02, 0x00, 0x05},
                       {0x04, 0x00, 0x02, 0x00, 0x05},
                       {0x04, 0x00, 0x10, 0x0A, 0x01, 0x02},
                       {0x0A, 0x03},
                       {0x0A, 0x10, 0x0A, 0x01, 0x02}}),
            Calls{});
}

TEST_F(Reentry, AnswersEachVersionWithItsNextStep) {
  EXPECT_EQ(repliesTo({{0x00, 0x10, 0x00, 0x01, 0x07}}), (Calls{"send 55 03 00 0F 04"}));
  EXPECT_EQ(repliesTo({{0x00, 0x10, 0x04, 0x01, 0x07}}), (Calls{"send 55 03 00 0F 0A"}));
  EXPECT_EQ(repliesTo({{0x00, 0x10, 0x0A, 0x01, 0x07}}), (Calls{"send 55 02 00 05"}));
}

TEST_F(Reentry, AcknowledgesAudioAttributesWithoutCallingBack) {
  static int callbacks;
  callbacks = 0;
  controller().setResampleCallback([](int32_t /*rate*/) { return ++callbacks; });
  EXPECT_EQ(repliesTo({{0x0A, 0x04, 0x00, 0x00, 0x7D, 0x00, 0, 0, 0, 0, 0, 0, 0, 0}}),
            (Calls{"send 55 04 0A 00 00 04"}));
  uint32_t rate = 0;
  EXPECT_TRUE(controller().getSampleRate(rate));
  EXPECT_EQ(rate, 32000u);
  EXPECT_EQ(callbacks, 0);
}

TEST_F(Reentry, LeavesTheIdentificationAsItIs) {
  for (const uint8_t identified : Bytes{0, 1}) {
    controller().setIdentified(identified);
    EXPECT_FALSE(reenterWith({}));
    EXPECT_TRUE(reenterWith({kEntered}));
    EXPECT_EQ(controller().isIdentified(), identified);
  }
}

TEST_F(Reentry, PrintsNothingOutsideDebug) {
  EXPECT_EQ(printedQuietly([&] { reenterWith({kGetSampleRates, kEntered}); }), "");
}

}  // namespace
}  // namespace ipodctl::reentry
