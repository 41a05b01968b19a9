#include "iaptrace/exchange.h"

#include <gtest/gtest.h>

#include "typed_trace.h"

namespace iaptrace::exchange_test {
namespace {

/// Returns the exchanges as "request:reply,reply" with numbers of items, then what is left over.
std::string pairsOf(const std::string& lines) {
  const Exchanges found = exchangesOf(typedConversation(lines));
  std::string text;
  for (const Exchange& exchange : found.all) {
    text += std::to_string(exchange.request) + ":";
    for (const size_t reply : exchange.replies)
      text += std::to_string(reply) + ",";
    text += " ";
  }
  for (const size_t each : found.unsolicited)
    text += "unsolicited" + std::to_string(each) + " ";
  for (const size_t each : found.unexpected)
    text += "unexpected" + std::to_string(each) + " ";
  return text;
}

constexpr char kAskMode[] = "0.1 IPD1: > 55 02 00 03 FB\n";
constexpr char kMode[] = "0.1 IPD1: < 55 03 00 04 00 F9\n";
constexpr char kEnter[] = "0.1 IPD1: > 55 02 00 05 F9\n";
constexpr char kPending[] = "0.1 IPD1: < 55 08 00 02 06 05 00 00 01 2C BE\n";
constexpr char kEntered[] = "0.1 IPD1: < 55 04 00 02 00 05 F5\n";

TEST(Exchanges, PairARequestAndItsReply) {
  EXPECT_EQ(pairsOf(std::string(kAskMode) + kMode), "0:1, ");
}

TEST(Exchanges, PairAnAcknowledgementOfTheCommand) {
  EXPECT_EQ(pairsOf(std::string(kEnter) + kEntered), "0:1, ");
}

TEST(Exchanges, KeepAnExchangeOpenAfterAPendingAcknowledgement) {
  EXPECT_EQ(pairsOf(std::string(kEnter) + kPending + kEntered), "0:1,2, ");
}

TEST(Exchanges, ReportAnAnswerWithoutARequest) {
  EXPECT_EQ(pairsOf(std::string(kAskMode) + kMode + kMode), "0:1, unexpected2 ");
}

TEST(Exchanges, ReportARequestWithoutAnAnswer) { EXPECT_EQ(pairsOf(kAskMode), "0: "); }

TEST(Exchanges, ReportANotificationAsUnsolicited) {
  EXPECT_EQ(pairsOf("0.1 IPD1: < 55 08 04 00 27 04 00 00 01 F4 D4\n"), "unsolicited0 ");
}

TEST(Exchanges, PairTheQuestionsOfAnIpod) {
  EXPECT_EQ(pairsOf("0.1 IPD1: < 55 02 0A 02 F2\n0.2 IPD1: > 55 06 0A 03 00 00 AC 44 FD\n"),
            "0:1, ");
}

TEST(Exchanges, PairSeveralRecordsWithOneRequest) {
  EXPECT_EQ(pairsOf("0.1 IPD1: > 55 0C 04 00 1A 05 00 00 00 00 00 00 00 02 CF\n"
                    "0.1 IPD1: < 55 09 04 00 1B 00 00 00 00 4A 00 8E\n"
                    "0.1 IPD1: < 55 09 04 00 1B 00 00 00 01 4B 00 8C\n"),
            "0:1,2, ");
}

TEST(Exchanges, DoNotReachOverAnOpenOfTheDevice) {
  EXPECT_EQ(pairsOf(std::string(kAskMode) + "# 0.2 IPD1: close\n# 0.3 IPD1: open ok\n" +
                    "0.4 IPD1: < 55 03 00 04 00 F9\n"),
            "0: unexpected3 ");
}

}  // namespace
}  // namespace iaptrace::exchange_test
