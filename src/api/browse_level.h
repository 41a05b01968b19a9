#pragma once

#include <cstdint>

#include "base/shared_value.h"
#include "lingo/database_codes.h"

namespace ipodctl {

/// The number of items in a tab.
constexpr int32_t ipodTabSize = 35;

/// The index of the play-all entry, and the tab of the play-all tab.
constexpr RecordIndex kPlayAllEntry = -1;

/// One list of the iPod and the host's place in it. A long list is split into tabs: while it shows
/// them, a move goes from tab to tab, otherwise from item to item within the current tab.
struct BrowseLevel {
  SharedValue<Category> type;  ///< what the list holds
  SharedValue<int32_t> count;  ///< items in the list
  SharedValue<int> index;      ///< current item; an int, because the host reads it itself
  SharedValue<int32_t> start;  ///< first index that moves reach
  SharedValue<int32_t> end;    ///< index after the last one that moves reach
  SharedValue<int32_t> tab;    ///< current tab
  SharedValue<int32_t> tabCount;
  SharedValue<uint8_t> tabsShown;   ///< 1: the list shows its tabs
  SharedValue<uint8_t> isTabbed;    ///< 1: the list is split into tabs
  SharedValue<uint8_t> hasPlayAll;  ///< 1: the list begins with a play-all entry

  /// Nothing is known of the level.
  void clear();

  /// Fills the level for a list of `itemCount` items. `type` and `index` are set already.
  void open(uint32_t itemCount, bool tabsAllowed, bool playAll);

  /// Clears the level but for its count.
  void leave();

  /// Moves to the next or previous tab or item, and around at the end. Not for an empty list.
  void moveToNext();
  void moveToPrevious();

  bool isEmpty() const { return count <= 0; }
  bool showsTabs() const { return tabsShown == 1; }
  bool onPlayAllTab() const { return tab == kPlayAllEntry; }  ///< while it shows tabs
  bool onPlayAllEntry() const { return hasPlayAll == 1 && index == kPlayAllEntry; }

  /// True on the play-all tab or, in a list that does not show tabs, on the play-all entry.
  bool onPlayAll() const { return showsTabs() ? onPlayAllTab() : onPlayAllEntry(); }

  /// True when the index is one of the list's items.
  bool onItem() const { return index >= 0 && index < count; }

 private:
  int32_t firstTab() const { return hasPlayAll == 1 ? kPlayAllEntry : 0; }
  void goToTab(int32_t newTab);
};

}  // namespace ipodctl
