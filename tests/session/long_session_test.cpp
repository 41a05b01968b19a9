// One session with every export in it, as a head unit has it from start to end: with the usual
// iPod, and with each that answers or asks in another way.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "device/personality_settings.h"
#include "support/host_screen.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using simulator::Message;
using simulator::PlayState;
using simulator::SimulatedIpod;
using simulator::Track;
using simulator::Traffic;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kVarispeed[] = "Aalto Varispeed";
constexpr char kChangingRates[] = "Changing Rates";
constexpr char kRefresh[] = "PostMessageW(0xffff, 0x2400, 0, 0)";

struct Model {
  const char* name;
  std::vector<std::string> settings;
  std::vector<Message> says;  ///< messages that only such an iPod sends in this session
};

void PrintTo(const Model& model, std::ostream* out) { *out << model.name; }

simulator::Personality personalityOf(const Model& model) {
  simulator::Personality made;
  for (const std::string& setting : model.settings)
    simulator::applySetting(made, setting);
  return made;
}

const Model kModels[] = {
    {"Usual", {}, {}},
    {"ModeInOneWrite",
     {"mode-change-together=yes"},
     {{0x00, 0x02, {0x06, 0x05, 0x00, 0x00, 0x01, 0x2C}}}},
    {"LateQuestion",
     {"accessory-info-delay=1000", "accessory-info-patience=100", "repeats-accessory-info=no"},
     {{0x00, 0x27, {0x00}}}},
    {"BadIndexFails",
     {"bad-track-index=failed"},
     {{0x04, 0x0001, {0x02, 0x00, 0x20}},
      {0x04, 0x0001, {0x02, 0x00, 0x22}},
      {0x04, 0x0001, {0x02, 0x00, 0x24}}}},
    {"NoGenre", {"tells-genre=no"}, {{0x04, 0x0001, {0x04, 0x00, 0x0C}}}},
    {"OneIdentification", {"refuses-second-identification=yes"}, {}},
    {"SilentBefore", {"silent-before-identification=yes"}, {}},
    {"PlaylistStaysSelected", {"deselects-playlists=no"}, {{0x04, 0x0001, {0x04, 0x00, 0x17}}}},
    {"LateSound", {"sound-delay=200"}, {}},
};

class LongSession : public testing::TestWithParam<Model> {
 public:
  void SetUp() override {
    ipod.look([this](SimulatedIpod& device) {
      device.setTrace([this](const Traffic& traffic) { listen(traffic); });
    });
  }
  void TearDown() override { IpodDisconnect(); }

  // The steps, in the order of the session.
  void connect();
  void readTheDevicePage();
  void readTheTextsOfNothing();
  void lookAtAPlaylist();
  void pageThroughTheArtists();
  void moveInATab();
  void descendToTheTracks();
  void play();
  void pauseAndPlayOn();
  void skip();
  void readTheTexts();
  void followTheSampleRates();
  void changeTheModes();
  void stepFromArtistToArtist();
  void climbBack();
  void stepAmongThePlayingTracks();
  void forgetTheIpod();
  void disconnect();

  int refreshes() {
    int count = 0;
    for (const std::string& event : ipod.log.events())
      count += event == kRefresh ? 1 : 0;
    return count;
  }
  /// Runs an action that must ask the host once to refresh its display.
  template <class Action>
  void expectOneRefresh(Action action) {
    const int before = refreshes();
    action();
    EXPECT_EQ(refreshes(), before + 1);
  }
  void expectPlaying(const Track& track) {
    const Track playing = ipod.playingTrack();
    EXPECT_EQ(playing.title, track.title);
    EXPECT_EQ(playing.album, track.album);
    EXPECT_EQ(playing.artist, track.artist);
  }
  PlayState state() {
    return ipod.look([](SimulatedIpod& device) { return device.player().state(); });
  }

