#include "session.h"

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "ipodctl.h"
#include "screen_text.h"

namespace {

using std::chrono::milliseconds;

constexpr int kShownItems = 6;
constexpr int kPositionReadings = 3;
constexpr milliseconds kBetweenReadings{800};
constexpr milliseconds kTrackSettles{700};

/// Begins a step. What the library itself says starts in the first column; what the head unit shows
/// is indented.
void begin(const char* title) {
  static int number = 0;
  std::printf("\n---- %d. %s\n", ++number, title);
}

void show(const std::string& text) { std::printf("   %s\n", text.c_str()); }

std::string itemName() {
  TextBuffer name;
  IpodGetItemName(0, name.units(), nullptr, TextBuffer::kSize);
  return name.text();
}

/// Shows the tabs of a list that begins with a play-all tab, and stops on that tab.
void showTabs() {
  do {
    show(itemName());
    IpodGetNextItem();
  } while (IpodIsPlayAll() == 0);
}

/// Shows the first entries of a list from the current one on, and comes back to it. `index` is the
/// list's current index.
void showItems(const int* index) {
  const int first = *index;
  int shown = 0;
  do {
    show(itemName());
    IpodGetNextItem();
  } while (*index != first && ++shown < kShownItems);
  if (*index != first) show("...");
  while (*index != first)
    IpodGetPrevItem();
}

/// Goes from the play-all entry, where the list opens, to its first item.
void passPlayAll(const int* index) {
  while (*index < 0)
    IpodGetNextItem();
}

bool connectToIpod() {
  begin("Connect, with the logo");
  if (IpodConnect() == 0) {
    show("There is no iPod that answers on \"IPD1:\".");
    return false;
  }
  show("connected");
  return true;
}

/// Leaves the tree at the first artist.
bool browseArtists() {
  begin("The artists");
  const int* index = IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  int artists = 0;
  IpodGetMediaFileCount(&artists);
  show(std::to_string(artists) + " artists");
  if (artists == 0 || index == nullptr) return false;
  if (IpodIsTabActive() != 0) {
    show("in tabs:");
    showTabs();
    IpodGetNextItem();
    show("the first tab:");
    IpodDisableTabVisualizationActive();
  }
  passPlayAll(index);
  showItems(index);
  return true;
}

/// Opens what is below the current item, shows it and leaves the tree at its first item.
bool openItem(const char* title, int type) {
  const std::string parent = itemName();
  begin((title + parent).c_str());
  const int* index = IpodGetFirstItem(1, type, 0);
  if (index == nullptr || IpodGetNextItem() == nullptr) {
    show("(nothing)");
    return false;
  }
  IpodGetPrevItem();
  showItems(index);
  passPlayAll(index);
  return true;
}

void showPlaying() {
  static const char* const kStates[] = {"stopped", "playing", "paused"};
  int status = IPOD_STOPPED;
  int position = 0;
  int track = -1;
  IpodGetCurrentPlayStatus(&status);
  IpodGetCurrentTrackPosition(&position);
  IpodGetTrackIndex(&track);
  show("track " + std::to_string(track) + ", " + kStates[status] + " at " + clockTime(position));
}

void pause(milliseconds time) { std::this_thread::sleep_for(time); }

void playAlbum() {
  begin("Play from the first track; the position moves");
  IpodValidateUpDownTree();
  IpodSongPlay(0);
  for (int i = 0; i < kPositionReadings; ++i) {
    pause(kBetweenReadings);
    showPlaying();
  }
}

void steerPlayback() {
  begin("Next track");
  IpodCommand(IPOD_NEXT_TRACK);
  pause(kTrackSettles);
  showPlaying();
  begin("Pause, and play on");
  IpodCommand(IPOD_PAUSE);
  showPlaying();
  IpodCommand(IPOD_PLAY);
  pause(kTrackSettles);
  showPlaying();
}

void changeModes() {
  begin("Shuffle");
  int mode = 0;
  IpodSetShuffleMode(IPOD_MODE_TRACKS);
  IpodGetShuffleMode(&mode);
  show("shuffle mode " + std::to_string(mode));
  IpodSetShuffleMode(IPOD_MODE_OFF);
  IpodGetShuffleMode(&mode);
  show("shuffle mode " + std::to_string(mode));
}

void showTrackTexts() {
  begin("The playing track's texts");
  TextBuffer artist;
  TextBuffer album;
  TextBuffer title;
  TextBuffer genre;
  int track = -1;
  IpodGetTrackInfo(&track, artist.units(), album.units(), title.units(), genre.units(), nullptr,
                   TextBuffer::kSize);
  show("title:  " + title.text());
  show("artist: " + artist.text());
  show("album:  " + album.text());
  show("genre:  " + genre.text());
}

void showDevice() {
  begin("Name and serial number");
  TextBuffer name;
  TextBuffer serial;
  IpodGetName(name.units(), TextBuffer::kSize);
  IpodGetSerialNumber(serial.units(), TextBuffer::kSize);
  show("name:          " + name.text());
  show("serial number: " + serial.text());
}

void followSampleRate() {
  begin("Skip on: a track at another sample rate announces itself");
  IpodCommand(IPOD_NEXT_TRACK);
  pause(kTrackSettles);
  showPlaying();
}

bool stillThere() {
  int track = -1;
  if (IpodGetTrackIndex(&track) == 1) return true;
  show("The iPod no longer answers.");
  return false;
}

void disconnect() {
  begin("Disconnect");
  IpodDisconnect();
  show("disconnected");
}

/// True when the iPod was there to the end.
bool runConnected() {
  if (browseArtists() && openItem("Albums of ", IPOD_ALBUMS) &&
      openItem("Tracks of ", IPOD_TRACKS)) {
    playAlbum();
    steerPlayback();
    changeModes();
    showTrackTexts();
    showDevice();
    followSampleRate();
  } else {
    showDevice();
  }
  return stillThere();
}

}  // namespace

bool runSession() {
  if (!connectToIpod()) return false;
  const bool stayed = runConnected();
  disconnect();
  return stayed;
}
