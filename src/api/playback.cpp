// The transport buttons, and what plays.

#include <windows.h>

#include "api/browse_tree.h"
#include "api/database_requests.h"
#include "api/group_step.h"
#include "api/ipodctl.h"
#include "api/library_state.h"
#include "base/os_primitives.h"

namespace ipodctl {
namespace {

// How far into a track, in ms, "previous" means the track before it, and from when on it means the
// start of this one. At exactly 3000 ms it means neither.
constexpr uint32_t kPreviousTrackBelow = 3000;
constexpr uint32_t kRestartFrom = 3001;

struct PlayStatus {
  uint32_t trackLength = 0;  ///< ms
  uint32_t position = 0;     ///< ms
  PlayState state = PlayState::kStopped;

  bool playing() const { return state == PlayState::kPlaying; }
  bool active() const { return playing() || state == PlayState::kPaused; }
};

PlayStatus playStatus() {
  PlayStatus status;
  ipodController.GetPlayStatus(status.trackLength, status.position, status.state);
  return status;
}

/// The playing track's place in the current selection.
struct PlayingTrack {
  RecordIndex index = 0;
  uint32_t count = 0;
  bool known = false;  ///< the iPod answered with the index

  bool isFirst() const { return index == 0; }
  bool isNone() const { return index == kNoRecord; }
  RecordIndex last() const { return static_cast<RecordIndex>(count - 1); }
};

PlayingTrack playingTrack() {
  PlayingTrack track;
  track.known = ipodController.GetCurrentTrackIndex(track.index);
  if (track.known) track.count = countTracks();
  return track;
}

enum class IndexChange { kNone, kMoved, kUnknown };

/// Compares the playing index with the one that was read.
IndexChange changeSince(const PlayingTrack& track) {
  RecordIndex index = 0;
  if (!ipodController.GetCurrentTrackIndex(index)) return IndexChange::kUnknown;
  return index == track.index ? IndexChange::kNone : IndexChange::kMoved;
}

void notifyHost() { PostMessageW(HWND_BROADCAST, WM_IPOD_NOTIFY, 0, 0); }

void playNextTrack() {
  if (playStatus().active()) {
    const PlayingTrack track = playingTrack();
    if (track.known && (track.isNone() || track.index == track.last())) {
      ipodController.PlayCurrentSelection(0);
      return;
    }
  }
  ipodController.PlayControl(PlayControlCode::kNextTrack);
}

/// The iPod may go to the previous track instead of restarting this one: then one step forward
/// corrects it.
void restartTrack(const PlayingTrack& track, uint32_t position) {
  ipodController.PlayControl(PlayControlCode::kPreviousTrack);
  if (position >= kRestartFrom && changeSince(track) == IndexChange::kMoved) {
    ipodController.PlayControl(PlayControlCode::kNextTrack);
  }
}

void playPreviousTrack() {
  const PlayStatus status = playStatus();
  if (!status.active()) {
    ipodController.PlayCurrentSelection(0);
    return;
  }
  const PlayingTrack track = playingTrack();
  if (!track.known) return;
  if (track.isNone() || (track.isFirst() && status.position < kPreviousTrackBelow)) {
    ipodController.PlayCurrentSelection(track.last());
  } else {
    restartTrack(track, status.position);
  }
}

/// The iPod may restart this track instead of going to the previous one: then "previous" is sent
/// again.
void playTrackBefore() {
  if (!playStatus().active()) {
    selectRecord(Category::kTracks, 0);
    return;
  }
  const PlayingTrack track = playingTrack();
  if (!track.known) return;
  if (track.isFirst() || track.isNone()) {
    selectRecord(Category::kTracks, track.last());
    return;
  }
  ipodController.PlayControl(PlayControlCode::kPreviousTrack);
  if (changeSince(track) == IndexChange::kNone)
    ipodController.PlayControl(PlayControlCode::kPreviousTrack);
}

/// Returns true when a command was acknowledged. An iPod that has only the toggle gets none while
/// it plays.
bool play() {
  if (ipodHasPlayPause) {
    if (ipodPlayDelayFlag) taskSleepMicro(0);
    if (ipodController.PlayControl(PlayControlCode::kPlay)) return true;
  }
  return !playStatus().playing() && ipodController.PlayControl(PlayControlCode::kTogglePlayPause);
}

void pause() {
  if (ipodHasPlayPause && ipodController.PlayControl(PlayControlCode::kPause)) return;
  if (playStatus().playing()) ipodController.PlayControl(PlayControlCode::kTogglePlayPause);
}

/// Carries out a command. Returns true when the host is to refresh.
bool carryOut(int command) {
  switch (command) {
    case IPOD_TOGGLE_PLAY_PAUSE:
    case IPOD_STOP:
    case IPOD_START_FAST_FORWARD:
    case IPOD_START_REWIND:
    case IPOD_END_SEEK:
    case IPOD_NEXT:
    case IPOD_PREVIOUS:
      ipodController.PlayControl(static_cast<PlayControlCode>(command));
      return false;
    case IPOD_NEXT_TRACK:
      playNextTrack();
      return true;
    case IPOD_PREVIOUS_TRACK:
      playPreviousTrack();
      return true;
    case IPOD_PREVIOUS_TRACK_NO_RESTART:
      playTrackBefore();
      return true;
    case IPOD_PLAY:
      return play();
    case IPOD_PAUSE:
      pause();
      return false;
    case IPOD_PREVIOUS_GROUP:
      return stepToGroup(false);
    case IPOD_NEXT_GROUP:
      return stepToGroup(true);
    default:
      return false;
  }
}

/// Returns the track that the host means by an item of the current list.
RecordIndex trackOfItem(RecordIndex item) {
  const BrowseLevel& list = browseTree.current();
  constexpr RecordIndex kCurrentItem = -1;
  if (item == kCurrentItem) {
    return list.onItem() ? list.index.get() : 0;
  }
  if (item >= 0 && item < list.count) return item;
  return countTracks() > static_cast<uint32_t>(item) ? item : 0;
}

/// Selects a track of the whole library: in a list of level 1 nothing is selected yet.
void selectWholeLibrary(RecordIndex track) {
  constexpr RecordIndex kWholeLibrary = 0;
  const Category type = browseTree.current().type;
  countRecords(Category::kPlaylists);
  selectRecordSorted(Category::kPlaylists, kWholeLibrary, type);
  countTracks();
  selectRecord(Category::kTracks, track);
}

}  // namespace
}  // namespace ipodctl