  /// Removes a message that the iPod has sent from those that are still missing.
  void listen(const Traffic& traffic) {
    if (traffic.kind != Traffic::Kind::kSent) return;
    unsaid.erase(std::remove(unsaid.begin(), unsaid.end(), traffic.message), unsaid.end());
  }

  std::vector<Message> unsaid = GetParam().says;
  SessionIpod ipod{personalityOf(GetParam())};
  const simulator::MusicLibrary library = simulator::builtInLibrary();
  const Names artists = hostTexts(namesOf(musicOf(library), &Track::artist));
  const Tracks album = byTitle(musicWith(library, &Track::album, kChangingRates));
  const int* artist = nullptr;  ///< index of the list of artists, of albums, of tracks
  const int* list = nullptr;
};

void LongSession::connect() {
  ipod.folder.putLogo();
  EXPECT_EQ(IpodIsConnect(), 0);
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_EQ(IpodIsConnect(), 1);
  EXPECT_EQ(IpodConnect(), 0) << "the connection is there already";
  EXPECT_EQ(isIpodAudioPresent(1, -2, 3, 4), 1);
  EXPECT_THAT(ipod.takeAudioCalls(),
              ElementsAre("SelectZeroBandwithInterface()", "SelectFullBandwithInterface()",
                          "StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)",
                          "IpodAudioPresent(1, -2, 3, 4)"));
  EXPECT_TRUE(ipod.look([](SimulatedIpod& device) { return device.inExtendedMode(); }));
  EXPECT_EQ(ipod.look([](SimulatedIpod& device) { return device.announcedLingoes(); }), 0x411u);
  EXPECT_EQ(ipod.look([](SimulatedIpod& device) { return device.display().shownCount(); }), 1u);
  ASSERT_TRUE(ipod.settle()) << "what the iPod still says can take the place of an answer";
}

void LongSession::readTheDevicePage() {
  EXPECT_EQ(ipodName(), "Demo iPod");
  EXPECT_EQ(serialNumber(), "8K821D0ZY5N");
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_STOPPED);
  EXPECT_EQ(valueOf(IpodGetCurrentTrackPosition), 0);
  EXPECT_EQ(valueOf(IpodGetTrackIndex), -1);
  EXPECT_EQ(IpodGetType(), -1) << "no list is open";
}

void LongSession::readTheTextsOfNothing() {
  const TrackTexts texts = trackTexts();
  EXPECT_EQ(texts.result, 0);
  EXPECT_EQ(texts.index, -1);
  EXPECT_EQ(texts.artist + texts.album + texts.title + texts.genre, "");
  EXPECT_EQ(texts.fifth, "UnKnown");
}

// The list is opened again afterwards: the iPod may still have its record selected.
void LongSession::lookAtAPlaylist() {
  ASSERT_NE(IpodGetFirstItem(0, IPOD_PLAYLISTS, 0), nullptr);
  EXPECT_EQ(itemName(), hostText(library.playlists.front().name));
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
}

void LongSession::pageThroughTheArtists() {
  artist = IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  ASSERT_NE(artist, nullptr);
  EXPECT_EQ(IpodGetType(), IPOD_ARTISTS);
  EXPECT_EQ(IpodIsTrack(), 0);
  EXPECT_EQ(IpodIsTabActive(), 1);
  EXPECT_EQ(IpodIsTabVisualizationActive(), 1);
  EXPECT_EQ(IpodIsPlayAll(), 1);
  EXPECT_EQ(itemName(), kPlayAll);
  EXPECT_EQ(valueOf(IpodGetMediaFileCount), static_cast<int>(artists.size()));
  const size_t lastTab = (artists.size() - 1) / 35;
  ASSERT_EQ(IpodGetNextItem(), artist);
  EXPECT_EQ(itemName(), artists[0].substr(0, 4) + " - " + artists[34].substr(0, 4));
  EXPECT_EQ(IpodGetPrevItem(), artist);
  EXPECT_EQ(itemName(), kPlayAll);
  EXPECT_EQ(IpodGetPrevItem(), artist);
  EXPECT_EQ(*artist, static_cast<int>(lastTab * 35));
  EXPECT_EQ(itemName(), artists[lastTab * 35].substr(0, 4) + " - " + artists.back().substr(0, 4));
}

