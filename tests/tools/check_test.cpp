// What `iaptrace check` says about traces that are typed here, line by line.

#include "iaptrace/check_diagnosis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "iaptrace/check_causes.h"
#include "iaptrace/check_session.h"
#include "trace/trace_parser.h"

namespace iaptrace::checking::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using Names = std::vector<std::string>;

Diagnosis diagnosisOf(const std::string& lines) {
  return diagnose(trace::parseTrace("# ipodctl-trace 1\n" + lines));
}

Names causesIn(const std::string& lines) {
  Names causes;
  for (const Finding& finding : diagnosisOf(lines).findings)
    causes.push_back(finding.cause);
  return causes;
}

Names notesIn(const std::string& lines) {
  Names notes;
  for (const Note& note : diagnosisOf(lines).notes)
    notes.push_back(note.text);
  return notes;
}

/// Returns the sentence about the first finding; empty when there is none.
std::string detailIn(const std::string& lines) {
  const Diagnosis diagnosis = diagnosisOf(lines);
  return diagnosis.findings.empty() ? "" : diagnosis.findings[0].detail;
}

/// Replaces a part of a trace.
std::string with(std::string lines, const std::string& part, const std::string& other) {
  const size_t place = lines.find(part);
  EXPECT_NE(place, std::string::npos) << part;
  return place == std::string::npos ? lines : lines.replace(place, part.size(), other);
}

constexpr char kAnnouncement[] = " 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n";

/// An announcement at a time.
std::string announced(const std::string& time, const std::string& device = "IPD1:") {
  return time + " " + device + " >" + kAnnouncement;
}

const std::string kOpened = "# 0.000100 IPD1: open ok\n";

/// Line 2 to 17: the device is opened, and the iPod is in the Extended Interface mode.
const std::string kConnected = kOpened + announced("0.100000") +
                               "0.100100 IPD1: < 55 04 00 02 00 13 E7\n"
                               "0.100200 IPD1: < 55 03 00 27 00 D6\n"
                               "0.100300 IPD1: > 55 07 00 28 00 00 00 00 01 D0\n"
                               "0.100400 IPD1: < 55 02 0A 02 F2\n"
                               "0.100500 IPD1: > 55 12 0A 03 00 00 1F 40 00 00 7D 00 00 00 AC 44 "
                               "00 00 BB 80 DA\n"
                               "0.100600 IPD1: > 55 03 00 0F 00 EE\n"
                               "0.100700 IPD1: < 55 05 00 10 00 01 09 E1\n"
                               "0.100800 IPD1: > 55 03 00 0F 04 EA\n"
                               "0.100900 IPD1: < 55 05 00 10 04 01 0E D8\n"
                               "0.101000 IPD1: > 55 03 00 0F 0A E4\n"
                               "0.101100 IPD1: < 55 05 00 10 0A 01 02 DE\n"
                               "0.101200 IPD1: > 55 02 00 05 F9\n"
                               "0.101300 IPD1: < 55 04 00 02 00 05 F5\n";

constexpr char kNewRate[] = " IPD1: < 55 0E 0A 04 00 00 BB 80 00 00 00 00 00 00 00 00 A9\n";
const std::string kAskIndex = " IPD1: > 55 03 04 00 1E DB\n";
const std::string kIndex = " IPD1: < 55 07 04 00 1F 00 00 00 02 D4\n";
const std::string kAskShuffle = " IPD1: > 55 03 04 00 2C CD\n";
const std::string kShuffle = " IPD1: < 55 04 04 00 2D 00 CB\n";
const std::string kAskRepeat = " IPD1: > 55 03 04 00 2F CA\n";
const std::string kRepeat = " IPD1: < 55 04 04 00 30 00 C8\n";
const std::string kExit = " IPD1: > 55 02 00 06 F8\n";
const std::string kReset = " IPD1: > 55 03 04 00 16 E3\n";

std::string closedAt(const std::string& time) {
  return time + kExit + "# " + time + " IPD1: close\n";
}

std::string threeAnnouncements(const std::string& device = "IPD1:") {
  return "# 0.000100 " + device + " open ok\n" + announced("0.100000", device) +
         announced("1.200000", device) + announced("2.300000", device);
}

// ---------------------------------------------------------------- sessions without a fault

TEST(Check, FindsNothingInAConnection) {
  EXPECT_THAT(causesIn(kConnected), IsEmpty());
  EXPECT_EQ(diagnosisOf(kConnected).connections, 1u);
}

TEST(Check, FindsNothingInAnEmptyTrace) {
  EXPECT_THAT(causesIn(""), IsEmpty());
  EXPECT_THAT(notesIn(""), ElementsAre("nothing was recorded"));
}

TEST(Check, FindsNothingWhenTheHostEndsDuringARequest) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex + closedAt("2.000100")), IsEmpty());
}

TEST(Check, FindsNothingWhenTheRecordingEndsDuringARequest) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex), IsEmpty());
}

TEST(Check, FindsNothingWhenTheRecordingEndsAfterTheFirstAnnouncement) {
  EXPECT_THAT(causesIn(kOpened + announced("0.100000")), IsEmpty());
}

TEST(Check, FindsNothingInAHostThatSendsSeveralRequestsBeforeItReads) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex + "2.000100" + kAskShuffle + "2.010000" +
                       kIndex + "2.010100" + kAskRepeat + "2.020000" + kShuffle + "2.020100" +
                       kAskIndex + "2.030000" + kRepeat + "2.030100" + kAskShuffle + "2.040000" +
                       kIndex + "2.050000" + kShuffle),
              IsEmpty());
}