using namespace ipodctl;

int IPODCTL_CALL IpodCommand(int command) {
  const LibraryLockHold lock;
  if (lock && carryOut(command)) notifyHost();
  return 0;
}

int IPODCTL_CALL IpodSongPlay(int index) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  const RecordIndex track = trackOfItem(index);
  if (browseTree.level == kTopLevel) selectWholeLibrary(track);
  ipodController.PlayCurrentSelection(track);
  notifyHost();
  return 0;
}

int IPODCTL_CALL IpodSongGetNumElem(int* count) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  const uint32_t tracks = countTracks();
  if (count != nullptr) *count = static_cast<int>(tracks);
  return 0;
}

int IPODCTL_CALL IpodGetTrackIndex(int* index) {
  const LibraryLockHold lock;
  RecordIndex playing = 0;
  if (!lock || !ipodController.GetCurrentTrackIndex(playing)) return 0;
  if (index != nullptr) *index = playing;
  return 1;
}

int IPODCTL_CALL IpodGetCurrentPlayStatus(int* status) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  const PlayStatus current = playStatus();
  if (status != nullptr) *status = current.active() ? static_cast<int>(current.state) : 0;
  return 0;
}

int IPODCTL_CALL IpodGetCurrentTrackPosition(int* position) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  const PlayStatus current = playStatus();
  if (position != nullptr) *position = static_cast<int>(current.position);
  return 0;
}
