#include "iaptrace/decoded_line.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "iaptrace/decode_output.h"
#include "typed_trace.h"

namespace iaptrace::decoded_line_test {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string decoded(const std::string& lines, bool folds = true, bool inColour = false) {
  const Conversation items = typedConversation(lines);
  std::ostringstream out;
  printText(decodedLines(items, folds), inColour, out);
  return out.str();
}

nlohmann::json decodedJson(const std::string& lines) {
  const Conversation items = typedConversation(lines);
  std::ostringstream out;
  printJson("IPD1:", decodedLines(items, true), out);
  return nlohmann::json::parse(out.str());
}

TEST(Decode, PrintsRequestAndReplyWithTheLatency) {
  EXPECT_EQ(
      decoded("# 0.000001 IPD1: open ok\n"
              "1.5 IPD1: > 55 04 04 00 18 02 DE\n"
              "1.512345 IPD1: < 55 07 04 00 19 00 00 00 53 89\n"
              "# 2.0 IPD1: close\n"),
      "   0.000001   # open ok\n"
      "   1.500000   > ExtendedInterface GetNumberCategorizedDbRecords category=artists\n"
      "   1.512345   < ExtendedInterface ReturnNumberCategorizedDbRecords count=83  (12.3 ms)\n"
      "   2.000000   # close\n");
}

TEST(Decode, MarksARequestWithoutAnAnswer) {
  EXPECT_EQ(decoded("1.0 IPD1: > 55 02 00 03 FB\n"),
            "   1.000000 ! > General RequestRemoteUIMode  [no answer]\n");
}

TEST(Decode, MarksARefusal) {
  EXPECT_THAT(decoded("1.0 IPD1: > 55 04 04 00 18 09 D7\n1.1 IPD1: < 55 06 04 00 01 01 00 18 DC\n"),
              HasSubstr("   1.100000 ! < ExtendedInterface iPodAck status=unknown-category "
                        "command=GetNumberCategorizedDbRecords  (100.0 ms)  [refused]\n"));
}

TEST(Decode, MarksAWrongChecksumAndSaysWhatTheFrameLooksLike) {
  EXPECT_EQ(decoded("1.0 IPD1: < 55 05 00 08 50 00 00 A4\n"),
            "   1.000000 ! < damaged frame: 55 05 00 08 50 00 00 A4  [bad checksum: A4 instead of "
            "A3]  [as General ReturniPodName name=\"P\" (1 more bytes)]\n");
}

TEST(Decode, MarksNoiseAndUnfinishedFrames) {
  EXPECT_EQ(decoded("1.0 IPD1: < 13 A9 55 07 00\n"),
            "   1.000000 ! < bytes outside any frame: 13 A9  [noise]\n"
            "   1.000000 ! < unfinished frame: 55 07 00  [unfinished]\n");
}

TEST(Decode, MarksWhatIsUnsolicitedOrUnexpected) {
  EXPECT_EQ(
      decoded("1.0 IPD1: < 55 08 04 00 27 04 00 00 01 F4 D4\n1.0 IPD1: < 55 03 00 04 00 F9\n"),
      "   1.000000   < ExtendedInterface PlayStatusChangeNotification change=position "
      "position-ms=500  [unsolicited]\n"
      "   1.000000 ! < General ReturnRemoteUIMode mode=standard  [answers no open request]\n");
}

TEST(Decode, MarksAnAnswerToAnotherRequest) {
  EXPECT_THAT(decoded("1.0 IPD1: > 55 02 00 03 FB\n2.0 IPD1: > 55 02 00 07 F7\n"
                      "2.1 IPD1: < 55 03 00 04 00 F9\n"),
              HasSubstr("(1100 ms)  [answers line 2, not the latest request]\n"));
}

TEST(Decode, EscapesTextsAndEvents) {
  const std::string text =
      decoded("1.0 IPD1: < 55 0A 04 00 21 1B E2 80 AE E9 22 00 9B\n# 1.0 audio Say \033[2J\n");
  EXPECT_THAT(text, HasSubstr("title=\"\\x1B\\u{202E}\\xE9\\\"\""));
  EXPECT_THAT(text, HasSubstr("audio Say \\x1B[2J"));
  EXPECT_THAT(text, Not(HasSubstr("\033")));
}

constexpr char kLogo[] =
    "1.0 IPD1: > 55 10 04 00 32 00 00 02 00 01 00 02 00 00 00 02 F8 00 BB\n"
    "1.1 IPD1: < 55 06 04 00 01 00 00 32 C3\n"
    "1.2 IPD1: > 55 07 04 00 32 00 01 07 E0 DB\n"
    "1.3 IPD1: < 55 06 04 00 01 00 00 32 C3\n";

TEST(Decode, FoldsThePacketsOfALogo) {
  EXPECT_EQ(decoded(kLogo),
            "   1.000000   > ExtendedInterface SetDisplayImage: 2 packets, 1x2 rgb565-low-first, 4 "
            "bytes, all acknowledged  (300.0 ms)\n");
  EXPECT_THAT(decoded(kLogo, false), HasSubstr("packet=1 pixels=07 E0"));
}

TEST(Decode, MarksALogoThatIsNotAcknowledged) {
  const std::string lines = kLogo;
  EXPECT_THAT(decoded(lines.substr(0, lines.rfind("1.3"))),
              HasSubstr("1 acknowledged  (200.0 ms)  [no answer]"));
}

TEST(Decode, UsesColourOnlyWhenAskedTo) {
  EXPECT_EQ(decoded("1.0 IPD1: < 77\n", true, true),
            "\033[31m   1.000000 ! < bytes outside any frame: 77  [noise]\033[0m\n");
}

TEST(DecodeJson, HasTheFieldsOfAMessage) {
  const auto json = decodedJson(
      "1.5 IPD1: > 55 04 04 00 18 02 DE\n1.512345 IPD1: < 55 07 04 00 19 00 00 00 53 89\n");
  EXPECT_EQ(json["device"], "IPD1:");
  ASSERT_EQ(json["messages"].size(), 2u);
  EXPECT_EQ(json["messages"][0]["fields"]["category"], "artists");
  const auto& reply = json["messages"][1];
  EXPECT_EQ(reply["command"], "ReturnNumberCategorizedDbRecords");
  EXPECT_EQ(reply["fields"]["count"], 83);
  EXPECT_EQ(reply["latency_ms"], 12.345);
  EXPECT_EQ(reply["direction"], "<");
  EXPECT_EQ(reply["line"], 3);
  EXPECT_EQ(reply["bytes"], "55 07 04 00 19 00 00 00 53 89");
}

TEST(DecodeJson, IsAsciiWhateverTheBytes) {
  const Conversation items = typedConversation(
      "1.0 IPD1: < 55 0A 04 00 21 1B E2 80 AE E9 22 00 9B\n# 1.0 audio \xE9\xE2\x80\xAE\n");
  std::ostringstream out;
  printJson("\xFF", decodedLines(items, true), out);
  const std::string text = out.str();
  EXPECT_TRUE(nlohmann::json::accept(text));
  EXPECT_TRUE(std::all_of(text.begin(), text.end(),
                          [](char one) { return one == '\n' || (one >= ' ' && one < 0x7F); }));
}

}  // namespace
}  // namespace iaptrace::decoded_line_test
