// The examples as programs, with a simulated iPod at a terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "support/program.h"
#include "support/temporary_folder.h"

namespace examples {
namespace {

using simulator::Program;
using testing::HasSubstr;

std::string pathOf(const std::string& example) {
  return std::string(EXAMPLES_FOLDER) + "/" + example;
}

void mapIpd1(const std::string& path) { setenv("IPODCTL_DEVICES", ("IPD1:=" + path).c_str(), 1); }

class ExampleProgram : public testing::Test {
 protected:
  ExampleProgram() { std::filesystem::current_path(folder / ""); }
  ~ExampleProgram() override { std::filesystem::current_path(before); }

  void plugIn() {
    const std::string link = (folder / "ipod").string();
    ipod.emplace(IPODSIM_PROGRAM, std::vector<std::string>{"--trace", "--link", link});
    ASSERT_EQ(ipod->readLine(), "iPod ready on " + link) << ipod->errors();
    mapIpd1(link);
  }

  // Expects these lines in this order and success.
  void expectLines(const std::string& example, const std::vector<std::string>& arguments,
                   const std::vector<std::string>& lines) {
    Program program(pathOf(example), arguments);
    for (const std::string& line : lines)
      EXPECT_TRUE(program.readUntil(line)) << line;
    EXPECT_EQ(program.waitForEnd(), 0) << program.errors();
  }

