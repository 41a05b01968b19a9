#include <desk.h>

#include "api/api_test.h"
#include "api/small_logo.h"
#include "support/host_folder.h"
#include "support/row_name.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string kIdentify = kIdentifyDeviceLingoes + " 00 00 04 11 00 00 00 00 00 00 00 00";
constexpr char kSampleRates[] = "0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80";

class IpodConnectTest : public ApiTest {};

TEST_F(IpodConnectTest, PrintsPreparesTheAudioIdentifiesAndStartsTheStreamInThisOrder) {
  log.printToStdout();
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodConnect(), 1); }),
            "Tavrel version is 01.29\n"
            "IpodConnect start\n"
            "[SelectZeroBandwithInterface()]\n"
            "[Sleep(80)]\n"
            "[Sleep(20)]\n"
            "[00 13 00 00 04 11 00 00 00 00 00 00 00 00]\n"
            "[0A 00 00 04]\n"
            "[0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 00 00 BB 80]\n"
            "[00 0F 00]\n"
            "[00 0F 04]\n"
            "[00 0F 0A]\n"
            "[SelectFullBandwithInterface()]\n"
            "[00 05]\n"
            "[StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)]\n"
            "[00 0F 04]\n"
            "\nIPod connected\n"
            "[Sleep(0)]\n"
            "IpodConnect end\n");
}

TEST_F(IpodConnectTest, IsConnectedUntilIpodDisconnect) {
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(IpodIsConnect(), 1);
  EXPECT_EQ(IpodDisconnect(), 0);
  EXPECT_EQ(IpodIsConnect(), 0);
}

TEST_F(IpodConnectTest, StartsAPcmStream) {
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_EQ(desk.formatTag(), 1);
}

TEST_F(IpodConnectTest, StartsTheStreamAtTheRateAnnouncedDuringTheIdentification) {
  ipod.answer(kIdentifyDeviceLingoes, {"0A 04 00 00 BB 80 00 00 00 00 00 00 00 00", "0A 02"});
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_THAT(events(), testing::Contains("StartIpodAudioPlay(48000 Hz, 2 channels, 16 bits)"));
  EXPECT_EQ(ipodSampleRate, 48000u);
}

TEST_F(IpodConnectTest, StartsTheStreamAtTheRateZeroThatTheIpodAnnounced) {
  ipod.answer(kIdentifyDeviceLingoes, {"0A 04 00 00 00 00 00 00 00 00 00 00 00 00", "0A 02"});
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_THAT(events(), testing::Contains("StartIpodAudioPlay(0 Hz, 2 channels, 16 bits)"));
}

TEST_F(IpodConnectTest, EndsAtTheRateAnnouncedWhileTheStreamStartsAtAnOlderOne) {
  desk.onAudioCall = [&](const IsochplayCall& call) {
    if (call.function != kStartIpodAudioPlay) return;
    ipod.send("0A 04 00 00 BB 80 00 00 00 00 00 00 00 00");
    EXPECT_TRUE(log.waitFor("SelectFrequency(48000 Hz)"));
  };
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_THAT(
      log.eventsWithout({"Sleep(", "0", "SelectZero", "SelectFull"}),
      ElementsAre("SelectFrequency(48000 Hz)", "StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)",
                  "SelectFrequency(48000 Hz)"));
  EXPECT_EQ(ipodSampleRate, 48000u);
}

TEST_F(IpodConnectTest, SucceedsEvenIfTheIpodRefusesTheExtendedInterfaceMode) {
  ipod.refuse(kEnterRemoteUiMode);
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(IpodIsConnect(), 1);
}

TEST_F(IpodConnectTest, KeepsAnExistingConnectionAndDoesNothingElse) {
  ASSERT_EQ(IpodConnect(), 1);
  openTree(IPOD_GENRES, 12);
  const std::vector<std::string> tree = treeText(browseTree);
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodConnect(), 0); }),
            "Tavrel version is 01.29\nIpodConnect start\n");
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_EQ(IpodIsConnect(), 1);
  EXPECT_EQ(treeText(browseTree), tree);
  EXPECT_EQ(ipodHasPlayPause, 1);
}

