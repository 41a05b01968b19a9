#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

#include "controller/controller_test.h"
#include "support/console.h"

namespace ipodctl::identification {
namespace {

constexpr const char* kIdentify = "55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00";
constexpr const char* kRequestVersion0 = "55 03 00 0F 00";
constexpr const char* kRequestVersion4 = "55 03 00 0F 04";
constexpr const char* kRequestVersion10 = "55 03 00 0F 0A";

const Bytes kGetSampleRates = {0x0A, 0x02};
const Bytes kVersionOfLingo0 = {0x00, 0x10, 0x00, 0x01, 0x07};
const Bytes kVersionOfLingo4 = {0x00, 0x10, 0x04, 0x01, 0x0D};
const Bytes kVersionOfLingo10 = {0x00, 0x10, 0x0A, 0x01, 0x02};
const Bytes kIdentifyAcknowledged = {0x00, 0x02, 0x00, 0x13};
const Bytes kEntered = {0x00, 0x02, 0x00, 0x05};

const Calls kSampleRates = {"send 55 12 0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80"};

/// The steps of one attempt up to its first wait.
const Calls kAttempt = {"sleep 80", "sleep 20", "flush",
                        "send 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00"};
const Calls kWait = {"wait 0 ns 1 s"};
const Calls kFlush = {"flush"};

class Identification : public ControllerTest {
 protected:
  /// One attempt with an iPod that answers so and then confirms the mode: what the accessory said.
  Calls repliesTo(Payloads messages) {
    messages.push_back(kEntered);
    callLog().clear();
    ipod().answer(kIdentify, messages);
    EXPECT_TRUE(controller().indentifyIpod());
    EXPECT_EQ(liveMessages(), 0u);
    return behindFirst(1, linesOf(callLog(), "send"));
  }

  /// An iPod that asks for the sample rates and then reports its versions one by one.
  void answerVersionChain() {
    ipod().answer(kIdentify, {kIdentifyAcknowledged, kGetSampleRates});
    ipod().answer(kRequestVersion0, {kVersionOfLingo0});
    ipod().answer(kRequestVersion4, {kVersionOfLingo4});
    ipod().answer(kRequestVersion10, {kVersionOfLingo10});
  }
};

TEST_F(Identification, IsCompleteWithTheVersionOfTheDigitalAudioLingo) {
  answerVersionChain();
  EXPECT_TRUE(controller().indentifyIpod());
  EXPECT_EQ(callLog(), kFlush + kAttempt + kWait + kWait + kSampleRates +
                           Calls{"send 55 03 00 0F 00"} + kWait + Calls{"send 55 03 00 0F 04"} +
                           kWait + Calls{"send 55 03 00 0F 0A"} + kWait);
  EXPECT_EQ(controller().isIdentified(), 1);
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(Identification, IsCompleteWhenTheIpodHasEnteredTheMode) {
  ipod().answer(kIdentify, {{0x00, 0x04, 0x01}});
  ipod().answer("55 02 00 05", {kEntered});
  EXPECT_TRUE(controller().indentifyIpod());
  EXPECT_EQ(callLog(), kFlush + kAttempt + kWait + Calls{"send 55 02 00 05"} + kWait);
  EXPECT_EQ(controller().isIdentified(), 1);
}

TEST_F(Identification, TakesNoMessageAfterItsCompletion) {
  ipod().answer(kIdentify, {kVersionOfLingo10, kGetSampleRates, kEntered});
  EXPECT_TRUE(controller().indentifyIpod());
  EXPECT_EQ(ipod().queued(), 2u);
}

TEST_F(Identification, KeepsTheMessagesThatArriveTogether) {
  const Calls replies =
      repliesTo({kVersionOfLingo0, kGetSampleRates, {0x00, 0x27, 0x00}, kVersionOfLingo4});
  EXPECT_EQ(replies, Calls{"send 55 03 00 0F 04"} + kSampleRates + Calls{"send 55 03 00 0F 00"} +
                         Calls{"send 55 07 00 28 00 00 00 00 01"} + Calls{"send 55 03 00 0F 0A"});
}

TEST_F(Identification, IgnoresVersionsOfOtherLingoesAndLengths) {
  EXPECT_EQ(repliesTo({{0x00, 0x10, 0x02, 0x01, 0x00},
                       {0x00, 0x10, 0x03, 0x01, 0x00},
                       {0x00, 0x10, 0xFF, 0x01, 0x00},
                       {0x00, 0x10},
                       {0x00, 0x10, 0x00, 0x01},
                       {0x00, 0x10, 0x0A, 0x01},
                       {0x00, 0x10, 0x0A, 0x01, 0x02, 0x00}}),
            Calls{});
}

TEST_F(Identification, IgnoresAcknowledgementsThatAreNotTheModesWithStatusZero) {
  EXPECT_EQ(repliesTo({kIdentifyAcknowledged,
                       {0x00, 0x02, 0x02, 0x13},
                       {0x00, 0x02, 0x01, 0x05},
                       {0x00, 0x02, 0x04, 0x05},
                       {0x00, 0x02, 0x06, 0x05, 0x2C, 0x01, 0x00, 0x00},
                       {0x00, 0x02, 0x00, 0x0F},
                       {0x00, 0x02, 0x04, 0x0F},
                       {0x00, 0x02, 0x00, 0x28}}),
            Calls{});
}

TEST_F(Identification, IgnoresAcknowledgementsOfOddLengths) {
  EXPECT_EQ(repliesTo({{0x00, 0x02},
                       {0x00, 0x02, 0x00},
                       {0x00, 0x02, 0x00, 0x05, 0x00},
                       {0x00, 0x02, 0x00, 0x05, 0x00, 0x00},
                       {0x00, 0x02, 0x00, 0x05, 0x00, 0x00, 0x00},
                       {0x00, 0x02, 0x00, 0x05, 0x00, 0x00, 0x00, 0x00, 0x00}}),
            Calls{});
}

TEST_F(Identification, IsCompletedByAnAcknowledgementWithAWaitTime) {
  ipod().answer(kIdentify, {{0x00, 0x02, 0x00, 0x05, 0xFF, 0xFF, 0xFF, 0xFF}});
  EXPECT_TRUE(controller().indentifyIpod());
}

TEST_F(Identification, EntersTheModeForANonZeroModeByteOnly) {
  EXPECT_EQ(repliesTo({{0x00, 0x04, 0x01}}), (Calls{"send 55 02 00 05"}));
  EXPECT_EQ(repliesTo({{0x00, 0x04, 0xFF}}), (Calls{"send 55 02 00 05"}));
  EXPECT_EQ(repliesTo({{0x00, 0x04, 0x00}}), Calls{});
  EXPECT_EQ(repliesTo({{0x00, 0x04}, {0x00, 0x04, 0x01, 0x00}}), Calls{});
}

TEST_F(Identification, ReportsTheAccessorysCapabilities) {
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x00}}), (Calls{"send 55 07 00 28 00 00 00 00 01"}));
}

