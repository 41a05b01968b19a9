#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool {

/// The index of the play-all entry.
constexpr int kPlayAllIndex = -1;

/// A list is opened below an entry of the list above it.
struct ListStep {
  int index;               ///< the entry that is opened; 0 for the first list, which has none
  int type;                ///< what the list holds, an IpodBrowseType
  bool tracksOfSelection;  ///< all tracks below the entry
};

bool operator==(const ListStep& left, const ListStep& right);

/// The way to a list: the first list, and each descent from there.
using ListPath = std::vector<ListStep>;

/// The library shows a long list in tabs of so many items.
constexpr int kItemsOfATab = 35;

/// The most levels that the library's browse tree has.
constexpr size_t kMostLevels = 7;

/// Reads a path such as "artists/3/albums". No value: it is none. Below a track there are no lists.
std::optional<ListPath> parseListPath(const std::string& text);
/// The same with each number in its usual form.
std::string textOf(const ListPath& path);
/// The list from which this one is opened. Not for a path of one step.
ListPath parentOf(const ListPath& path);

/// "albums"; "all-tracks" for the tracks of a selection.
std::string nameOf(const ListStep& step);
/// The lists that can usefully be opened below the entries of a list, the usual one first.
std::vector<std::string> openedBy(int type);

}  // namespace tool