TEST_F(IpodConnectTest, ForgetsTheBrowseTreeAndKeepsTheSnapshot) {
  ASSERT_EQ(IpodConnect(), 1);
  openTree(IPOD_ARTISTS, 36);
  IpodValidateUpDownTree();
  IpodDisconnect();
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_THAT(treeText(browseTree),
              ElementsAre("level 0", kUnknownLevel, kUnknownLevel, kUnknownLevel, kUnknownLevel,
                          kUnknownLevel, kUnknownLevel, kUnknownLevel, kUnknownLevel));
  EXPECT_EQ(treeText(upDownTree)[0], "level 1");
  EXPECT_EQ(levelText(upDownTree, 1),
            "type=2 count=36 index=-1 start=0 end=35 tab=-1 tabs=2 shown=1 split=1 playAll=1");
}

TEST_F(IpodConnectTest, ReturnsAtOnceWhileAnotherExportHoldsTheLock) {
  ASSERT_EQ(IpodConnect(), 1);
  ipod.answer(kRequestIpodName, {"00 08 41 00"});
  ipod.hold(kRequestIpodName);
  Units name = untouched(1);
  std::thread holder([&] { IpodGetName(name.data(), 1); });
  ASSERT_TRUE(log.waitFor(kRequestIpodName));
  forgetEvents();
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodConnect(), 0); }),
            "Tavrel version is 01.29\nIpodConnect start\n");
  EXPECT_THAT(events(), IsEmpty());
  ipod.release();
  holder.join();
  EXPECT_EQ(name, holding("A", 1));
  EXPECT_EQ(IpodIsConnect(), 1);
}

TEST_F(IpodConnectTest, PrintsThatThereIsNoIpodWithoutADevice) {
  const host_test::DeviceMapping nothing("");
  log.printToStdout();
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodConnect(), 0); }),
            "Tavrel version is 01.29\n"
            "IpodConnect start\n"
            "[SelectZeroBandwithInterface()]\n"
            "\nNo iPod connected\n"
            "[Sleep(0)]\n"
            "IpodConnect end\n");
  EXPECT_EQ(IpodIsConnect(), 0);
}

TEST_F(IpodConnectTest, ForgetsTheBrowseTreeEvenWithoutADevice) {
  ASSERT_EQ(IpodConnect(), 1);
  openTree(IPOD_ARTISTS, 36);
  IpodDisconnect();
  const host_test::DeviceMapping nothing("");
  EXPECT_EQ(IpodConnect(), 0);
  EXPECT_THAT(treeText(browseTree),
              ElementsAre("level 0", kUnknownLevel, kUnknownLevel, kUnknownLevel, kUnknownLevel,
                          kUnknownLevel, kUnknownLevel, kUnknownLevel, kUnknownLevel));
  EXPECT_EQ(ipodHasPlayPause, 0);
}

TEST_F(IpodConnectTest, FailsAfterThreeAttemptsWithASilentIpod) {
  const QuickTimeOuts quickTimeOuts;
  ipod.fallSilent();
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodConnect(), 0); }),
            "Tavrel version is 01.29\nIpodConnect start\n\nNo iPod connected\nIpodConnect end\n");
  EXPECT_THAT(events(),
              ElementsAre("SelectZeroBandwithInterface()", kIdentify, kIdentify, kIdentify));
  EXPECT_EQ(quickTimeOuts.passed(), 3);
  EXPECT_EQ(IpodIsConnect(), 0);
}

// Takes three seconds, one for each attempt.
TEST_F(IpodConnectTest, FailsAfterThreeAttemptsIfTheIpodDemandsAuthentication) {
  ipod.answer(kIdentifyDeviceLingoes, {"00 02 00 13", "00 27 00", "00 14"});
  EXPECT_EQ(IpodConnect(), 0);
  EXPECT_THAT(events(), testing::Contains(kIdentify).Times(3));
}

