// What the simulated iPod's screen shows.

#include <gtest/gtest.h>

#include <algorithm>

#include "colours.h"
#include "screen/characters.h"
#include "screen/live_screen.h"
#include "screen/pages.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

using Page = ScreenView::Page;

constexpr Colour kBar{74, 158, 255};

const TextPainter& painter() {
  static const TextPainter withFont(FontFiles::ofTheSystem());
  return withFont;
}

const TextPainter& withoutFont() {
  static const TextPainter none(FontFiles::only("/none.ttf"));
  return none;
}

ScreenView playing() {
  ScreenView view;
  view.width = 320;
  view.height = 240;
  view.page = Page::kPlaying;
  view.state = PlayState::kPlaying;
  view.ipodName = "Pod";
  view.title = "Charlie";
  view.artist = "Anna";
  view.album = "Second";
  view.tracks = 12;
  view.positionSeconds = 30;
  view.lengthSeconds = 60;
  return view;
}

Picture render(const ScreenView& view) { return renderView(view, painter()); }

/// Returns the smallest area that contains all different pixels; its width is 0 if there are none.
Area differenceOf(const Picture& a, const Picture& b) {
  int left = a.width, top = a.height, right = 0, bottom = 0;
  for (uint16_t y = 0; y < a.height; ++y) {
    for (uint16_t x = 0; x < a.width; ++x) {
      if (a.at(x, y) == b.at(x, y)) continue;
      left = std::min<int>(left, x);
      top = std::min<int>(top, y);
      right = std::max<int>(right, x + 1);
      bottom = std::max<int>(bottom, y + 1);
    }
  }
  return {left, top, std::max(0, right - left), std::max(0, bottom - top)};
}

bool isSame(const Picture& a, const Picture& b) { return differenceOf(a, b).width == 0; }

/// Draws one white line on black.
Picture lineOf(const std::string& text, int width, Align align = Align::kLeft) {
  Canvas canvas(300, 40, true);
  painter().draw(canvas, {50, 5, width, 30}, text, {16, Weight::kRegular, kWhite, align});
  return canvas.result();
}

const Picture kEmptyLine{300, 40, std::vector<Colour>(300 * 40)};

TEST(Screen, BackgroundBecomesDarkerDownwards) {
  const Picture screen = render(playing());
  ASSERT_EQ(screen.width, 320);
  ASSERT_EQ(screen.height, 240);
  EXPECT_EQ(screen.at(0, 0), (Colour{38, 50, 66}));
  EXPECT_EQ(screen.at(319, 239), (Colour{10, 14, 20}));
}

TEST(Screen, BarShowsThePosition) {
  ScreenView view = playing();
  EXPECT_EQ(render(view).at(87, 206), kBar) << "a quarter of the bar";
  EXPECT_FALSE(render(view).at(233, 206) == kBar) << "three quarters";
  view.positionSeconds = 50;
  EXPECT_EQ(render(view).at(233, 206), kBar);
  view.positionSeconds = 0;
  EXPECT_FALSE(render(view).at(20, 206) == kBar);
  view.positionSeconds = 1000;
  EXPECT_EQ(render(view).at(300, 206), kBar) << "beyond the end";
  EXPECT_FALSE(render(view).at(315, 206) == kBar) << "next to the bar";
}

TEST(Screen, TrackWithoutALengthHasAnEmptyBar) {
  ScreenView view = playing();
  view.positionSeconds = view.lengthSeconds = 0;
  EXPECT_FALSE(render(view).at(20, 206) == kBar);
}

TEST(Screen, SignShowsWhetherItPlays) {
  ScreenView view = playing();
  EXPECT_EQ(render(view).at(19, 13), kWhite) << "the middle of the triangle";
  view.state = PlayState::kPaused;
  EXPECT_EQ(render(view).at(15, 13), kWhite) << "the first bar";
  EXPECT_FALSE(render(view).at(19, 13) == kWhite) << "between the bars";
  EXPECT_EQ(render(view).at(24, 13), kWhite) << "the second bar";
  view.page = Page::kMenu;
  view.state = PlayState::kStopped;
  EXPECT_FALSE(render(view).at(15, 13) == kWhite);
}

