#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "controller/controller_test.h"
#include "support/console.h"

namespace ipodctl::base_identification {
namespace {

constexpr const char* kIdentify = "55 0E 00 13 00 00 00 01 00 00 00 00 00 00 00 00";

const Bytes kIdentifyAcknowledged = {0x00, 0x02, 0x00, 0x13};
const Bytes kEntered = {0x00, 0x02, 0x00, 0x05};

/// The steps of one attempt up to its first wait.
const Calls kAttempt = {"sleep 80", "sync", "sync", "sleep 20",
                        "send 55 0E 00 13 00 00 00 01 00 00 00 00 00 00 00 00"};
const Calls kWait = {"wait 0 ns 1 s"};

class BaseIdentification : public ControllerFixture<IpodControllerBase> {
 protected:
  /// Everything but the clearing of replies, whose place within an attempt does not matter.
  static Calls steps() {
    Calls steps;
    for (const std::string& line : callLog()) {
      if (line != "flush") steps.push_back(line);
    }
    return steps;
  }

  /// One attempt with an iPod that answers so and then confirms the mode: what the accessory said.
  Calls repliesTo(Payloads messages) {
    messages.push_back(kEntered);
    callLog().clear();
    ipod().answer(kIdentify, messages);
    EXPECT_TRUE(controller().indentifyIpod());
    EXPECT_EQ(liveMessages(), 0u);
    return behindFirst(1, linesOf(callLog(), "send"));
  }
};

TEST_F(BaseIdentification, AnnouncesTheGeneralLingoAfterTwoSyncBytes) {
  ipod().answer(kIdentify, {kEntered});
  EXPECT_TRUE(controller().indentifyIpod());
  EXPECT_EQ(steps(), kAttempt + kWait);
  EXPECT_EQ(controller().isIdentified(), 1);
}

TEST_F(BaseIdentification, IsNotCompletedByAMessageOfTheConnectionBefore) {
  ipod().arriveAfterFlush({kEntered});
  EXPECT_FALSE(controller().IdentifyIpod("COM1:", false));
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(BaseIdentification, ClearsRepliesInEachAttemptBeforeItAnnouncesItself) {
  EXPECT_FALSE(controller().indentifyIpod());
  const Calls attempt = {"sleep 80",     "sync",  "sync",
                         "sleep 20",     "flush", std::string("send ") + kIdentify,
                         "wait 0 ns 1 s"};
  EXPECT_EQ(callLog(), Calls{"flush"} + attempt + attempt + attempt);
}

TEST_F(BaseIdentification, WalksFromAcknowledgementToVersionToExtendedMode) {
  ipod().answer(kIdentify, {kIdentifyAcknowledged});
  ipod().answer("55 03 00 0F 00", {{0x00, 0x10, 0x00, 0x01, 0x07}});
  ipod().answer("55 02 00 05", {kEntered});
  EXPECT_TRUE(controller().indentifyIpod());
  EXPECT_EQ(steps(), kAttempt + kWait + Calls{"send 55 03 00 0F 00"} + kWait +
                         Calls{"send 55 02 00 05"} + kWait);
}

TEST_F(BaseIdentification, EntersTheModeAfterAVersionOfAnyLingo) {
  for (const uint8_t lingo : Bytes{0x00, 0x04, 0x0A, 0x77})
    EXPECT_EQ(repliesTo({{0x00, 0x10, lingo, 0x01, 0x07}}), (Calls{"send 55 02 00 05"}));
}

TEST_F(BaseIdentification, IgnoresFailingAcknowledgements) {
  EXPECT_EQ(repliesTo({{0x00, 0x02, 0x02, 0x13},
                       {0x00, 0x02, 0x04, 0x05},
                       {0x00, 0x02, 0x06, 0x05, 0x2C, 0x01, 0x00, 0x00},
                       {0x00, 0x02, 0x00, 0x0F},
                       {0x00, 0x02, 0x00, 0x28}}),
            Calls{});
}

TEST_F(BaseIdentification, IgnoresAcknowledgementsOfOddLengths) {
  EXPECT_EQ(repliesTo({{0x00, 0x02},
                       {0x00, 0x02, 0x00},
                       {0x00, 0x02, 0x00, 0x13, 0x00},
                       {0x00, 0x02, 0x00, 0x05, 0x00, 0x00},
                       {0x00, 0x02, 0x00, 0x05, 0x00, 0x00, 0x00},
                       {0x00, 0x02, 0x00, 0x05, 0x00, 0x00, 0x00, 0x00, 0x00}}),
            Calls{});
}

TEST_F(BaseIdentification, IsCompletedByAnAcknowledgementWithAWaitTime) {
  ipod().answer(kIdentify, {{0x00, 0x02, 0x00, 0x05, 0x2C, 0x01, 0x00, 0x00}});
  EXPECT_TRUE(controller().indentifyIpod());
}

TEST_F(BaseIdentification, EntersTheModeAgainWhenTheIpodIsInItAlready) {
  EXPECT_EQ(repliesTo({{0x00, 0x04, 0x01}}), (Calls{"send 55 02 00 05"}));
  EXPECT_EQ(repliesTo({{0x00, 0x04, 0x80}}), (Calls{"send 55 02 00 05"}));
  EXPECT_EQ(repliesTo({{0x00, 0x04, 0x00}}), Calls{});
  EXPECT_EQ(repliesTo({{0x00, 0x04}, {0x00, 0x04, 0x01, 0x01}}), Calls{});
}

TEST_F(BaseIdentification, ReportsCapabilitiesFirmwareAndLingoVersion) {
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x00}}), (Calls{"send 55 07 00 28 00 00 00 00 01"}));
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x02, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07}}),
            (Calls{"send 55 0A 00 28 02 01 02 03 04 05 06 07"}));
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x03, 0x0A}}), (Calls{"send 55 06 00 28 03 00 01 07"}));
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x03}}), (Calls{"send 55 06 00 28 03 00 01 07"}));
}

