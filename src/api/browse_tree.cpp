#include "api/browse_tree.h"

#include <algorithm>

namespace ipodctl {

BrowseTree browseTree;
BrowseTree upDownTree;

namespace {

enum SortOrder : uint8_t {
  kSortByGenre = 0,
  kSortByArtist = 1,
  kSortByAlbum = 3,
  kSortByName = 4,
  kSortByDefault = 255,
};

/// The iPod's categories of the last three types, whose numbers differ from the types'.
enum Category : uint8_t {
  kComposerCategory = 6,
  kAudiobookCategory = 7,
  kPodcastCategory = 8,
};

uint32_t roundedUpQuotient(uint32_t dividend, uint32_t divisor) {
  return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

}  // namespace

bool isBrowseType(int32_t type) { return type >= kPlaylists && type <= kType8; }

bool allowsTabs(int32_t type) { return type >= kPlaylists && type <= kGenres; }

bool hasPlayAll(int32_t type) { return type == kArtists || type == kAlbums; }

uint8_t topLevelCategory(int32_t type) {
  switch (type) {
    case kType6:
      return kAudiobookCategory;
    case kType7:
      return kPodcastCategory;
    case kType8:
      return kComposerCategory;
    default:
      return static_cast<uint8_t>(type);
  }
}

uint8_t sortOrderOf(int32_t type) {
  switch (type) {
    case kPlaylists:
    case kTracks:
      return kSortByName;
    case kArtists:
      return kSortByArtist;
    case kAlbums:
      return kSortByAlbum;
    case kGenres:
      return kSortByGenre;
    default:
      return kSortByDefault;
  }
}

void BrowseTree::clear() {
  for (int32_t level = 0; level < kLevelCount; ++level) {
    ipodLevelCount[level] = -1;
    ipodLevelType[level] = kNoType;
    ipodLevelIndex[level] = -1;
    ipodLevelEnd[level] = -1;
    ipodLevelStart[level] = -1;
    ipodLevelTab[level] = -1;
    ipodLevelTabCount[level] = -1;
    ipodTabVisualization[level] = 0;
    ipodEnableTab[level] = 0;
    ipodPlayAll[level] = 0;
  }
  ipodLevel = 0;
}

void BrowseTree::openList(int32_t level, uint32_t count, bool tabsAllowed, bool playAll) {
  const bool tabbed = count > uint32_t{ipodTabSize} && tabsAllowed;
  const auto items = static_cast<int32_t>(count);
  ipodPlayAll[level] = playAll ? 1 : 0;
  ipodLevelTab[level] = tabbed ? ipodLevelIndex[level].get() : -1;
  ipodEnableTab[level] = tabbed ? 1 : 0;
  ipodTabVisualization[level] = tabbed ? 1 : 0;
  ipodLevelStart[level] = tabbed ? 0 : ipodLevelIndex[level].get();
  ipodLevelEnd[level] = tabbed ? ipodTabSize : items;
  ipodLevelTabCount[level] =
      tabbed ? static_cast<int32_t>(roundedUpQuotient(count, ipodTabSize)) : 0;
  ipodLevelCount[level] = items;
}

/// The play-all tab lies before the first one: its range ends where that one starts.
void BrowseTree::goToTab(int32_t level, int32_t tab) {
  const int32_t start = tab * ipodTabSize;
  const int64_t end = int64_t{start} + ipodTabSize;
  ipodLevelTab[level] = tab;
  ipodLevelStart[level] = start;
  ipodLevelEnd[level] = static_cast<int32_t>(std::min<int64_t>(end, ipodLevelCount[level]));
  ipodLevelIndex[level] = start;
}

void BrowseTree::moveToNext() {
  const int32_t level = ipodLevel;
  if (showsTabs(level)) {
    const int32_t firstTab = ipodPlayAll[level] == 1 ? kPlayAllEntry : 0;
    const int32_t next = ipodLevelTab[level] + 1;
    goToTab(level, next >= ipodLevelTabCount[level] ? firstTab : next);
    return;
  }
  const int32_t next = ipodLevelIndex[level] + 1;
  ipodLevelIndex[level] = next >= ipodLevelEnd[level] ? ipodLevelStart[level].get() : next;
}

void BrowseTree::moveToPrevious() {
  const int32_t level = ipodLevel;
  if (showsTabs(level)) {
    const int32_t firstTab = ipodPlayAll[level] == 1 ? kPlayAllEntry : 0;
    const int32_t previous = ipodLevelTab[level] - 1;
    goToTab(level, previous < firstTab ? ipodLevelTabCount[level] - 1 : previous);
    return;
  }
  const int32_t previous = ipodLevelIndex[level] - 1;
  ipodLevelIndex[level] = previous < ipodLevelStart[level] ? ipodLevelEnd[level] - 1 : previous;
}

void BrowseTree::leaveLevel() {
  const int32_t level = ipodLevel;
  ipodLevelIndex[level] = -1;
  ipodLevelTab[level] = -1;
  ipodLevelEnd[level] = -1;
  ipodLevelStart[level] = -1;
  ipodLevelType[level] = kNoType;
  ipodLevelTabCount[level] = -1;
  ipodTabVisualization[level] = 0;
  ipodEnableTab[level] = 0;
  ipodPlayAll[level] = 0;
  ipodLevel = std::max<int32_t>(level - 1, 0);
}

bool BrowseTree::onPlayAll(int32_t level) const {
  if (showsTabs(level)) return ipodLevelTab[level] == kPlayAllEntry;
  return ipodPlayAll[level] == 1 && ipodLevelIndex[level] == kPlayAllEntry;
}

bool BrowseTree::onItem(int32_t level) const {
  return ipodLevelIndex[level] >= 0 && ipodLevelIndex[level] < ipodLevelCount[level];
}

}  // namespace ipodctl