TEST(Screen, BatteryIsGreenWhileThePlugIsIn) {
  ScreenView view = playing();
  EXPECT_EQ(render(view).at(290, 13), kWhite);
  view.plugged = true;
  EXPECT_EQ(render(view).at(290, 13), (Colour{104, 211, 120}));
}

TEST(Screen, EachTextIsShown) {
  const Picture before = render(playing());
  const auto changes = [&](void (*change)(ScreenView&)) {
    ScreenView view = playing();
    change(view);
    return differenceOf(before, render(view));
  };
  const Area title = changes([](ScreenView& view) { view.title = "Able"; });
  const Area artist = changes([](ScreenView& view) { view.artist = "Carl"; });
  const Area number = changes([](ScreenView& view) { view.tracks = 13; });
  const Area time = changes([](ScreenView& view) { view.lengthSeconds = 61; });
  EXPECT_GT(title.width, 0);
  EXPECT_GT(artist.width, 0);
  EXPECT_GT(number.width, 0);
  EXPECT_GT(time.width, 0);
  EXPECT_GE(title.left, 140) << "to the right of the cover";
  EXPECT_LE(title.bottom(), artist.top);
  EXPECT_LE(artist.bottom(), number.top);
  EXPECT_LE(number.bottom(), time.top);
}

TEST(Screen, ModesAreShown) {
  ScreenView view = playing();
  const Picture plain = render(view);
  view.shuffle = Shuffle::kTracks;
  const Picture shuffled = render(view);
  EXPECT_FALSE(isSame(shuffled, plain));
  view.repeat = Repeat::kAll;
  const Picture repeated = render(view);
  EXPECT_FALSE(isSame(repeated, shuffled));
  view.repeat = Repeat::kOne;
  EXPECT_FALSE(isSame(render(view), repeated));
}

TEST(Screen, CoverHasTheColourOfItsAlbum) {
  ScreenView view = playing();
  const Picture second = render(view);
  view.title = "Another";
  view.album = "First";
  const Picture first = render(view);
  EXPECT_FALSE(first.at(16, 70) == second.at(16, 70));
  view.album = "Second";
  EXPECT_EQ(render(view).at(16, 70), second.at(16, 70)) << "the same album, another track";
  EXPECT_FALSE(coverColour("First") == coverColour("Second"));
}

TEST(Screen, WithoutAFontItShowsEverythingButTexts) {
  EXPECT_TRUE(painter().hasFont()) << "install fonts-dejavu-core";
  EXPECT_FALSE(withoutFont().hasFont());
  const Picture bare = renderView(playing(), withoutFont());
  EXPECT_EQ(bare.at(87, 206), kBar);
  EXPECT_EQ(bare.at(16, 70), render(playing()).at(16, 70));
  ScreenView other = playing();
  other.title = "Able";
  EXPECT_TRUE(isSame(renderView(other, withoutFont()), bare));
  EXPECT_FALSE(isSame(render(playing()), bare));
}

TEST(Screen, MenuShowsTheNameAndWhatPlays) {
  ScreenView view = playing();
  view.page = Page::kMenu;
  const Picture menu = render(view);
  EXPECT_EQ(menu.at(4, 28), (Colour{73, 155, 251})) << "the first line is selected";
  view.ipodName = "Zoe";
  EXPECT_LE(differenceOf(menu, render(view)).top, 20);
  view.ipodName = "Pod";
  view.state = PlayState::kStopped;
  EXPECT_GE(differenceOf(menu, render(view)).bottom(), 170) << "the line of what plays";
}

