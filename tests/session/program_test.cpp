// The head unit's program, as a person runs it, with an iPod in this process or in the simulator's
// program. A session takes about six seconds, most of them listening. tests/headunit runs the
// program with every model and every fault in simulated time.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>

#include <cstring>
#include <optional>
#include <stdexcept>

#include "screen/display_image.h"
#include "support/bitmap_file.h"
#include "support/eventually.h"
#include "support/known_music.h"
#include "support/program.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using simulator::Picture;
using simulator::Program;
using simulator::SimulatedIpod;
using testing::HasSubstr;

constexpr simulator::Time kLimit = simulator::seconds(40);

constexpr char kFirstTrackPlays[] = "   track 0, playing at 0:0";

/// What the session shows, in order.
constexpr const char* kSteps[] = {
    "---- 1. Connect, with the logo",
    "Tavrel version is 01.29",
    "   connected",
    "---- 2. The artists",
    "   in tabs:",
    "   [play all]",
    "   the first tab:",
    "   Aalto Varispeed",
    "---- 3. Albums of Aalto Varispeed",
    "   Changing Rates",
    "---- 4. Tracks of Changing Rates",
    "---- 5. Play from the first track; the position moves",
    kFirstTrackPlays,
    kFirstTrackPlays,
    kFirstTrackPlays,
    "---- 6. Next track",
    "   track 1, playing at 0:0",
    "---- 7. Pause, and play on",
    "   track 1, paused at 0:0",
    "   track 1, playing at 0:0",
    "---- 8. Shuffle",
    "   shuffle mode 2",
    "   shuffle mode 1",
    "---- 9. The playing track's texts",
    "   artist: Aalto Varispeed",
    "   album:  Changing Rates",
    "---- 10. Name and serial number",
    "   name:          Demo iPod",
    "   serial number: 8K821D0ZY5N",
    "---- 11. Skip on: a track at another sample rate announces itself",
    "   track 2, playing at 0:0",
    "---- 12. Disconnect",
    "   disconnected",
};

/// Returns the program's next line with this text.
std::optional<std::string> lineWith(Program& program, const std::string& text) {
  std::optional<std::string> line;
  do {
    line = program.readLine(kLimit);
  } while (line && line->find(text) == std::string::npos);
  return line;
}

void expectSteps(Program& headUnit) {
  Names positions;
  for (const std::string step : kSteps) {
    const std::optional<std::string> line = lineWith(headUnit, step);
    ASSERT_TRUE(line) << step;
    if (step == kFirstTrackPlays) positions.push_back(*line);
  }
  ASSERT_EQ(positions.size(), 3u);
  EXPECT_LT(positions.front(), positions.back());
  EXPECT_EQ(headUnit.waitForEnd(), 0);
}

/// The head unit says within seconds that the iPod is lost, disconnects and ends.
void expectLoss(Program& headUnit) {
  constexpr simulator::Time kSeconds = simulator::seconds(20);
  ASSERT_TRUE(headUnit.readUntil(
      "   The iPod is lost: no usable answer comes any more. Plug it in again, then start headunit "
      "again.",
      kSeconds));
  const std::optional<std::string> heading = lineWith(headUnit, "---- ");
  ASSERT_TRUE(heading);
  EXPECT_THAT(*heading, HasSubstr("Disconnect"));
  EXPECT_EQ(headUnit.waitForEnd(), 1);
}

Picture readPng(const std::filesystem::path& file) {
  png_image image;
  std::memset(&image, 0, sizeof image);
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_file(&image, file.c_str()) == 0) {
    throw std::runtime_error("no picture in " + file.string());
  }
  image.format = PNG_FORMAT_RGB;
  Picture picture{static_cast<uint16_t>(image.width), static_cast<uint16_t>(image.height), {}};
  picture.pixels.resize(size_t{image.width} * image.height);
  png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr);
  return picture;
}

TEST(HeadUnit, RunsAWholeSession) {
  SessionIpod ipod;
  ipod.folder.putLogo();
  Program headUnit(HEADUNIT_PROGRAM, {});
  expectSteps(headUnit);
  EXPECT_THAT(headUnit.errors(), HasSubstr("isochplay: SelectFrequency("));
  ipod.look([](SimulatedIpod& device) {
    EXPECT_EQ(device.display().shownCount(), 1u);
    EXPECT_EQ(device.frameCounters().badChecksums, 0u);
    EXPECT_EQ(device.frameCounters().skippedBytes, 0u);
    EXPECT_EQ(device.frameCounters().abandoned, 0u);
  });
  EXPECT_TRUE(ipod.waitUntil([](const SimulatedIpod& device) { return !device.inExtendedMode(); }));
}

/// ipodsim as a person starts it, at the library's device.
class PluggedSimulator {
 public:
  explicit PluggedSimulator(std::vector<std::string> options)
      : link((folder / "ipod").string()),
        devices("IPD1:=" + link),
        program(IPODSIM_PROGRAM, withLink(std::move(options))) {
    EXPECT_TRUE(program.readUntil("iPod ready on " + link));
  }

  const HostFolder folder;

