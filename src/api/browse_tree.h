#pragma once

#include <cstdint>

#include "api/browse_level.h"
#include "base/shared_value.h"

namespace ipodctl {

/// Level 0 means that no list is open; the lists are at levels 1 to 7.
constexpr int32_t kLevelCount = 8;

/// The level of a list that was opened in a new tree.
constexpr int32_t kTopLevel = 1;

/// The host's place in the iPod's lists, level by level.
struct BrowseTree {
  SharedValue<int32_t> level;
  BrowseLevel levels[kLevelCount];

  BrowseLevel& current() { return levels[level]; }
  const BrowseLevel& current() const { return levels[level]; }

  /// The list that was opened first.
  BrowseLevel& top() { return levels[kTopLevel]; }
  const BrowseLevel& top() const { return levels[kTopLevel]; }

  /// Closes all lists.
  void clear();

  /// Leaves the current level for the one above.
  void leaveLevel();
};

/// The tree that the host walks.
extern BrowseTree browseTree;

/// The up-down snapshot: the tree as it was when playback started from one of its lists.
extern BrowseTree upDownTree;

}  // namespace ipodctl