TEST_F(Identification, AcceptsWhateverFirmwareTheIpodNames) {
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x02, 0x00, 0x0B, 0x00, 0x05, 0x01, 0x03, 0x02}}),
            (Calls{"send 55 0A 00 28 02 00 0B 00 05 01 03 02"}));
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x02, 0xFF, 0xFE, 0xFD, 0xFC, 0xFB, 0xFA, 0xF9}}),
            (Calls{"send 55 0A 00 28 02 FF FE FD FC FB FA F9"}));
}

TEST_F(Identification, DoesNotAnswerAFirmwareQuestionThatIsCutShort) {
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x02}, {0x00, 0x27, 0x02, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06}}),
            Calls{});
}

TEST_F(Identification, ReportsTheSameVersionForEveryLingo) {
  for (const uint8_t lingo : Bytes{0x00, 0x04, 0x0A, 0xFF})
    EXPECT_EQ(repliesTo({{0x00, 0x27, 0x03, lingo}}), (Calls{"send 55 06 00 28 03 00 01 07"}));
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x03}}), (Calls{"send 55 06 00 28 03 00 01 07"}));
}

TEST_F(Identification, DoesNotAnswerOtherQuestions) {
  EXPECT_EQ(repliesTo({{0x00, 0x27},
                       {0x00, 0x27, 0x01},
                       {0x00, 0x27, 0x04, 0x00},
                       {0x00, 0x27, 0x09, 0x00},
                       {0x00, 0x27, 0x0A, 0x00},
                       {0x00, 0x27, 0xFF, 0x00}}),
            Calls{});
}

TEST_F(Identification, DoesNotTakeAQuestionWithoutATypeForTheOneBefore) {
  EXPECT_EQ(repliesTo({{0x00, 0x27, 0x00}, {0x00, 0x27}}),
            (Calls{"send 55 07 00 28 00 00 00 00 01"}));
}

TEST_F(Identification, SendsTheSampleRatesAndThenRequestsTheVersionOfTheGeneralLingo) {
  EXPECT_EQ(repliesTo({kGetSampleRates}), kSampleRates + Calls{"send 55 03 00 0F 00"});
  EXPECT_EQ(repliesTo({{0x0A, 0x02, 0x00, 0x01}}), kSampleRates + Calls{"send 55 03 00 0F 00"});
}

TEST_F(Identification, AcknowledgesAudioAttributesWithoutCallingBack) {
  static int callbacks;
  callbacks = 0;
  controller().setResampleCallback([](int32_t /*rate*/) { return ++callbacks; });
  EXPECT_EQ(repliesTo({{0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 1, 2, 3, 4, 5, 6, 7, 8}}),
            (Calls{"send 55 04 0A 00 00 04"}));
  uint32_t rate = 0;
  EXPECT_TRUE(controller().getSampleRate(rate));
  EXPECT_EQ(rate, 48000u);
  EXPECT_EQ(callbacks, 0);
}

