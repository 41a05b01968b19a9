// Walking the browse tree: opening lists, moving in them, and going back.

#include <cstdio>

#include "api/browse_tree.h"
#include "api/database_requests.h"
#include "api/ipodctl.h"
#include "api/library_state.h"
#include "api/list_rules.h"

namespace ipodctl {
namespace {

const int* currentIndex() { return browseTree.current().index.address(); }

/// Closes the lists that were open and begins a tree whose top level has index 0 of `type`.
void beginTree(Category type) {
  BrowseLevel& root = browseTree.levels[0];
  root.index = -1;
  root.type = Category::kNone;
  root.count = -1;
  root.hasPlayAll = 0;
  browseTree.top().index = 0;
  browseTree.top().type = type;
  browseTree.level = kTopLevel;
}

const int* openTree(Category type) {
  beginTree(type);
  ipodController.ResetDbSelection();
  const RecordIndex first = firstOffered(type);
  const uint32_t count = countRecords(topLevelCategory(type)) - static_cast<uint32_t>(first);
  BrowseLevel& list = browseTree.top();
  list.index = hasPlayAll(type) ? kPlayAllEntry : first;
  list.open(count, allowsTabs(type), hasPlayAll(type));
  return currentIndex();
}

const int* openCurrentItem(Category type, bool tracksOfSelection) {
  const BrowseLevel& parent = browseTree.current();
  const int32_t level = browseTree.level + 1;
  if (level >= kLevelCount) return nullptr;
  const bool playAll = tracksOfSelection || hasPlayAll(type);
  BrowseLevel& list = browseTree.levels[level];
  list.type = tracksOfSelection ? Category::kTracks : type;
  browseTree.level = level;
  countRecords(parent.type);
  if (level == kTopLevel) {
    selectRecord(parent.type, parent.index);
  } else {
    selectRecordSorted(parent.type, parent.index, list.type);
  }
  const uint32_t count = countRecords(list.type);
  list.index = playAll ? kPlayAllEntry : 0;
  list.open(count, tracksOfSelection || allowsTabs(type), playAll);
  return currentIndex();
}

/// Moves within the current list, when there is one and it is not empty.
const int* move(void (BrowseLevel::*step)()) {
  const LibraryLockHold lock;
  if (!lock || browseTree.current().isEmpty()) return nullptr;
  (browseTree.current().*step)();
  return currentIndex();
}

/// Asks the iPod whether a record leads to tracks, and undoes the selection that the question
/// needs.
bool leadsToTracks(Category type, RecordIndex index) {
  selectRecord(type, index);
  const uint32_t tracks = countTracks();
  selectRecord(type, kNoRecord);
  return tracks != 0;
}

bool currentItemIsEmpty() {
  const BrowseLevel& list = browseTree.current();
  if (list.isEmpty()) return true;
  if (list.showsTabs() || list.type == Category::kTracks) return false;
  return !leadsToTracks(list.type, list.index);
}

/// The count of the current list's category, without the whole library and one playlist more.
uint32_t countMediaFiles() {
  constexpr uint32_t kPlaylistsNotCounted = 2;
  const Category type = browseTree.current().type;
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

const int* IPODCTL_CALL IpodGetNextItem(void) { return move(&BrowseLevel::moveToNext); }

const int* IPODCTL_CALL IpodGetPrevItem(void) { return move(&BrowseLevel::moveToPrevious); }

const int* IPODCTL_CALL IpodGetParentItem(void) {
  const LibraryLockHold lock;
  if (!lock) return nullptr;
  BrowseLevel& list = browseTree.current();
  if (list.isTabbed == 1 && !list.showsTabs()) {
    list.tabsShown = 1;
    return nullptr;
  }
  browseTree.leaveLevel();
  if (browseTree.level == 0) return nullptr;
  const Category parent = browseTree.current().type;
  selectRecord(parent, kNoRecord);
  countRecords(parent);
  return currentIndex();
}

int IPODCTL_CALL IpodCurItemIsEmpty(void) {
  const LibraryLockHold lock;
  return lock && currentItemIsEmpty() ? 1 : 0;
}

int IPODCTL_CALL IpodIsPlayAll(void) { return browseTree.current().onPlayAll() ? 1 : 0; }

int IPODCTL_CALL IpodIsTrack(void) {
  const LibraryLockHold lock;
  return lock && browseTree.current().type == Category::kTracks ? 1 : 0;
}

int IPODCTL_CALL IpodGetType(void) {
  const LibraryLockHold lock;
  return lock ? typeOfCategory(browseTree.current().type) : 0;
}

int IPODCTL_CALL IpodIsTabActive(void) { return browseTree.current().isTabbed; }

int IPODCTL_CALL IpodIsTabVisualizationActive(void) { return browseTree.current().tabsShown; }

int IPODCTL_CALL IpodDisableTabVisualizationActive(void) {
  browseTree.current().tabsShown = 0;
  return 0;
}

int IPODCTL_CALL IpodEnableTabVisualizationActive(void) {
  const int32_t level = browseTree.level;
  BrowseLevel& list = browseTree.levels[level];
  const uint8_t tabbed = list.isTabbed;
  std::printf("\nEnter IpodEnableTabVisualizationActive******\n");
  std::printf("\n ****IpodEnableTab[%d] = %d******\n", static_cast<int>(level), tabbed);
  if (tabbed == 1) {
    std::printf("\nEnter if (ipodEnableTab[ipodLevel])******\n");
    list.tabsShown = 1;
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
  return static_cast<int>(countRecords(upDownTree.top().type));
}
