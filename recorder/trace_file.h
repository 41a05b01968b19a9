#pragma once

#include <windows.h>

#include "recorder/path.h"

namespace recorder {

/// The file of the trace. One thread at a time uses it.
class TraceFile {
 public:
  enum class Opening {
    kDone,
    kFailed,   ///< error() says why; a later attempt can succeed
    kForeign,  ///< the file is not a trace, and stays as it is
  };

  /// Opens the file. The first time since this was made, an earlier trace is overwritten; later the
  /// text is appended.
  Opening open(const Path& path);
  bool isOpen() const { return handle != nullptr; }

  /// Writes what the file accepts, and returns how many bytes that were. If it accepts less than
  /// everything, error() says why. A write that another thread did not finish is repeated in its
  /// place.
  DWORD write(const char* text, DWORD count);
  /// Lets the file be complete even if the device is switched off afterwards.
  void flush();
  void close();

  DWORD error() const { return lastError; }

 private:
  Opening refuse(Opening why);
  bool isForeign();
  bool goToEnd();
  bool begin();

  HANDLE handle = nullptr;
  bool isBegun = false;
  DWORD size = 0;  ///< of what was written
  DWORD lastError = ERROR_SUCCESS;
};

/// Reads at most `size` bytes of a file. Returns their number; 0 when it cannot be read.
DWORD readFile(const Path& path, char* text, DWORD size);

}  // namespace recorder
