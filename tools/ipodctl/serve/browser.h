#pragma once

#include <functional>
#include <vector>

#include "ipodctl/serve/conversation.h"
#include "ipodctl/serve/list_path.h"
#include "ipodctl/serve/lost_names.h"
#include "ipodctl/serve/name_store.h"

namespace tool {

/// Moves the library's browse tree to the lists that requests name, and reads their counts and
/// names.
///
/// The library has one browse tree and the iPod has one selection, while each client is in
/// another list. So each request names its list, and the browser remembers where the tree is: a
/// list next to the last one needs few requests to the iPod. A move within a list needs none.
///
/// Its functions throw NotWanted before a request that nobody waits for, and OddAnswer when an
/// answer cannot be believed; then the tree is closed, and the next request begins a new one.
class Browser {
 public:
  using Wanted = std::function<bool()>;

  Browser(NameStore& names, Conversation& ipod) : store(names), conversation(ipod) {}

  /// Something else has changed the iPod's selection, or the iPod is another one.
  void forget() { levels.clear(); }

  /// What is known of a list; the iPod is asked when it is not known. Throws Refused when there is
  /// no such list.
  ListFacts facts(const ListPath& path, const Wanted& isWanted);

  /// Reads the names of a few items. Each is kept; for one that costs the connection a placeholder.
  void readNames(const ListPath& path, const std::vector<int>& indexes, const Wanted& isWanted);

  /// Opens a list so that it is the iPod's selection, as it is before it plays. The group commands
  /// then go from record to record of its first list.
  void select(const ListPath& path, const Wanted& isWanted);

  /// What the worker reports to: whether the connection is lost after an odd answer.
  LostNames& lostNames() { return lost; }

  /// Whether what is open is a first list.
  bool isInFirstList() const { return levels.size() == 1; }

 private:
  /// A level of the library's browse tree.
  struct Level {
    ListStep step;
    const int* index;  ///< the library's current index; null when the list did not open
    bool isAtPlayAll;  ///< no move yet: a tabbed list is on "all" itself
  };

  void goTo(const ListPath& route, const Wanted& isWanted);
  bool returnsToPlaylists(size_t depth) const;
  void leave(const Wanted& isWanted);
  void open(const ListStep& step, const Wanted& isWanted);
  void enter(const ListStep& step);
  void moveTo(int index, const Wanted& isWanted);
  void moveToPlayAll(const Wanted& isWanted);
  void moveToTab(int index);
  void step(const int* (*move)());
  void moveTowards(int index);
  ListFacts readFacts(const ListPath& path, const Wanted& isWanted);
  int countItems(int type);
  void checkEntry(const ListPath& path, const Wanted& isWanted);
  struct Reading;
  Reading readName(int index, const Wanted& isWanted);
  std::vector<Reading> readOnce(const std::string& path, const std::vector<int>& indexes,
                                const Wanted& isWanted);
  std::vector<int> readable(const std::string& path, const std::vector<int>& indexes);
  void confirm(Reading& reading, const Wanted& isWanted);

  NameStore& store;
  Conversation& conversation;
  LostNames lost;
  std::vector<Level> levels;  ///< the open ones
};

}  // namespace tool