void LongSession::moveInATab() {
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(IpodIsTabVisualizationActive(), 0);
  IpodGetPrevItem();
  EXPECT_EQ(itemName(), artists.back()) << "the item before the tab's first one is its last one";
  IpodGetNextItem();
  EXPECT_EQ(itemName(), artists[(artists.size() - 1) / 35 * 35]);
  IpodEnableTabVisualizationActive();
  EXPECT_EQ(IpodIsTabVisualizationActive(), 1);
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(IpodGetParentItem(), nullptr) << "back to the tabs";
  EXPECT_EQ(IpodIsTabVisualizationActive(), 1);
}

void LongSession::descendToTheTracks() {
  ASSERT_TRUE(goToItem(artist, kVarispeed));
  EXPECT_EQ(*artist, 0);
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  list = IpodGetFirstItem(1, IPOD_ALBUMS, 0);
  EXPECT_THAT(entriesOnce(list), ElementsAre(kPlayAll, kChangingRates));
  ASSERT_TRUE(goToItem(list, kChangingRates));
  list = IpodGetFirstItem(1, IPOD_TRACKS, 0);
  EXPECT_EQ(IpodIsTrack(), 1);
  EXPECT_EQ(IpodGetType(), IPOD_TRACKS);
  EXPECT_EQ(entriesOnce(list), hostTexts(textsOf(album, &Track::title)));
  EXPECT_EQ(valueOf(IpodSongGetNumElem), static_cast<int>(album.size()));
}

void LongSession::play() {
  EXPECT_EQ(IpodValidateUpDownTree(), 0);
  IpodGetNextItem();
  expectOneRefresh([] { EXPECT_EQ(IpodSongPlay(-1), 0); });
  EXPECT_EQ(playStatusAndIndex(), std::pair(int{IPOD_PLAYING}, 1));
  expectPlaying(album[1]);
  expectOneRefresh([] { EXPECT_EQ(IpodSongPlay(0), 0); });
  EXPECT_EQ(playStatusAndIndex(), std::pair(int{IPOD_PLAYING}, 0));
  expectPlaying(album[0]);
  int position = 0;
  ASSERT_TRUE(eventually([&] { return (position = valueOf(IpodGetCurrentTrackPosition)) > 0; }));
  EXPECT_TRUE(eventually([&] { return valueOf(IpodGetCurrentTrackPosition) > position; }));
}

void LongSession::pauseAndPlayOn() {
  EXPECT_EQ(IpodCommand(IPOD_PAUSE), 0);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PAUSED);
  const int position = valueOf(IpodGetCurrentTrackPosition);
  EXPECT_EQ(valueOf(IpodGetCurrentTrackPosition), position) << "it does not move";
  expectOneRefresh([] { IpodCommand(IPOD_PLAY); });
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PLAYING);
  IpodCommand(IPOD_TOGGLE_PLAY_PAUSE);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PAUSED);
  IpodCommand(IPOD_TOGGLE_PLAY_PAUSE);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PLAYING);
}

void LongSession::skip() {
  expectOneRefresh([] { IpodCommand(IPOD_NEXT_TRACK); });
  expectPlaying(album[1]);
  IpodCommand(IPOD_NEXT);
  expectPlaying(album[2]);
  IpodCommand(IPOD_PREVIOUS);
  expectPlaying(album[1]);
  expectOneRefresh([] { IpodCommand(IPOD_PREVIOUS_TRACK); });
  expectPlaying(album[0]);
  expectOneRefresh([] { IpodCommand(IPOD_PREVIOUS_TRACK); });
  expectPlaying(album.back());
  expectOneRefresh([] { IpodCommand(IPOD_NEXT_TRACK); });
  expectPlaying(album[0]);
  IpodCommand(IPOD_NEXT_TRACK);
  expectOneRefresh([] { IpodCommand(IPOD_PREVIOUS_TRACK_NO_RESTART); });
  expectPlaying(album[0]);
  IpodCommand(IPOD_START_FAST_FORWARD);
  EXPECT_TRUE(eventually([] { return valueOf(IpodGetCurrentTrackPosition) > 3100; }));
  IpodCommand(IPOD_END_SEEK);
  IpodCommand(IPOD_PREVIOUS_TRACK);
  expectPlaying(album[0]);
  EXPECT_LT(valueOf(IpodGetCurrentTrackPosition), 3000) << "from its start";
}

