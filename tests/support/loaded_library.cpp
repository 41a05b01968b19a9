#include "support/loaded_library.h"

#include <cstdlib>

namespace session {

namespace {

/// The environment can name another library with the same exports.
const char* path() {
  const char* const other = std::getenv("IPODCTL_LIBRARY");
  return other != nullptr ? other : IPODCTL_LIBRARY;
}

}  // namespace

LoadedLibrary::LoadedLibrary() : library(dlopen(path(), RTLD_NOW | RTLD_LOCAL)) {
  if (library == nullptr) throw std::runtime_error(dlerror());
}

LoadedLibrary::~LoadedLibrary() { dlclose(library); }

bool LoadedLibrary::isLoaded() {
  void* const found = dlopen(path(), RTLD_NOW | RTLD_NOLOAD);
  if (found != nullptr) dlclose(found);
  return found != nullptr;
}

}  // namespace session
