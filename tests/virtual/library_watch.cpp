#include "virtual/library_watch.h"

#include <cstring>
#include <utility>

#include "api/library_state.h"
#include "virtual/named_object.h"

using namespace ipodctl;

namespace virtual_session {
namespace {

constexpr const char* kNames[] = {"the logo",       "ipodHasPlayPause",      "identified",
                                  "ipodSampleRate", "the controller's rate", "ipodConnected"};

template <class Bytes>
bool differs(const BrowseTree& tree, const Bytes& bytes) {
  return std::memcmp(static_cast<const void*>(&tree), bytes.data(), sizeof(tree)) != 0;
}

template <class Bytes>
void copy(const BrowseTree& tree, Bytes& bytes) {
  std::memcpy(bytes.data(), static_cast<const void*>(&tree), sizeof(tree));
}

}  // namespace

LibraryWatch::LibraryWatch(virtual_platform::VirtualWorld& watched) : world(watched) {
  copy(browseTree, knownTree);
  copy(upDownTree, knownSnapshot);
  world.watch([this] { look(); });
}

LibraryWatch::Values LibraryWatch::read() {
  uint32_t rate = 0;
  ipodController.getSampleRate(rate);
  return {ipodController.logoImage() != nullptr ? 1 : 0,
          ipodHasPlayPause,
          ipodController.isIdentified(),
          ipodSampleRate,
          rate,
          ipodConnected};
}

void LibraryWatch::look() {
  nameLock();
  lookAtTree(browseTree, knownTree, "the browse tree");
  lookAtTree(upDownTree, knownSnapshot, "the snapshot");
  const Values before = std::exchange(known, read());
  if (known == before) return;
  for (std::size_t i = 0; i < kValues; ++i) {
    if (known[i] != before[i])
      world.note(std::string("sets ") + kNames[i] + " = " + std::to_string(known[i]));
  }
}

void LibraryWatch::nameLock() {
  if (libraryLock.handle() == lock) return;
  lock = libraryLock.handle();
  virtual_platform::nameHandle(lock, kLibraryLock);
}

void LibraryWatch::lookAtTree(const BrowseTree& tree, TreeBytes& bytes, const char* name) {
  if (!differs(tree, bytes)) return;
  copy(tree, bytes);
  world.note(std::string("changes ") + name + ": level " + std::to_string(tree.level));
}

}  // namespace virtual_session