// Takes three seconds, one for each attempt.
TEST_F(IpodConnectTest, FailsAfterThreeAttemptsIfTheIpodDoesNotKnowDigitalAudio) {
  ipod.answer(kIdentifyDeviceLingoes, {"00 02 00 13", "00 27 00"});
  EXPECT_EQ(IpodConnect(), 0);
  EXPECT_THAT(events(), testing::Contains(kIdentify).Times(3));
}

TEST_F(IpodConnectTest, SucceedsAfterAFailure) {
  {
    const host_test::DeviceMapping nothing("");
    ASSERT_EQ(IpodConnect(), 0);
  }
  EXPECT_EQ(IpodConnect(), 1);
}

TEST_F(IpodConnectTest, ClosesTheLinkAgainWhenTheStreamDoesNotStart) {
  isochplaySetResult(kStartIpodAudioPlay, -1);
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodConnect(), 0); }),
            "Tavrel version is 01.29\n"
            "IpodConnect start\n"
            "IpodDisconnect start\n"
            "IpodDisconnect end\n"
            "\nNo iPod connected\n"
            "IpodConnect end\n");
  EXPECT_THAT(events(),
              ElementsAre("SelectZeroBandwithInterface()", kIdentify, kAcknowledgeAudioAttributes,
                          kSampleRates, kRequestGeneralVersion, kRequestExtendedInterfaceVersion,
                          kRequestDigitalAudioVersion, "SelectFullBandwithInterface()",
                          kEnterRemoteUiMode, "StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)",
                          "StopIpodAudioPlay()", kExitRemoteUiMode));
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_EQ(ipodHasPlayPause, 0);
}

TEST_F(IpodConnectTest, TreatsOnlyMinusOneAsAStreamThatDoesNotStart) {
  for (const int result : {-2, 1}) {
    isochplaySetResult(kStartIpodAudioPlay, result);
    EXPECT_EQ(IpodConnect(), 1) << result;
    IpodDisconnect();
  }
}

TEST_F(IpodConnectTest, IgnoresWhatTheInterfaceSelectionsReturn) {
  isochplaySetResult(kSelectZeroBandwithInterface, -1);
  isochplaySetResult(kSelectFullBandwithInterface, -1);
  EXPECT_EQ(IpodConnect(), 1);
}

TEST_F(IpodConnectTest, CanBeRepeatedWithoutLosingHandles) {
  ASSERT_EQ(IpodConnect(), 1);
  IpodDisconnect();
  const unsigned handles = deskOpenHandles();
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(IpodConnect(), 1);
    IpodDisconnect();
  }
  EXPECT_LE(deskOpenHandles(), handles);
}

/// A version of the Extended Interface lingo that the iPod reports, and whether the library then
/// uses the commands play and pause.
struct VersionCase : NamedRow {
  const char* reply;
  int hasPlayPause;
};

class ExtendedInterfaceVersion : public ApiTest, public testing::WithParamInterface<VersionCase> {};

TEST_P(ExtendedInterfaceVersion, DecidesAboutPlayAndPause) {
  ipod.answerOnce(kRequestExtendedInterfaceVersion, {"00 10 04 01 0D"});
  ipod.answer(kRequestExtendedInterfaceVersion, {GetParam().reply});
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(int{ipodHasPlayPause}, GetParam().hasPlayPause);
}

