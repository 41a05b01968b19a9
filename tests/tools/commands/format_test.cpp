#include "ipodctl/commands/format.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "ipodctl/client/event_parser.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string filled(const std::string& format, const std::string& title) {
  return tool::Format(format, {"title"}).fill([&](const std::string&) { return title; });
}

std::string failureOf(const std::string& format) {
  try {
    tool::Format(format, {"title", "artist"});
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return "";
}

TEST(Format, ReplacesFields) { EXPECT_EQ(filled("<{title}>", "Juno"), "<Juno>"); }

TEST(Format, WritesTwoBracesAsOne) { EXPECT_EQ(filled("{{{title}}}", "Juno"), "{Juno}"); }

TEST(Format, WritesLineEndsAndTabs) { EXPECT_EQ(filled("\\t{title}\\n", "a\\n"), "\ta\\n\n"); }

TEST(Format, EscapesWhatCanChangeATerminal) {
  EXPECT_EQ(filled("{title}", "a\x1B[2J\n\xFF\u202E"), "a\\x1B[2J\\x0A\\xFF\\u{202E}");
}

TEST(Format, NamesTheFieldsWhenOneIsUnknown) {
  EXPECT_EQ(failureOf("{titel}"), "--format has no field \"titel\"; the fields are title, artist");
}

TEST(Format, RefusesABraceThatIsNotClosed) {
  EXPECT_EQ(failureOf("{title"), "--format has a { without a }; write {{ for a brace");
}

TEST(EventParser, ReturnsEventsThatArriveInPieces) {
  tool::EventParser parser;
  EXPECT_THAT(parser.take("id: 1\nevent: state\nda"), IsEmpty());
  EXPECT_THAT(parser.take("ta: {\"a\":1}\r\n"), IsEmpty());
  EXPECT_THAT(parser.take("\n: still here\n\ndata:2\n\n"), ElementsAre("{\"a\":1}", "2"));
}

TEST(EventParser, JoinsTheLinesOfAnEvent) {
  tool::EventParser parser;
  EXPECT_THAT(parser.take("data: 1\ndata: 2\n\n"), ElementsAre("1\n2"));
}

}  // namespace
