#include "iaptrace/redaction.h"

#include <gtest/gtest.h>

#include "typed_trace.h"

namespace iaptrace::redaction_test {
namespace {

/// Returns the lines of a redacted trace, without its first one. It must not change again.
std::string redactedLines(const std::string& lines) {
  const std::string text = redacted(traceText(lines));
  EXPECT_EQ(redacted(text), text);
  return text.substr(traceText("").size());
}

TEST(Redaction, ReplacesANameAndCorrectsTheChecksum) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 06 00 08 50 6F 64 00 CF\n"),
            "0.1 IPD1: < 55 06 00 08 78 78 78 00 8A\n");
}

TEST(Redaction, ReplacesSerialNumbersTitlesAndRecords) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 05 00 0C 38 4B 00 6C\n"),
            "0.1 IPD1: < 55 05 00 0C 78 78 00 FF\n");
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 06 04 00 21 46 75 00 1A\n"),
            "0.1 IPD1: < 55 06 04 00 21 78 78 00 E5\n");
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 09 04 00 1B 00 00 00 02 4A 00 8C\n"),
            "0.1 IPD1: < 55 09 04 00 1B 00 00 00 02 78 00 5E\n");
}

TEST(Redaction, KeepsTheModelAndNumbers) {
  const std::string lines =
      "0.1 IPD1: < 55 09 00 0E 00 0B 00 10 4D 42 00 3F\n"
      "0.2 IPD1: < 55 07 04 00 19 00 00 00 53 89\n"
      "# 0.3 IPD1: read-failed 31\n# my own comment\n0.4 IPD1: > 55 02 00 07 F7\n";
  EXPECT_EQ(redactedLines(lines), lines);
}

TEST(Redaction, KeepsUtf8AsWellFormedOrBrokenAsItWas) {
  // Latin-1, beyond Latin-1, three bytes, four bytes; then a byte of Latin-1 and a cut character.
  EXPECT_EQ(
      redactedLines("0.1 IPD1: < 55 12 04 00 21 C3 BC C5 82 E3 81 8B F0 9F 98 80 E9 41 E3 00 60\n"),
      "0.1 IPD1: < 55 12 04 00 21 C3 A9 C4 81 E3 81 82 F0 9F 8E B5 E0 78 E0 00 28\n");
}

TEST(Redaction, WorksOnAFrameOfSeveralLines) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 06 00 08 50\n0.2 IPD1: > 55 02 00 03 FB\n"
                          "0.3 IPD1: < 6f 64\n0.4 IPD1: < 00 cf\n"),
            "0.1 IPD1: < 55 06 00 08 78\n0.2 IPD1: > 55 02 00 03 FB\n"
            "0.3 IPD1: < 78 78\n0.4 IPD1: < 00 8a\n");
}

TEST(Redaction, WorksOnLongFramesAndAfterSyncBytes) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 00 00 06 00 08 50 6F 64 00 CF\n"),
            "0.1 IPD1: < 55 00 00 06 00 08 78 78 78 00 8A\n");
  EXPECT_EQ(redactedLines("0.1 IPD1: < 00 FF 55 06 00 08 50 6F 64 00 CF FF\n"),
            "0.1 IPD1: < 00 FF 55 06 00 08 78 78 78 00 8A FF\n");
}

TEST(Redaction, KeepsAWrongChecksumAsWrongAsItWas) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 06 00 08 50 6F 64 00 D0\n"),
            "0.1 IPD1: < 55 06 00 08 78 78 78 00 8B\n");
}

TEST(Redaction, ReplacesTextsInDamage) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 20 00 08 50 6F 64 00\n"),
            "0.1 IPD1: < 55 20 00 08 78 78 78 00\n");
  EXPECT_EQ(redactedLines("0.1 IPD1: < 13 4A 75 6E 6F 00\n"), "0.1 IPD1: < 13 78 78 78 78 00\n");
}

TEST(Redaction, KeepsStartBytesInDamage) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 13 4A 75 6E 55 00\n"), "0.1 IPD1: < 13 78 78 78 55 00\n");
}

TEST(Redaction, ReplacesWhatLooksLikeATextInAnUnknownCommand) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 07 00 77 01 4A 75 6E 6F E5\n"),
            "0.1 IPD1: < 55 07 00 77 01 78 78 78 78 A1\n");
}

TEST(Redaction, KeepsATraceThatEndsInALine) {
  EXPECT_EQ(redactedLines("0.1 IPD1: < 55 06 00 08 50 6F 6"), "0.1 IPD1: < 55 06 00 08 78 78 6");
}

TEST(Redaction, KeepsLineEndsOfWindows) {
  EXPECT_EQ(redacted("# ipodctl-trace 1\r\n\r\n0.1 IPD1: < 55 06 00 08 50 6F 64 00 CF\r\n"),
            "# ipodctl-trace 1\r\n\r\n0.1 IPD1: < 55 06 00 08 78 78 78 00 8A\r\n");
}

}  // namespace
}  // namespace iaptrace::redaction_test