TEST(Check, FindsNothingWhereTheAnswerIsRecordedBeforeItsRequest) {
  EXPECT_THAT(causesIn(kConnected + "2.000100" + kIndex + "2.000200" + kAskIndex + "4.000100" +
                       kShuffle + "4.000300" + kAskShuffle + closedAt("6.000000")),
              IsEmpty());
}

TEST(Check, FindsNothingInASerialLineWithSyncBytes) {
  EXPECT_THAT(causesIn("# 0.000100 COM2: open ok\n"
                       "0.100000 COM2: > ff 55 0e 00 13 00 00 00 01 00 00 00 00 00 00 00 00 de\n"
                       "0.100100 COM2: < ff 55 04 00 02 00 13 e7\n"
                       "0.100200 COM2: > ff 55 03 00 0f 00 ee\n"
                       "0.100300 COM2: < ff 55 05 00 10 00 01 09 e1\n"
                       "0.100400 COM2: > ff 55 02 00 05 f9\n"
                       "0.100500 COM2: < ff 55 04 00 02 00 05 f5\n"
                       "2.100500 COM2: > ff 55 03 04 00 1e db\n"
                       "2.100600 COM2: < ff 55 07 04 00 1f 00 00 00 02 d4\n"),
              IsEmpty());
}

TEST(Check, IgnoresAReadThatFailsBecauseTheHostClosesTheDevice) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kExit +
                       "# 2.000100 IPD1: read-failed 31\n# 2.000200 IPD1: close\n"),
              IsEmpty());
  EXPECT_THAT(causesIn(kConnected + "# 2.000100 IPD1: read-failed 995\n# 2.000200 IPD1: close\n"),
              IsEmpty());
}

TEST(Check, FindsNothingInAHostThatOnlyPressesButtons) {
  EXPECT_THAT(causesIn("# 0.000100 COM1: open ok\n"
                       "0.100000 COM1: > FF 55 03 00 01 02 FA\n"
                       "1.200000 COM1: > FF 55 03 02 00 01 FA\n"
                       "2.300000 COM1: > FF 55 03 02 00 00 FB\n"
                       "5.000000 COM1: > FF 55 03 02 00 01 FA\n"),
              IsEmpty());
}

TEST(Check, FindsNothingInAHostThatUsesAnotherLingoThanTheExtendedInterface) {
  EXPECT_THAT(causesIn("# 0.000100 COM1: open ok\n"
                       "0.100000 COM1: > FF 55 0E 00 13 00 00 00 09 00 00 00 00 00 00 00 00 D6\n"
                       "0.100100 COM1: < FF 55 04 00 02 00 13 E7\n"
                       "0.200000 COM1: > FF 55 02 03 08 F3\n"
                       "0.200100 COM1: < FF 55 03 03 09 00 F1\n"
                       "# 9.000000 COM1: close\n"),
              IsEmpty());
}

TEST(Check, FindsNothingInAHostThatUnderstandsLongFrames) {
  std::string text;
  for (int i = 0; i < 300; ++i)
    text += " 78";
  EXPECT_THAT(causesIn(kConnected + "2.000000 IPD1: > 55 07 04 00 20 00 00 00 00 D5\n" +
                       "2.000100 IPD1: < 55 00 01 2F 04 00 21" + text + " 0B\n" + "3.000000" +
                       kAskIndex + "3.000100" + kIndex),
              IsEmpty());
}

TEST(Check, TakesAReadThatIsRecordedAfterTheCloseForNoConnection) {
  const std::string lines =
      kConnected + closedAt("3.000000") + "3.000400 IPD1:" + " < 55 04 00 02 00 06 F4\n";
  EXPECT_EQ(caseOf(trace::parseTrace("# ipodctl-trace 1\n" + lines), {}).sessions.size(), 1U);
  const std::string second = "4.000000" + kAskIndex + "4.000100" + kIndex;
  EXPECT_EQ(caseOf(trace::parseTrace("# ipodctl-trace 1\n" + lines + second), {}).sessions.size(),
            2U);
}

TEST(Check, ReportsASecondConnectionOfTheSameTraceAlone) {
  EXPECT_THAT(causesIn(kConnected + closedAt("3.000000") + "# 4.000000 IPD1: open failed 2\n"),
              ElementsAre("device-missing"));
}

// ---------------------------------------------------------------- opening

TEST(Check, FindsAMissingDevice) {
  EXPECT_THAT(causesIn("# 0.000100 IPD1: open failed 2\n"), ElementsAre("device-missing"));
  EXPECT_THAT(causesIn("# 0.000100 IPD1: open failed 55\n"), ElementsAre("device-missing"));
}

TEST(Check, FindsABusyDevice) {
  EXPECT_THAT(causesIn("# 0.000100 IPD1: open failed 32\n"), ElementsAre("device-busy"));
  EXPECT_THAT(causesIn("# 0.000100 IPD1: open failed 5\n"), ElementsAre("device-busy"));
}

TEST(Check, DoesNotGuessWhyADeviceCannotBeOpened) {
  EXPECT_THAT(causesIn("# 0.000100 IPD1: open failed 8\n"), ElementsAre("unknown"));
}

