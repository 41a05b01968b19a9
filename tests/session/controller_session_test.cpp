// Sessions over both kinds of link: a serial port with its sync byte and the stream driver without.
// The exports use only the stream driver, so these tests use the controller itself.

#include <desk.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <ostream>

#include "controller/ipod_controller.h"
#include "support/bitmap_file.h"
#include "support/known_music.h"
#include "support/session_ipod.h"

using namespace ipodctl;

namespace session {
namespace {

using simulator::FrameKind;
using simulator::SimulatedIpod;
using simulator::Track;

// Record categories and modes of the Extended Interface lingo.
constexpr Category kArtists = Category::kArtists;
constexpr Category kAlbums = Category::kAlbums;
constexpr Category kTracks = Category::kTracks;
constexpr SortOrder kSortByName = SortOrder::kName;
constexpr PlayControlCode kPause = PlayControlCode::kPause;
constexpr PlayState kStatePlaying = PlayState::kPlaying;
constexpr PlayState kStatePaused = PlayState::kPaused;

std::atomic<int> calledWith{0};

int remember(int32_t rate) {
  calledWith = rate;
  return 0;
}

std::string textOf(const ByteString& text) { return {text.text(), text.text() + text.size()}; }

struct Kind {
  const char* name;
  int transportKind;
  const char* device;
  FrameKind frames;
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

const auto kKinds = testing::Values(Kind{"Serial", kSerialLink, "COM1:", FrameKind::kSerial},
                                    Kind{"Usb", kUsbLink, "IPD1:", FrameKind::kUsb});

std::string nameOfKind(const testing::TestParamInfo<Kind>& kind) { return kind.param.name; }

/// An iPod with a screen so small that a logo takes only a moment even over a serial line.
simulator::Personality withASmallScreen() {
  simulator::Personality model;
  model.display.limits = {8, 6};
  return model;
}

/// The same session over both kinds of link.
class ControllerSession : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    calledWith = 0;
    controller.setResampleCallback(remember);
  }
  void TearDown() override {
    controller.CloseIpod();
    EXPECT_EQ(deskRunningThreads(), 0u);
  }

  bool connect() { return controller.connect(GetParam().device, nullptr); }

  /// All records of a category, in one request.
  Names recordsOf(Category category) {
    uint32_t count = 0;
    RecordList records;
    EXPECT_TRUE(controller.GetDbRecordCount(category, count));
    EXPECT_TRUE(controller.RetrieveDbRecords(category, 0, count, records));
    Names names;
    for (uint32_t i = 0; i < records.size(); ++i) {
      EXPECT_EQ(records[i].index, i);
      names.push_back(textOf(records[i].name));
    }
    return names;
  }
  uint32_t countOf(Category category) {
    uint32_t count = 0;
    EXPECT_TRUE(controller.GetDbRecordCount(category, count));
    return count;
  }
  size_t announcements() {
    return ipod.look([](SimulatedIpod& device) {
      return device.countReceived(simulator::Lingo::kGeneral, simulator::kIdentifyDeviceLingoes);
    });
  }

  const simulator::MusicLibrary library = simulator::builtInLibrary();
  SessionIpod ipod{withASmallScreen(), library, GetParam().device, GetParam().frames};
  IpodController controller{GetParam().transportKind};
};

INSTANTIATE_TEST_SUITE_P(, ControllerSession, kKinds, nameOfKind);

TEST_P(ControllerSession, WalksTheDatabase) {
  ASSERT_TRUE(connect());
  ASSERT_TRUE(controller.EnterExtendedMode());
  ASSERT_TRUE(controller.ResetDbSelection());
  const Tracks music = musicOf(library);
  const Names artists = namesOf(music, &Track::artist);
  EXPECT_EQ(recordsOf(kArtists), hostTexts(artists));
  EXPECT_EQ(recordsOf(kAlbums), hostTexts(namesOf(music, &Track::album)));
  EXPECT_EQ(recordsOf(kTracks), hostTexts(textsOf(byArtist(music), &Track::title)));
  ASSERT_TRUE(controller.SelectSortDbRecord(kArtists, 1, kSortByName));
  const Tracks tracks = byTitle(musicWith(library, &Track::artist, artists[1]));
  EXPECT_EQ(recordsOf(kTracks), hostTexts(textsOf(tracks, &Track::title)));
}

TEST_P(ControllerSession, PlaysAndFollowsTheSampleRate) {
  ASSERT_TRUE(connect());
  ASSERT_TRUE(controller.EnterExtendedMode());
  EXPECT_GT(countOf(kArtists), 0u);
  ASSERT_TRUE(controller.SelectDbRecord(kArtists, 0));
  const Tracks tracks = byArtist(musicWith(library, &Track::artist, "Aalto Varispeed"));
  ASSERT_TRUE(controller.PlayCurrentSelection(1));
  EXPECT_TRUE(eventually([] { return calledWith == 48000; }));
  uint32_t length = 0;
  uint32_t position = 0;
  PlayState state{};
  EXPECT_TRUE(eventually(
      [&] { return controller.GetPlayStatus(length, position, state) && position > 0; }));
  EXPECT_EQ(length, tracks[1].lengthMs);
  EXPECT_EQ(state, kStatePlaying);
  ByteString title;
  EXPECT_TRUE(controller.GetTrackTitle(1, title));
  EXPECT_EQ(textOf(title), hostText(tracks[1].title));
  ASSERT_TRUE(controller.PlayControl(kPause));
  EXPECT_TRUE(controller.GetPlayStatus(length, position, state));
  EXPECT_EQ(state, kStatePaused);
}

TEST_P(ControllerSession, ShowsTheLogo) {
  const BitmapFile logo(bitmapFile(4, 4, 24, "blue, green and red, row by row, bottom first..."));
  ipod.folder.writeLogo(logo.content());
  ASSERT_TRUE(controller.LoadLogo("logo_zel.bmp"));
  ASSERT_TRUE(controller.connect(GetParam().device, controller.logoImage()));
  ipod.look([&](SimulatedIpod& device) {
    ASSERT_TRUE(device.display().shown());
    EXPECT_EQ(differentPixels(logo, *device.display().shown(), 0, 1), 0);
  });
}

TEST_P(ControllerSession, LeavesTheModeWhenItClosesAndConnectsAgain) {
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(connect());
    ASSERT_TRUE(controller.EnterExtendedMode());
    EXPECT_TRUE(controller.CloseIpod());
    EXPECT_TRUE(
        ipod.waitUntil([](const SimulatedIpod& device) { return !device.inExtendedMode(); }));
  }
  EXPECT_EQ(ipod.look([](SimulatedIpod& device) {
    return device.countReceived(simulator::Lingo::kGeneral, simulator::kExitRemoteUiMode);
  }),
            3u);
}

