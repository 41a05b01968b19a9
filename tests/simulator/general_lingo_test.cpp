#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

const char* const kAnnounce = "00 13 00 00 04 11 00 00 00 00 00 00 00 00";

Personality answering(UnknownCommand unknown) {
  Personality personality;
  personality.unknownCommand = unknown;
  return personality;
}

TEST(GeneralLingo, ReturnsTheMode) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 03"), Payloads{"00 04 00"});
  bench.enter();
  EXPECT_EQ(bench.ask("00 03"), Payloads{"00 04 01"});
}

TEST(GeneralLingo, EntersAndLeavesTheExtendedMode) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 05"), Payloads{"00 02 00 05"});
  EXPECT_TRUE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.ask("00 06"), Payloads{"00 02 00 06"});
  EXPECT_FALSE(bench.ipod.inExtendedMode());
}

TEST(GeneralLingo, ModeChangeCanPendFirst) {
  Personality personality;
  personality.modeChangePending = milliseconds(300);
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 05"), Payloads{"00 02 06 05 00 00 01 2C"});
  EXPECT_FALSE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.wait(milliseconds(299)), Payloads{});
  EXPECT_EQ(bench.wait(milliseconds(1)), Payloads{"00 02 00 05"});
  EXPECT_TRUE(bench.ipod.inExtendedMode());
}

TEST(GeneralLingo, PendingModeChangeIsCancelledWithTheAccessory) {
  Personality personality;
  personality.modeChangePending = milliseconds(300);
  Bench bench(personality);
  bench.ask("00 05");
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.wait(seconds(1)), Payloads{});
  EXPECT_FALSE(bench.ipod.inExtendedMode());
}

TEST(GeneralLingo, PresentModeDoesNotPend) {
  Personality personality;
  personality.modeChangePending = milliseconds(300);
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 06"), Payloads{"00 02 00 06"});
}

TEST(GeneralLingo, ModeChangeCanBePendingAndDoneInOneWrite) {
  Personality personality;
  personality.modeChangeTogether = true;
  Bench bench(personality);
  bench.send("00 05");
  EXPECT_TRUE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.takeRaw(), Payloads{"55 08 00 02 06 05 00 00 01 2C BE 55 04 00 02 00 05 F5"});
  bench.send("00 06");
  EXPECT_EQ(bench.takeRaw(), Payloads{"55 08 00 02 06 06 00 00 01 2C BD 55 04 00 02 00 06 F4"});
  EXPECT_FALSE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.wait(seconds(1)), Payloads{});
}

TEST(GeneralLingo, ModeChangeInOneWriteStatesThePendingTimeOfTheModel) {
  Personality personality;
  personality.modeChangeTogether = true;
  personality.modeChangePending = milliseconds(1000);
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 05"), (Payloads{"00 02 06 05 00 00 03 E8", "00 02 00 05"}));
}

TEST(GeneralLingo, PresentModeIsAcknowledgedOnce) {
  Personality personality;
  personality.modeChangeTogether = true;
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 06"), Payloads{"00 02 00 06"});
}

TEST(GeneralLingo, ModeChangePausesWhatPlays) {
  Bench bench;
  bench.ipod.pressPlay(bench.now);
  bench.enter();
  EXPECT_EQ(bench.ipod.player().state(), PlayState::kPaused);
  bench.ipod.pressPlay(bench.now);
  bench.ask("00 05");
  EXPECT_EQ(bench.ipod.player().state(), PlayState::kPlaying);
  bench.ask("00 06");
  EXPECT_EQ(bench.ipod.player().state(), PlayState::kPaused);
}

TEST(GeneralLingo, LeavingTheExtendedModeClearsTheSelection) {
  Bench bench;
  bench.enter();
  bench.select(2, 0);
  EXPECT_EQ(bench.count(5), 3u);
  bench.ask("00 06");
  bench.enter();
  EXPECT_EQ(bench.count(5), 5u);
}

