#include "iaptrace/statistics.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "iaptrace/stats_output.h"
#include "iaptrace/timeline.h"
#include "typed_trace.h"

namespace iaptrace::statistics_test {
namespace {

using testing::HasSubstr;
using testing::Not;

Statistics statisticsOfLines(const std::string& lines) {
  const Conversation items = typedConversation(lines);
  return statisticsOf(items, exchangesOf(items));
}

std::string timelineOfLines(const std::string& lines, const std::string& device = "IPD1:") {
  const Conversation items = typedConversation(lines);
  const Exchanges exchanges = exchangesOf(items);
  return timelineOf(items, exchanges, statisticsOf(items, exchanges), device);
}

TEST(Statistics, HaveTheLatenciesOfACommand) {
  const Statistics numbers = statisticsOfLines(
      "1.0 IPD1: > 55 02 00 03 FB\n1.001 IPD1: < 55 03 00 04 00 F9\n"
      "2.0 IPD1: > 55 02 00 03 FB\n2.009 IPD1: < 55 03 00 04 00 F9\n"
      "3.0 IPD1: > 55 02 00 03 FB\n3.002 IPD1: < 55 03 00 04 00 F9\n"
      "4.0 IPD1: > 55 02 00 03 FB\n");
  ASSERT_EQ(numbers.commands.size(), 1u);
  const CommandStatistics& row = numbers.commands[0];
  EXPECT_EQ(row.command, 0x03);
  EXPECT_EQ(row.count, 4u);
  EXPECT_EQ(row.unanswered, 1u);
  EXPECT_EQ(row.refused, 0u);
  EXPECT_EQ(row.latencies.front(), trace::Time(1000));
  EXPECT_EQ(row.median(), trace::Time(2000));
  EXPECT_EQ(row.latencies.back(), trace::Time(9000));
}

TEST(Statistics, CountRefusals) {
  const Statistics numbers = statisticsOfLines(
      "1.0 IPD1: > 55 04 04 00 18 09 D7\n1.1 IPD1: < 55 06 04 00 01 01 00 18 DC\n");
  EXPECT_EQ(numbers.commands.at(0).refused, 1u);
  EXPECT_EQ(numbers.commands.at(0).failures(), 1u);
}

TEST(Statistics, CountBytesByDirection) {
  const Statistics numbers = statisticsOfLines(
      "1.0 IPD1: > FF 55 02 00 03 FB\n1.1 IPD1: < 13 A9 55 02 00 03 FC 55 03 00 04 00 F9\n");
  EXPECT_EQ(numbers.fromHost.bytes, 6u);
  EXPECT_EQ(numbers.fromHost.messages, 1u);
  EXPECT_EQ(numbers.fromIpod.bytes, 13u);
  EXPECT_EQ(numbers.fromIpod.noise, 2u);
  EXPECT_EQ(numbers.fromIpod.damaged, 1u);
  EXPECT_EQ(numbers.fromIpod.messages, 1u);
}

constexpr char kConnection[] =
    "# 1.0 IPD1: open ok\n"
    "1.1 IPD1: > 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n"
    "1.2 IPD1: < 55 04 00 02 00 13 E7\n"
    "1.2 IPD1: < 55 02 0A 02 F2\n"
    "1.3 IPD1: > 55 06 0A 03 00 00 AC 44 FD\n"
    "1.4 IPD1: > 55 02 00 05 F9\n"
    "1.9 IPD1: < 55 04 00 02 00 05 F5\n";

TEST(Statistics, HaveTheStagesOfAConnection) {
  const Statistics numbers = statisticsOfLines(kConnection);
  ASSERT_EQ(numbers.connections.size(), 1u);
  const ConnectionStatistics& connection = numbers.connections[0];
  EXPECT_EQ(connection.opened, trace::Time(1000000));
  EXPECT_TRUE(connection.isConnected);
  ASSERT_EQ(connection.milestones.size(), 3u);
  EXPECT_EQ(connection.milestones[0].stage, "identify");
  EXPECT_EQ(connection.milestones[0].at, trace::Time(1200000));
  EXPECT_EQ(connection.milestones[1].stage, "sample-rates");
  EXPECT_EQ(connection.milestones[2].stage, "connected");
  EXPECT_EQ(connection.milestones[2].line, 8u);
}

TEST(Statistics, HaveAConnectionForEachOpen) {
  const std::string once = kConnection;
  const Statistics numbers = statisticsOfLines(once + "# 2.0 IPD1: close\n# 3.0 IPD1: open ok\n");
  ASSERT_EQ(numbers.connections.size(), 2u);
  EXPECT_FALSE(numbers.connections[1].isConnected);
}

TEST(Stats, PrintARowForEachCommand) {
  std::ostringstream out;
  printText(statisticsOfLines(kConnection), "IPD1:", out);
  EXPECT_THAT(out.str(),
              HasSubstr("> General IdentifyDeviceLingoes                                1     "
                        "100.00     100.00     100.00  -\n"));
  EXPECT_THAT(out.str(), HasSubstr("  connected            900.00 ms  (+600.00 ms, line 8)\n"));
}

TEST(Stats, PrintJson) {
  std::ostringstream out;
  printJson(statisticsOfLines(kConnection), "\xFF", out);
  const auto json = nlohmann::json::parse(out.str());
  EXPECT_EQ(json["connections"][0]["stages"][2]["after_ms"], 900.0);
  EXPECT_EQ(json["commands"][0]["count"], 1);
}

TEST(Timeline, ShowsStagesAndMessages) {
  const std::string svg = timelineOfLines(kConnection);
  EXPECT_THAT(svg, HasSubstr("<title>connected after 900.0 ms</title>"));
  EXPECT_THAT(svg, HasSubstr("<title>IdentifyDeviceLingoes at 1.100 s, 100.0 ms</title>"));
}

TEST(Timeline, EscapesWhatXmlCannotContain) {
  const std::string svg =
      timelineOfLines("# 1.0 audio <&\"\x01\xFF\xEF\xBF\xBF]]>\n1.1 IPD1: < 77\n", "<b>&\x1B");
  EXPECT_THAT(svg, HasSubstr("&lt;b&gt;&amp;\\x1B"));
  EXPECT_THAT(svg, HasSubstr("&lt;&amp;&quot;\\x01\\xFF\\u{FFFF}]]&gt;"));
  EXPECT_THAT(svg, Not(HasSubstr("<b>")));
}

TEST(Timeline, DrawsAnEmptyTrace) { EXPECT_THAT(timelineOfLines(""), HasSubstr("</svg>")); }

}  // namespace
}  // namespace iaptrace::statistics_test