TEST(Check, NotesADeviceThatOpensLater) {
  const std::string lines = "# 0.000010 IPD1: open failed 2\n" + kConnected;
  EXPECT_THAT(causesIn(lines), IsEmpty());
  EXPECT_THAT(notesIn(lines), Contains(HasSubstr("not be opened at first")));
}

// ---------------------------------------------------------------- the wire

TEST(Check, FindsASilentIpod) {
  const Diagnosis diagnosis = diagnosisOf(threeAnnouncements());
  ASSERT_EQ(diagnosis.findings.size(), 1u);
  EXPECT_EQ(diagnosis.findings[0].cause, "silent");
  EXPECT_THAT(diagnosis.findings[0].lines, ElementsAre(3u, 4u, 5u));
}

TEST(Check, FindsASilentIpodOnASerialLineWithSyncBytes) {
  EXPECT_THAT(causesIn("# 0.000100 COM2: open ok\n"
                       "0.100000 COM2: > FF 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n"
                       "1.200000 COM2: > FF 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n"
                       "2.300000 COM2: > FF 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n"),
              ElementsAre("silent"));
}

TEST(Check, FindsAMissingSyncByteOnASilentSerialLine) {
  EXPECT_THAT(causesIn(threeAnnouncements("COM2:")), ElementsAre("sync-missing"));
}

TEST(Check, FindsAMissingSyncByteWhenTheIpodSendsOne) {
  EXPECT_THAT(causesIn(threeAnnouncements() + "2.300100 IPD1: < FF 55 04 00 02 04 00 F6\n"
                                              "# 4.000000 IPD1: close\n"),
              Contains("sync-missing"));
}

TEST(Check, FindsASyncByteTooManyOnASilentStreamDevice) {
  EXPECT_THAT(causesIn("# 0.000100 IPD1: open ok\n"
                       "0.100000 IPD1: > FF 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n"
                       "1.200000 IPD1: > FF 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n"
                       "2.300000 IPD1: > FF 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n"),
              ElementsAre("sync-extra"));
}

TEST(Check, FindsAWrongSpeedInBytesThatFormNoFrame) {
  EXPECT_THAT(
      causesIn(kOpened + announced("0.100000") + "0.101000 IPD1: < F8 00 80 1C E0 FE 00 9C\n" +
               announced("1.200000") + "1.201000 IPD1: < F8 00 80 1C E0 FE 00 9C\n" +
               announced("2.300000") + "2.301000 IPD1: < F8 00 80 1C E0 FE 00 9C\n"),
      ElementsAre("wrong-speed"));
}

TEST(Check, FindsAWrongSpeedInTheHostsBytesAtTheIpodsEnd) {
  EXPECT_THAT(causesIn("# 0.000100 COM1: open ok\n"
                       "0.100000 COM1: > F8 00 80 1C E0 FE 00 9C\n"
                       "1.200000 COM1: > F8 00 80 1C E0 FE 00 9C\n"
                       "2.300000 COM1: > F8 00 80 1C E0 FE 00 9C\n"),
              ElementsAre("wrong-speed"));
}

TEST(Check, DoesNotTakeTheRestOfAFrameForAWrongSpeed) {
  EXPECT_THAT(causesIn("0.100000 COM1: > 11 00 00 00 00 00 00 00 00 CA\n"), IsEmpty());
}

TEST(Check, FindsASilentIpodWhereOneHasAnsweredWithoutSyncBytes) {
  EXPECT_THAT(causesIn("# 0.000100 COM2: open ok\n"
                       "0.100000 COM2: > 55 03 04 00 1E DB\n"
                       "0.100100 COM2: < 55 07 04 00 1F 00 00 00 02 D4\n"
                       "# 0.200000 COM2: close\n"
                       "# 1.000100 COM2: open ok\n" +
                       announced("1.100000", "COM2:") + announced("2.200000", "COM2:") +
                       announced("3.300000", "COM2:")),
              ElementsAre("silent"));
}

TEST(Check, DoesNotJudgeTheSyncByteByASingleFrame) {
  EXPECT_THAT(causesIn("0.100000 IPD1: < 55 04 00 02 00 05 F5\n"
                       "0.200000 IPD1: > FF 55 03 04 00 1E DB\n"),
              IsEmpty());
}

TEST(Check, FindsAWrongSpeedAlthoughSomeBytesLookLikeADamagedFrame) {
  EXPECT_THAT(
      causesIn(kOpened + announced("0.100000") + "0.101000 IPD1: < F8 00 80 1C E0 FE 00 9C\n" +
               announced("1.200000") + "1.201000 IPD1: < F8 55 03 00 99 00 55\n" +
               announced("2.300000") + "2.301000 IPD1: < F8 00 80 1C E0 FE 00 9C\n"),
      ElementsAre("wrong-speed"));
}

TEST(Check, FindsABadChecksum) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex +
                       "2.000100 IPD1: < 55 07 04 00 1F 00 00 00 03 D4\n"
                       "# 2.000200 IPD1: close\n"),
              ElementsAre("bad-checksum"));
}

TEST(Check, SaysThatTheHostSentADamagedFrame) {
  const std::string lines =
      kConnected + "2.000000 IPD1: > 55 03 04 00 1E 00\n3.000000" + kAskIndex + "3.000100" + kIndex;
  EXPECT_THAT(causesIn(lines), ElementsAre("bad-checksum"));
  EXPECT_EQ(detailIn(lines), "The host sent it. An iPod ignores such a frame.");
}

