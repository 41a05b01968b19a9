// The wire while it is recorded: messages, findings and the trace.
#include <desk.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/wire_monitor.h"
#include "trace/trace_parser.h"

namespace serving::wire {
namespace {

using nlohmann::json;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

/// RequestIpodName, and the reply "A".
constexpr char kAsked[] = "0.100000 IPD1: > 55 02 00 07 F7\n";
constexpr char kReplied[] = "0.120000 IPD1: < 55 04 00 08 41 00 B3\n";

/// Returns the records of lines, of which the first one has the number.
trace::Trace records(const std::string& lines, size_t first) {
  trace::Trace all = trace::parseTrace("# ipodctl-trace 1\n" + lines);
  for (trace::Record& record : all)
    record.line += first - 2;
  return all;
}

/// Returns the texts of a wire event's messages.
std::vector<std::string> texts(const std::string& document) {
  std::vector<std::string> all;
  if (document.empty()) return all;
  const json parsed = json::parse(document);
  for (const json& message : parsed["messages"])
    all.push_back(message["direction"].dump() + " " + message["text"].get<std::string>());
  return all;
}

TEST(GrowingTrace, GivesEachMessageOnce) {
  tool::GrowingTrace growing;
  EXPECT_THAT(texts(growing.add(records(kAsked, 4))), ElementsAre("\">\" General RequestiPodName"));
  EXPECT_THAT(texts(growing.add(records(kReplied, 5))),
              ElementsAre(StartsWith("\"<\" General ReturniPodName")));
  EXPECT_THAT(growing.add({}), IsEmpty());
}

TEST(GrowingTrace, GivesAMessageWhenItIsWhole) {
  tool::GrowingTrace growing;
  growing.add(records(kAsked, 4));
  EXPECT_THAT(growing.add(records("0.110000 IPD1: < 55 04 00\n", 5)), IsEmpty());
  const json message =
      json::parse(growing.add(records("0.120000 IPD1: < 08 41 00 B3\n", 6)))["messages"][0];
  EXPECT_EQ(message["raw"], "55 04 00 08 41 00 B3");
  EXPECT_EQ(message["line"], 6);
  EXPECT_EQ(message["time"], 0.12);
  EXPECT_EQ(message["notes"], json::array());
}

TEST(GrowingTrace, GivesARequestAgainWhenItHasNoAnswer) {
  tool::GrowingTrace growing;
  EXPECT_THAT(growing.add(records(kAsked, 4)), HasSubstr(R"("notes":[])"));
  EXPECT_THAT(growing.add(records("# 1.200000 audio SelectFrequency 1\n", 5)),
              testing::Not(HasSubstr("no answer")));
  EXPECT_THAT(growing.add(records("# 1.400000 audio SelectFrequency 1\n", 6)),
              AllOf(HasSubstr(R"("notes":["no answer"])"), HasSubstr(R"("line":4)")));
  EXPECT_THAT(growing.add(records("# 1.500000 audio SelectFrequency 1\n", 7)),
              testing::Not(HasSubstr("no answer")));
}

TEST(GrowingTrace, SaysWhatIsUnusual) {
  tool::GrowingTrace growing;
  const json message = json::parse(
      growing.add(records("0.120000 IPD1: < 55 04 00 08 41 00 B4\n", 4)))["messages"][0];
  EXPECT_THAT(message["notes"].dump(), HasSubstr("bad checksum"));
}

TEST(GrowingTrace, GivesEachMessageOnceWhenItForgetsTheOldest) {
  tool::GrowingTrace growing;
  constexpr size_t kLines = 18;
  std::string nine;
  for (size_t i = 0; i < kLines / 2; ++i)
    nine += std::string(kAsked) + kReplied;
  size_t given = 0;
  for (size_t batch = 0; batch < 100; ++batch)
    given += texts(growing.add(records(nine, 4 + batch * kLines))).size();
  EXPECT_EQ(given, 100 * kLines);
}

class ConnectionCheckTest : public testing::Test {
 protected:
  static constexpr char kBadFrame[] =
      "0.000000 IPD1: > 55 02 00 07 F7\n0.120000 IPD1: < 55 04 00 08 41 00 B4\n";
  const std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
  tool::ConnectionCheck check;
};

TEST_F(ConnectionCheckTest, ReportsAFindingOnceWhenItLasts) {
  check.add(records(kBadFrame, 4));
  EXPECT_THAT(check.newFindings(begin), IsEmpty());
  const std::vector<std::string> findings = check.newFindings(begin + seconds(3));
  ASSERT_FALSE(findings.empty());
  EXPECT_THAT(findings,
              testing::Contains(AllOf(HasSubstr(R"("cause":"bad-checksum")"),
                                      HasSubstr(R"("lines":[5])"), HasSubstr(R"("try":")"))));
  EXPECT_THAT(check.newFindings(begin + seconds(6)), IsEmpty());
}

/// Returns the findings of some seconds.
std::string findingsOf(tool::ConnectionCheck& check, std::chrono::steady_clock::time_point begin) {
  std::string all;
  for (int second = 0; second < 8; ++second) {
    for (const std::string& finding : check.newFindings(begin + seconds(second)))
      all += finding;
  }
  return all;
}

TEST_F(ConnectionCheckTest, ReportsADeviceThatStaysMissing) {
  check.add(records("# 0.000000 IPD1: open failed 2\n", 4));
  EXPECT_THAT(findingsOf(check, begin), HasSubstr("device-missing"));
}

TEST_F(ConnectionCheckTest, DoesNotReportWhatIsOverWithinTwoSeconds) {
  check.add(records("# 0.000000 IPD1: open failed 2\n", 4));
  EXPECT_THAT(check.newFindings(begin), IsEmpty());
  EXPECT_THAT(check.newFindings(begin + milliseconds(1900)), IsEmpty());
  check.add(records("# 1.950000 IPD1: open ok\n", 5));
  EXPECT_THAT(findingsOf(check, begin + seconds(3)), testing::Not(HasSubstr("device-missing")));
}

TEST_F(ConnectionCheckTest, BeginsAgainWithAnOpen) {
  check.add(records(kBadFrame, 4));
  check.newFindings(begin);
  check.add(records("# 1.000000 IPD1: open ok\n", 6));
  for (int second = 1; second < 8; ++second) {
    for (const std::string& finding : check.newFindings(begin + seconds(second)))
      EXPECT_THAT(finding, testing::Not(HasSubstr("bad-checksum")));
  }
}

TEST(WireMonitor, PublishesWhatIsRecorded) {
  tool::EventLog events;
  const auto reader = events.read({tool::Topic::kWire});
  tool::WireMonitor monitor(events);
  constexpr int kRate = 48000;
  deskTraceAudio("SelectFrequency", &kRate, 1);
  const auto event = reader->next(seconds(10));
  ASSERT_TRUE(event);
  EXPECT_THAT(texts(event->data), ElementsAre("null audio SelectFrequency 48000"));
  EXPECT_THAT(monitor.trace(), AllOf(StartsWith("# ipodctl-trace 1\n"),
                                     testing::EndsWith(" audio SelectFrequency 48000\n")));
  EXPECT_EQ(trace::parseTrace(monitor.trace()).back().line, 4U);
}

TEST(WireMonitor, PublishesAtMostTenEventsASecondAndKeepsTheLast4MB) {
  tool::EventLog events;
  const auto reader = events.read({tool::Topic::kWire});
  tool::WireMonitor monitor(events);
  const auto end = std::chrono::steady_clock::now() + milliseconds(500);
  const std::string call(900, 'x');
  while (std::chrono::steady_clock::now() < end)
    deskTraceAudio(call.c_str(), nullptr, 0);
  ASSERT_TRUE(reader->next(seconds(10)));
  size_t count = 1;
  while (reader->next(milliseconds(150)))
    ++count;
  EXPECT_LE(count, 8U);
  EXPECT_LE(monitor.trace().size(), (size_t{4} << 20) + 500);
  trace::parseTrace(monitor.trace());
}

TEST(ExplainedTrace, HasMessagesAndFindings) {
  const json document = json::parse(tool::explainedTrace(
      std::string("# ipodctl-trace 1\n") + kAsked + "0.120000 IPD1: < 55 04 00 08 41 00 B4\n"));
  EXPECT_EQ(document["messages"].size(), 2U);
  EXPECT_EQ(document["left_out"], 0);
  EXPECT_THAT(document["findings"].dump(), HasSubstr("bad-checksum"));
}

TEST(ExplainedTrace, RefusesATextThatIsNone) {
  EXPECT_THROW(tool::explainedTrace("hello"), trace::ParseError);
}

TEST(ExplainedTrace, LeavesOutTheRestOfALongOne) {
  std::string text = "# ipodctl-trace 1\n";
  for (int i = 0; i < 6000; ++i)
    text += kAsked;
  const json document = json::parse(tool::explainedTrace(text));
  EXPECT_EQ(document["messages"].size(), 5000U);
  EXPECT_EQ(document["left_out"], 1000);
}

}  // namespace
}  // namespace serving::wire