INSTANTIATE_TEST_SUITE_P(
    Versions, ExtendedInterfaceVersion,
    testing::Values(
        VersionCase{"1_12", "00 10 04 01 0C", 0}, VersionCase{"1_13", "00 10 04 01 0D", 1},
        VersionCase{"1_20", "00 10 04 01 14", 1}, VersionCase{"1_255", "00 10 04 01 FF", 1},
        VersionCase{"2_0", "00 10 04 02 00", 0}, VersionCase{"2_12", "00 10 04 02 0C", 0},
        VersionCase{"2_13", "00 10 04 02 0D", 1}, VersionCase{"255_13", "00 10 04 FF 0D", 1},
        VersionCase{"0_13", "00 10 04 00 0D", 0},
        VersionCase{"OfAnotherLingo", "00 10 00 01 0D", 0},
        VersionCase{"OfTheAudioLingo", "00 10 0A 01 0D", 0},
        VersionCase{"TooShort", "00 10 04 01", 0}, VersionCase{"TooLong", "00 10 04 01 0D 00", 0},
        VersionCase{"Refused", "00 02 05 0F", 0}, VersionCase{"AnotherCommand", "00 04 01", 0}),
    rowName<VersionCase>);

TEST_F(IpodConnectTest, ForgetsPlayAndPauseOfThePreviousIpod) {
  ASSERT_EQ(IpodConnect(), 1);
  ASSERT_EQ(ipodHasPlayPause, 1);
  IpodDisconnect();
  EXPECT_EQ(ipodHasPlayPause, 1);
  ipod.answer(kRequestExtendedInterfaceVersion, {"00 10 04 01 0C"});
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_EQ(ipodHasPlayPause, 0);
}

class LogoTest : public ApiTest {
 protected:
  const session::HostFolder folder;
};

TEST_F(LogoTest, IsReadFromTheCurrentDirectoryAndShownDuringTheConnection) {
  folder.writeLogo(smallLogo());
  ipod.answer(kGetColorDisplayImageLimits, {"04 00 3A 00 08 00 03 02"});
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_THAT(
      events(),
      ElementsAre("SelectZeroBandwithInterface()", kIdentify, kAcknowledgeAudioAttributes,
                  kSampleRates, kRequestGeneralVersion, kRequestExtendedInterfaceVersion,
                  kRequestDigitalAudioVersion, kGetColorDisplayImageLimits,
                  kSetDisplayImage + " 00 00 02 00 04 00 02 00 00 00 08 FF FF FF FF FF FF FF FF",
                  kSetDisplayImage + " 00 01 00 F8 E0 07 1F 00 00 00",
                  "SelectFullBandwithInterface()", kEnterRemoteUiMode,
                  "StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)",
                  kRequestExtendedInterfaceVersion));
}

TEST_F(LogoTest, IsReadAgainForEachConnection) {
  ipod.answer(kGetColorDisplayImageLimits, {"04 00 3A 00 08 00 03 02"});
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_THAT(events(), testing::Not(testing::Contains(kGetColorDisplayImageLimits)));
  IpodDisconnect();
  folder.writeLogo(smallLogo());
  forgetEvents();
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_THAT(events(), testing::Contains(kGetColorDisplayImageLimits));
  IpodDisconnect();
  folder.removeLogo();
  forgetEvents();
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_THAT(events(), testing::Not(testing::Contains(kGetColorDisplayImageLimits)));
}

TEST_F(LogoTest, DoesNotPreventTheConnectionIfTheIpodRefusesIt) {
  folder.writeLogo(smallLogo());
  ipod.answer(kGetColorDisplayImageLimits, {"04 00 3A 00 08 00 03 02"});
  ipod.refuse(kSetDisplayImage);
  EXPECT_EQ(IpodConnect(), 1);
}

class IpodDisconnectTest : public ConnectedApiTest {};

TEST_F(IpodDisconnectTest, StopsTheStreamLeavesTheModeAndCloses) {
  log.printToStdout();
  const std::string console = printed([] { EXPECT_EQ(IpodDisconnect(), 0); });
  EXPECT_EQ(console.find("IpodDisconnect start\n[StopIpodAudioPlay()]\n"), 0u);
  EXPECT_EQ(console.substr(console.size() - 19), "IpodDisconnect end\n");
  EXPECT_THAT(events(), ElementsAre("StopIpodAudioPlay()", kExitRemoteUiMode));
}

