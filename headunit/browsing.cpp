#include "browsing.h"

#include "ipodctl.h"
#include "list_page.h"

namespace {

constexpr int kItemsOfATab = 35;

/// Counts the items of the list that has just opened. Returns true when it has some, and as many as
/// the library counted: a wrong count would show items that do not exist. Goes to the list's last
/// entry and back to the first.
bool countItems(int& count) {
  IpodGetMediaFileCount(&count);
  const int* const last = IpodGetPrevItem();
  if (last == nullptr) return false;
  const int rest = count - *last;  // from the last item on, or from the last tab's first one
  const int most = IpodIsTabVisualizationActive() != 0 ? kItemsOfATab : 1;
  IpodGetNextItem();
  return rest >= 1 && rest <= most;
}

/// Returns whether the list of playlists was counted. The first playlist is the whole library, so
/// such a list is never empty. One that was not counted is in tab mode and has no next entry.
bool countsPlaylists() {
  IpodGetFirstItem(0, IPOD_PLAYLISTS, 0);
  return IpodIsTabActive() == 0 || IpodGetNextItem() != nullptr;
}

/// Returns whether the list is really empty. An uncounted list shows no items, too. The list is
/// empty when its count is 0 and the iPod answers another count. Each question is asked once, after
/// a pause: a second question could take the late answer to the first one.
bool isSurelyEmpty() {
  int count = 0;
  leaveIpodAlone();
  IpodGetMediaFileCount(&count);
  leaveIpodAlone();
  return count == 0 && countsPlaylists();
}

void explainEmptyList(HeadUnit& headUnit, bool hasHadItems) {
  if (headUnit.ipod.isLost()) return;
  if (!hasHadItems && isSurelyEmpty()) {
    headUnit.screen.show("(nothing)");
  } else {
    headUnit.showGap("The iPod does not say how long this list is.");
  }
}

/// An open list.
struct List {
  const int* index = nullptr;  ///< of the current entry
  int items = 0;
};

/// Opens a list with `open`, which returns its index.
bool openList(HeadUnit& headUnit, List& list, const std::function<const int*()>& open) {
  bool hasHadItems = false;
  const bool isOpen = headUnit.ipod.ask([&] {
    list.index = open();
    const bool isRight = list.index != nullptr && countItems(list.items);
    if (!isRight && IpodGetNextItem() != nullptr) hasHadItems = true;
    return isRight;
  });
  if (!isOpen) explainEmptyList(headUnit, hasHadItems);
  return isOpen;
}

bool showArtists(HeadUnit& headUnit) {
  headUnit.screen.beginSection("The artists");
  List artists;
  if (!openList(headUnit, artists, [] { return IpodGetFirstItem(0, IPOD_ARTISTS, 0); })) {
    return false;
  }
  headUnit.screen.show(std::to_string(artists.items) + " artists");
  showList(headUnit, artists.index);
  return true;
}

/// Shows what is below the current entry.
bool showEntry(HeadUnit& headUnit, const std::string& title, int type) {
  const std::string name = nameOfEntry(headUnit.ipod);
  if (headUnit.ipod.isLost()) return false;
  headUnit.screen.beginSection(title + name);
  List list;
  const bool isOpen = openList(headUnit, list, [&] {
    if (list.index != nullptr) IpodGetParentItem();  // opened already: leave it first
    return IpodGetFirstItem(1, type, 0);
  });
  if (isOpen) showList(headUnit, list.index);
  return isOpen;
}

}  // namespace

bool browse(HeadUnit& headUnit) {
  return showArtists(headUnit) && showEntry(headUnit, "Albums of ", IPOD_ALBUMS) &&
         showEntry(headUnit, "Tracks of ", IPOD_TRACKS);
}