TEST(Check, FindsABadChecksumInTheFirstAnswer) {
  EXPECT_THAT(causesIn(kOpened + announced("0.100000") +
                       "0.100100 IPD1: < 55 04 00 02 00 13 E6\n# 0.100200 IPD1: close\n"),
              ElementsAre("bad-checksum"));
}

TEST(Check, FindsAFrameWithoutItsEnd) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex + "2.000100 IPD1: < 55 07 04 00 1F\n" +
                       closedAt("4.000000")),
              Contains("bad-checksum"));
}

TEST(Check, TakesACutRecordingForNoFault) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex + "2.000100 IPD1: < 55 07 04 00 1F"),
              IsEmpty());
}

// ---------------------------------------------------------------- the connection

TEST(Check, FindsARefusedIdentification) {
  EXPECT_THAT(causesIn(kOpened + announced("0.100000") + "0.100100 IPD1: < 55 04 00 02 07 13 E0\n" +
                       announced("1.200000") + "1.200100 IPD1: < 55 04 00 02 07 13 E0\n" +
                       announced("2.300000") + "2.300100 IPD1: < 55 04 00 02 07 13 E0\n"),
              ElementsAre("identification-refused"));
}

TEST(Check, FindsAnIpodThatRefusesTheAudioLingo) {
  EXPECT_THAT(causesIn(kOpened + announced("0.100000") + "0.100100 IPD1: < 55 04 00 02 02 13 E5\n" +
                       announced("1.200000") + "1.200100 IPD1: < 55 04 00 02 02 13 E5\n" +
                       announced("2.300000") + "2.300100 IPD1: < 55 04 00 02 02 13 E5\n"),
              ElementsAre("no-digital-audio"));
}

/// An attempt of an iPod that accepts the host and then asks for nothing.
std::string attemptWithoutAudio(const std::string& second) {
  return announced(second + ".100000") + second + ".100100 IPD1: < 55 04 00 02 00 13 E7\n" +
         second + ".100200 IPD1: < 55 03 00 27 00 D6\n" + second +
         ".100300 IPD1: > 55 07 00 28 00 00 00 00 01 D0\n";
}

TEST(Check, FindsAnIpodThatAsksForNoSampleRates) {
  EXPECT_THAT(causesIn(kOpened + attemptWithoutAudio("0") + attemptWithoutAudio("1") +
                       attemptWithoutAudio("2")),
              ElementsAre("no-digital-audio"));
}

TEST(Check, FindsTheStageAtWhichAnIpodFallsSilent) {
  EXPECT_THAT(
      causesIn(kOpened + attemptWithoutAudio("0") + announced("1.200000") + announced("2.300000")),
      ElementsAre("stopped-at-sample-rates"));
}

TEST(Check, FindsThatTheAccessoryInfoIsNeverAsked) {
  EXPECT_THAT(causesIn(kOpened + announced("0.100000") + "0.100100 IPD1: < 55 04 00 02 00 13 E7\n" +
                       announced("1.200000") + announced("2.300000")),
              ElementsAre("stopped-at-accessory-info"));
}

TEST(Check, FindsThatTheHostIsIdentifiedTooLate) {
  EXPECT_THAT(
      causesIn(kOpened + announced("0.000200") + announced("0.050000") + announced("1.100000") +
               "1.100100 IPD1: < 55 04 00 02 00 13 E7\n"
               "1.100200 IPD1: < 55 05 00 10 0A 01 02 DE\n"),
      ElementsAre("stopped-at-identify"));
}

TEST(Check, FindsAModeThatIsRefused) {
  EXPECT_THAT(causesIn(with(kConnected, "< 55 04 00 02 00 05 F5", "< 55 04 00 02 02 05 F3")),
              ElementsAre("stopped-at-mode"));
}

TEST(Check, AcceptsAModeWhoseAcknowledgementIsLost) {
  EXPECT_THAT(causesIn(with(kConnected, "0.101300 IPD1: < 55 04 00 02 00 05 F5\n", "") +
                       "2.000000" + kAskIndex + "2.000100" + kIndex),
              IsEmpty());
}

const std::string kPendingMode =
    with(kConnected, "< 55 04 00 02 00 05 F5", "< 55 08 00 02 06 05 00 00 01 2C BE");

TEST(Check, FindsARequestWhileTheModeIsPending) {
  const std::string lines = kPendingMode + "0.102000" + kReset +
                            "0.102100 IPD1: < 55 06 04 00 01 04 00 16 DB\n"
                            "0.401300 IPD1: < 55 04 00 02 00 05 F5\n";
  EXPECT_THAT(causesIn(lines), ElementsAre("mode-change-pending"));
  EXPECT_THAT(diagnosisOf(lines).findings[0].lines, ElementsAre(15u, 16u, 17u, 19u));
}

TEST(Check, FindsARequestDuringWhichTheModeIsAcknowledged) {
  EXPECT_THAT(causesIn(kPendingMode + "0.401200" + kReset +
                       "0.401300 IPD1: < 55 04 00 02 00 05 F5\n"
                       "0.401400 IPD1: < 55 06 04 00 01 00 00 16 DF\n"),
              ElementsAre("mode-change-pending"));
}

TEST(Check, FindsAModeThatStaysPending) {
  EXPECT_THAT(causesIn(kPendingMode + "# 5.000000 IPD1: close\n"),
              ElementsAre("mode-change-pending"));
}

