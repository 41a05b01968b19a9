#include "ipodctl/serve/browser.h"

#include <ipodctl.h>

#include <algorithm>
#include <string>

#include "ipodctl/serve/ipod_text.h"
#include "ipodctl/serve/refusal.h"

namespace tool {
namespace {

/// A list of playlists counts this many less, when it is not empty.
constexpr int kPlaylistsNotCounted = 2;
/// No list is so long. A move that never arrives must end.
constexpr int kMostMoves = 2'000'000;

// The requests that a call makes at most.
constexpr int kRequestsToOpen = 3;
constexpr int kRequestsToLeave = 2;

void ensureWanted(const Browser::Wanted& isWanted) {
  if (!isWanted()) throw NotWanted();
}

[[noreturn]] void refuseList(const std::string& message) {
  throw Refused{Refusal::kNoSuchList, "no-such-list", message};
}

/// A first list of the types 6 to 8 is counted by another type. A first list of playlists does not
/// reach the last one. Below all artists they are what they should be.
bool isOpenedBelowAllArtists(int type) { return type == IPOD_PLAYLISTS || type >= IPOD_TYPE_6; }

/// The levels of the library's tree that lead to a list.
ListPath routeTo(const ListPath& path) {
  if (!isOpenedBelowAllArtists(path.front().type)) return path;
  ListPath route = path;
  route.front().index = kPlayAllIndex;
  route.insert(route.begin(), ListStep{0, IPOD_ARTISTS, false});
  return route;
}

bool isTabbed() { return IpodIsTabActive() == 1; }
bool showsTabs() { return IpodIsTabVisualizationActive() == 1; }

}  // namespace

ListFacts Browser::facts(const ListPath& path, const Wanted& isWanted) {
  const std::string text = textOf(path);
  if (std::optional<ListFacts> known = store.facts(text)) return *known;
  ListFacts facts = readFacts(path, isWanted);
  store.keep(text, facts);
  return facts;
}

ListFacts Browser::readFacts(const ListPath& path, const Wanted& isWanted) {
  ListFacts facts;
  if (path.size() > 1) {
    checkEntry(path, isWanted);
    const ListPath parent = parentOf(path);
    const int index = path.back().index;
    facts.above = this->facts(parent, isWanted).above;
    facts.above.push_back(index == kPlayAllIndex ? ""
                                                 : store.name(textOf(parent), index).value_or(""));
  }
  goTo(routeTo(path), isWanted);
  const Conversation::Clock::time_point begin = Conversation::Clock::now();
  const int type = path.back().type;
  facts.isTabbed = isTabbed();
  const bool opensOnPlayAll = IpodIsPlayAll() == 1 || path.back().tracksOfSelection ||
                              type == IPOD_ARTISTS || type == IPOD_ALBUMS;
  ensureWanted(isWanted);
  facts.count = countItems(type);
  conversation.check(begin, 1);
  facts.hasPlayAll = opensOnPlayAll && facts.count > 0;
  // The first playlist is the whole library.
  if (path.size() == 1 && type == IPOD_PLAYLISTS && facts.count > 0) {
    facts.first = 1;
    --facts.count;
  }
  return facts;
}

/// The entry that the last list of the path opens must be there. Its name is read, because it is
/// shown above the list.
void Browser::checkEntry(const ListPath& path, const Wanted& isWanted) {
  const ListPath parent = parentOf(path);
  const int index = path.back().index;
  const ListFacts above = facts(parent, isWanted);
  const bool isThere = index == kPlayAllIndex
                           ? above.hasPlayAll
                           : index >= above.first && index < above.first + above.count;
  if (!isThere || routeTo(path).size() > kMostLevels) {
    refuseList("There is no list " + textOf(path) + "; ask for " + textOf(parent) +
               " and choose one of its entries.");
  }
  if (index != kPlayAllIndex && !store.name(textOf(parent), index)) {
    readNames(parent, {index}, isWanted);
  }
}

/// Counts the items of the list that is open, and compares that with where the list ends: a list
/// whose count did not arrive looks empty.
int Browser::countItems(int type) {
  Level& level = levels.back();
  const int* const last = IpodGetPrevItem();
  const int lastIndex = last != nullptr ? *last : -1;
  level.isAtPlayAll = level.isAtPlayAll && last == nullptr;
  int count = -1;
  IpodGetMediaFileCount(&count);
  if (last == nullptr) {
    if (count != 0) throw OddAnswer();
    return 0;
  }
  if (type == IPOD_PLAYLISTS) count += count == 0 ? lastIndex + 1 : kPlaylistsNotCounted;
  const int rest = count - lastIndex;
  if (rest < 1 || rest > (isTabbed() ? kItemsOfATab : 1)) throw OddAnswer();
  return count;
}

void Browser::select(const ListPath& path, const Wanted& isWanted) {
  facts(path, isWanted);
  // A tree of playlists reaches all but the last.
  const bool isOwnTree = path.size() > 1 && path.front().type == IPOD_PLAYLISTS &&
                         path[1].index < facts({path.front()}, isWanted).count;
  goTo(isOwnTree ? path : routeTo(path), isWanted);
}

/// Leaves the lists that are not on the route, or begins a new tree when that needs fewer requests.
void Browser::goTo(const ListPath& route, const Wanted& isWanted) {
  size_t common = 0;
  while (common < std::min(levels.size(), route.size()) && levels[common].step == route[common])
    ++common;
  const bool isFar = (levels.size() - common) * kRequestsToLeave > (common + 1) * kRequestsToOpen;
  if (isFar || returnsToPlaylists(common)) common = 0;
  if (common == 0) levels.clear();
  try {
    while (levels.size() > common)
      leave(isWanted);
    while (levels.size() < route.size())
      open(route[levels.size()], isWanted);
  } catch (const OddAnswer&) {
    forget();
    throw;
  }
}

/// Some models do not undo the selection of a playlist.
bool Browser::returnsToPlaylists(size_t depth) const {
  for (size_t i = std::max<size_t>(depth, 1); i < levels.size(); ++i) {
    if (levels[i - 1].step.type == IPOD_PLAYLISTS) return true;
  }
  return false;
}

void Browser::leave(const Wanted& isWanted) {
  ensureWanted(isWanted);
  const Conversation::Clock::time_point begin = Conversation::Clock::now();
  if (isTabbed() && !showsTabs()) IpodGetParentItem();
  levels.pop_back();
  IpodGetParentItem();
  conversation.check(begin, kRequestsToLeave);
}

void Browser::open(const ListStep& step, const Wanted& isWanted) {
  if (!levels.empty()) moveTo(step.index, isWanted);
  ensureWanted(isWanted);
  const Conversation::Clock::time_point begin = Conversation::Clock::now();
  enter(step);
  conversation.check(begin, kRequestsToOpen);
}

void Browser::enter(const ListStep& step) {
  const int descend = levels.empty() ? 0 : 1;
  const int* const index = IpodGetFirstItem(descend, step.type, step.tracksOfSelection ? 1 : 0);
  levels.push_back({step, index, true});
  if (index == nullptr) throw OddAnswer();
}

/// Makes an item the current entry of the list that is open.
void Browser::moveTo(int index, const Wanted& isWanted) {
  if (index == kPlayAllIndex) {
    moveToPlayAll(isWanted);
    return;
  }
  if (isTabbed()) moveToTab(index);
  moveTowards(index);
}

/// In a tabbed list a descent leads from the play-all tab only before the first move.
void Browser::moveToPlayAll(const Wanted& isWanted) {
  if (levels.back().isAtPlayAll) return;
  if (!isTabbed()) {
    moveTowards(kPlayAllIndex);
    return;
  }
  const ListStep step = levels.back().step;
  if (levels.size() > 1) {
    leave(isWanted);
  } else {
    levels.clear();
  }
  open(step, isWanted);
}

/// Shows the tabs, goes to the one that has the item, and chooses it.
void Browser::moveToTab(int index) {
  const int first = index / kItemsOfATab * kItemsOfATab;
  const int current = *levels.back().index;
  const bool isInside = !showsTabs() && current >= first && current < first + kItemsOfATab;
  if (isInside) return;
  if (!showsTabs()) IpodGetParentItem();
  levels.back().isAtPlayAll = false;
  for (int moves = 0; moves == 0 || *levels.back().index != first; ++moves) {
    if (moves == kMostMoves) throw OddAnswer();
    step(IpodGetNextItem);
  }
  IpodDisableTabVisualizationActive();
}

void Browser::moveTowards(int index) {
  const int* const current = levels.back().index;
  const auto move = index > *current ? IpodGetNextItem : IpodGetPrevItem;
  for (int moves = 0; *current != index; ++moves) {
    if (moves == kMostMoves) throw OddAnswer();
    step(move);
  }
}

void Browser::step(const int* (*move)()) {
  levels.back().isAtPlayAll = false;
  if (move() == nullptr) throw OddAnswer();
}

/// A name as it was received.
struct Browser::Reading {
  int index;
  bool isWritten;
  std::string name;
  bool isDoubtful;  ///< it did not come, or is the one before once more
};

Browser::Reading Browser::readName(int index, const Wanted& isWanted) {
  moveTo(index, isWanted);
  ensureWanted(isWanted);
  const Conversation::Clock::time_point begin = Conversation::Clock::now();
  IpodText text;
  IpodGetItemName(0, text.buffer(), nullptr, IpodText::kSize);
  const bool isSilent = Conversation::isSilence(Conversation::Clock::now() - begin);
  if (!text.isWritten() && isSilent) throw OddAnswer();
  return {index, text.isWritten(), text.utf8(), !text.isWritten()};
}

/// Keeps a placeholder for the names that cost the connection, and returns the others.
std::vector<int> Browser::readable(const std::string& path, const std::vector<int>& indexes) {
  std::vector<int> others;
  for (const int index : indexes) {
    if (lost.contains(path, index)) {
      store.keep(path, index, LostNames::kPlaceholder);
    } else {
      others.push_back(index);
    }
  }
  return others;
}

/// A name that is not written is empty, or the link is closed.
std::vector<Browser::Reading> Browser::readOnce(const std::string& path,
                                                const std::vector<int>& indexes,
                                                const Wanted& isWanted) {
  std::vector<Reading> readings;
  for (const int index : indexes) {
    Reading reading = readName(index, isWanted);
    if (!reading.isWritten && !conversation.isInStep()) {
      lost.suspect(path, index);
      throw OddAnswer();
    }
    if (!readings.empty() && readings.back().name == reading.name) reading.isDoubtful = true;
    readings.push_back(std::move(reading));
  }
  return readings;
}

/// An answer that arrives twice is the answer to the next request, too. So a name is read again
/// when it is the same as the one before, and when it is empty or did not arrive.
void Browser::confirm(Reading& reading, const Wanted& isWanted) {
  const Conversation::Clock::time_point begin = Conversation::Clock::now();
  const Reading again = readName(reading.index, isWanted);
  conversation.check(begin, 1);
  if (!reading.isWritten && again.isWritten) reading = again;
  if (again.isWritten != reading.isWritten || again.name != reading.name) throw OddAnswer();
}

void Browser::readNames(const ListPath& path, const std::vector<int>& indexes,
                        const Wanted& isWanted) {
  const std::string text = textOf(path);
  const std::vector<int> asked = readable(text, indexes);
  if (asked.empty()) return;
  goTo(routeTo(path), isWanted);
  try {
    std::vector<Reading> readings = readOnce(text, asked, isWanted);
    if (!conversation.isInStep()) throw OddAnswer();
    for (Reading& each : readings) {
      if (each.isDoubtful) confirm(each, isWanted);
    }
    for (Reading& each : readings)
      store.keep(text, each.index, std::move(each.name));
  } catch (const OddAnswer&) {
    forget();
    throw;
  }
}

}  // namespace tool
