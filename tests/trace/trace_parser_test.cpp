#include "trace/trace_parser.h"

#include <gmock/gmock.h>

namespace trace {
namespace {

using std::chrono::seconds;
using testing::HasSubstr;

std::string refusalOf(const std::string& text) {
  try {
    parseTrace(text);
  } catch (const ParseError& error) {
    return error.what();
  }
  return "read";
}

Trace parsed(const std::string& lines) { return parseTrace("# ipodctl-trace 1\n" + lines); }

TEST(TraceParser, ReadsWhatTheHostReadAndWrote) {
  const Trace records = parsed("0.000001 IPD1: > 55 02\n12.5 COM1: < fF 00\n");
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].kind, Record::Kind::kWritten);
  EXPECT_EQ(records[0].at, Time(1));
  EXPECT_EQ(records[0].device, "IPD1:");
  EXPECT_EQ(records[0].bytes, (std::vector<uint8_t>{0x55, 0x02}));
  EXPECT_EQ(records[0].line, 2u);
  EXPECT_EQ(records[1].kind, Record::Kind::kRead);
  EXPECT_EQ(records[1].at, Time(12500000));
  EXPECT_EQ(records[1].bytes, (std::vector<uint8_t>{0xFF, 0x00}));
  EXPECT_EQ(devicesOf(records), (std::vector<std::string>{"IPD1:", "COM1:"}));
}

TEST(TraceParser, ReadsEveryEvent) {
  const Trace records = parsed(
      "# 1.0 IPD1: open ok\n# 1.0 IPD1: open failed 2\n# 1.0 IPD1: close\n"
      "# 1.0 IPD1: read-failed 31\n# 1.0 IPD1: write-failed 4294967295\n"
      "# 1.0 audio SelectFrequency 48000\n");
  ASSERT_EQ(records.size(), 6u);
  EXPECT_EQ(records[0].kind, Record::Kind::kOpened);
  EXPECT_EQ(records[1].kind, Record::Kind::kOpenFailed);
  EXPECT_EQ(records[1].code, 2u);
  EXPECT_EQ(records[2].kind, Record::Kind::kClosed);
  EXPECT_EQ(records[3].kind, Record::Kind::kReadFailed);
  EXPECT_EQ(records[3].code, 31u);
  EXPECT_EQ(records[4].kind, Record::Kind::kWriteFailed);
  EXPECT_EQ(records[4].code, 4294967295u);
  EXPECT_EQ(records[5].kind, Record::Kind::kAudio);
  EXPECT_EQ(records[5].call, "SelectFrequency 48000");
  EXPECT_EQ(records[5].device, "");
}

TEST(TraceParser, IgnoresCommentsAndEmptyLines) {
  EXPECT_TRUE(parsed("# of my car\n#\n#0.1 IPD1: close\n\n# 0.1 IPD1: open maybe\n").empty());
}

TEST(TraceParser, AcceptsLineEndsOfWindows) {
  const Trace records =
      parseTrace("# ipodctl-trace 1\r\n0.1 IPD1: < 55 02\r\n# 0.2 IPD1: close\r\n");
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].bytes, (std::vector<uint8_t>{0x55, 0x02}));
  EXPECT_EQ(records[1].kind, Record::Kind::kClosed);
}

TEST(TraceParser, AcceptsATraceThatEndsAnywhere) {
  const std::string line = "0.100000 IPD1: < 55 02 AB";
  for (size_t length = 0; length <= line.size(); ++length)
    EXPECT_NO_THROW(parsed(line.substr(0, length))) << length;
  EXPECT_EQ(parsed("0.100000 IPD1: < 55 0").at(0).bytes, (std::vector<uint8_t>{0x55}));
  EXPECT_EQ(parsed("0.100000 IPD1: < 55 02").at(0).bytes, (std::vector<uint8_t>{0x55, 0x02}));
}

TEST(TraceParser, TakesATimeThatGoesBackAsTheTimeBefore) {
  const Trace records = parsed("2.0 IPD1: < 55\n1.0 IPD1: < 02\n3.0 IPD1: < 00\n");
  EXPECT_EQ(records[1].at, seconds(2));
  EXPECT_EQ(records[2].at, seconds(3));
}

TEST(TraceParser, NamesTheLineThatIsWrongAndWhatToDo) {
  EXPECT_EQ(refusalOf("# ipodctl-trace 1\n0.1 IPD1: < 5\n"),
            "line 2: a byte is two hexadecimal digits, not \"5\". Correct or remove the line.");
  EXPECT_THAT(refusalOf("# ipodctl-trace 1\n\n0.1 IPD1: = 55\n"),
              HasSubstr("line 3: neither data"));
  EXPECT_THAT(refusalOf("# ipodctl-trace 1\n-1.0 IPD1: < 55\n"), HasSubstr("line 2: neither data"));
  EXPECT_THAT(refusalOf("# ipodctl-trace 1\n1 IPD1: < 55\n"), HasSubstr("line 2: neither data"));
  EXPECT_THAT(refusalOf("# ipodctl-trace 1\n0.1 IPD1: < 55  02\n"), HasSubstr("not \"\""));
  EXPECT_THAT(refusalOf("# ipodctl-trace 1\n0.1 IPD1: < +5\n"), HasSubstr("not \"+5\""));
}

TEST(TraceParser, RefusesAFileThatIsNotATrace) {
  EXPECT_EQ(refusalOf(""), "the file is empty. Record the session again.");
  EXPECT_EQ(
      refusalOf("# ipodctl-trace 2\n"),
      "line 1: a trace begins with \"# ipodctl-trace 1\", not with \"# ipodctl-trace 2\". Name a "
      "file that a recorder wrote.");
  EXPECT_THAT(refusalOf("\033[2Jred\n"), HasSubstr("\"?[2Jred\""));
}

TEST(TraceParser, RefusesMoreDevicesThanACarHas) {
  std::string text = "# ipodctl-trace 1\n# 0.1 audio StartIpodAudioPlay 44100 2 16\n";
  for (int i = 0; i < 100; ++i)
    text += "0.1 D" + std::to_string(i) + " < 55\n";
  EXPECT_EQ(parseTrace(text).size(), 101u);
  EXPECT_EQ(refusalOf(text + "0.1 E < 55\n"),
            "line 103: there are more than 100 devices. Cut the trace into parts.");
}

TEST(TraceParser, NamesTheFileThatItCannotRead) {
  EXPECT_THROW(readTrace("/nonexistent/file"), ParseError);
  try {
    readTrace("/");
    FAIL();
  } catch (const ParseError& error) {
    EXPECT_STREQ(error.what(), "/ is a folder. Name a trace in it.");
  }
}

}  // namespace
}  // namespace trace