TEST(Check, NotesAModeThatIsAcknowledgedTwice) {
  const std::string lines = kPendingMode +
                            "0.401300 IPD1: < 55 04 00 02 00 05 F5\n"
                            "1.500000" +
                            kAskIndex + "1.500100" + kIndex;
  EXPECT_THAT(causesIn(lines), IsEmpty());
  EXPECT_THAT(notesIn(lines), Contains(HasSubstr("acknowledged a change of the mode twice")));
}

TEST(Check, NotesAModeThatIsAcknowledgedOnceTooOften) {
  const std::string lines = kConnected + "0.101400 IPD1: < 55 04 00 02 00 05 F5\n";
  EXPECT_THAT(causesIn(lines), IsEmpty());
  EXPECT_THAT(notesIn(lines), Contains(HasSubstr("more often than the host asked")));
}

// ---------------------------------------------------------------- requests and answers

TEST(Check, FindsShiftedAnswers) {
  const std::string lines = kConnected + "2.000000" + kAskIndex + "3.000000" + kAskShuffle +
                            "3.001000" + kIndex + "3.001100" + kAskRepeat + "3.002000" + kShuffle +
                            "3.002100" + kAskIndex + "3.003000" + kRepeat + "3.004000" + kIndex;
  EXPECT_THAT(causesIn(lines), ElementsAre("answers-shifted"));
}

TEST(Check, NotesASingleLateAnswer) {
  const std::string lines = kConnected + "2.000000" + kAskIndex + "2.700000" + kIndex;
  EXPECT_THAT(causesIn(lines), IsEmpty());
  EXPECT_THAT(notesIn(lines), Contains(HasSubstr("took 700 ms")));
}

constexpr char kThreeRecords[] = " IPD1: > 55 0C 04 00 1A 02 00 00 00 00 00 00 00 03 D1\n";
constexpr char kFirstRecord[] = " IPD1: < 55 09 04 00 1B 00 00 00 00 41 00 97\n";
constexpr char kSecondRecord[] = " IPD1: < 55 09 04 00 1B 00 00 00 01 42 00 95\n";

std::string list(const std::string& rest) {
  return kConnected + "2.000000" + kThreeRecords + "2.000100" + kFirstRecord + "2.000200" +
         kSecondRecord + rest;
}

TEST(Check, FindsAShortList) {
  EXPECT_THAT(causesIn(list("3.000300" + kAskIndex + "3.000400" + kIndex)),
              ElementsAre("list-short"));
}

TEST(Check, DoesNotReportAListThatTheHostDidNotAwait) {
  EXPECT_THAT(causesIn(list("2.000300" + kAskIndex + "2.000400" + kIndex)), IsEmpty());
  EXPECT_THAT(causesIn(list("")), IsEmpty());
}

constexpr char kCountOfThree[] =
    "2.000000 IPD1: > 55 04 04 00 18 02 DE\n"
    "2.000100 IPD1: < 55 07 04 00 19 00 00 00 03 D9\n";
constexpr char kAskSecond[] = " IPD1: > 55 0C 04 00 1A 02 00 00 00 01 00 00 00 01 D2\n";
constexpr char kAskFourth[] = " IPD1: > 55 0C 04 00 1A 02 00 00 00 03 00 00 00 01 D0\n";
constexpr char kRecordRefused[] = " IPD1: < 55 06 04 00 01 04 00 1A D7\n";

TEST(Check, FindsAListThatIsRefusedAlthoughItWasCounted) {
  const std::string lines = kConnected + kCountOfThree + "2.000200" + kAskSecond + "2.000300" +
                            kRecordRefused + "2.000400" + kAskIndex + "2.000500" + kIndex;
  EXPECT_THAT(causesIn(lines), ElementsAre("list-short"));
  EXPECT_EQ(detailIn(lines),
            "The host asked for 1 record, and the iPod refused with status 4, although it had "
            "counted it.");
}

TEST(Check, AcceptsARefusalOfRecordsThatWereNotCounted) {
  EXPECT_THAT(
      causesIn(kConnected + kCountOfThree + "2.000200" + kAskFourth + "2.000300" + kRecordRefused),
      IsEmpty());
  EXPECT_THAT(causesIn(kConnected + kCountOfThree + "2.000110" + kReset +
                       "2.000120 IPD1: < 55 06 04 00 01 00 00 16 DF\n2.000200" + kAskSecond +
                       "2.000300" + kRecordRefused),
              IsEmpty());
}

TEST(Check, FindsRequestsThatAreAnsweredByTheSurplusOfAList) {
  const std::string lines = kConnected + "2.000000" + kAskSecond + "2.000100" + kSecondRecord +
                            "2.000100" + kFirstRecord + "2.000100" + kFirstRecord + "2.000200" +
                            kAskIndex + "2.000300" + kAskShuffle + closedAt("2.000400");
  EXPECT_THAT(causesIn(lines), ElementsAre("answers-shifted"));
  EXPECT_EQ(detailIn(lines), "The iPod sent more records than the host asked for.");
}

TEST(Check, FindsNothingInASurplusOfRecordsThatTheHostIgnores) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskSecond + "2.000100" + kSecondRecord +
                       "2.000100" + kFirstRecord + "2.000200" + kAskIndex + "2.000300" + kIndex +
                       "2.000400" + kAskShuffle + "2.000500" + kShuffle + closedAt("2.000600")),
              IsEmpty());
}

