#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator::identification {
namespace {

const char* const kAnnounce = "00 13 00 00 04 11 00 00 00 00 00 00 00 00";
const char* const kAnnounceWithoutAudio = "00 13 00 00 00 11 00 00 00 00 00 00 00 00";
const char* const kOffersNothingMore = "00 28 00 00 00 00 01";
const char* const kRates = "0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80";
const char* const kAttributes44100 = "0A 04 00 00 AC 44 00 00 00 00 00 00 00 00";

TEST(Identification, AsksForTheCapabilitiesAfterTheAcknowledgement) {
  Bench bench;
  EXPECT_EQ(bench.ask(kAnnounce), (Payloads{"00 02 00 13", "00 27 00"}));
}

TEST(Identification, AsksAgainAfterFiveSecondsAndThenContinues) {
  Bench bench;
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.wait(milliseconds(4999)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"00 27 00"});
  EXPECT_EQ(bench.wait(milliseconds(4999)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"0A 02"});
  EXPECT_EQ(bench.wait(seconds(60)), Payloads{});
}

TEST(Identification, SomeModelsDoNotAskAgain) {
  Personality personality;
  personality.repeatsAccessoryInfo = false;
  Bench bench(personality);
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.wait(seconds(5)), Payloads{"0A 02"});
}

TEST(Identification, AsksForWhatTheCapabilitiesOfferInRisingOrder) {
  Personality personality;
  personality.modelId = 0x00010203;
  personality.softwareVersion = {1, 2, 3};
  Bench bench(personality);
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.ask("00 28 00 00 00 02 0F"), Payloads{"00 27 01"});
  EXPECT_EQ(bench.ask("00 28 01 41 00"), Payloads{"00 27 02 00 01 02 03 01 02 03"});
  EXPECT_EQ(bench.ask("00 28 02 00 01 02 03 01 02 03"), Payloads{"00 27 03 04"});
  EXPECT_EQ(bench.ask("00 28 03 04 01 07"), Payloads{"00 27 09"});
  EXPECT_EQ(bench.ask("00 28 09 01 00"), Payloads{"0A 02"});
}

TEST(Identification, LaterQuestionWithoutAnAnswerIsSkipped) {
  Bench bench;
  bench.ask(kAnnounce);
  bench.ask("00 28 00 00 00 00 03");
  EXPECT_EQ(bench.wait(seconds(5)), Payloads{"0A 02"});
}

TEST(Identification, DoesNotWaitForTheAnswerToAnotherQuestion) {
  Bench bench;
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.ask("00 28 02 00 00 00 00 00 00 00"), Payloads{});
}

TEST(Identification, ExtraQuestionsFollowTheOfferedOnes) {
  Personality personality;
  personality.extraAccessoryInfo = {3, 1};
  Bench bench(personality);
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.ask("00 28 00 00 00 00 02"), Payloads{"00 27 01"});
  EXPECT_EQ(bench.ask("00 28 01 41 00"), Payloads{"00 27 03 04"});
  EXPECT_EQ(bench.ask("00 28 03 04 01 07"), Payloads{"0A 02"});
}

TEST(Identification, QuestionsCanBeLateWhileItContinues) {
  Personality personality;
  personality.accessoryInfoDelay = milliseconds(100);
  Bench bench(personality);
  EXPECT_EQ(bench.ask(kAnnounce), (Payloads{"00 02 00 13", "0A 02"}));
  EXPECT_EQ(bench.ask(kRates), Payloads{kAttributes44100});
  EXPECT_EQ(bench.wait(milliseconds(99)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"00 27 00"});
  EXPECT_EQ(bench.ask("00 28 00 00 00 00 03"), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(99)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"00 27 01"});
  EXPECT_EQ(bench.ask("00 28 01 41 00"), Payloads{});
  EXPECT_EQ(bench.wait(seconds(60)), Payloads{}) << "audio does not begin again";
}

TEST(Identification, LateQuestionIsRepeatedAfterItsPatience) {
  Personality personality;
  personality.accessoryInfoDelay = milliseconds(100);
  Bench bench(personality);
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.wait(milliseconds(5199)), Payloads{"00 27 00"});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"00 27 00"});
  EXPECT_EQ(bench.wait(seconds(60)), Payloads{});
}

TEST(Identification, LateQuestionIsNotAskedAfterTheAccessoryDisconnects) {
  Personality personality;
  personality.accessoryInfoDelay = milliseconds(100);
  Bench bench(personality);
  bench.ask(kAnnounce);
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.wait(seconds(20)), Payloads{});
}

TEST(Identification, LateQuestionOfARepeatedAnnouncementIsAskedOnce) {
  Personality personality;
  personality.accessoryInfoDelay = milliseconds(100);
  Bench bench(personality);
  bench.ask(kAnnounce);
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.wait(milliseconds(100)), Payloads{"00 27 00"});
}

TEST(Identification, AccessoryInfoCanBeAcknowledged) {
  Personality personality;
  personality.acknowledgesAccessoryInfo = true;
  Bench bench(personality);
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.ask(kOffersNothingMore), (Payloads{"00 02 00 28", "0A 02"}));
}

TEST(Identification, SendsTheAudioAttributesWhenItKnowsTheRates) {
  Bench bench;
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.ask(kOffersNothingMore), Payloads{"0A 02"});
  EXPECT_EQ(bench.ask(kRates), Payloads{kAttributes44100});
  EXPECT_EQ(bench.ask("0A 00 00 04"), Payloads{});
}

