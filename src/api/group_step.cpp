#include "api/group_step.h"

#include <cstdint>
#include <cstring>
#include <utility>

#include "api/browse_tree.h"
#include "api/database_requests.h"
#include "api/library_state.h"
#include "api/list_rules.h"
#include "base/text_string.h"

namespace ipodctl {
namespace {

bool sameText(const ByteString& left, const ByteString& right) {
  return left.size() == right.size() && std::memcmp(left.text(), right.text(), left.size()) == 0;
}

/// A walk over the tracks of the playing list in one direction, track by track, once round at most.
/// A group is a run of tracks with the same artist (or album). Tracks without a name form a group.
class GroupWalk {
 public:
  GroupWalk(Category groupType, RecordIndex startTrack, bool goForward)
      : type(groupType),
        start(startTrack),
        forward(goForward),
        group(nameOf(start)),
        count(countTracks()),
        track(start) {}

  RecordIndex position() const { return static_cast<RecordIndex>(track); }
  bool cameRound() const { return track == start; }

  /// Moves to the first track of another group, which becomes the group. Returns false when the
  /// walk is back at its start, or when the iPod stopped answering in a group without a name.
  bool leaveGroup() {
    while (stepsTaken < count) {
      ++stepsTaken;
      track = forward ? after(track) : before(track);
      if (cameRound()) return false;
      ByteString name = nameOf(track);
      if (!sameText(group, name)) {
        group = std::move(name);
        return true;
      }
      // A lost answer looks like an empty name: a lost iPod would be asked for every track.
      if (ipodController.lastWaitTimedOut()) return false;
    }
    return false;
  }

  void stepForward() { track = after(track); }

 private:
  uint32_t after(uint32_t index) const { return index + 1 < count ? index + 1 : 0; }

  uint32_t before(uint32_t index) const {
    return index > 0 && index <= count ? index - 1 : count - 1;
  }

  ByteString nameOf(uint32_t index) const {
    ByteString name;
    if (type == Category::kArtists) {
      ipodController.GetTrackArtist(static_cast<RecordIndex>(index), name);
    } else {
      ipodController.GetTrackAlbum(static_cast<RecordIndex>(index), name);
    }
    return name;
  }

  const Category type;
  const uint32_t start;
  const bool forward;
  ByteString group;
  const uint32_t count;
  uint32_t track;
  uint32_t stepsTaken = 0;
};

/// Steps from a list of level 1: by the names of the tracks around the playing one.
bool stepAmongTracks(Category type, bool forward) {
  RecordIndex playing = kNoRecord;
  if (!ipodController.GetCurrentTrackIndex(playing)) return false;
  GroupWalk walk(type, playing, forward);
  if (!walk.leaveGroup()) return false;
  // Backward the walk meets the last track of the group; its first one follows the next change.
  if (!forward && (walk.leaveGroup() || walk.cameRound())) walk.stepForward();
  ipodController.PlayCurrentSelection(walk.position());
  return true;
}

/// The record after or before `index`. Records before `first` are not offered; as many at the end
/// are passed over, too.
int64_t neighbourOf(int64_t index, int64_t first, int64_t count, bool forward) {
  if (forward) return index + 1 >= count - first ? first : index + 1;
  return index - 1 < first ? count - first - 1 : index - 1;
}

/// Steps from below level 1: to the next record of the list of level 1.
bool stepAmongRecords(bool forward) {
  BrowseLevel& list = upDownTree.top();
  const Category type = list.type;
  ipodController.ResetDbSelection();
  const auto count = static_cast<int32_t>(countRecords(type));
  if (list.onPlayAllEntry()) return false;
  const auto neighbour =
      static_cast<RecordIndex>(neighbourOf(list.index, firstOffered(type), count, forward));
  selectRecordSorted(type, neighbour, type);
  countTracks();
  ipodController.PlayCurrentSelection(0);
  list.index = neighbour;
  return true;
}

}  // namespace

bool stepToGroup(bool forward) {
  const int32_t upDownLevel = upDownTree.level;
  const Category type = upDownTree.top().type;
  if (upDownLevel == 0) return false;
  if (upDownLevel > kTopLevel) return stepAmongRecords(forward);
  return (type == Category::kArtists || type == Category::kAlbums) &&
         stepAmongTracks(type, forward);
}

}  // namespace ipodctl