TEST(Check, FindsAnotherMessageInPlaceOfARecord) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskSecond +
                       "2.000100 IPD1: < 55 09 04 00 1A 00 00 00 01 42 00 96\n2.000200" +
                       kAskFourth + "2.000300" + kFirstRecord),
              ElementsAre("unknown"));
}

constexpr char kPlay[] = " IPD1: > 55 07 04 00 28 00 00 00 00 CD\n";
constexpr char kPlayPends[] = " IPD1: < 55 0A 04 00 01 06 00 28 00 00 03 E8 D8\n";
constexpr char kPlayRefused[] = " IPD1: < 55 06 04 00 01 04 00 28 C9\n";

TEST(Check, FindsARequestThatStaysPending) {
  const std::string pending = kConnected + "2.000000" + kPlay + "2.000100" + kPlayPends;
  const std::string done = "2.500000 IPD1: < 55 06 04 00 01 00 00 28 CD\n";
  const std::string rest = "4.000000" + kAskIndex + "4.000100" + kIndex;
  EXPECT_THAT(causesIn(pending + rest), ElementsAre("unknown"));
  EXPECT_THAT(causesIn(pending + done + rest), IsEmpty());
}

TEST(Check, FindsARefusalWithoutAReason) {
  const std::string lines =
      kConnected + "2.000000" + kReset + "2.000100 IPD1: < 55 06 04 00 01 04 00 16 DB\n";
  EXPECT_THAT(causesIn(lines), ElementsAre("unknown"));
  EXPECT_EQ(detailIn(lines), "The iPod refused a request with status 4 without a reason.");
}

TEST(Check, FindsARefusalToPlayACountedTrackOnly) {
  const std::string counted =
      "2.000000 IPD1: > 55 04 04 00 18 05 DB\n"
      "2.000100 IPD1: < 55 07 04 00 19 00 00 00 01 DB\n";
  const std::string none =
      "2.000000 IPD1: > 55 04 04 00 18 05 DB\n"
      "2.000100 IPD1: < 55 07 04 00 19 00 00 00 00 DC\n";
  const std::string refused = std::string("2.000200") + kPlay + "2.000300" + kPlayRefused;
  EXPECT_THAT(causesIn(kConnected + counted + refused), ElementsAre("unknown"));
  EXPECT_THAT(causesIn(kConnected + none + refused), IsEmpty());
  EXPECT_THAT(causesIn(kConnected + refused), IsEmpty());
}

TEST(Check, FindsARefusalToCountACategoryThatEachIpodHas) {
  const auto refused = [](const std::string& request) {
    return kConnected + "2.000000 IPD1: > " + request +
           "\n2.000100 IPD1: < 55 06 04 00 01 01 00 18 DC\n";
  };
  EXPECT_THAT(causesIn(refused("55 04 04 00 18 02 DE")), ElementsAre("unknown"));
  EXPECT_THAT(causesIn(refused("55 04 04 00 18 08 D8")), IsEmpty());
}

TEST(Check, AcceptsARefusalOutsideTheMode) {
  const std::string refused = "3.000000" + kReset + "3.000100 IPD1: < 55 06 04 00 01 04 00 16 DB\n";
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kExit + "2.000100 IPD1: < 55 04 00 02 00 06 F4\n" +
                       refused),
              IsEmpty());
}

/// Returns the causes, which must take at most ten seconds of the processor.
Names causesFoundSoon(const std::string& lines) {
  const std::clock_t begin = std::clock();
  Names causes = causesIn(lines);
  EXPECT_LT((std::clock() - begin) / CLOCKS_PER_SEC, 10);
  return causes;
}

TEST(Check, NeedsLittleTimeForManyRequestsWithoutAnswers) {
  std::string lines = kConnected;
  for (int second = 10; second < 80000; ++second) {
    lines += std::to_string(second) + ".0" + kAskIndex;
    if (second % 3 == 0) lines += std::to_string(second) + ".5" + kShuffle;
  }
  EXPECT_THAT(causesFoundSoon(lines), ElementsAre("unknown"));
}

TEST(Check, NeedsLittleTimeForManyRatesWithoutAHost) {
  std::string lines;
  for (int second = 10; second < 120000; ++second)
    lines += std::to_string(second) + ".0" + kNewRate;
  EXPECT_THAT(causesFoundSoon(lines), ElementsAre("rate-not-acknowledged"));
}

TEST(Check, NeedsLittleTimeForManyPendingModes) {
  std::string lines = kConnected;
  for (int second = 10; second < 80000; second += 2) {
    const std::string time = std::to_string(second);
    lines += time + ".0 IPD1: > 55 02 00 05 F9\n" + time + ".1 IPD1: < 55 04 00 02 06 05 EF\n" +
             time + ".2" + kAskIndex;
  }
  EXPECT_THAT(causesFoundSoon(lines), Contains("mode-change-pending"));
}

TEST(Check, FindsATextThatIsTooLong) {
  std::string text;
  for (int i = 0; i < 300; ++i)
    text += " 78";
  // 303 bytes after the length: 00 01 2F, lingo, command, 300 times x. Their sum is A0 + 55 = F5.
  EXPECT_THAT(causesIn(kConnected + "2.000000 IPD1: > 55 07 04 00 20 00 00 00 00 D5\n" +
                       "2.000100 IPD1: < 55 00 01 2F 04 00 21" + text + " 0B\n" +
                       "# 2.000200 IPD1: close\n"),
              ElementsAre("text-too-long"));
}