TEST_F(BaseIdentification, DoesNotAnswerOtherQuestions) {
  EXPECT_EQ(repliesTo({{0x00, 0x27},
                       {0x00, 0x27, 0x01},
                       {0x00, 0x27, 0x04},
                       {0x00, 0x27, 0x09},
                       {0x00, 0x27, 0x0A},
                       {0x00, 0x27, 0xFF}}),
            Calls{});
}

TEST_F(BaseIdentification, HandlesTheGeneralLingoOnly) {
  EXPECT_EQ(repliesTo({{0x0A, 0x02},
                       {0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0},
                       {0x02, 0x02, 0x00, 0x05},
                       {0x04, 0x00, 0x02, 0x00, 0x05},
                       {0x04, 0x00, 0x10, 0x00, 0x01, 0x07},
                       {0x00, 0x7F, 0x00}}),
            Calls{});
}

TEST_F(BaseIdentification, SucceedsInTheSecondAttempt) {
  ipod().answer(kIdentify, {kIdentifyAcknowledged});
  ipod().answer(kIdentify, {kEntered});
  EXPECT_TRUE(controller().indentifyIpod());
  EXPECT_EQ(steps(), kAttempt + kWait + Calls{"send 55 03 00 0F 00"} + kWait + kAttempt + kWait);
  EXPECT_EQ(controller().isIdentified(), 1);
}

TEST_F(BaseIdentification, ThatNeedsTheThirdAttemptFails) {
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {kEntered});
  EXPECT_FALSE(controller().indentifyIpod());
  EXPECT_EQ(steps(), repeated(3, kAttempt + kWait));
  EXPECT_EQ(controller().isIdentified(), 0);
}

TEST_F(BaseIdentification, OfASilentIpodFailsAfterThreeAttempts) {
  controller().setIdentified(1);
  EXPECT_FALSE(controller().indentifyIpod());
  EXPECT_EQ(steps(), repeated(3, kAttempt + kWait));
  EXPECT_EQ(controller().isIdentified(), 0);
}

TEST_F(BaseIdentification, PrintsItsOutcomeInDebug) {
  ipod().answer(kIdentify, {kEntered});
  EXPECT_EQ(printedInDebug([&] { controller().indentifyIpod(); }),
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \nindentifyIpod A = true \n");
  EXPECT_EQ(printedInDebug([&] { controller().indentifyIpod(); }),
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \n"
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \n"
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \nindentifyIpod B = false \n");
}

TEST_F(BaseIdentification, PrintsNothingOutsideDebug) {
  EXPECT_EQ(printedQuietly([&] { controller().indentifyIpod(); }), "");
}

TEST(BaseIdentificationWithoutALink, PrintsItInDebug) {
  IpodControllerBase controller(kNoLink);
  EXPECT_EQ(printedInDebug([&] { EXPECT_FALSE(controller.indentifyIpod()); }),
            "indentifyIpod C = false \n");
  EXPECT_EQ(printedQuietly([&] { controller.indentifyIpod(); }), "");
}

}  // namespace
}  // namespace ipodctl::base_identification