TEST(GeneralLingo, IdentifyHasNoAnswerAndLeavesTheExtendedMode) {
  Bench bench;
  bench.enter();
  EXPECT_EQ(bench.ask("00 01 02"), Payloads{});
  EXPECT_FALSE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.ipod.announcedLingoes(), 0x04u);
}

TEST(GeneralLingo, IdentifyWithTheExtendedInterfaceEntersItsMode) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 01 04"), Payloads{});
  EXPECT_TRUE(bench.ipod.inExtendedMode());
}

TEST(GeneralLingo, IdentifyWithALingoBeyondTheMaskIsIgnored) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 01 FF"), Payloads{});
  EXPECT_EQ(bench.ipod.announcedLingoes(), 0u);
}

TEST(GeneralLingo, ReturnsItsNameWithAFinalZero) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 08 50 6F 64 00"});
}

TEST(GeneralLingo, PersonalityNameHasPrecedenceOverTheLibraryName) {
  Personality personality;
  personality.name = "Zoe";
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 07"), Payloads{"00 08 5A 6F 65 00"});
}

TEST(GeneralLingo, ReturnsVersionSerialAndModel) {
  Personality personality;
  personality.softwareVersion = {2, 0, 4};
  personality.serialNumber = "9Z";
  personality.modelId = 0x000B0011;
  personality.modelNumber = "MB147";
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 09"), Payloads{"00 0A 02 00 04"});
  EXPECT_EQ(bench.ask("00 0B"), Payloads{"00 0C 39 5A 00"});
  EXPECT_EQ(bench.ask("00 0D"), Payloads{"00 0E 00 0B 00 11 4D 42 31 34 37 00"});
}

TEST(GeneralLingo, ReturnsTheVersionOfEachLingo) {
  Personality personality;
  personality.lingoes[0x00] = {1, 6};
  personality.lingoes[0x04] = {1, 12};
  personality.lingoes[0x0A] = {1, 2};
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 0F 00"), Payloads{"00 10 00 01 06"});
  EXPECT_EQ(bench.ask("00 0F 04"), Payloads{"00 10 04 01 0C"});
  EXPECT_EQ(bench.ask("00 0F 0A"), Payloads{"00 10 0A 01 02"});
}

TEST(GeneralLingo, VersionOfAnUnknownLingoIsABadParameter) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 0F 09"), Payloads{"00 02 04 0F"});
}

TEST(GeneralLingo, UnknownCommandIsAnsweredAsThePersonalitySays) {
  EXPECT_EQ(Bench(answering(UnknownCommand::kUnknownId)).ask("00 77"), Payloads{"00 02 05 77"});
  EXPECT_EQ(Bench(answering(UnknownCommand::kFailed)).ask("00 77"), Payloads{"00 02 02 77"});
  EXPECT_EQ(Bench(answering(UnknownCommand::kSilence)).ask("00 77"), Payloads{});
}

TEST(GeneralLingo, CommandOfTheWrongSizeIsABadParameter) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 0F"), Payloads{"00 02 04 0F"});
  EXPECT_EQ(bench.ask("00 05 01"), Payloads{"00 02 04 05"});
  EXPECT_EQ(bench.ask("00 13 00 00 04 11"), Payloads{"00 02 04 13"});
}

TEST(GeneralLingo, UnknownLingoIsIgnored) {
  Bench bench;
  EXPECT_EQ(bench.ask("03 01"), Payloads{});
  EXPECT_EQ(bench.ask("63 01 02"), Payloads{});
}

TEST(GeneralLingo, FrameWithoutACommandIsIgnored) {
  Bench bench;
  EXPECT_EQ(bench.ask("00"), Payloads{});
  EXPECT_EQ(bench.ask("04 00"), Payloads{});
  EXPECT_EQ(bench.ipod.counters().malformedFrames, 2u);
}

TEST(IdentifyDeviceLingoes, IsRefusedWithoutTheGeneralLingo) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 13 00 00 04 10 00 00 00 00 00 00 00 00"), Payloads{"00 02 02 13"});
  EXPECT_EQ(bench.ipod.announcedLingoes(), 0u);
}