TEST(Screen, ExtendedModeHasItsSign) {
  ScreenView view = playing();
  view.page = Page::kConnected;
  const Picture screen = render(view);
  int line = 0;
  for (uint16_t x = 100; x < 160; ++x)
    line += screen.at(x, 107) == kBar;
  EXPECT_GE(line, 5) << "the circle";
  EXPECT_FALSE(isSame(screen, renderView(view, withoutFont())));
}

TEST(Screen, ImageIsShownAsItWasUploaded) {
  ScreenView view = playing();
  view.page = Page::kImage;
  view.image = std::make_shared<const Picture>(Picture{2, 1, {{1, 2, 3}, {250, 251, 252}}});
  const Picture screen = render(view);
  EXPECT_EQ(screen.at(159, 0), (Colour{1, 2, 3}));
  EXPECT_EQ(screen.at(160, 0), (Colour{250, 251, 252}));
  EXPECT_TRUE(isSame(screen, renderView(view, withoutFont())));
}

TEST(Screen, GreyScreenIsBlackAndWhite) {
  ScreenView view = playing();
  view.width = 138;
  view.height = 110;
  view.hasColours = false;
  view.state = PlayState::kPaused;
  for (const Page page : {Page::kPlaying, Page::kMenu, Page::kConnected}) {
    view.page = page;
    const Picture screen = render(view);
    const auto count = [&](Colour colour) {
      return std::count(screen.pixels.begin(), screen.pixels.end(), colour);
    };
    EXPECT_EQ(count(kWhite) + count(kBlack), 138 * 110);
    EXPECT_GT(count(kWhite), count(kBlack));
    EXPECT_GT(count(kBlack), 500);
  }
}

TEST(Screen, HasTheSizeOfItsModel) {
  for (const std::string& name : personalityNames()) {
    const Personality model = personality(name);
    const SimulatedIpod ipod(model, smallLibrary());
    const Picture screen = render(viewOf(ipod, Time(0)));
    EXPECT_EQ(screen.width, model.screenWidth) << name;
    EXPECT_EQ(screen.height, model.screenHeight) << name;
  }
}

TEST(Screen, OddSizesAreDrawn) {
  const ImageLimits sizes[] = {{1, 1},   {1, 300},   {300, 1}, {17, 16},
                               {40, 30}, {2000, 20}, {60, 900}};
  for (const ImageLimits size : sizes) {
    for (const Page page : {Page::kPlaying, Page::kMenu, Page::kConnected}) {
      for (const bool hasColours : {true, false}) {
        ScreenView view = playing();
        view.width = size.width;
        view.height = size.height;
        view.page = page;
        view.hasColours = hasColours;
        EXPECT_EQ(render(view).pixels.size(), size_t{size.width} * size.height);
      }
    }
  }
}

TEST(Screen, HourLongTracksAreDrawn) {
  ScreenView view = playing();
  view.positionSeconds = 3600;
  view.lengthSeconds = 4294967;
  const Picture first = render(view);
  view.positionSeconds = 3601;
  EXPECT_FALSE(isSame(render(view), first));
}

TEST(ScreenText, KeepsItsWidth) {
  const std::string lines[] = {"Short", std::string(1000, 'W'), std::string(100000, 'i'),
                               "Τα Φανάρια του Όρμου και το Νυχτερινό πλοίο"};
  for (const std::string& text : lines) {
    for (const Align align : {Align::kLeft, Align::kCentre, Align::kRight}) {
      const Area drawn = differenceOf(lineOf(text, 120, align), kEmptyLine);
      EXPECT_GT(drawn.width, 0);
      EXPECT_GE(drawn.left, 49) << "a letter can exceed its place by a pixel";
      EXPECT_LE(drawn.right(), 171);
    }
  }
}

