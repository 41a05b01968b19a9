// Sessions of a program that is linked to ipodctl.dll. The simulated iPod is at the other end of a
// serial port, which replaces the stream driver. A script starts a new one for this program.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <isochplay_desk.h>
#include <stream_driver.h>

#include <algorithm>
#include <cstdint>

#include "music/built_in_library.h"
#include "support/event_log.h"
#include "support/eventually.h"
#include "support/host_screen.h"

namespace session {
namespace {

using simulator::Track;
using testing::ElementsAre;

constexpr char kVarispeed[] = "Aalto Varispeed";
constexpr char kChangingRates[] = "Changing Rates";
constexpr size_t kTabSize = 35;

void addCall(void* log, const IsochplayCall* call) { static_cast<EventLog*>(log)->add(call->text); }

/// Each test has a separate connection. What the iPod plays and its modes stay from test to test.
class UsbSession : public testing::Test {
 protected:
  void SetUp() override {
    isochplaySetSink(addCall, &audio);
    ASSERT_EQ(streamDriverInstall(), 1);
    ASSERT_EQ(IpodConnect(), 1);
  }
  void TearDown() override {
    IpodDisconnect();
    isochplaySetSink(nullptr, nullptr);
  }

  /// Opens the list of the album's tracks.
  void openTheAlbum() {
    artist = IpodGetFirstItem(0, IPOD_ARTISTS, 0);
    ASSERT_TRUE(goToItem(artist, kVarispeed));
    list = IpodGetFirstItem(1, IPOD_ALBUMS, 0);
    ASSERT_TRUE(goToItem(list, kChangingRates));
    list = IpodGetFirstItem(1, IPOD_TRACKS, 0);
    ASSERT_NE(list, nullptr);
  }
  void playTheAlbum() {
    openTheAlbum();
    IpodValidateUpDownTree();
    IpodSongPlay(0);
  }
  static void expectPlaying(const Track& track) {
    const TrackTexts texts = trackTexts();
    EXPECT_EQ(texts.title, hostText(track.title));
    EXPECT_EQ(texts.album, hostText(track.album));
    EXPECT_EQ(texts.artist, hostText(track.artist));
  }

  EventLog audio;
  const simulator::MusicLibrary library = simulator::builtInLibrary();
  const Names artists = hostTexts(namesOf(musicOf(library), &Track::artist));
  const Tracks album = byTitle(musicWith(library, &Track::album, kChangingRates));
  const int* artist = nullptr;  ///< index of the list of artists, of albums, of tracks
  const int* list = nullptr;
};

TEST_F(UsbSession, ConnectsAndStartsTheAudio) {
  EXPECT_EQ(IpodIsConnect(), 1);
  EXPECT_EQ(IpodConnect(), 0) << "it is already connected";
  EXPECT_EQ(isIpodAudioPresent(1, -2, 3, 4), 1);
  EXPECT_EQ(IpodDisconnect(), 0);
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_THAT(audio.events(),
              ElementsAre("SelectZeroBandwithInterface()", "SelectFullBandwithInterface()",
                          "StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)",
                          "IpodAudioPresent(1, -2, 3, 4)", "StopIpodAudioPlay()"));
}

TEST_F(UsbSession, ReadsTheDevicePage) {
  EXPECT_EQ(ipodName(), "Demo iPod");
  EXPECT_EQ(serialNumber(), "8K821D0ZY5N");
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_STOPPED);
  EXPECT_EQ(valueOf(IpodGetCurrentTrackPosition), 0);
  EXPECT_EQ(valueOf(IpodGetTrackIndex), -1);
  EXPECT_EQ(IpodGetType(), -1) << "no list is open";
}

TEST_F(UsbSession, PagesThroughTheArtistsInTabs) {
  artist = IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  ASSERT_NE(artist, nullptr);
  EXPECT_EQ(IpodGetType(), IPOD_ARTISTS);
  EXPECT_EQ(IpodIsTrack(), 0);
  EXPECT_EQ(IpodIsTabActive(), 1);
  EXPECT_EQ(IpodIsTabVisualizationActive(), 1);
  EXPECT_EQ(IpodIsPlayAll(), 1);
  EXPECT_EQ(valueOf(IpodGetMediaFileCount), static_cast<int>(artists.size()));
  ASSERT_EQ(IpodGetNextItem(), artist);
  EXPECT_EQ(itemName(), "Aalt - Juno");
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(IpodIsTabVisualizationActive(), 0);
  IpodGetPrevItem();
  EXPECT_EQ(itemName(), artists[kTabSize - 1]) << "the tab's first item follows its last one";
  IpodEnableTabVisualizationActive();
  EXPECT_EQ(IpodIsTabVisualizationActive(), 1);
}

TEST_F(UsbSession, ReadsEveryArtist) {
  EXPECT_EQ(wholeList(IpodGetFirstItem(0, IPOD_ARTISTS, 0)), artists);
}

TEST_F(UsbSession, DescendsToTheTracksAndClimbsBack) {
  openTheAlbum();
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  EXPECT_EQ(IpodIsTrack(), 1);
  EXPECT_EQ(entriesOnce(list), hostTexts(textsOf(album, &Track::title)));
  EXPECT_EQ(valueOf(IpodSongGetNumElem), static_cast<int>(album.size()));
  EXPECT_NE(IpodGetParentItem(), nullptr);
  EXPECT_EQ(IpodGetType(), IPOD_ALBUMS);
  EXPECT_EQ(IpodGetParentItem(), artist);
  EXPECT_EQ(IpodGetType(), IPOD_ARTISTS);
  EXPECT_EQ(itemName(), kVarispeed);
  EXPECT_EQ(IpodGetParentItem(), nullptr) << "back to the tabs";
  EXPECT_EQ(IpodGetParentItem(), nullptr) << "out of the tree";
  EXPECT_EQ(IpodGetType(), -1);
}

TEST_F(UsbSession, PlaysAndItsPositionMoves) {
  playTheAlbum();
  EXPECT_EQ(playStatusAndIndex(), std::pair(int{IPOD_PLAYING}, 0));
  expectPlaying(album[0]);
  int position = 0;
  ASSERT_TRUE(eventually([&] { return (position = valueOf(IpodGetCurrentTrackPosition)) > 0; }));
  EXPECT_TRUE(eventually([&] { return valueOf(IpodGetCurrentTrackPosition) > position; }));
}

TEST_F(UsbSession, PausesSkipsAndStops) {
  playTheAlbum();
  IpodCommand(IPOD_PAUSE);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PAUSED);
  const int position = valueOf(IpodGetCurrentTrackPosition);
  EXPECT_EQ(valueOf(IpodGetCurrentTrackPosition), position) << "it does not move";
  IpodCommand(IPOD_PLAY);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PLAYING);
  IpodCommand(IPOD_NEXT_TRACK);
  expectPlaying(album[1]);
  IpodCommand(IPOD_PREVIOUS_TRACK_NO_RESTART);
  expectPlaying(album[0]);
  IpodCommand(IPOD_STOP);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_STOPPED);
}

