#pragma once

#include <cstdint>

#include "base/shared_value.h"
#include "lingo/database.h"

namespace ipodctl {

/// Level 0 means that no list is open; the lists are at levels 1 to 7.
constexpr int32_t kLevelCount = 8;

/// The level of a list that was opened in a new tree.
constexpr int32_t kTopLevel = 1;

/// Items to a tab.
constexpr int32_t ipodTabSize = 35;

/// The index of the play-all entry, and the tab of the play-all tab.
constexpr int32_t kPlayAllEntry = -1;

/// The category that the host means by a type, kNone when there is no such type.
Category categoryOfType(int type);

/// The host's number for what a list holds, -1 when no list is open.
int typeOfCategory(Category category);

/// True for the categories that a list can hold.
bool isListed(Category category);

/// True for the lists that are split into tabs when they are long.
bool allowsTabs(Category category);

/// True for the lists that begin with a play-all entry.
bool hasPlayAll(Category category);

/// The category whose records are counted when a new tree opens with this list: the host's types 6
/// to 8 are audiobooks, podcasts and composers there, and the categories of their numbers below.
Category topLevelCategory(Category category);

/// The sort order of a sorted record selection.
SortOrder sortOrderOf(Category category);

/// Where the host stands in the iPod's lists, level by level.
struct BrowseTree {
  SharedValue<int32_t> ipodLevel;
  SharedValue<int32_t> ipodLevelCount[kLevelCount];  ///< items in the list
  SharedValue<Category> ipodLevelType[kLevelCount];  ///< what the list holds
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