TEST_F(Identification, AcknowledgesAudioAttributesOfAnotherLengthAndKeepsTheRate) {
  EXPECT_EQ(repliesTo({{0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0}}),
            (Calls{"send 55 04 0A 00 00 04"}));
  uint32_t rate = 0;
  EXPECT_TRUE(controller().getSampleRate(rate));
  EXPECT_EQ(rate, 44100u);
}

TEST_F(Identification, IgnoresEverythingElse) {
  EXPECT_EQ(repliesTo({{0x0A, 0x00, 0x00, 0x03},
                       {0x0A, 0x01},
                       {0x0A, 0x03},
                       {0x0A, 0x05},
                       {0x00, 0x00},
                       {0x00, 0x03},
                       {0x00, 0x13},
                       {0x00, 0x28, 0x00},
                       {0x00, 0xFF},
                       {0x02, 0x02, 0x00, 0x05},
                       {0x02, 0x10, 0x0A, 0x01, 0x02},
                       {0x04, 0x00, 0x02, 0x00, 0x05},
                       {0x04, 0x00, 0x10, 0x0A, 0x01, 0x02},
                       {0x04, 0x00, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0}}),
            Calls{});
}

TEST_F(Identification, IsNotCompletedByAMessageFromBefore) {
  ipod().arrive({kEntered, kVersionOfLingo10});
  EXPECT_FALSE(controller().indentifyIpod());
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(Identification, DropsMessagesReceivedBetweenTwoAttempts) {
  ipod().answer(kIdentify, {kIdentifyAcknowledged, kSilence, kEntered});
  EXPECT_FALSE(controller().indentifyIpod());
}

TEST_F(Identification, SucceedsInTheSecondAttempt) {
  ipod().answer(kIdentify, {kIdentifyAcknowledged});
  ipod().answer(kIdentify, {kVersionOfLingo10});
  EXPECT_TRUE(controller().indentifyIpod());
  EXPECT_EQ(callLog(), kFlush + kAttempt + kWait + kWait + kAttempt + kWait);
  EXPECT_EQ(controller().isIdentified(), 1);
}

TEST_F(Identification, ThatNeedsTheThirdAttemptFails) {
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {kVersionOfLingo10});
  EXPECT_FALSE(controller().indentifyIpod());
  EXPECT_EQ(callLog(), kFlush + repeated(3, kAttempt + kWait));
  EXPECT_EQ(controller().isIdentified(), 0);
}

TEST_F(Identification, ThatEntersTheModeInTheThirdAttemptFails) {
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {kEntered});
  EXPECT_FALSE(controller().indentifyIpod());
  EXPECT_EQ(controller().isIdentified(), 0);
}

TEST_F(Identification, OfASilentIpodFailsAfterThreeAttempts) {
  controller().setIdentified(1);
  EXPECT_FALSE(controller().indentifyIpod());
  EXPECT_EQ(callLog(), kFlush + repeated(3, kAttempt + kWait));
  EXPECT_EQ(controller().isIdentified(), 0);
}

TEST_F(Identification, GoesOnWhileMessagesComeWithinASecond) {
  ipod().flood(2000, kIdentifyAcknowledged);
  EXPECT_FALSE(controller().indentifyIpod());
  EXPECT_EQ(callLog(), kFlush + kAttempt + repeated(2001, kWait) + repeated(2, kAttempt + kWait));
}

TEST_F(Identification, CanBeRepeated) {
  answerVersionChain();
  EXPECT_TRUE(controller().indentifyIpod());
  EXPECT_FALSE(controller().indentifyIpod());
  EXPECT_EQ(controller().isIdentified(), 0);
  answerVersionChain();
  EXPECT_TRUE(controller().indentifyIpod());
}

TEST_F(Identification, PrintsItsSuccessInDebug) {
  ipod().answer(kIdentify, {kVersionOfLingo10});
  EXPECT_EQ(printedInDebug([&] { controller().indentifyIpod(); }),
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \nindentifyIpod A = true \n");
}

TEST_F(Identification, PrintsItsFailureInDebug) {
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {kEntered});
  EXPECT_EQ(printedInDebug([&] { controller().indentifyIpod(); }),
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \n"
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \n"
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \nindentifyIpod B = false \n");
}

TEST_F(Identification, PrintsNothingOutsideDebug) {
  answerVersionChain();
  EXPECT_EQ(printedQuietly([&] {
              EXPECT_TRUE(controller().indentifyIpod());
              EXPECT_FALSE(controller().indentifyIpod());
            }),
            "");
}

TEST(IdentificationWithoutALink, PrintsItInDebug) {
  IpodController controller(kNoLink);
  EXPECT_EQ(printedInDebug([&] { EXPECT_FALSE(controller.indentifyIpod()); }),
            "indentifyIpod C = false \n");
  EXPECT_EQ(printedQuietly([&] { controller.indentifyIpod(); }), "");
}

}  // namespace
}  // namespace ipodctl::identification