TEST_F(UsbSession, ReadsTheTexts) {
  playTheAlbum();
  const TrackTexts texts = trackTexts();
  EXPECT_EQ(texts.index, 0);
  EXPECT_EQ(texts.title, "Binary Substation (Dub)");
  EXPECT_EQ(texts.artist, kVarispeed);
  EXPECT_EQ(texts.album, kChangingRates);
  EXPECT_EQ(texts.genre,
            "\x05"
            "Electronic");
  EXPECT_EQ(texts.fifth, "UnKnown");
}

TEST_F(UsbSession, FollowsTheSampleRate) {
  playTheAlbum();
  audio.clear();
  IpodCommand(IPOD_NEXT_TRACK);
  EXPECT_TRUE(audio.waitFor("SelectFrequency(44100 Hz)"));
  IpodCommand(IPOD_NEXT_TRACK);
  EXPECT_TRUE(audio.waitFor("SelectFrequency(48000 Hz)"));
}

TEST_F(UsbSession, ChangesTheModes) {
  for (const int mode : {IPOD_MODE_TRACKS, IPOD_MODE_ALBUMS, IPOD_MODE_OFF}) {
    EXPECT_EQ(IpodSetShuffleMode(mode), 0);
    EXPECT_EQ(IpodSetRepeatMode(mode), 0);
    EXPECT_EQ(valueOf(IpodGetShuffleMode), mode);
    EXPECT_EQ(valueOf(IpodGetRepeatMode), mode);
  }
}

TEST_F(UsbSession, StepsFromArtistToArtist) {
  playTheAlbum();
  EXPECT_EQ(parentUpDownName(), kChangingRates);
  EXPECT_EQ(IpodGetNumberOfPlaylist(), static_cast<int>(artists.size()));
  const Names names = namesOf(musicOf(library), &Track::artist);
  IpodCommand(IPOD_NEXT_GROUP);
  expectPlaying(byArtist(musicWith(library, &Track::artist, names[1])).front());
  IpodCommand(IPOD_PREVIOUS_GROUP);
  expectPlaying(byArtist(musicWith(library, &Track::artist, names[0])).front());
  IpodSetSameIpod(0);
  EXPECT_EQ(parentUpDownName(), "");
}

/// The program ends with a connection, as when it is switched off. The system ends the reader
/// before it detaches the library, which must not wait for the reader.
class LastConnection : public testing::Environment {
 public:
  void TearDown() override {
    EXPECT_EQ(streamDriverInstall(), 1);
    EXPECT_EQ(IpodConnect(), 1);
  }
};

[[maybe_unused]] testing::Environment* const lastConnection =
    testing::AddGlobalTestEnvironment(new LastConnection);

}  // namespace
}  // namespace session
