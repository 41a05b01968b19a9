#include "api/browse_level.h"

#include <algorithm>

namespace ipodctl {
namespace {

uint32_t roundedUpQuotient(uint32_t dividend, uint32_t divisor) {
  return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

}  // namespace

void BrowseLevel::clear() {
  count = -1;
  leave();
}

void BrowseLevel::open(uint32_t itemCount, bool tabsAllowed, bool playAll) {
  const bool tabbed = itemCount > uint32_t{ipodTabSize} && tabsAllowed;
  const auto items = static_cast<int32_t>(itemCount);
  hasPlayAll = playAll ? 1 : 0;
  tab = tabbed ? index.get() : -1;
  isTabbed = tabbed ? 1 : 0;
  tabsShown = tabbed ? 1 : 0;
  start = tabbed ? 0 : index.get();
  end = tabbed ? ipodTabSize : items;
  tabCount = tabbed ? static_cast<int32_t>(roundedUpQuotient(itemCount, ipodTabSize)) : 0;
  count = items;
}

void BrowseLevel::leave() {
  index = -1;
  tab = -1;
  end = -1;
  start = -1;
  type = Category::kNone;
  tabCount = -1;
  tabsShown = 0;
  isTabbed = 0;
  hasPlayAll = 0;
}

/// The play-all tab is before the first one: its range ends where that one starts.
void BrowseLevel::goToTab(int32_t newTab) {
  const int32_t first = newTab * ipodTabSize;
  const int64_t afterLast = int64_t{first} + ipodTabSize;
  tab = newTab;
  start = first;
  end = static_cast<int32_t>(std::min<int64_t>(afterLast, count));
  index = first;
}

void BrowseLevel::moveToNext() {
  if (showsTabs()) {
    const int32_t next = tab + 1;
    goToTab(next >= tabCount ? firstTab() : next);
    return;
  }
  const RecordIndex next = index + 1;
  index = next >= end ? start.get() : next;
}

void BrowseLevel::moveToPrevious() {
  if (showsTabs()) {
    const int32_t previous = tab - 1;
    goToTab(previous < firstTab() ? tabCount - 1 : previous);
    return;
  }
  const RecordIndex previous = index - 1;
  index = previous < start ? end - 1 : previous;
}

}  // namespace ipodctl
