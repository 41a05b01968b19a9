#include "api/browse_tree.h"

#include <algorithm>

#include "api/ipodctl.h"

namespace ipodctl {

BrowseTree browseTree;
BrowseTree upDownTree;

namespace {

constexpr int kNoType = -1;

uint32_t roundedUpQuotient(uint32_t dividend, uint32_t divisor) {
  return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

}  // namespace

Category categoryOfType(int type) {
  return type >= IPOD_PLAYLISTS && type <= IPOD_TYPE_8 ? static_cast<Category>(type)
                                                       : Category::kNone;
}

int typeOfCategory(Category category) {
  return category == Category::kNone ? kNoType : static_cast<int>(category);
}

bool isListed(Category category) {
  return category >= Category::kPlaylists && category <= Category::kPodcasts;
}

bool allowsTabs(Category category) {
  return category >= Category::kPlaylists && category <= Category::kGenres;
}

bool hasPlayAll(Category category) {
  return category == Category::kArtists || category == Category::kAlbums;
}

Category topLevelCategory(Category category) {
  switch (category) {
    case Category{IPOD_TYPE_6}:
      return Category::kAudiobooks;
    case Category{IPOD_TYPE_7}:
      return Category::kPodcasts;
    case Category{IPOD_TYPE_8}:
      return Category::kComposers;
    default:
      return category;
  }
}

SortOrder sortOrderOf(Category category) {
  switch (category) {
    case Category::kPlaylists:
    case Category::kTracks:
      return SortOrder::kName;
    case Category::kArtists:
      return SortOrder::kArtist;
    case Category::kAlbums:
      return SortOrder::kAlbum;
    case Category::kGenres:
      return SortOrder::kGenre;
    default:
      return SortOrder::kDefault;
  }
}

void BrowseTree::clear() {
  for (int32_t level = 0; level < kLevelCount; ++level) {
    ipodLevelCount[level] = -1;
    ipodLevelType[level] = Category::kNone;
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
  ipodLevelType[level] = Category::kNone;
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