  const std::filesystem::path before = std::filesystem::current_path();
  const simulator::TemporaryFolder folder;
  std::optional<Program> ipod;
};

TEST_F(ExampleProgram, BrowseTabsPlaysAllTracksOfAnArtist) {
  plugIn();
  expectLines(
      "browse_tabs", {"2"},
      {"83 artists", "  tab 2: Kamm - Tall",
       "  Kammerorchester S\xC3\xBC"
       "derweide",
       "Albums of ", "  [play all]", "Tracks of Ferry Terminal Sampler", "plays all of them"});
  EXPECT_TRUE(ipod->readUntil("PlayCurrentSelection"));
}

TEST_F(ExampleProgram, NowPlayingCarriesOutCommands) {
  plugIn();
  expectLines("now_playing", {"play", "pause"},
              {"connecting ...", "Phase Relay - Aalto Varispeed, playing at 0:0",
               "Phase Relay - Aalto Varispeed, paused at 0:0"});
}

TEST_F(ExampleProgram, ReconnectEndsWithCtrlC) {
  plugIn();
  Program program(pathOf("reconnect"), {"60"});
  ASSERT_TRUE(program.readUntil("connected: Demo iPod"));
  program.signal(SIGINT);
  EXPECT_TRUE(program.readUntil("connections: 1", simulator::seconds(5)));
  EXPECT_EQ(program.waitForEnd(), 0);
}

TEST_F(ExampleProgram, SampleRateShowsANewRate) {
  plugIn();
  expectLines("sample_rate", {"2"},
              {"track 0: Phase Relay", "Tavrel RestartPlayForResample 48000",
               "track 1: Binary Substation (Dub)"});
}

TEST_F(ExampleProgram, ShowLogoSendsThePicture) {
  plugIn();
  expectLines("show_logo", {HEADUNIT_LOGO},
              {"The iPod shows the logo", "The iPod shows its menus again."});
  EXPECT_TRUE(ipod->readUntil("SetDisplayImage"));
}

struct WrongUse {
  const char* example;
  std::vector<std::string> arguments;
  const char* sentence;
};

class WrongArguments : public testing::TestWithParam<WrongUse> {};

constexpr char kTab[] = "browse_tabs: give the number of a tab, 1 to 9999, or nothing\n";
constexpr char kWords[] =
    "now_playing: give 1 to 8 of these words: play, pause, next, previous, watch\n";
constexpr char kNumbers[] =
    "reconnect: give the seconds and the number of connections, each 1 to 86400\n";
constexpr char kTracks[] = "sample_rate: give the number of tracks, 1 to 100\n";

INSTANTIATE_TEST_SUITE_P(
    Examples, WrongArguments,
    testing::Values(
        WrongUse{"browse_tabs", {"x"}, kTab}, WrongUse{"browse_tabs", {"0"}, kTab},
        WrongUse{"browse_tabs", {"10000"}, kTab}, WrongUse{"browse_tabs", {"1", "2"}, kTab},
        WrongUse{"now_playing", {}, kWords}, WrongUse{"now_playing", {"play", "louder"}, kWords},
        WrongUse{"now_playing", std::vector<std::string>(9, "watch"), kWords},
        WrongUse{"reconnect", {"0"}, kNumbers}, WrongUse{"reconnect", {"5s"}, kNumbers},
        WrongUse{"reconnect", {"5", "-1"}, kNumbers},
        WrongUse{"reconnect", {"5", "1", "1"}, kNumbers}, WrongUse{"sample_rate", {"0"}, kTracks},
        WrongUse{"sample_rate", {"101"}, kTracks}, WrongUse{"sample_rate", {"1", "1"}, kTracks},
        WrongUse{"show_logo",
                 {},
                 "show_logo: logo_zel.bmp: cannot be opened; give a bitmap that can be read\n"},
        WrongUse{"show_logo", {"a.bmp", "b.bmp"}, "show_logo: b.bmp: give one bitmap\n"}));

TEST_P(WrongArguments, AreExplainedInOneLine) {
  mapIpd1("/there/is/none");
  Program program(pathOf(GetParam().example), GetParam().arguments);
  EXPECT_EQ(program.waitForEnd(), 2);
  EXPECT_EQ(program.errors(), GetParam().sentence);
  EXPECT_EQ(program.restOfOutput(), "");
}

/// A bitmap of 4x2 pixels with one byte changed, or cut short.
struct WrongBitmap {
  std::size_t offset;
  char value;
  std::size_t size;
  const char* advice;
};

class ShowLogo : public ExampleProgram, public testing::WithParamInterface<WrongBitmap> {};

INSTANTIATE_TEST_SUITE_P(
    Bitmaps, ShowLogo,
    testing::Values(WrongBitmap{0, 'P', 78, "save the picture as a BMP file"},
                    WrongBitmap{0, 'B', 53, "save the picture as a BMP file"},
                    WrongBitmap{28, 32, 78, "save the BMP file with 24 bits for each pixel"},
                    WrongBitmap{30, 1, 78, "save the BMP file without compression"},
                    WrongBitmap{18, 5, 78, "make the picture's width a multiple of 4"},
                    WrongBitmap{25, '\xFF', 78, "save it bottom row first, at most 1024x1024"},
                    WrongBitmap{19, 8, 78, "save it bottom row first, at most 1024x1024"},
                    WrongBitmap{18, 0, 78, "save it bottom row first, at most 1024x1024"},
                    WrongBitmap{0, 'B', 77, "the file is cut short"}));

TEST_P(ShowLogo, ExplainsAWrongBitmap) {
  std::string bitmap = std::string("BM\x4E\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0", 18) +
                       std::string("\4\0\0\0\2\0\0\0\1\0\x18\0", 12) + std::string(48, '\0');
  ASSERT_EQ(bitmap.size(), 78u);
  bitmap[GetParam().offset] = GetParam().value;
  std::ofstream("wrong.bmp", std::ios::binary) << bitmap.substr(0, GetParam().size);
  mapIpd1("/there/is/none");
  Program program(pathOf("show_logo"), {"wrong.bmp"});
  EXPECT_EQ(program.waitForEnd(), 2);
  EXPECT_EQ(program.errors(), std::string("show_logo: wrong.bmp: ") + GetParam().advice + "\n");
  EXPECT_FALSE(std::filesystem::exists("logo_zel.bmp"));
}

TEST_F(ExampleProgram, ShowLogoDoesNotOverwriteALogo) {
  std::ofstream("logo_zel.bmp") << "mine";
  mapIpd1("/there/is/none");
  Program program(pathOf("show_logo"), {HEADUNIT_LOGO});
  EXPECT_EQ(program.waitForEnd(), 2);
  EXPECT_THAT(program.errors(), HasSubstr("start in a folder without logo_zel.bmp, whose place "
                                          "this file takes\n"));
  EXPECT_EQ(std::filesystem::file_size("logo_zel.bmp"), 4u);
}

class WithoutIpod : public ExampleProgram, public testing::WithParamInterface<WrongUse> {};

INSTANTIATE_TEST_SUITE_P(Examples, WithoutIpod,
                         testing::Values(WrongUse{"browse_tabs", {}, ""},
                                         WrongUse{"now_playing", {"play"}, ""},
                                         WrongUse{"reconnect", {"1"}, ""},
                                         WrongUse{"sample_rate", {}, ""},
                                         WrongUse{"show_logo", {HEADUNIT_LOGO}, ""}));

TEST_P(WithoutIpod, SaysWhatToDo) {
  mapIpd1("/there/is/none");
  Program program(pathOf(GetParam().example), GetParam().arguments);
  EXPECT_TRUE(program.readUntil("No iPod could be connected. Check the cable, then start again."));
  EXPECT_EQ(program.waitForEnd(), 1);
}

}  // namespace
}  // namespace examples