TEST(ScreenText, EndsInAnEllipsisWhenItIsTooLong) {
  EXPECT_TRUE(isSame(lineOf("WWWWWWWWWWWW", 80), lineOf("WWWW…", 200)));
  EXPECT_TRUE(isSame(lineOf("WWWW WWWWWWW", 85), lineOf("WWWW…", 200))) << "no blank before it";
  EXPECT_FALSE(isSame(lineOf("WWWW", 80), lineOf("WWWW…", 200))) << "it fits";
  EXPECT_TRUE(isSame(lineOf("WWWW", 5), kEmptyLine)) << "no room";
  EXPECT_TRUE(isSame(lineOf("WWWW", -5), kEmptyLine));
}

TEST(ScreenText, IsAlignedWithinItsArea) {
  const Area left = differenceOf(lineOf("Hill", 200), kEmptyLine);
  const Area centre = differenceOf(lineOf("Hill", 200, Align::kCentre), kEmptyLine);
  const Area right = differenceOf(lineOf("Hill", 200, Align::kRight), kEmptyLine);
  EXPECT_NEAR(left.left, 51, 2);
  EXPECT_NEAR(centre.left + centre.width / 2, 150, 2);
  EXPECT_NEAR(right.right(), 249, 2);
}

TEST(ScreenText, WidthGrowsWithTheTextAndItsSize) {
  const TextStyle style{16};
  const int width = painter().widthOf("Charlie", style);
  EXPECT_GT(width, 40);
  EXPECT_LT(width, 80);
  EXPECT_NEAR(painter().widthOf("CharlieCharlie", style), 2 * width, 2);
  EXPECT_NEAR(painter().widthOf("Charlie", {32}), 2 * width, 6);
  EXPECT_EQ(withoutFont().widthOf("Charlie", style), 0);
}

TEST(ScreenText, OtherScriptsShowSomething) {
  for (const std::string text : {"霧笛楽団", "مرحبا", "Ночной", "Σ", "🧺", "\xff"})
    EXPECT_GT(differenceOf(lineOf(text, 200), kEmptyLine).width, 4) << text;
}

TEST(ScreenText, CharactersOfUtf8) {
  EXPECT_EQ(shownCharacters("aé€𝄞", 10), U"aé€𝄞");
  EXPECT_EQ(shownCharacters("abc", 2), U"ab");
  EXPECT_EQ(shownCharacters("", 2), U"");
}

TEST(ScreenText, BytesThatAreNotUtf8BecomeAReplacement) {
  EXPECT_EQ(shownCharacters("a\xff"
                            "b",
                            10),
            U"a\uFFFDb");
  EXPECT_EQ(shownCharacters("\xC3(", 10), U"\uFFFD(");
  EXPECT_EQ(shownCharacters("\xE2\x82", 10), U"\uFFFD\uFFFD") << "cut";
  EXPECT_EQ(shownCharacters("\xC0\xAF", 10), U"\uFFFD\uFFFD") << "overlong";
  EXPECT_EQ(shownCharacters("\xE0\x80\x80", 10), U"\uFFFD\uFFFD\uFFFD") << "overlong";
  EXPECT_EQ(shownCharacters("\xED\xA0\x80", 10), U"\uFFFD\uFFFD\uFFFD") << "a surrogate";
  EXPECT_EQ(shownCharacters("\xF4\x90\x80\x80", 1), U"\uFFFD") << "above U+10FFFF";
  EXPECT_EQ(shownCharacters("\xF5", 10), U"\uFFFD");
}

TEST(ScreenText, ControlCharactersBecomeBlanksOrNothing) {
  const std::string controls(
      "a\0b\nc\x7f"
      "d\xC2\x85"
      "e",
      10);
  EXPECT_EQ(shownCharacters(controls, 20), U"a b c d e");
  EXPECT_EQ(shownCharacters("a\u200Bb\u202Ec\uFEFFd\u00ADe\uFE0F", 20), U"abcde");
  EXPECT_EQ(shownCharacters("a\u2028b", 20), U"a b");
}

/// The screen of a running iPod with colours.
class LiveScreenTest : public testing::Test {
 protected:
  Page page() { return viewOf(bench.ipod, bench.now).page; }
  LiveScreen::Shown shown() {
    live.look(bench.ipod, bench.now);
    return live.shown();
  }