TEST(Check, DoesNotGuessWhyOneRequestIsNotAnswered) {
  const std::string lines = kConnected + "2.000000" + kAskIndex + "3.000000" + kAskShuffle +
                            "3.000100" + kShuffle + closedAt("5.000000");
  EXPECT_THAT(causesIn(lines), ElementsAre("unknown"));
  EXPECT_THAT(diagnosisOf(lines).findings[0].lines, ElementsAre(17u));
}

TEST(Check, DoesNotGuessWhyTheLastRequestIsNotAnswered) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex + closedAt("5.000000")),
              ElementsAre("unknown"));
}

TEST(Check, ExpectsNoAnswersOutsideTheMode) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kExit +
                       "2.000100 IPD1: < 55 04 00 02 00 06 F4\n3.000000" + kAskIndex +
                       "5.000000 IPD1: > 55 02 00 03 FB\n"
                       "5.000100 IPD1: < 55 03 00 04 00 F9\n"),
              IsEmpty());
}

TEST(Check, TakesAnUnansweredQuestionForTheScreenForNoFault) {
  EXPECT_THAT(causesIn(kConnected + "2.000000 IPD1: > 55 03 04 00 39 C0\n3.000000" + kAskIndex +
                       "3.000100" + kIndex),
              IsEmpty());
}

/// The host asks for the size of the screen and, 1.1 s later, for the mode.
std::string withLimits(const std::string& rest) {
  return with(kConnected, "0.101200 IPD1: > 55 02 00 05 F9\n",
              "0.101150 IPD1: > 55 03 04 00 39 C0\n" + rest);
}

constexpr char kLaterMode[] = "1.201200 IPD1: > 55 02 00 05 F9\n";

TEST(Check, NotesALogoForWhichTheSizeOfTheScreenArrivedTooLate) {
  const std::string late = "1.301300 IPD1: < 55 08 04 00 3A 00 40 00 40 02 38\n";
  const std::string lines = with(withLimits(kLaterMode), "0.101300 IPD1: <", "1.201300 IPD1: <");
  EXPECT_THAT(notesIn(lines + late), Contains(HasSubstr("size of its screen too late")));
}

TEST(Check, NotesALogoOfWhichAPacketWasNotAcknowledged) {
  const std::string lines = withLimits(
      "0.101160 IPD1: < 55 08 04 00 3A 00 40 00 40 02 38\n"
      "0.101170 IPD1: > 55 0E 04 00 32 00 00 02 00 01 00 01 00 00 00 02 B6\n"
      "1.101180 IPD1: > 55 05 04 00 32 00 01 C4\n"
      "1.101190 IPD1: < 55 06 04 00 01 00 00 32 C3\n" +
      std::string(kLaterMode));
  EXPECT_THAT(notesIn(with(lines, "0.101300 IPD1: <", "1.201300 IPD1: <")),
              Contains(HasSubstr("did not acknowledge each of its packets")));
}

TEST(Check, NotesAModeThatIsAcknowledgedLate) {
  const std::string lines = with(kConnected, "0.101300 IPD1: <", "1.901300 IPD1: <");
  EXPECT_THAT(notesIn(lines), Contains(HasSubstr("took 1800 ms")));
  EXPECT_THAT(notesIn(with(kConnected, "0.101300 IPD1: <", "0.801300 IPD1: <")),
              Not(Contains(HasSubstr("is slow"))));
}

// ---------------------------------------------------------------- the sample rate

constexpr char kRateAccepted[] = " IPD1: > 55 04 0A 00 00 04 EE\n";
const std::string kStarted = "# 0.200000 audio StartIpodAudioPlay 44100 2 16\n";

TEST(Check, FindsARateThatTheHostDoesNotAcknowledge) {
  EXPECT_THAT(
      causesIn(kConnected + "2.000000" + kNewRate + "4.000000" + kAskIndex + "4.000100" + kIndex),
      ElementsAre("rate-not-acknowledged"));
}

TEST(Check, ReportsOnlyTheConnectionThatFailed) {
  EXPECT_THAT(
      causesIn(kOpened + attemptWithoutAudio("0") + attemptWithoutAudio("1") +
               attemptWithoutAudio("2") + "2.400000" + kNewRate + "# 6.000000 IPD1: close\n"),
      ElementsAre("stopped-at-sample-rates"));
}

TEST(Check, FindsARateThatTheAudioLibraryDoesNotFollow) {
  EXPECT_THAT(causesIn(kConnected + kStarted + "2.000000" + kNewRate + "2.000100" + kRateAccepted +
                       "4.000000" + kAskIndex + "4.000100" + kIndex),
              ElementsAre("rate-not-followed"));
}

TEST(Check, AcceptsARateThatIsFollowed) {
  EXPECT_THAT(causesIn(kConnected + kStarted + "2.000000" + kNewRate + "2.000100" + kRateAccepted +
                       "# 2.000200 audio SelectFrequency 48000\n4.000000" + kAskIndex + "4.000100" +
                       kIndex),
              IsEmpty());
}