TEST(Identification, AudioAttributesCanBeDelayed) {
  Personality personality;
  personality.audioAttributesDelay = milliseconds(700);
  Bench bench(personality);
  bench.ask(kAnnounce);
  bench.ask(kOffersNothingMore);
  EXPECT_EQ(bench.ask(kRates), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(699)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{kAttributes44100});
}

TEST(Identification, WithoutTheAudioLingoNothingIsAskedAboutAudio) {
  Bench bench;
  bench.ask(kAnnounceWithoutAudio);
  EXPECT_EQ(bench.ask(kOffersNothingMore), Payloads{});
  EXPECT_EQ(bench.wait(seconds(20)), Payloads{});
}

TEST(Identification, CanEndWithAnUnsolicitedMode) {
  Personality personality;
  personality.identificationEnd = IdentificationEnd::kRemoteUiMode;
  Bench bench(personality);
  bench.ask(kAnnounce);
  bench.ask(kOffersNothingMore);
  EXPECT_EQ(bench.ask(kRates), (Payloads{kAttributes44100, "00 04 01"}));
  EXPECT_TRUE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.ask("00 05"), Payloads{"00 02 00 05"});
}

TEST(Identification, ModelThatDoesNotAskForRatesSendsTheAttributesAtOnce) {
  Personality personality;
  personality.identificationEnd = IdentificationEnd::kRemoteUiMode;
  personality.asksSampleRates = false;
  Bench bench(personality);
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.ask(kOffersNothingMore), (Payloads{kAttributes44100, "00 04 01"}));
}

TEST(Identification, NewAnnouncementStartsItAgain) {
  Bench bench;
  bench.ask(kAnnounce);
  bench.ask(kOffersNothingMore);
  bench.ask(kRates);
  EXPECT_EQ(bench.ask(kAnnounce), (Payloads{"00 02 00 13", "00 27 00"}));
  EXPECT_EQ(bench.ask(kOffersNothingMore), Payloads{"0A 02"});
  EXPECT_EQ(bench.ask(kRates), Payloads{kAttributes44100});
}

TEST(Identification, StopsWhenTheAccessoryDisconnects) {
  Bench bench;
  bench.ask(kAnnounce);
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.wait(seconds(20)), Payloads{});
  EXPECT_EQ(bench.ipod.announcedLingoes(), 0u);
  EXPECT_EQ(bench.ask(kOffersNothingMore), Payloads{});
}

class DigitalAudioTest : public testing::Test {
 protected:
  void SetUp() override {
    bench.ask(kAnnounce);
    bench.ask(kOffersNothingMore);
    bench.ask(kRates);
    bench.ask("0A 00 00 04");
    bench.enter();
    bench.count(5);
  }

  Bench bench;
};

TEST_F(DigitalAudioTest, TrackWithAnotherRateIsAnnounced) {
  const Payloads toldAndDone = {"04 00 01 00 00 17", "0A 04 00 00 BB 80 00 00 00 00 00 00 00 00"};
  EXPECT_EQ(bench.ask("04 00 17 05 00 00 00 02"), toldAndDone);
}

TEST_F(DigitalAudioTest, TrackWithTheSameRateIsNotAnnounced) {
  EXPECT_EQ(bench.ask("04 00 17 05 00 00 00 01"), Payloads{"04 00 01 00 00 17"});
}

TEST_F(DigitalAudioTest, RateIsAlsoAnnouncedWhenATrackEnds) {
  bench.ask("04 00 17 05 00 00 00 01");
  EXPECT_EQ(bench.wait(milliseconds(19999)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"0A 04 00 00 BB 80 00 00 00 00 00 00 00 00"});
  EXPECT_EQ(bench.wait(seconds(30)), Payloads{"0A 04 00 00 7D 00 00 00 00 00 00 00 00 00"});
  EXPECT_EQ(bench.wait(seconds(5)), Payloads{kAttributes44100});
}

TEST_F(DigitalAudioTest, RateCanBeAnnouncedOnRequest) {
  bench.ipod.announceSampleRate(bench.now, 48000);
  EXPECT_EQ(bench.take(), Payloads{"0A 04 00 00 BB 80 00 00 00 00 00 00 00 00"});
}

TEST(DigitalAudio, RateThatTheAccessoryDoesNotPlayIsConverted) {
  Bench bench;
  bench.ask(kAnnounce);
  bench.ask(kOffersNothingMore);
  bench.ask("0A 03 00 00 AC 44");
  bench.enter();
  bench.count(5);
  EXPECT_EQ(bench.ask("04 00 17 05 00 00 00 02"), Payloads{"04 00 01 00 00 17"});
}

TEST(DigitalAudio, UnsolicitedRatesAreIgnored) {
  Bench bench;
  EXPECT_EQ(bench.ask(kRates), Payloads{});
  EXPECT_EQ(bench.ask("0A 00 00 04"), Payloads{});
  EXPECT_EQ(bench.ask("0A 77 01"), Payloads{});
  EXPECT_EQ(bench.ask("0A 00"), Payloads{});
}

TEST(DigitalAudio, BytesAfterTheLastWholeRateAreIgnored) {
  Bench bench;
  bench.ask(kAnnounce);
  bench.ask(kOffersNothingMore);
  EXPECT_EQ(bench.ask("0A 03 00 00 AC 44 00 00"), Payloads{kAttributes44100});
}

}  // namespace
}  // namespace simulator::identification
