#pragma once

#include <windows.h>

#include <cstddef>

namespace recorder {

/// The path of a file, always zero-terminated. A path that is too long is empty.
class Path {
 public:
  /// Uses the path of a loaded module.
  void useModule(HINSTANCE module);
  /// Uses a path in UTF-8; without a folder, the file is in that of `module`.
  void use(const char* utf8, const Path& module);

  const WCHAR* text() const { return units; }

 private:
  static constexpr size_t kSize = 1024;

  /// Returns the length of the folder with its separator; 0 without one.
  size_t folderSize() const;

  WCHAR units[kSize] = {};
};

}  // namespace recorder
