#include "loader/modules.h"

#include <windows.h>

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>

namespace loader {
namespace {

struct Module {
  std::unique_ptr<Image> image;
  int references = 0;
};

/// The images that other images use. A module that keeps a reference to itself stays until the
/// process ends.
struct Modules {
  std::recursive_mutex mutex;  ///< also held while a module is attached, which may call functions
  std::map<std::string, Module> byPath;
};

Modules& modules() {
  static Modules& all = *new Modules;
  return all;
}

/// Returns the path of a loaded module; empty when there is none.
std::string pathOf(const void* place) {
  const std::lock_guard lock(modules().mutex);
  for (const auto& [path, module] : modules().byPath)
    if (module.image->base() == place) return path;
  return {};
}

DWORD getModuleFileName(const void* module, WCHAR* out, DWORD size) {
  const std::u16string path = std::filesystem::path(pathOf(module)).u16string();
  if (path.empty() || path.size() >= size) return 0;
  path.copy(out, path.size());
  out[path.size()] = 0;
  return static_cast<DWORD>(path.size());
}

void* loadLibrary(LPCWSTR path) {
  Problem problem;
  Image* const image = useModule(std::filesystem::path(path).string(), problem);
  return image != nullptr ? image->base() : nullptr;
}

}  // namespace

Image* useModule(const std::string& path, Problem& problem) {
  const std::lock_guard lock(modules().mutex);
  Module& module = modules().byPath[path];
  ++module.references;
  if (module.image != nullptr) return module.image.get();
  module.image = std::make_unique<Image>(Image::Kind::kModule);
  problem = module.image->load(path);
  if (problem.empty()) return module.image.get();
  modules().byPath.erase(path);
  return nullptr;
}

void releaseModule(Image* image) {
  const std::lock_guard lock(modules().mutex);
  auto& all = modules().byPath;
  for (auto module = all.begin(); module != all.end(); ++module) {
    if (module->second.image.get() != image) continue;
    if (--module->second.references == 0) all.erase(module);
    return;
  }
}

void* moduleFunction(const std::string& name) {
  if (name == "GetModuleFileNameW") return reinterpret_cast<void*>(getModuleFileName);
  if (name == "LoadLibraryW") return reinterpret_cast<void*>(loadLibrary);
  return nullptr;
}

}  // namespace loader
