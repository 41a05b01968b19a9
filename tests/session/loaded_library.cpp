#include "session/loaded_library.h"

namespace session {

LoadedLibrary::LoadedLibrary() : library(dlopen(IPODCTL_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
  if (library == nullptr) throw std::runtime_error(dlerror());
}

LoadedLibrary::~LoadedLibrary() { dlclose(library); }

bool LoadedLibrary::isLoaded() {
  void* const found = dlopen(IPODCTL_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  if (found != nullptr) dlclose(found);
  return found != nullptr;
}

}  // namespace session
