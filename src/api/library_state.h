#pragma once

#include <cstdint>

#include "base/semaphore.h"
#include "base/shared_value.h"
#include "controller/ipod_controller.h"

namespace ipodctl {

// The library's global state. All of it is in static storage. The controller is built when the
// library is loaded and destroyed when it is unloaded.

/// The platform's iPod stream driver.
constexpr char usbDeviceName[] = "IPD1:";

/// Read from the current directory at each connection.
constexpr char logoFileName[] = "logo_zel.bmp";

/// The one controller that every export drives.
extern IpodController ipodController;

/// 1 while connected.
extern SharedValue<uint8_t> ipodConnected;

/// 1 when the iPod's Extended Interface lingo has the commands play and pause in addition to the
/// toggle.
extern SharedValue<uint8_t> ipodHasPlayPause;

/// Not 0: IpodCommand yields its time slice before it sends play. Nothing in the library sets it.
extern SharedValue<uint8_t> ipodPlayDelayFlag;

/// The sample rate of the iPod's audio in Hz.
extern SharedValue<uint32_t> ipodSampleRate;

/// The lock that serialises the exports. The first IpodConnect creates it.
extern Semaphore libraryLock;

/// Holds the library lock while an export runs. Waits for it without limit. Holds nothing, and the
/// export does nothing, if the lock was never created.
/// Clang does not check it: whether it holds the lock is known at run time only.
class LibraryLockHold {
 public:
  LibraryLockHold() IPODCTL_NOT_CHECKED;
  ~LibraryLockHold();
  LibraryLockHold(const LibraryLockHold&) = delete;
  LibraryLockHold& operator=(const LibraryLockHold&) = delete;

  explicit operator bool() const { return held; }

  /// Releases the lock early. Returns the result of that, 0.
  int release() IPODCTL_NOT_CHECKED;

 private:
  bool held;
};

}  // namespace ipodctl