 private:
  std::vector<std::string> withLink(std::vector<std::string> options) const {
    options.insert(options.end(), {"--quiet", "--link", link});
    return options;
  }

  const std::string link;
  const host_test::DeviceMapping devices;
  Program program;
};

// The screen has 320 x 240 pixels: the logo of 240 x 120 is 40 from the left and 60 from the top.
TEST(HeadUnit, ShowsItsLogoOnTheSimulatorsScreenWhileItIsConnected) {
  PluggedSimulator ipod({"--screen", "screen.png"});
  ipod.folder.putLogo();
  const BitmapFile logo(contentOf(headUnitLogo()));
  const auto differences = [&] {
    return differentPixels(logo, readPng(ipod.folder / "screen.png"), 40, 60);
  };
  Program headUnit(HEADUNIT_PROGRAM, {});
  ASSERT_TRUE(headUnit.readUntil("   connected"));
  const Picture screen = readPng(ipod.folder / "screen.png");
  ASSERT_EQ(screen.width, 320);
  ASSERT_EQ(screen.height, 240);
  EXPECT_EQ(differences(), 0);
  ASSERT_TRUE(headUnit.readUntil("---- 12. Disconnect", kLimit));
  EXPECT_EQ(headUnit.waitForEnd(), 0);
  EXPECT_TRUE(eventually([&] { return differences() != 0; }));
}

TEST(HeadUnit, RunsAWholeSessionWithAnIpodThatAcknowledgesTheConnectionTwice) {
  const PluggedSimulator ipod({"--personality", "nano"});
  Program headUnit(HEADUNIT_PROGRAM, {});
  expectSteps(headUnit);
}

TEST(HeadUnit, AsksAgainWhenACountIsLost) {
  const PluggedSimulator ipod({"--fault", "lost@04:0018#1"});
  Program headUnit(HEADUNIT_PROGRAM, {});
  expectSteps(headUnit);
}

TEST(HeadUnit, ReportsThatTheCountsDoNotArrive) {
  const PluggedSimulator ipod({"--fault", "late=1500@04:0018"});
  Program headUnit(HEADUNIT_PROGRAM, {});
  ASSERT_TRUE(headUnit.readUntil("   The iPod does not say how long this list is."));
  EXPECT_TRUE(headUnit.readUntil("   name:          Demo iPod"));
  EXPECT_TRUE(headUnit.readUntil(
      "   The iPod did not answer everything. Plug it in again, then start headunit again."));
  EXPECT_EQ(headUnit.waitForEnd(), 3);
}

TEST(HeadUnit, NoticesInTheMiddleOfALongListThatTheIpodIsLost) {
  const PluggedSimulator ipod({"--tracks", "10000", "--fault", "silence@04:001A#7"});
  Program headUnit(HEADUNIT_PROGRAM, {});
  ASSERT_TRUE(headUnit.readUntil("   in tabs:"));
  expectLoss(headUnit);
}

TEST(HeadUnit, ReportsThatThereIsNoIpod) {
  const HostFolder folder;
  const host_test::DeviceMapping devices("IPD1:=" + (folder / "nothing").string());
  Program headUnit(HEADUNIT_PROGRAM, {});
  EXPECT_TRUE(headUnit.readUntil("No iPod connected"));
  EXPECT_TRUE(headUnit.readUntil(
      "   No iPod could be connected on \"IPD1:\". Check the cable, then start headunit again."));
  EXPECT_EQ(headUnit.waitForEnd(), 1);
}

TEST(HeadUnit, StopsWhenTheCableIsPulled) {
  SessionIpod ipod;
  Program headUnit(HEADUNIT_PROGRAM, {});
  ASSERT_TRUE(headUnit.readUntil("---- 5.", kLimit));
  ipod.pty().unplug();
  expectLoss(headUnit);
}

TEST(HeadUnit, RefusesAnArgumentThatItDoesNotKnow) {
  Program headUnit(HEADUNIT_PROGRAM, {"--fast"});
  EXPECT_EQ(headUnit.waitForEnd(), 2);
  EXPECT_THAT(headUnit.errors(), HasSubstr("headunit: unknown argument: --fast"));
}

TEST(HeadUnit, PrintsItsHelp) {
  Program headUnit(HEADUNIT_PROGRAM, {"--help"});
  EXPECT_TRUE(headUnit.readUntil("usage: headunit [--help | --version]"));
  EXPECT_TRUE(headUnit.readUntil("  0  the session ran to its end"));
  EXPECT_TRUE(headUnit.readUntil("  1  no iPod could be connected, or the iPod was lost"));
  EXPECT_TRUE(headUnit.readUntil("  2  wrong usage"));
  EXPECT_TRUE(headUnit.readUntil("  3  the session ran to its end, but the iPod did not answer"));
  EXPECT_EQ(headUnit.waitForEnd(), 0);
}

TEST(HeadUnit, PrintsItsVersion) {
  Program headUnit(HEADUNIT_PROGRAM, {"--version"});
  EXPECT_EQ(headUnit.readLine(), "headunit 1.29");
  EXPECT_EQ(headUnit.waitForEnd(), 0);
}

}  // namespace
}  // namespace session
