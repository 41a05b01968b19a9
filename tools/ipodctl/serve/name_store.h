#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tool {

/// What is known of a list.
struct ListFacts {
  int count = 0;            ///< its items, without the play-all entry
  int first = 0;            ///< the library's index of the first item
  bool hasPlayAll = false;  ///< it begins with a play-all entry
  bool isTabbed = false;    ///< the library splits it into tabs
  /// The names of the entries that were opened on the way, from the first list on. Empty for a
  /// play-all entry.
  std::vector<std::string> above;
};

/// The names and counts of one connection's lists. Its memory is bounded: what was not used for the
/// longest time is dropped. All functions may be called on any thread.
class NameStore {
 public:
  static constexpr size_t kMostNames = 200'000;
  static constexpr size_t kMostLists = 10'000;

  /// Begins with the next connection.
  void clear();

  std::optional<ListFacts> facts(const std::string& path);
  void keep(const std::string& path, ListFacts facts);
  std::optional<std::string> name(const std::string& path, int index);
  void keep(const std::string& path, int index, std::string name);

 private:
  /// Neighbouring names are dropped together.
  static constexpr int kChunkSize = 50;

  struct Chunk {
    std::pair<std::string, int> key;
    std::unordered_map<int, std::string> names;
  };

  void dropOldest();

  std::mutex mutex;
  std::map<std::string, ListFacts> lists;
  std::list<Chunk> chunks;  ///< the last used first
  std::map<std::pair<std::string, int>, std::list<Chunk>::iterator> places;
};

}  // namespace tool
