#pragma once

#include <cstdint>

#include "base/shared_value.h"

namespace ipodctl {

/// Level 0 means that no list is open; the lists are at levels 1 to 7.
constexpr int32_t kLevelCount = 8;

/// The level of a list that was opened in a new tree.
constexpr int32_t kTopLevel = 1;

/// Items to a tab.
constexpr int32_t ipodTabSize = 35;

/// The index of the play-all entry, and the tab of the play-all tab.
constexpr int32_t kPlayAllEntry = -1;

/// What a list holds; also the database category that is asked for its records. The iPod's own
/// numbers for what types 6 to 8 are called are others.
enum BrowseType : int32_t {
  kNoType = -1,
  kPlaylists = 1,
  kArtists = 2,
  kAlbums = 3,
  kGenres = 4,
  kTracks = 5,
  kType6 = 6,
  kType7 = 7,
  kType8 = 8,
};

bool isBrowseType(int32_t type);

/// True for the lists that are split into tabs when they are long.
bool allowsTabs(int32_t type);

/// True for the lists that begin with a play-all entry.
bool hasPlayAll(int32_t type);

/// The category whose records are counted when a new tree opens with this type.
uint8_t topLevelCategory(int32_t type);

/// The sort order of a sorted record selection.
uint8_t sortOrderOf(int32_t type);

/// Where the host stands in the iPod's lists, level by level.
struct BrowseTree {
  SharedValue<int32_t> ipodLevel;
  SharedValue<int32_t> ipodLevelCount[kLevelCount];  ///< items in the list
  SharedValue<int32_t> ipodLevelType[kLevelCount];   ///< BrowseType
  SharedValue<int> ipodLevelIndex[kLevelCount];      ///< current item; the host reads it itself
  SharedValue<int32_t> ipodLevelEnd[kLevelCount];    ///< next and previous stay below this
  SharedValue<int32_t> ipodLevelStart[kLevelCount];  ///< and not below this
  SharedValue<int32_t> ipodLevelTab[kLevelCount];    ///< current tab
  SharedValue<int32_t> ipodLevelTabCount[kLevelCount];
  SharedValue<uint8_t> ipodTabVisualization[kLevelCount];  ///< 1: the list shows its tabs
  SharedValue<uint8_t> ipodEnableTab[kLevelCount];         ///< 1: the list is split into tabs
  SharedValue<uint8_t> ipodPlayAll[kLevelCount];  ///< 1: the list begins with a play-all entry

  /// No list is open, and nothing is known of any level.
  void clear();

  /// Fills the level's state for a list of `count` items whose index is set already.
  void openList(int32_t level, uint32_t count, bool tabsAllowed, bool playAll);

  /// Moves the current level's index; only for a list that is not empty.
  void moveToNext();
  void moveToPrevious();

  /// Forgets the current level, all but its count, and goes to the one above.
  void leaveLevel();

  /// True when the current entry of the level is the play-all entry or tab.
  bool onPlayAll(int32_t level) const;

  /// True when the index of the level is one of its items.
  bool onItem(int32_t level) const;

  bool showsTabs(int32_t level) const { return ipodTabVisualization[level] == 1; }

 private:
  void goToTab(int32_t level, int32_t tab);
};

/// The tree that the host walks.
extern BrowseTree browseTree;

/// The up-down snapshot: the tree as it stood when playback started from one of its lists.
extern BrowseTree upDownTree;

}  // namespace ipodctl
