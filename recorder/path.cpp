#include "recorder/path.h"

#include <cstring>

namespace recorder {
namespace {

bool isSeparator(WCHAR unit) { return unit == '\\' || unit == '/'; }

/// A path with a folder begins with a separator or a drive.
bool hasFolder(const WCHAR* path) {
  return isSeparator(path[0]) || (path[0] != 0 && path[1] == ':');
}

}  // namespace

void Path::useModule(HINSTANCE module) {
  const DWORD length = GetModuleFileNameW(module, units, kSize);
  units[length < kSize ? length : 0] = 0;
}

size_t Path::folderSize() const {
  size_t size = 0;
  for (size_t i = 0; units[i] != 0; ++i)
    if (isSeparator(units[i])) size = i + 1;
  return size;
}

void Path::use(const char* utf8, const Path& module) {
  if (MultiByteToWideChar(CP_UTF8, 0, utf8, -1, units, kSize) == 0) units[0] = 0;
  if (units[0] == 0 || hasFolder(units)) return;
  const size_t folder = module.folderSize();
  size_t length = 0;
  while (units[length] != 0)
    ++length;
  if (folder + length >= kSize) {
    units[0] = 0;
    return;
  }
  std::memmove(units + folder, units, (length + 1) * sizeof(WCHAR));
  std::memcpy(units, module.units, folder * sizeof(WCHAR));
}

}  // namespace recorder
