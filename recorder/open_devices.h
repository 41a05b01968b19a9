#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>

#include "trace/trace_line.h"

namespace recorder {

/// One opening of a device.
struct OpenDevice {
  HANDLE handle = nullptr;  ///< null: this place is free
  uint32_t number = 0;      ///< of the opening: the system uses a handle's value again
  bool isClosing = false;   ///< a read that fails now does not mean that the device failed
  char name[trace::kDeviceSize + 1] = {};
};

/// Returns whether a name is that of an iPod's device or of a serial port: "IPD1:", "COM3:".
bool isDeviceName(const WCHAR* name);

/// Writes the name as the trace has it, with '?' for what is not ASCII.
void copyDeviceName(const WCHAR* name, char (&out)[trace::kDeviceSize + 1]);

/// The open devices. One thread at a time uses them.
class OpenDevices {
 public:
  /// Returns false when too many are open.
  bool add(HANDLE handle, const char* name);
  /// Returns the device, or null.
  OpenDevice* find(HANDLE handle);
  /// Returns the same opening of a device; null when it was closed.
  OpenDevice* find(const OpenDevice& opening);
  size_t count() const;

 private:
  static constexpr size_t kMost = 8;

  OpenDevice places[kMost];
  uint32_t openings = 0;
};

}  // namespace recorder
