#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

#include "controller/controller_test.h"
#include "support/console.h"

namespace ipodctl {
namespace {

/// A button's code and the state that holds it.
struct ButtonRow {
  int code;
  const char* body;
};

void PrintTo(const ButtonRow& row, std::ostream* stream) { *stream << "code " << row.code; }

const ButtonRow kButtons[] = {
    {0, "55 03 02 00 00"},
    {1, "55 03 02 00 01"},
    {2, "55 03 02 00 02"},
    {3, "55 03 02 00 04"},
    {4, "55 03 02 00 08"},
    {5, "55 03 02 00 10"},
    {6, "55 03 02 00 20"},
    {7, "55 03 02 00 40"},
    {8, "55 03 02 00 80"},
    {9, "55 04 02 00 00 01"},
    {10, "55 04 02 00 00 02"},
    {11, "55 04 02 00 00 04"},
    {12, "55 04 02 00 00 08"},
    {13, "55 04 02 00 00 10"},
    {14, "55 04 02 00 00 20"},
    {15, "55 04 02 00 00 40"},
    {16, "55 04 02 00 00 80"},
    {17, "55 05 02 00 00 00 01"},
    {18, "55 05 02 00 00 00 02"},
    {19, "55 05 02 00 00 00 04"},
    {20, "55 05 02 00 00 00 08"},
    {21, "55 05 02 00 00 00 10"},
    {22, "55 05 02 00 00 00 20"},
    {23, "55 05 02 00 00 00 40"},
    {24, "55 05 02 00 00 00 80"},
    {25, "55 06 02 00 00 00 00 01"},
    {26, "55 06 02 00 00 00 00 02"},
    // No button has such a code: nothing is held.
    {-1, "55 03 02 00 00"},
    {27, "55 03 02 00 00"},
    {33, "55 03 02 00 00"},
    {256, "55 03 02 00 00"},
    {std::numeric_limits<int>::min(), "55 03 02 00 00"},
    {std::numeric_limits<int>::max(), "55 03 02 00 00"},
};

class Button : public ControllerFixture<IpodController>,
               public testing::WithParamInterface<ButtonRow> {};

TEST_P(Button, IsHeldForFiftyReportsFiveMillisecondsApart) {
  EXPECT_TRUE(controller().PressButton(GetParam().code));
  EXPECT_EQ(callLog(), repeated(50, {"flush", std::string("send ") + GetParam().body, "sleep 5"}));
}

INSTANTIATE_TEST_SUITE_P(OfEveryCode, Button, testing::ValuesIn(kButtons));

using Buttons = ControllerTest;

TEST_F(Buttons, ClearRepliesBeforeEachReport) {
  ipod().arrive({{0x02, 0x01, 0x00}});
  ipod().answer("55 03 02 00 01", {{0x02, 0x01, 0x00}});
  ipod().answer("55 03 02 00 01", {{0x02, 0x01, 0x00}});
  EXPECT_TRUE(controller().PressButton(1));
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(Buttons, AreReportedAloneAtTheSecondPress) {
  controller().PressButton(8);
  callLog().clear();
  controller().PressButton(9);
  EXPECT_EQ(linesOf(callLog(), "send"), repeated(50, {"send 55 04 02 00 00 01"}));
}

TEST_F(Buttons, AreNotReleasedByAPress) {
  controller().PressButton(4);
  EXPECT_EQ(linesOf(callLog(), "send 55 03 02 00 00"), Calls{});
}

TEST_F(Buttons, AreHeldThoughTheLinkTakesNothing) {
  ipod().sends = false;
  EXPECT_TRUE(controller().PressButton(1));
  EXPECT_EQ(linesOf(callLog(), "send").size(), 50u);
}

TEST_F(Buttons, FailWithoutALink) {
  IpodController unlinked(kNoLink);
  EXPECT_FALSE(unlinked.PressButton(1));
  EXPECT_FALSE(unlinked.SendAudioButton(1));
  EXPECT_EQ(linesOf(callLog(), "send"), Calls{});
}

/// What a held button prints: its press, then each report.
std::string pressText(const std::string& press, const std::string& report) {
  std::string text = press;
  for (int i = 0; i < 50; ++i)
    text += report;
  return text;
}

TEST_F(Buttons, PrintTheirCodeByteMaskAndReportsInDebug) {
  EXPECT_EQ(printedInDebug([&] { controller().PressButton(8); }),
            pressText("<cmd 8>\n\nbyteIndex = 0\nbuttonBitmasks = 0x80",
                      "OUT-> Lingo=2\tCommand=0x0 Data=0x80 \n"));
}

TEST_F(Buttons, PrintTheSelectButtonTwiceAndEachReportInDebug) {
  EXPECT_EQ(printedInDebug([&] { controller().PressButton(24); }),
            pressText("<cmd 24>\n<cmd 24>\tSelect\n\nbyteIndex = 2\nbuttonBitmasks = 0x80",
                      "OUT-> Lingo=2\tCommand=0x0 Data=0x0 0x0 \n"));
}

TEST_F(Buttons, PrintNothingOutsideDebug) {
  EXPECT_EQ(printedQuietly([&] { controller().PressButton(24); }), "");
}

using AudioButton = ControllerTest;

TEST_F(AudioButton, IsSentTwentyTwoTimesFiftyMillisecondsApart) {
  EXPECT_TRUE(controller().SendAudioButton(0x01020304));
  EXPECT_EQ(callLog(), repeated(22, {"flush", "send 55 06 02 04 01 02 03 04", "sleep 50"}));
}

TEST_F(AudioButton, ClearsRepliesBeforeEachReport) {
  ipod().arrive({{0x02, 0x01, 0x00}});
  ipod().answer("55 06 02 04 00 00 00 00", {{0x02, 0x01, 0x00}});
  EXPECT_TRUE(controller().SendAudioButton(0));
  EXPECT_EQ(liveMessages(), 0u);
}

}  // namespace
}  // namespace ipodctl