TEST(IdentifyDeviceLingoes, IsRefusedWithALingoThatTheModelDoesNotSpeak) {
  Bench bench;
  EXPECT_EQ(bench.ask("00 13 80 00 04 11 00 00 00 00 00 00 00 00"), Payloads{"00 02 02 13"});
  EXPECT_EQ(bench.wait(seconds(20)), Payloads{});
}

TEST(IdentifyDeviceLingoes, LeavesTheExtendedMode) {
  Bench bench;
  bench.enter();
  bench.ask(kAnnounce);
  EXPECT_FALSE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.ipod.announcedLingoes(), 0x411u);
}

TEST(IdentifyDeviceLingoes, CanBeIgnoredInTheFirstAttempts) {
  Personality personality;
  personality.silentIdentifications = 2;
  Bench bench(personality);
  EXPECT_EQ(bench.ask(kAnnounce), Payloads{});
  EXPECT_EQ(bench.wait(seconds(1)), Payloads{});
  EXPECT_EQ(bench.ask(kAnnounce), Payloads{});
  EXPECT_EQ(bench.ask(kAnnounce), (Payloads{"00 02 00 13", "00 27 00"}));
}

TEST(IdentifyDeviceLingoes, IsIgnoredAgainForTheNextAccessory) {
  Personality personality;
  personality.silentIdentifications = 1;
  Bench bench(personality);
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.ask(kAnnounce).size(), 2u);
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.ask(kAnnounce), Payloads{});
}

TEST(IdentifyDeviceLingoes, CanBeRefusedAfterOneWasAccepted) {
  Personality personality;
  personality.refusesSecondIdentification = true;
  Bench bench(personality);
  EXPECT_EQ(bench.ask(kAnnounce), (Payloads{"00 02 00 13", "00 27 00"}));
  bench.enter();
  EXPECT_EQ(bench.ask(kAnnounce), Payloads{"00 02 04 13"});
  EXPECT_TRUE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.ask("00 28 00 00 00 00 01"), Payloads{"0A 02"}) << "the first one goes on";
}

TEST(IdentifyDeviceLingoes, IsAcceptedAfterOneThatWasRefused) {
  Personality personality;
  personality.refusesSecondIdentification = true;
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 13 00 00 04 10 00 00 00 00 00 00 00 00"), Payloads{"00 02 02 13"});
  EXPECT_EQ(bench.ask(kAnnounce), (Payloads{"00 02 00 13", "00 27 00"}));
}

TEST(IdentifyDeviceLingoes, IsAcceptedOnceFromEachAccessory) {
  Personality personality;
  personality.refusesSecondIdentification = true;
  Bench bench(personality);
  bench.ask(kAnnounce);
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.ask(kAnnounce), (Payloads{"00 02 00 13", "00 27 00"}));
}

TEST(SilentBeforeIdentification, IgnoresEveryLingo) {
  Personality personality;
  personality.silentBeforeIdentification = true;
  Bench bench(personality);
  for (const char* payload :
       {"00 03", "00 05", "00 01 04", "00 77", "04 00 1C", "02 00 01", "0A 00 00 04"})
    EXPECT_EQ(bench.ask(payload), Payloads{}) << payload;
  EXPECT_FALSE(bench.ipod.inExtendedMode());
  EXPECT_EQ(bench.ipod.player().state(), PlayState::kStopped);
}

TEST(SilentBeforeIdentification, EndsWithAnAcceptedAnnouncement) {
  Personality personality;
  personality.silentBeforeIdentification = true;
  Bench bench(personality);
  EXPECT_EQ(bench.ask("00 13 00 00 04 10 00 00 00 00 00 00 00 00"), Payloads{"00 02 02 13"});
  EXPECT_EQ(bench.ask("00 03"), Payloads{});
  bench.ask(kAnnounce);
  EXPECT_EQ(bench.ask("00 03"), Payloads{"00 04 00"});
  bench.ipod.hangUp(bench.now);
  EXPECT_EQ(bench.ask("00 03"), Payloads{}) << "the next accessory";
}

}  // namespace
}  // namespace simulator