TEST_P(ControllerSession, EndsWithTheCable) {
  ASSERT_TRUE(connect());
  ipod.pty().unplug();
  ASSERT_TRUE(eventually([] { return deskRunningThreads() == 0; }));
  ByteString name;
  EXPECT_FALSE(controller.RequestIpodName(name));
  EXPECT_FALSE(connect());
  ipod.pty().plug();
  EXPECT_TRUE(connect());
  EXPECT_TRUE(controller.RequestIpodName(name));
  EXPECT_EQ(textOf(name), "Demo iPod");
}

// Takes a second of silence.
TEST_P(ControllerSession, IsIdentifiedInTheSecondAttempt) {
  ipod.addFault("lost@00:0F#1");
  EXPECT_TRUE(connect());
  EXPECT_EQ(announcements(), 2u);
}

// Takes two seconds of silence.
TEST_P(ControllerSession, IsNotIdentifiedInTheThirdAttempt) {
  ipod.addFault("lost@00:0F#1");
  ipod.addFault("lost@00:0F#2");
  EXPECT_FALSE(connect());
  EXPECT_EQ(announcements(), 3u);
}

/// An accessory that identifies itself only for the General lingo, and then requests the extended
/// mode.
class BaseControllerSession : public testing::TestWithParam<Kind> {
 protected:
  void TearDown() override { controller.CloseIpod(); }

  bool identify() { return controller.IdentifyIpod(GetParam().device, false); }
  size_t received(uint16_t command) {
    return ipod.look([&](SimulatedIpod& device) {
      return device.countReceived(simulator::Lingo::kGeneral, command);
    });
  }

  SessionIpod ipod{{}, simulator::builtInLibrary(), GetParam().device, GetParam().frames};
  IpodControllerBase controller{GetParam().transportKind};
};

INSTANTIATE_TEST_SUITE_P(, BaseControllerSession, kKinds, nameOfKind);

TEST_P(BaseControllerSession, IsIdentifiedInTheFirstAttempt) {
  EXPECT_TRUE(identify());
  EXPECT_EQ(received(simulator::kIdentifyDeviceLingoes), 1u);
  EXPECT_EQ(received(simulator::kEnterRemoteUiMode), 1u);
  ipod.look([](SimulatedIpod& device) {
    EXPECT_TRUE(device.inExtendedMode());
    EXPECT_EQ(device.announcedLingoes(), 0x01u);
  });
  uint32_t count = 0;
  EXPECT_TRUE(controller.GetDbRecordCount(kTracks, count));
  EXPECT_EQ(count, musicOf(simulator::builtInLibrary()).size());
}

// Takes a second of silence.
TEST_P(BaseControllerSession, IsIdentifiedInTheSecondAttempt) {
  ipod.addFault("lost@00:05#1");
  EXPECT_TRUE(identify());
  EXPECT_EQ(received(simulator::kIdentifyDeviceLingoes), 2u);
}

// Takes two seconds of silence. The library ignores what the iPod does in the third attempt.
TEST_P(BaseControllerSession, IsNotIdentifiedInTheThirdAttempt) {
  ipod.addFault("lost@00:05#1");
  ipod.addFault("lost@00:05#2");
  EXPECT_FALSE(identify());
  EXPECT_EQ(controller.isIdentified(), 0);
  EXPECT_EQ(received(simulator::kIdentifyDeviceLingoes), 3u);
  EXPECT_TRUE(identify());
}

}  // namespace
}  // namespace session