void LongSession::readTheTexts() {
  const TrackTexts texts = trackTexts();
  EXPECT_EQ(texts.result, 0);
  EXPECT_EQ(texts.index, 0);
  EXPECT_EQ(texts.artist, kVarispeed);
  EXPECT_EQ(texts.album, kChangingRates);
  EXPECT_EQ(texts.title, hostText(album[0].title));
  const bool tellsGenre = ipod.look([](SimulatedIpod& d) { return d.personality().tellsGenre; });
  EXPECT_EQ(texts.genre, tellsGenre ? "\x05" + album[0].genre : "");
  EXPECT_EQ(texts.fifth, "UnKnown");
}

// Each track of the album has another rate than its neighbours in the order of their numbers; by
// title some neighbours share one.
void LongSession::followTheSampleRates() {
  ipod.takeAudioCalls();
  std::vector<std::string> changes;
  IpodSongPlay(0);
  for (size_t i = 1; i < album.size(); ++i) {
    IpodCommand(IPOD_NEXT_TRACK);
    expectPlaying(album[i]);
    if (album[i].sampleRate == album[i - 1].sampleRate) continue;
    const std::string rate = std::to_string(album[i].sampleRate);
    changes.push_back("SelectFrequency(" + rate + " Hz)");
    EXPECT_TRUE(eventually([&] { return ipod.log.eventsWithout({"PostMessageW("}) == changes; }))
        << rate;
  }
  EXPECT_GE(changes.size(), 3u);
}

void LongSession::changeTheModes() {
  const struct {
    int mode;
    simulator::Shuffle shuffle;
    simulator::Repeat repeat;
  } modes[] = {{IPOD_MODE_TRACKS, simulator::Shuffle::kTracks, simulator::Repeat::kOne},
               {IPOD_MODE_ALBUMS, simulator::Shuffle::kAlbums, simulator::Repeat::kAll},
               {IPOD_MODE_OFF, simulator::Shuffle::kOff, simulator::Repeat::kOff}};
  for (const auto& each : modes) {
    EXPECT_EQ(IpodSetShuffleMode(each.mode), 0);
    EXPECT_EQ(IpodSetRepeatMode(each.mode), 0);
    EXPECT_EQ(valueOf(IpodGetShuffleMode), each.mode);
    EXPECT_EQ(valueOf(IpodGetRepeatMode), each.mode);
    ipod.look([&](SimulatedIpod& device) {
      EXPECT_EQ(device.player().shuffle(), each.shuffle);
      EXPECT_EQ(device.player().repeat(), each.repeat);
    });
  }
}

// Steps in the snapshot, which was taken below the first artist.
void LongSession::stepFromArtistToArtist() {
  EXPECT_EQ(parentUpDownName(), kChangingRates);
  const Names names = namesOf(musicOf(library), &Track::artist);
  const auto firstOf = [&](const std::string& name) {
    return byArtist(musicWith(library, &Track::artist, name)).front();
  };
  expectOneRefresh([] { IpodCommand(IPOD_NEXT_GROUP); });
  expectPlaying(firstOf(names[1]));
  expectOneRefresh([] { IpodCommand(IPOD_PREVIOUS_GROUP); });
  expectPlaying(firstOf(names[0]));
  expectOneRefresh([] { IpodCommand(IPOD_PREVIOUS_GROUP); });
  expectPlaying(firstOf(names.back()));
  EXPECT_EQ(IpodGetNumberOfPlaylist(), static_cast<int>(names.size()));
}