TEST(Check, DoesNotGuessForWhichOfTwoIpodsTheAudioLibraryPlays) {
  const std::string other =
      "# 0.000050 IPD2: open ok\n"
      "0.000060 IPD2: < 55 0E 0A 04 00 00 BB 80 00 00 00 00 00 00 00 00 A9\n"
      "0.000070 IPD2: > 55 04 0A 00 00 04 EE\n";
  const std::string first =
      "0.150000 IPD1: < 55 0E 0A 04 00 00 AC 44 00 00 00 00 00 00 00 00 F4\n"
      "0.150100 IPD1: > 55 04 0A 00 00 04 EE\n";
  const std::string rest = kStarted + "4.000000" + kAskIndex + "4.000100" + kIndex;
  EXPECT_THAT(causesIn(other + kConnected + first + rest), IsEmpty());
  EXPECT_THAT(causesIn(other + kConnected + rest), ElementsAre("rate-not-followed"));
}

TEST(Check, JudgesTheRateOfAnIpodThatAnotherOneFollows) {
  EXPECT_THAT(
      causesIn(kConnected + kStarted + "2.000000" + kNewRate + "2.000100" + kRateAccepted +
               "# 3.500000 IPD1: close\n# 4.000000 IPD2: open ok\n4.200000 IPD2: < 55 0E 0A 04 00 "
               "00 AC 44 00 00 00 00 00 00 00 00 F4\n4.200100 IPD2: > 55 04 0A 00 00 04 EE\n"),
      ElementsAre("rate-not-followed"));
}

TEST(Check, SaysNothingAboutAudioThatWasNotRecorded) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kNewRate + "2.000100" + kRateAccepted +
                       "4.000000" + kAskIndex + "4.000100" + kIndex),
              IsEmpty());
}

// ---------------------------------------------------------------- the end

TEST(Check, FindsAPulledCable) {
  EXPECT_THAT(causesIn(kConnected + "# 2.000000 IPD1: read-failed 31\n# 2.000100 IPD1: close\n"),
              ElementsAre("lost-after-connected"));
}

TEST(Check, DoesNotTakeAFrameThatThePulledCableCutForADamagedOne) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex +
                       "2.000100 IPD1: < 55 07 04 00\n# 2.001000 IPD1: read-failed 31\n"
                       "# 9.000000 IPD1: close\n"),
              ElementsAre("lost-after-connected"));
}

TEST(Check, FindsASilentIpodBeforeTheCableIsPulled) {
  EXPECT_THAT(causesIn(threeAnnouncements() + "# 4.000000 IPD1: read-failed 31\n"),
              ElementsAre("silent"));
}

TEST(Check, NamesTheStageAfterWhichTheIpodIsLost) {
  EXPECT_THAT(causesIn(kOpened + announced("0.100000") +
                       "0.100100 IPD1: < 55 04 00 02 00 13 E7\n# 0.100200 IPD1: read-failed 31\n"),
              ElementsAre("lost-after-identify"));
  EXPECT_THAT(causesIn(kConnected + "2.000000 IPD1: > 55 07 04 00 28 00 00 00 00 CD\n"
                                    "2.000100 IPD1: < 55 06 04 00 01 00 00 28 CD\n"
                                    "# 2.000200 IPD1: write-failed 31\n"),
              ElementsAre("lost-after-play"));
}

TEST(Check, FindsAnIpodThatFallsSilent) {
  EXPECT_THAT(causesIn(kConnected + "2.000000" + kAskIndex + "3.000000" + kAskShuffle +
                       closedAt("5.000000")),
              ElementsAre("lost-after-connected"));
}

TEST(Check, ConcludesNothingFromLinesThatTheRecorderLost) {
  const std::string text = "# ipodctl-trace 1\n" + kConnected + "2.000000" + kAskIndex +
                           "# 12 lines are missing here: the file was too slow\n4.000000" +
                           kAskShuffle + "4.000100" + kShuffle;
  const std::vector<size_t> gaps = gapsIn(text);
  EXPECT_THAT(gaps, ElementsAre(18u));
  EXPECT_THAT(diagnose(trace::parseTrace(text), gaps).findings, IsEmpty());
  EXPECT_THAT(diagnose(trace::parseTrace(text)).findings, Not(IsEmpty()));
  EXPECT_THAT(gapsIn("# a\n# 3 lines were lost: the file could not be written, error 112\n# 3\n"),
              ElementsAre(2u));
}

// ---------------------------------------------------------------- what is printed

TEST(Check, PrintsTheCauseItsLinesAndWhatToTry) {
  const std::string text = textOf(diagnosisOf("# 0.000100 IPD1: open failed 2\n"));
  EXPECT_THAT(text, HasSubstr("cause: device-missing\n  evidence: line 2\n"));
  EXPECT_THAT(text, HasSubstr("\n  try: Plug in the iPod"));
}

TEST(Check, ListsEveryCauseAndStage) {
  const std::string help = causesHelp();
  for (const char* id : {"device-missing",
                         "device-busy",
                         "silent",
                         "wrong-speed",
                         "sync-missing",
                         "sync-extra",
                         "bad-checksum",
                         "identification-refused",
                         "no-digital-audio",
                         "stopped-at-STAGE",
                         "mode-change-pending",
                         "answers-shifted",
                         "text-too-long",
                         "rate-not-acknowledged",
                         "rate-not-followed",
                         "lost-after-STAGE",
                         "list-short",
                         "unknown",
                         "stopped-at-versions",
                         "lost-after-play"}) {
    EXPECT_THAT(help, HasSubstr(id));
  }
}

}  // namespace
}  // namespace iaptrace::checking::test