  Bench bench;
  LiveScreen live{FontFiles::ofTheSystem()};
};

TEST_F(LiveScreenTest, PageFollowsTheIpod) {
  EXPECT_EQ(page(), Page::kMenu);
  bench.ipod.pressPlay(bench.now);
  EXPECT_EQ(page(), Page::kPlaying);
  bench.ipod.pressMenu(bench.now);
  EXPECT_EQ(page(), Page::kMenu);
  bench.ipod.pressNext(bench.now);
  EXPECT_EQ(page(), Page::kPlaying);
  bench.ipod.pressMenu(bench.now);
  bench.ipod.pressSelect(bench.now);
  EXPECT_EQ(page(), Page::kPlaying);
  bench.enter();
  EXPECT_EQ(page(), Page::kConnected);
  bench.ask("04 00 32 00 00 02 00 01 00 01 00 00 00 02 00 F8");
  EXPECT_EQ(page(), Page::kImage);
  bench.ask("00 06");
  EXPECT_EQ(page(), Page::kPlaying) << "paused";
}

TEST_F(LiveScreenTest, ViewHasTheTrack) {
  bench.ipod.pressPlay(bench.now);
  bench.ipod.pressNext(bench.now);
  bench.wait(milliseconds(7999));
  const ScreenView view = viewOf(bench.ipod, bench.now);
  EXPECT_EQ(view.title, "Baker");
  EXPECT_EQ(view.artist, "Anna");
  EXPECT_EQ(view.album, "First");
  EXPECT_EQ(view.index, 1u);
  EXPECT_EQ(view.tracks, 5u);
  EXPECT_EQ(view.positionSeconds, 7u);
  EXPECT_EQ(view.lengthSeconds, 20u);
  EXPECT_EQ(view.state, PlayState::kPlaying);
  EXPECT_EQ(view.ipodName, "Pod");
  EXPECT_TRUE(view.plugged);
}

TEST_F(LiveScreenTest, RevisionGrowsWithThePicture) {
  EXPECT_EQ(shown().revision, 1u);
  EXPECT_EQ(shown().revision, 1u);
  bench.ipod.pressPlay(bench.now);
  EXPECT_EQ(shown().revision, 2u);
  bench.wait(milliseconds(900));
  EXPECT_EQ(shown().revision, 2u) << "the second is the same";
  bench.wait(milliseconds(200));
  EXPECT_EQ(shown().revision, 3u);
}

TEST_F(LiveScreenTest, RevisionStaysWhileTheUploadedImageStays) {
  bench.enter();
  const uint64_t before = shown().revision;
  bench.ask("04 00 32 00 00 02 00 01 00 01 00 00 00 02 00 F8");
  EXPECT_EQ(shown().revision, before + 1);
  EXPECT_EQ(shown().picture->at(159, 0), (Colour{255, 0, 0}));
  bench.ask("04 00 32 00 00 02 00 01 00 01 00 00 00 02 00 F8");
  EXPECT_EQ(shown().revision, before + 1) << "the same image again";
  bench.ask("04 00 32 00 00 02 00 01 00 01 00 00 00 02 E0 07");
  EXPECT_EQ(shown().revision, before + 2);
  EXPECT_EQ(shown().picture->at(159, 0), (Colour{0, 255, 0}));
}

TEST_F(LiveScreenTest, AnotherIpodReplacesTheImage) {
  bench.enter();
  bench.ask("04 00 32 00 00 02 00 01 00 01 00 00 00 02 00 F8");
  shown();
  Bench other;
  other.enter();
  other.ask("04 00 32 00 00 02 00 01 00 01 00 00 00 02 E0 07");
  live.look(other.ipod, other.now);
  EXPECT_EQ(live.shown().picture->at(159, 0), (Colour{0, 255, 0}));
}

}  // namespace
}  // namespace simulator
