// What the examples print with an iPod, and what they do to it, on the deterministic platform.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "examples/example_run.h"
#include "faults/fault_text.h"
#include "support/bitmap_file.h"
#include "support/host_folder.h"
#include "support/small_library.h"

namespace example_test {
namespace output {
namespace {

using session::BitmapFile;
using simulator::SimulatedIpod;
using std::chrono::milliseconds;
using virtual_platform::Loss;
using virtual_platform::VirtualIpod;
using virtual_platform::VirtualWorld;

class ExampleOutput : public testing::Test {
 protected:
  // Expects the lines of the program, without the console of the library, and success.
  Outcome expectOutput(Main main, const std::vector<std::string>& arguments,
                       const std::string& expected) {
    wanted.main = main;
    wanted.arguments = arguments;
    const Outcome outcome = run(wanted);
    std::string text = "\n";
    for (const std::string& line : ownLines(outcome))
      text += line + "\n";
    EXPECT_EQ(text, expected);
    EXPECT_EQ(outcome.status, 0) << outcome.failure;
    return outcome;
  }

  const session::HostFolder folder;
  ProgramRun wanted;
};

TEST_F(ExampleOutput, BrowseTabsShowsTwoPagesOfTheChosenTab) {
  expectOutput(browse_tabs_main, {"2"}, R"(
83 artists
  tab 1: Aalt - Juno
  tab 2: Kamm - Tall
  tab 3: The  -     
  Kammerorchester Süderweide
  Kilohertz Nursery
  Lars Überfähr
  Ledger & Loam
  Les Parapluies Pressés
  -- next page
  The Lesser Pylons
  Los Faroles del Puerto
  Low Orbit Choir
  Lulu Montgolfier
  Margot Brûlefer
  ...
Albums of Kammerorchester Süderweide
  [play all]
  Ferry Terminal Sampler
  Konzerte für Fagott
Tracks of Ferry Terminal Sampler
  Divertimento No. 1 in F-sharp minor: IV. Finale, presto
plays all of them
)");
}

TEST_F(ExampleOutput, BrowseTabsPlaysAllTracksOfTheArtist) {
  std::size_t tracks = 0;
  std::optional<uint32_t> playing;
  wanted.library = simulator::smallLibrary();
  wanted.handle = [&](SimulatedIpod& ipod, VirtualIpod&) {
    Sleep(1800);
    tracks = ipod.player().list().size();
    playing = ipod.player().currentTrack();
  };
  expectOutput(browse_tabs_main, {}, R"(
3 artists
  [play all]
  Anna
  The Bees
  Carl
Albums of Anna
  [play all]
  First
  Second
Tracks of First
  Able
  Baker
plays all of them
)");
  EXPECT_EQ(tracks, 3u);
  EXPECT_EQ(playing, 2u);  // "Able", the first of Anna's three tracks
}

TEST_F(ExampleOutput, BrowseTabsChoosesTheLastTabForALargerNumber) {
  expectOutput(browse_tabs_main, {"9999"}, R"(
83 artists
  tab 1: Aalt - Juno
  tab 2: Kamm - Tall
  tab 3: The  -     
  The Threadbare Sisters
  Thunder Librarian
  The Touring Caravans
  Undertow Index
  Vektorfeld
  -- next page
  Verse Municipal
  The Very Reverend Percival Oakes-Thornbury and His Municipal Or
  Wendell Inkpen Nonet
  Zebra Culvert
  Zirkel & Lot
  ...
Albums of The Threadbare Sisters
  [play all]
  Darning
  Patchwork Radio
Tracks of Darning
  Ask the Unsent Tramway
  Crooked as the Estuary
  Half as Paper as the Cartographer
  Half-Lit Greenhouse
  One Copper Overpass
  ...
plays all of them
)");
}

TEST_F(ExampleOutput, BrowseTabsAsksAgainWhenACountAndAPlayStatusAreLost) {
  wanted.library = simulator::smallLibrary();
  wanted.disturb = [](SimulatedIpod& ipod, VirtualIpod&) {
    for (const char* const fault : {"lost@04:0018#1", "lost@04:0018#5", "lost@04:001C#1"})
      simulator::addFault(ipod.faults(), fault);
  };
  expectOutput(browse_tabs_main, {}, R"(
3 artists
  [play all]
  Anna
  The Bees
  Carl
Albums of Anna
  [play all]
  First
  Second
Tracks of First
  Able
  Baker
plays all of them
)");
}

/// As many artists as tabs that need two names of a second each.
simulator::MusicLibrary libraryOfTabs(int tabs) {
  constexpr int kItemsOfATab = 35;
  simulator::MusicLibrary library{"Long", {}, {}, {}};
  for (int i = 0; i < tabs * kItemsOfATab; ++i) {
    simulator::Track track;
    track.title = "Title";
    track.artist = "Artist " + std::to_string(i);
    library.tracks.push_back(track);
  }
  return library;
}

TEST_F(ExampleOutput, BrowseTabsGivesUpAnIpodThatNeedsMinutesForItsTabs) {
  wanted.main = browse_tabs_main;
  wanted.library = libraryOfTabs(60);
  wanted.disturb = [](SimulatedIpod& ipod, VirtualIpod&) {
    simulator::addFault(ipod.faults(), "late=950@04:001A");
  };
  const Outcome outcome = run(wanted);
  EXPECT_EQ(ownLines(outcome).back(),
            "The iPod answers too slowly. Plug it in again, then start again.");
  EXPECT_GT(outcome.took, std::chrono::seconds(30));
  EXPECT_LE(outcome.took, std::chrono::seconds(60));
}

TEST_F(ExampleOutput, NowPlayingDrawsWhatChanges) {
  expectOutput(now_playing_main, {"play", "next", "pause", "watch"}, R"(
connecting ...
nothing plays
Phase Relay - Aalto Varispeed, playing at 0:00
Phase Relay - Aalto Varispeed, playing at 0:01
Tavrel RestartPlayForResample 48000
Binary Substation (Dub) - Aalto Varispeed, playing at 0:00
Binary Substation (Dub) - Aalto Varispeed, playing at 0:01
Binary Substation (Dub) - Aalto Varispeed, paused at 0:02
)");
}

TEST_F(ExampleOutput, NowPlayingReportsAPulledCable) {
  wanted.main = now_playing_main;
  wanted.arguments = {"play", "watch", "watch", "watch"};
  wanted.disturb = [](SimulatedIpod&, VirtualIpod& cable) {
    cable.unplugAt(milliseconds(4500), Loss::kReadError);
  };
  const Outcome outcome = run(wanted);
  EXPECT_EQ(ownLines(outcome).back(), "The iPod is lost. Plug it in again, then start again.");
  EXPECT_EQ(outcome.status, 1);
}

/// Faults that make the calls of the library block for seconds.
class SlowIpod : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(NowPlaying, SlowIpod,
                         testing::Values("silence", "lost@04:001C", "late=900", "lost@04:0029",
                                         "silence@04:001E#3"));

TEST_P(SlowIpod, NeverDelaysTheScreen) {
  const session::HostFolder folder;
  ProgramRun wanted;
  wanted.main = now_playing_main;
  wanted.arguments = {"play", "next", "pause", "watch"};
  wanted.disturb = [](SimulatedIpod& ipod, VirtualIpod&) {
    simulator::addFault(ipod.faults(), GetParam());
  };
  const Outcome outcome = run(wanted);
  EXPECT_GT(outcome.struck, 0u);
  EXPECT_GE(longestFrame(), milliseconds(100));
  EXPECT_LE(longestFrame(), milliseconds(101));
}

TEST_F(ExampleOutput, ReconnectConnectsAgainToAnIpodThatWasPulled) {
  wanted.handle = [](SimulatedIpod&, VirtualIpod& cable) {
    Sleep(5000);
    cable.unplug(VirtualWorld::current()->now(), Loss::kReadError);
    Sleep(4000);
    cable.plug(VirtualWorld::current()->now());
  };
  const Outcome outcome = expectOutput(reconnect_main, {"60", "2"}, R"(
waiting for an iPod
connected: Demo iPod
The iPod is lost. Plug it in again.
waiting for an iPod
connected: Demo iPod
connections: 2
)");
  ASSERT_GT(outcome.lines.size(), 2u);
  EXPECT_EQ(outcome.lines[outcome.lines.size() - 2], "IpodDisconnect end");
}

// The attempts begin 0, 0.5, 1.5, 3.5, 7.5, 12.5, 17.5 and 22.5 s after the start.
TEST_F(ExampleOutput, ReconnectMakesItsPausesLongerUpToFiveSeconds) {
  wanted.handle = [&](SimulatedIpod&, VirtualIpod& cable) {
    cable.unplug(Time(0), Loss::kGone);
    Sleep(20000);
    cable.plug(VirtualWorld::current()->now());
  };
  const Outcome outcome = expectOutput(reconnect_main, {"60", "1"}, R"(
waiting for an iPod
connected: Demo iPod
connections: 1
)");
  EXPECT_EQ(std::count(outcome.lines.begin(), outcome.lines.end(), "No iPod connected"), 7);
  EXPECT_GT(outcome.took, milliseconds(23500));
  EXPECT_LT(outcome.took, milliseconds(24500));
}

TEST_F(ExampleOutput, SampleRateShowsTheRateOfEachTrack) {
  expectOutput(sample_rate_main, {"4"}, R"(
track 0: Phase Relay
Tavrel RestartPlayForResample 48000
track 1: Binary Substation (Dub)
Tavrel RestartPlayForResample 32000
track 2: Static Capacitor, Take 3
Tavrel RestartPlayForResample 48000
track 3: Mono Kilowatt
)");
}

// The screen has 240 rows, the logo 120: half of the rest is above it.
constexpr uint16_t kRowsAbove = 60;

constexpr char kLogoShown[] = R"(
The iPod shows the logo, if its screen is large enough and has colours.
The iPod shows its menus again.
)";

TEST_F(ExampleOutput, ShowLogoShowsThePictureUntilItDisconnects) {
  const BitmapFile logo(session::contentOf(HEADUNIT_LOGO));
  int different = -1;
  bool isShownAfterwards = true;
  wanted.handle = [&](SimulatedIpod& ipod, VirtualIpod&) {
    Sleep(2500);
    if (const auto& shown = ipod.display().shown()) {
      different = session::differentPixels(logo, *shown, 0, kRowsAbove);
    }
    Sleep(5000);
    isShownAfterwards = ipod.inExtendedMode();
  };
  expectOutput(show_logo_main, {HEADUNIT_LOGO}, kLogoShown);
  EXPECT_EQ(different, 0);
  EXPECT_FALSE(isShownAfterwards);
  EXPECT_FALSE(std::filesystem::exists(folder / "logo_zel.bmp"));
}

TEST_F(ExampleOutput, ShowLogoKeepsTheLogoOfTheFolder) {
  folder.putLogo();
  expectOutput(show_logo_main, {}, kLogoShown);
  EXPECT_EQ(session::contentOf(folder / "logo_zel.bmp"), session::contentOf(HEADUNIT_LOGO));
}

}  // namespace
}  // namespace output
}  // namespace example_test
