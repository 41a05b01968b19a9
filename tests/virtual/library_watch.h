#pragma once

#include <windows.h>

#include <array>
#include <cstdint>

#include "api/browse_tree.h"
#include "virtual/virtual_world.h"

namespace virtual_session {

/// The library's lock in traces.
constexpr char kLibraryLock[] = "the library's lock";

/// Adds each change of the library's global state to the trace of a world, "sets ipodConnected =
/// 1", "changes the browse tree: level 2", after the earlier lines of the thread that makes it.
class LibraryWatch {
 public:
  explicit LibraryWatch(virtual_platform::VirtualWorld& watched);
  LibraryWatch(const LibraryWatch&) = delete;
  LibraryWatch& operator=(const LibraryWatch&) = delete;

 private:
  static constexpr std::size_t kValues = 6;
  using Values = std::array<int64_t, kValues>;
  using TreeBytes = std::array<unsigned char, sizeof(ipodctl::BrowseTree)>;

  void look();
  void nameLock();
  void lookAtTree(const ipodctl::BrowseTree& tree, TreeBytes& known, const char* name);
  static Values read();

  virtual_platform::VirtualWorld& world;
  HANDLE lock = nullptr;
  Values known = read();
  TreeBytes knownTree;
  TreeBytes knownSnapshot;
};

}  // namespace virtual_session
