#include "screen/display_image.h"

#include <gtest/gtest.h>

#include "colours.h"
#include "support/hex.h"

namespace simulator {
namespace {

const Colour kRed{255, 0, 0};
const Colour kGreen{0, 255, 0};
const Colour kBlue{0, 0, 255};

class DisplayImageTest : public testing::Test {
 protected:
  Status take(const std::string& packet, Time now = Time(0)) {
    return display.take(hex(packet), now);
  }

  DisplayImage display{DisplayHabits{{8, 6}, true, seconds(15)}};
};

TEST_F(DisplayImageTest, JoinsRowsFromTheTop) {
  EXPECT_EQ(take("00 00 02 00 02 00 02 00 00 00 04 00 F8 E0 07"), Status::kOk);
  EXPECT_FALSE(display.shown());
  EXPECT_EQ(take("00 01 1F 00 FF FF"), Status::kOk);
  ASSERT_TRUE(display.shown());
  EXPECT_EQ(display.shown()->at(0, 0), kRed);
  EXPECT_EQ(display.shown()->at(1, 0), kGreen);
  EXPECT_EQ(display.shown()->at(0, 1), kBlue);
  EXPECT_EQ(display.shown()->at(1, 1), kWhite);
  EXPECT_EQ(display.shownCount(), 1u);
}

TEST_F(DisplayImageTest, ReadsTheHighByteFirst) {
  take("00 00 03 00 02 00 01 00 00 00 04 F8 00 07 E0");
  ASSERT_TRUE(display.shown());
  EXPECT_EQ(display.shown()->at(0, 0), kRed);
  EXPECT_EQ(display.shown()->at(1, 0), kGreen);
}

TEST_F(DisplayImageTest, ReadsFourGreyPixelsPerByte) {
  take("00 00 01 00 05 00 01 00 00 00 02 1B C0");
  ASSERT_TRUE(display.shown());
  EXPECT_EQ(display.shown()->at(0, 0), kWhite);
  EXPECT_EQ(display.shown()->at(1, 0), (Colour{170, 170, 170}));
  EXPECT_EQ(display.shown()->at(2, 0), (Colour{85, 85, 85}));
  EXPECT_EQ(display.shown()->at(3, 0), kBlack);
  EXPECT_EQ(display.shown()->at(4, 0), kBlack);
}

TEST_F(DisplayImageTest, JoinsDataOfPacketsCutAnywhere) {
  take("00 00 02 00 02 00 02 00 00 00 04");
  take("00 01 00");
  take("00 02 F8 E0 07 1F");
  take("00 03 00 FF FF");
  ASSERT_TRUE(display.shown());
  EXPECT_EQ(display.shown()->at(0, 0), kRed);
  EXPECT_EQ(display.shown()->at(1, 1), kWhite);
}

TEST_F(DisplayImageTest, BytesOfARowBeyondItsPixelsAreSkipped) {
  take("00 00 02 00 01 00 02 00 00 00 04 00 F8 55 55 E0 07 55 55");
  ASSERT_TRUE(display.shown());
  EXPECT_EQ(display.shown()->at(0, 0), kRed);
  EXPECT_EQ(display.shown()->at(0, 1), kGreen);
}

TEST_F(DisplayImageTest, PixelsBeyondAShortRowAreBlack) {
  take("00 00 02 00 03 00 01 00 00 00 04 00 F8 E0 07");
  ASSERT_TRUE(display.shown());
  EXPECT_EQ(display.shown()->at(1, 0), kGreen);
  EXPECT_EQ(display.shown()->at(2, 0), kBlack);
}

TEST_F(DisplayImageTest, RefusesWhatDoesNotFit) {
  EXPECT_EQ(take("00 00 02 00 09 00 01 00 00 00 12"), Status::kBadParameter);
  EXPECT_EQ(take("00 00 02 00 01 00 07 00 00 00 02"), Status::kBadParameter);
  EXPECT_EQ(take("00 00 02 00 00 00 01 00 00 00 02"), Status::kBadParameter);
  EXPECT_EQ(take("00 00 02 00 01 00 01 00 00 00 00"), Status::kBadParameter);
  EXPECT_EQ(take("00 00 02 00 01 00 01 FF FF FF FF"), Status::kBadParameter);
  EXPECT_EQ(take("00 00 07 00 01 00 01 00 00 00 02"), Status::kBadParameter);
  EXPECT_EQ(take("00 00 02 00 01 00 01 00 00"), Status::kBadParameter);
  EXPECT_EQ(take("00"), Status::kBadParameter);
  EXPECT_EQ(take("00 01 FF FF"), Status::kBadParameter);
}

TEST_F(DisplayImageTest, RefusesPacketsOutOfOrder) {
  take("00 00 02 00 01 00 03 00 00 00 02 00 F8");
  EXPECT_EQ(take("00 02 00 F8"), Status::kBadParameter);
  EXPECT_EQ(take("00 01 00 F8"), Status::kOk);
}

TEST_F(DisplayImageTest, RefusesMoreDataThanStated) {
  take("00 00 02 00 01 00 02 00 00 00 02 00 F8");
  EXPECT_EQ(take("00 01 00 F8 00"), Status::kBadParameter);
  EXPECT_EQ(take("00 01 00 F8"), Status::kBadParameter);
  EXPECT_FALSE(display.shown());
}

TEST_F(DisplayImageTest, FirstPacketStartsAgainAtAnyTime) {
  take("00 00 02 00 01 00 02 00 00 00 02 00 F8");
  EXPECT_EQ(take("00 00 02 00 01 00 01 00 00 00 02 E0 07"), Status::kOk);
  ASSERT_TRUE(display.shown());
  EXPECT_EQ(display.shown()->at(0, 0), kGreen);
}

TEST_F(DisplayImageTest, ImageTooSoonAfterAnotherIsAcknowledgedButNotShown) {
  take("00 00 02 00 01 00 01 00 00 00 02 00 F8", seconds(1));
  EXPECT_EQ(take("00 00 02 00 01 00 01 00 00 00 02 E0 07", milliseconds(15999)), Status::kOk);
  EXPECT_EQ(display.shown()->at(0, 0), kRed);
  EXPECT_EQ(take("00 00 02 00 01 00 01 00 00 00 02 E0 07", seconds(16)), Status::kOk);
  EXPECT_EQ(display.shown()->at(0, 0), kGreen);
}

TEST_F(DisplayImageTest, ClearRemovesTheImage) {
  take("00 00 02 00 01 00 01 00 00 00 02 00 F8");
  display.clear();
  EXPECT_FALSE(display.shown());
}

TEST(DisplayImage, GreyScreenRefusesColour) {
  DisplayImage grey(DisplayHabits{{8, 6}, false, Time(0)});
  EXPECT_EQ(grey.take(hex("00 00 02 00 01 00 01 00 00 00 02 00 F8"), Time(0)),
            Status::kBadParameter);
  EXPECT_EQ(grey.take(hex("00 00 01 00 01 00 01 00 00 00 01 C0"), Time(0)), Status::kOk);
}

TEST(DisplayImage, ScreenWithoutImagesRefusesThem) {
  DisplayImage none(DisplayHabits{{0, 0}, true, Time(0)});
  EXPECT_EQ(none.take(hex("00 00 02 00 01 00 01 00 00 00 02 00 F8"), Time(0)),
            Status::kBadParameter);
}

TEST(RenderScreen, WithoutAnImageIsADarkBackground) {
  const Picture screen = renderScreen(4, 3, std::nullopt);
  EXPECT_EQ(screen.pixels.size(), 12u);
  EXPECT_EQ(screen.at(0, 1), screen.at(3, 1));
  EXPECT_GT(screen.at(0, 0).blue, screen.at(0, 2).blue);
}

TEST(RenderScreen, CentresTheImageBetweenTheSidesFromTheTop) {
  const Picture image{2, 1, {kRed, kGreen}};
  const Picture screen = renderScreen(6, 3, image);
  const Picture empty = renderScreen(6, 3, std::nullopt);
  EXPECT_EQ(screen.at(1, 0), empty.at(1, 0));
  EXPECT_EQ(screen.at(2, 0), kRed);
  EXPECT_EQ(screen.at(3, 0), kGreen);
  EXPECT_EQ(screen.at(4, 0), empty.at(4, 0));
  EXPECT_EQ(screen.at(2, 1), empty.at(2, 1));
}

TEST(RenderScreen, CutsAnImageThatIsLargerThanTheScreen) {
  const Picture image{3, 2, {kRed, kGreen, kBlue, kRed, kGreen, kBlue}};
  const Picture screen = renderScreen(2, 1, image);
  EXPECT_EQ(screen.at(0, 0), kRed);
  EXPECT_EQ(screen.at(1, 0), kGreen);
}

}  // namespace
}  // namespace simulator