TEST_F(IpodDisconnectTest, PrintsItsTwoLines) {
  EXPECT_EQ(printed([] { IpodDisconnect(); }), "IpodDisconnect start\nIpodDisconnect end\n");
}

TEST_F(IpodDisconnectTest, WithoutAConnectionStopsTheStreamAgainAndSendsNothing) {
  IpodDisconnect();
  forgetEvents();
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodDisconnect(), 0); }),
            "IpodDisconnect start\nIpodDisconnect end\n");
  EXPECT_THAT(events(), ElementsAre("StopIpodAudioPlay()"));
}

TEST_F(IpodDisconnectTest, KeepsTheTreeTheSnapshotAndPlayAndPause) {
  openTree(IPOD_ARTISTS, 3);
  IpodValidateUpDownTree();
  IpodDisconnect();
  const char kLevel1[] =
      "type=2 count=3 index=-1 start=-1 end=3 tab=-1 tabs=0 shown=0 split=0 playAll=1";
  EXPECT_EQ(browseTree.level, 1);
  EXPECT_EQ(levelText(browseTree, 1), kLevel1);
  EXPECT_EQ(upDownTree.level, 1);
  EXPECT_EQ(levelText(upDownTree, 1), kLevel1);
  EXPECT_EQ(ipodHasPlayPause, 1);
}

TEST_F(IpodDisconnectTest, EndsTheReaderThread) {
  IpodDisconnect();
  for (const host_test::Patience patience; deskRunningThreads() > 0 && !patience.isOver();)
    std::this_thread::yield();
  EXPECT_EQ(deskRunningThreads(), 0u);
}

class LostIpodTest : public ConnectedApiTest {
 protected:
  /// Waits until the library has noticed that its iPod is gone.
  static void waitUntilTheReaderEnds() {
    for (const host_test::Patience patience; deskRunningThreads() > 0 && !patience.isOver();)
      std::this_thread::yield();
    ASSERT_EQ(deskRunningThreads(), 0u);
  }
};

TEST_F(LostIpodTest, IsConnectedUntilIpodDisconnect) {
  ipod.hangUp();
  waitUntilTheReaderEnds();
  EXPECT_EQ(IpodIsConnect(), 1);
  EXPECT_EQ(IpodConnect(), 0);
  EXPECT_EQ(IpodDisconnect(), 0);
  EXPECT_EQ(IpodIsConnect(), 0);
}

TEST_F(LostIpodTest, AnswersNothing) {
  ipod.hangUp();
  waitUntilTheReaderEnds();
  int index = 77;
  EXPECT_EQ(IpodGetTrackIndex(&index), 0);
  EXPECT_EQ(index, 77);
}

TEST_F(LostIpodTest, CanBeReplacedByAnother) {
  ipod.hangUp();
  waitUntilTheReaderEnds();
  IpodDisconnect();
  ScriptedIpod other(log);
  other.answer(kRequestIpodName, {"00 08 42 00"});
  EXPECT_EQ(IpodConnect(), 1);
  Units name = untouched(1);
  IpodGetName(name.data(), 1);
  EXPECT_EQ(name, holding("B", 1));
  IpodDisconnect();
}

TEST_F(LostIpodTest, ConnectsAgainAfterACorruptFrame) {
  ipod.sendCorrupt("0A 02");
  waitUntilTheReaderEnds();
  int index = 77;
  EXPECT_EQ(IpodGetTrackIndex(&index), 0);
  EXPECT_EQ(IpodIsConnect(), 1);
  IpodDisconnect();
  EXPECT_EQ(IpodConnect(), 1);
  playingIndex(5);
  EXPECT_EQ(IpodGetTrackIndex(&index), 1);
  EXPECT_EQ(index, 5);
}

class SampleRateTest : public ConnectedApiTest {};