void LongSession::climbBack() {
  EXPECT_NE(IpodGetParentItem(), nullptr);
  EXPECT_EQ(IpodGetType(), IPOD_ALBUMS);
  EXPECT_EQ(IpodGetParentItem(), artist);
  EXPECT_EQ(IpodGetType(), IPOD_ARTISTS);
  EXPECT_EQ(itemName(), kVarispeed);
  EXPECT_EQ(IpodGetParentItem(), nullptr) << "back to the tabs";
  EXPECT_EQ(IpodGetParentItem(), nullptr) << "out of the tree";
  EXPECT_EQ(IpodGetType(), -1);
}

// Steps in a snapshot of the list of albums itself: to another album of the playing tracks.
void LongSession::stepAmongThePlayingTracks() {
  IpodGetFirstItem(0, IPOD_ALBUMS, 0);
  IpodValidateUpDownTree();
  const Tracks all = byArtist(musicOf(library));
  IpodSongPlay(1);
  expectPlaying(all[1]);
  const auto next = std::find_if(all.begin(), all.end(),
                                 [&](const Track& track) { return track.album != all[1].album; });
  expectOneRefresh([] { IpodCommand(IPOD_NEXT_GROUP); });
  expectPlaying(*next);
  expectOneRefresh([] { IpodCommand(IPOD_PREVIOUS_GROUP); });
  expectPlaying(all[0]);
  IpodCommand(IPOD_STOP);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_STOPPED);
}

void LongSession::forgetTheIpod() {
  IpodSetSameIpod(1);
  EXPECT_EQ(IpodGetNumberOfPlaylist(),
            static_cast<int>(namesOf(musicOf(library), &Track::album).size()));
  IpodSetSameIpod(0);
  EXPECT_EQ(IpodGetNumberOfPlaylist(), 0);
  EXPECT_EQ(parentUpDownName(), "");
}

void LongSession::disconnect() {
  ipod.takeAudioCalls();
  EXPECT_EQ(IpodDisconnect(), 0);
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_THAT(ipod.takeAudioCalls(), ElementsAre("StopIpodAudioPlay()"));
  EXPECT_TRUE(ipod.waitUntil([](const SimulatedIpod& device) { return !device.inExtendedMode(); }));
  EXPECT_EQ(ipod.look([](SimulatedIpod& device) {
    return device.countReceived(simulator::Lingo::kGeneral, simulator::kExitRemoteUiMode);
  }),
            1u);
}

INSTANTIATE_TEST_SUITE_P(, LongSession, testing::ValuesIn(kModels),
                         [](const auto& model) { return model.param.name; });

TEST_P(LongSession, UsesEveryExport) {
  using Step = void (LongSession::*)();
  const Step steps[] = {
      &LongSession::connect,
      &LongSession::readTheDevicePage,
      &LongSession::readTheTextsOfNothing,
      &LongSession::lookAtAPlaylist,
      &LongSession::pageThroughTheArtists,
      &LongSession::moveInATab,
      &LongSession::descendToTheTracks,
      &LongSession::play,
      &LongSession::pauseAndPlayOn,
      &LongSession::skip,
      &LongSession::readTheTexts,
      &LongSession::followTheSampleRates,
      &LongSession::changeTheModes,
      &LongSession::stepFromArtistToArtist,
      &LongSession::climbBack,
      &LongSession::stepAmongThePlayingTracks,
      &LongSession::forgetTheIpod,
      &LongSession::disconnect,
  };
  for (const Step step : steps) {
    (this->*step)();
    if (HasFatalFailure()) return;
  }
  EXPECT_EQ(ipod.look([&](SimulatedIpod&) { return unsaid.size(); }), 0u);
}

}  // namespace
}  // namespace session
