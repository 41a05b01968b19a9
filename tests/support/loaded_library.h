#pragma once

#include <dlfcn.h>
#include <ipodctl.h>

#include <stdexcept>

namespace session {

/// The library as a program loads it at run time: fresh at each load. Unloads it at the end.
class LoadedLibrary {
 public:
  LoadedLibrary();
  ~LoadedLibrary();
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  /// Returns whether this process has it loaded.
  static bool isLoaded();

 private:
  void* const library;

  template <class Function>
  Function* find(const char* name) const {
    void* const symbol = dlsym(library, name);
    if (symbol == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<Function*>(symbol);
  }

 public:
#define EXPORT(name, ...) decltype(::name)* const name = find<decltype(::name)>(#name);
#include "support/exports.inc"
#undef EXPORT
};

}  // namespace session