TEST_F(SampleRateTest, ReachesTheAudioStreamFromANotification) {
  const std::string console = printed([this] {
    ipod.send("0A 04 00 00 BB 80 00 00 00 00 00 00 00 00");
    ASSERT_TRUE(log.waitFor("SelectFrequency"));
    ASSERT_TRUE(log.waitFor(kAcknowledgeAudioAttributes));
  });
  EXPECT_EQ(console, "Tavrel RestartPlayForResample 48000\n");
  EXPECT_THAT(events(), testing::UnorderedElementsAre(kAcknowledgeAudioAttributes,
                                                      "SelectFrequency(48000 Hz)"));
  EXPECT_EQ(ipodSampleRate, 48000u);
}

TEST_F(SampleRateTest, IsTakenAsASignedNumber) {
  const std::string console = printed([this] {
    ipod.send("0A 04 FF FF FF FF 00 00 00 00 00 00 00 00");
    ASSERT_TRUE(log.waitFor("SelectFrequency(-1 Hz)"));
  });
  EXPECT_EQ(console, "Tavrel RestartPlayForResample -1\n");
  EXPECT_EQ(ipodSampleRate, 0xFFFFFFFFu);
}

TEST_F(SampleRateTest, IsFollowedEachTimeThatItIsNotified) {
  ipod.send("0A 04 00 00 7D 00 00 00 00 00 00 00 00 00");
  ipod.send("0A 04 00 00 7D 00 00 00 00 00 00 00 00 00");
  EXPECT_TRUE(log.waitFor("SelectFrequency(32000 Hz)", 2));
}

TEST_F(SampleRateTest, IsFollowedWhileAnExportHoldsTheLock) {
  ipod.answer(kRequestIpodName, {"00 08 41 00"});
  ipod.hold(kRequestIpodName);
  std::thread holder([] { IpodGetName(nullptr, 1); });
  ASSERT_TRUE(log.waitFor(kRequestIpodName));
  ipod.send("0A 04 00 00 BB 80 00 00 00 00 00 00 00 00");
  EXPECT_TRUE(log.waitFor("SelectFrequency(48000 Hz)"));
  ipod.release();
  holder.join();
}

TEST_F(SampleRateTest, IsNotFollowedWithoutItsTwelveBytes) {
  ipod.send("0A 04 00 00 BB 80 00 00 00 00 00 00 00");
  EXPECT_TRUE(log.waitFor("SelectFrequency(44100 Hz)"));
}

TEST_F(SampleRateTest, StaysForTheNextConnection) {
  ipod.send("0A 04 00 00 7D 00 00 00 00 00 00 00 00 00");
  ASSERT_TRUE(log.waitFor("SelectFrequency(32000 Hz)"));
  IpodDisconnect();
  ipod.answer(kIdentifyDeviceLingoes, {"00 02 00 13", "0A 02"});
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_THAT(events(), testing::Contains("StartIpodAudioPlay(32000 Hz, 2 channels, 16 bits)"));
}

class AudioPresentTest : public ApiTest {};

TEST_F(AudioPresentTest, PassesFourWordsOnAndReturnsTheResult) {
  for (const int result : {-7, 0, 1, 12345678}) {
    isochplaySetResult(kIpodAudioPresent, result);
    EXPECT_EQ(isIpodAudioPresent(1, -2, 3, 0x7FFFFFFF), result);
  }
  EXPECT_THAT(events(), testing::Each("IpodAudioPresent(1, -2, 3, 2147483647)"));
  EXPECT_EQ(events().size(), 4u);
}

TEST_F(AudioPresentTest, TakesNoLock) {
  ASSERT_EQ(IpodConnect(), 1);
  ASSERT_EQ(WaitForSingleObject(libraryLock.handle(), 0), WAIT_OBJECT_0);
  EXPECT_EQ(isIpodAudioPresent(0, 0, 0, 0), 1);
  EXPECT_EQ(IpodIsConnect(), 1);
  ReleaseSemaphore(libraryLock.handle(), 1, nullptr);
}

}  // namespace
