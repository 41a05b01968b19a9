#include "api/browse_tree.h"

#include <algorithm>

namespace ipodctl {

BrowseTree browseTree;
BrowseTree upDownTree;

void BrowseTree::clear() {
  for (BrowseLevel& each : levels)
    each.clear();
  level = 0;
}

void BrowseTree::leaveLevel() {
  current().leave();
  level = std::max<int32_t>(level - 1, 0);
}

}  // namespace ipodctl
