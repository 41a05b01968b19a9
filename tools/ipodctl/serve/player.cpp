#include "ipodctl/serve/player.h"

#include <ipodctl.h>

#include <utility>

#include "ipodctl/serve/ipod_text.h"
#include "ipodctl/serve/refusal.h"

namespace tool {
namespace {

constexpr const char* kStatusNames[] = {"stopped", "playing", "paused"};
constexpr const char* kShuffleNames[] = {"off", "tracks", "albums"};
constexpr const char* kRepeatNames[] = {"off", "track", "all"};
constexpr const char* kCommandNames[] = {"toggle",       "stop",
                                         "next-track",   "previous-track",
                                         "fast-forward", "rewind",
                                         "end-seek",     "next",
                                         "previous",     "play",
                                         "pause",        "previous-group",
                                         "next-group",   "previous-track-no-restart"};

/// The library numbers commands and modes from 1.
template <size_t kSize>
std::optional<int> numberOf(const char* const (&names)[kSize], const std::string& name) {
  for (size_t i = 0; i < kSize; ++i) {
    if (name == names[i]) return static_cast<int>(i) + 1;
  }
  return std::nullopt;
}

template <size_t kSize>
std::optional<std::string> nameOf(const char* const (&names)[kSize], int number) {
  if (number < 1 || number > static_cast<int>(kSize)) return std::nullopt;
  return names[number - 1];
}

std::optional<std::string> valueOf(const IpodText& text, size_t start = 0) {
  if (!text.isWritten()) return std::nullopt;
  return text.utf8(start);
}

/// These go by the iPod's selection: at the end of the playing list they go round in it.
bool goesBySelection(int command) {
  return command == IPOD_NEXT_TRACK || command == IPOD_PREVIOUS_TRACK ||
         command == IPOD_PREVIOUS_TRACK_NO_RESTART;
}

bool isGroupCommand(int command) {
  return command == IPOD_PREVIOUS_GROUP || command == IPOD_NEXT_GROUP;
}

/// The record after or before `index`, as the library goes round.
int neighbourOf(int index, const ListFacts& list, bool forward) {
  const int end = list.count;  // beyond the last one that the library reaches
  if (forward) return index + 1 >= end ? list.first : index + 1;
  return index - 1 < list.first ? end - 1 : index - 1;
}

}  // namespace

std::optional<int> commandNamed(const std::string& name) { return numberOf(kCommandNames, name); }
std::optional<int> shuffleNamed(const std::string& name) { return numberOf(kShuffleNames, name); }
std::optional<int> repeatNamed(const std::string& name) { return numberOf(kRepeatNames, name); }

void Player::begin() {
  playing = {};
  origin.reset();
  textsOf.reset();
  isDoubtful = false;
}

/// Without an answer the status is "stopped" and the position is 0. A track that plays has neither,
/// but for a moment.
bool Player::makesSense(int index, int status, int position) {
  if (index < 0) return status == IPOD_STOPPED;
  return status != IPOD_STOPPED && position > 0;
}

bool Player::ask() {
  int index = -1;
  if (IpodGetTrackIndex(&index) == 0) throw OddAnswer();
  int status = IPOD_STOPPED;
  int position = 0;
  IpodGetCurrentPlayStatus(&status);
  IpodGetCurrentTrackPosition(&position);
  const bool wasDoubtful = std::exchange(isDoubtful, !makesSense(index, status, position));
  if (isDoubtful && !wasDoubtful) return false;
  playing.index = index;
  playing.status = kStatusNames[status];
  playing.position = position;
  if (isRefreshed.exchange(false)) textsOf.reset();
  if (textsOf != index) askTexts(index);
  board.setPlayback(playing);
  return true;
}

void Player::askTexts(int index) {
  IpodText title;
  IpodText artist;
  IpodText album;
  IpodText genre;
  playing.title = playing.artist = playing.album = playing.genre = std::nullopt;
  textsOf = index;
  if (index < 0) return;
  int asked = -1;
  if (IpodGetTrackInfo(&asked, artist.buffer(), album.buffer(), title.buffer(), genre.buffer(),
                       nullptr, IpodText::kSize) != 0) {
    textsOf.reset();
    throw OddAnswer();
  }
  if (asked != index || IpodGetTrackIndex(nullptr) == 0) {
    textsOf.reset();  // the track has changed, or the answers belong to other requests
    return;
  }
  playing.title = valueOf(title);
  playing.artist = valueOf(artist);
  playing.album = valueOf(album);
  playing.genre = valueOf(genre, 1);  // after the information type
}

void Player::play(const ListPath& path, int index, const Browser::Wanted& isWanted) {
  const ListFacts list = browser.facts(path, isWanted);
  const bool isThere = index == kPlayAllIndex
                           ? list.hasPlayAll
                           : index >= list.first && index < list.first + list.count;
  if (!isThere) {
    throw Refused{Refusal::kNoSuchList, "no-such-entry",
                  "The list " + textOf(path) + " has no such entry; ask for the list again."};
  }
  ListPath tracks = path;
  int track = index == kPlayAllIndex ? 0 : index;
  if (path.back().type != IPOD_TRACKS && index != kPlayAllIndex) {
    tracks.push_back({index, IPOD_TRACKS, false});
    track = 0;
  }
  const std::vector<std::string> above = browser.facts(tracks, isWanted).above;
  browser.select(tracks, isWanted);
  int count = 0;
  IpodSongGetNumElem(&count);
  IpodValidateUpDownTree();
  IpodSongPlay(track);
  // In a first list the iPod now has selected the track.
  if (browser.isInFirstList()) browser.forget();
  origin = tracks;
  playing.tracks = count;
  playing.originPath = textOf(tracks);
  playing.originName = above.empty() ? std::nullopt : std::optional<std::string>(above.back());
  refresh();
}

/// The library finds out where the playing list ends by counting what is selected, and browsing has
/// selected something else.
void Player::selectOrigin(const Browser::Wanted& isWanted) {
  if (origin) browser.select(*origin, isWanted);
}

void Player::command(int code, const Browser::Wanted& isWanted) {
  if (goesBySelection(code)) selectOrigin(isWanted);
  isRefreshed = false;
  IpodCommand(code);
  if (isGroupCommand(code)) {
    browser.forget();
    if (isRefreshed && origin && origin->size() > 1) followGroupStep(code == IPOD_NEXT_GROUP);
  }
  if (code == IPOD_PREVIOUS_TRACK_NO_RESTART) browser.forget();
  refresh();
}

/// The tracks of the next record play now; the iPod does not say of which. The step is made
/// already: a failure here must not make it again.
void Player::followGroupStep(bool forward) {
  const auto always = [] { return true; };
  const ListPath top = {origin->front()};
  const int opened = (*origin)[1].index;
  origin.reset();
  playing.originPath = playing.originName = std::nullopt;
  playing.tracks.reset();
  try {
    const int record = neighbourOf(opened, browser.facts(top, always), forward);
    const ListPath tracks{top.front(), {record, IPOD_TRACKS, false}};
    const ListFacts facts = browser.facts(tracks, always);
    playing.originPath = textOf(tracks);
    playing.originName = facts.above.back();
    playing.tracks = facts.count;
    origin = tracks;
  } catch (const OddAnswer&) {
    browser.forget();
  } catch (const Refused&) {
  }
}

void Player::setModes(int shuffle, int repeat) {
  if (shuffle != 0) IpodSetShuffleMode(shuffle);
  if (repeat != 0) IpodSetRepeatMode(repeat);
  askModes();
}

void Player::askModes() {
  int shuffle = 0;
  int repeat = 0;
  IpodGetShuffleMode(&shuffle);
  IpodGetRepeatMode(&repeat);
  board.setModes({nameOf(kShuffleNames, shuffle), nameOf(kRepeatNames, repeat)});
}

}  // namespace tool
