// Walking the browse tree: opening lists, moving in them, and going back.

#include <cstdio>

#include "api/browse_tree.h"
#include "api/database.h"
#include "api/ipodctl.h"
#include "api/library_state.h"

namespace ipodctl {
namespace {

/// The whole library comes first among the playlists and is not offered.
constexpr int32_t kFirstOfferedPlaylist = 1;

const int* currentIndex() { return browseTree.ipodLevelIndex[browseTree.ipodLevel].address(); }

int32_t firstIndex(bool playAll) { return playAll ? kPlayAllEntry : 0; }

const int* openTree(Category type) {
  BrowseTree& tree = browseTree;
  tree.ipodLevelIndex[0] = -1;
  tree.ipodLevelType[0] = Category::kNone;
  tree.ipodLevelCount[0] = -1;
  tree.ipodPlayAll[0] = 0;
  tree.ipodLevelIndex[kTopLevel] = 0;
  tree.ipodLevelType[kTopLevel] = type;
  tree.ipodLevel = kTopLevel;
  ipodController.ResetDbSelection();
  uint32_t count = countRecords(topLevelCategory(type));
  if (type == Category::kPlaylists) --count;
  tree.ipodLevelIndex[kTopLevel] =
      type == Category::kPlaylists ? kFirstOfferedPlaylist : firstIndex(hasPlayAll(type));
  tree.openList(kTopLevel, count, allowsTabs(type), hasPlayAll(type));
  return currentIndex();
}

const int* openCurrentItem(Category type, bool tracksOfSelection) {
  BrowseTree& tree = browseTree;
  const int32_t parent = tree.ipodLevel;
  const int32_t level = parent + 1;
  if (level >= kLevelCount) return nullptr;
  const bool playAll = tracksOfSelection || hasPlayAll(type);
  tree.ipodLevelType[level] = tracksOfSelection ? Category::kTracks : type;
  tree.ipodLevel = level;
  countRecords(tree.ipodLevelType[parent]);
  if (level == kTopLevel) {
    selectRecord(tree.ipodLevelType[parent], tree.ipodLevelIndex[parent]);
  } else {
    selectRecordSorted(tree.ipodLevelType[parent], tree.ipodLevelIndex[parent],
                       tree.ipodLevelType[level]);
  }
  const uint32_t count = countRecords(tree.ipodLevelType[level]);
  tree.ipodLevelIndex[level] = firstIndex(playAll);
  tree.openList(level, count, tracksOfSelection || allowsTabs(type), playAll);
  return currentIndex();
}

/// Moves within the current list, when there is one and it is not empty.
const int* move(void (BrowseTree::*step)()) {
  const LibraryLockHold lock;
  if (!lock || browseTree.ipodLevelCount[browseTree.ipodLevel] <= 0) return nullptr;
  (browseTree.*step)();
  return currentIndex();
}

/// Asks the iPod whether the current item leads to tracks, and takes the question's selection back.
bool leadsToTracks(Category type, RecordIndex index) {
  selectRecord(type, index);
  const uint32_t tracks = countTracks();
  selectRecord(type, kNoRecord);
  return tracks != 0;
}

bool currentItemIsEmpty() {
  const BrowseTree& tree = browseTree;
  const int32_t level = tree.ipodLevel;
  if (tree.ipodLevelCount[level] <= 0) return true;
  if (tree.showsTabs(level) || tree.ipodLevelType[level] == Category::kTracks) return false;
  return !leadsToTracks(tree.ipodLevelType[level], tree.ipodLevelIndex[level]);
}

/// The count of the current list's type, without the whole library and one playlist more.
uint32_t countMediaFiles() {
  constexpr uint32_t kPlaylistsNotCounted = 2;
  const Category type = browseTree.ipodLevelType[browseTree.ipodLevel];
  if (!isListed(type)) return 0;
  const uint32_t count = countRecords(type);
  return type == Category::kPlaylists && count != 0 ? count - kPlaylistsNotCounted : count;
}

}  // namespace
}  // namespace ipodctl

using namespace ipodctl;

const int* IPODCTL_CALL IpodGetFirstItem(int descend, int type, int tracksOfSelection) {
  const LibraryLockHold lock;
  const Category category = categoryOfType(type);
  if (!lock || category == Category::kNone) return nullptr;
  return descend == 0 ? openTree(category) : openCurrentItem(category, tracksOfSelection != 0);
}

const int* IPODCTL_CALL IpodGetNextItem(void) { return move(&BrowseTree::moveToNext); }

const int* IPODCTL_CALL IpodGetPrevItem(void) { return move(&BrowseTree::moveToPrevious); }

const int* IPODCTL_CALL IpodGetParentItem(void) {
  const LibraryLockHold lock;
  if (!lock) return nullptr;
  BrowseTree& tree = browseTree;
  const int32_t level = tree.ipodLevel;
  if (tree.ipodEnableTab[level] == 1 && !tree.showsTabs(level)) {
    tree.ipodTabVisualization[level] = 1;
    return nullptr;
  }
  tree.leaveLevel();
  const int32_t parent = tree.ipodLevel;
  if (parent == 0) return nullptr;
  selectRecord(tree.ipodLevelType[parent], kNoRecord);
  countRecords(tree.ipodLevelType[parent]);
  return currentIndex();
}

int IPODCTL_CALL IpodCurItemIsEmpty(void) {
  const LibraryLockHold lock;
  return lock && currentItemIsEmpty() ? 1 : 0;
}

int IPODCTL_CALL IpodIsPlayAll(void) { return browseTree.onPlayAll(browseTree.ipodLevel) ? 1 : 0; }

int IPODCTL_CALL IpodIsTrack(void) {
  const LibraryLockHold lock;
  return lock && browseTree.ipodLevelType[browseTree.ipodLevel] == Category::kTracks ? 1 : 0;
}

int IPODCTL_CALL IpodGetType(void) {
  const LibraryLockHold lock;
  return lock ? typeOfCategory(browseTree.ipodLevelType[browseTree.ipodLevel]) : 0;
}

int IPODCTL_CALL IpodIsTabActive(void) { return browseTree.ipodEnableTab[browseTree.ipodLevel]; }

int IPODCTL_CALL IpodIsTabVisualizationActive(void) {
  return browseTree.ipodTabVisualization[browseTree.ipodLevel];
}

int IPODCTL_CALL IpodDisableTabVisualizationActive(void) {
  browseTree.ipodTabVisualization[browseTree.ipodLevel] = 0;
  return 0;
}

int IPODCTL_CALL IpodEnableTabVisualizationActive(void) {
  const int32_t level = browseTree.ipodLevel;
  const uint8_t tabbed = browseTree.ipodEnableTab[level];
  std::printf("\nEnter IpodEnableTabVisualizationActive******\n");
  std::printf("\n ****IpodEnableTab[%d] = %d******\n", static_cast<int>(level), tabbed);
  if (tabbed == 1) {
    std::printf("\nEnter if (ipodEnableTab[ipodLevel])******\n");
    browseTree.ipodTabVisualization[level] = 1;
  }
  return 0;
}

int IPODCTL_CALL IpodGetMediaFileCount(int* count) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  const uint32_t counted = countMediaFiles();
  if (count != nullptr) *count = static_cast<int>(counted);
  return 0;
}

int IPODCTL_CALL IpodGetNumberOfPlaylist(void) {
  return static_cast<int>(countRecords(upDownTree.ipodLevelType[kTopLevel]));
}
