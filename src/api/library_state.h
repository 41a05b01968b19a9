#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

#include "base/shared_value.h"
#include "controller/ipod_controller.h"

namespace ipodctl {

/// The library's global state. All of it is in static storage; the controller is built when the
/// library is loaded and destroyed when it is unloaded.

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

/// Not 0: IpodCommand yields its time slice before it sends play. Nothing in the library sets
/// it.
extern SharedValue<uint8_t> ipodPlayDelayFlag;

/// The sample rate of the iPod's audio in Hz.
extern SharedValue<uint32_t> ipodSampleRate;

/// The lock that serialises the exports. The first IpodConnect creates it.
class LibraryLock {
 public:
  constexpr LibraryLock() = default;
  ~LibraryLock();

  /// Makes the lock if there is none; of two threads at once, one makes it. Returns false when the
  /// system has no semaphore.
  bool create();

  /// The semaphore, null before the lock was made.
  HANDLE handle() const { return semaphore; }

 private:
  std::atomic<HANDLE> semaphore{nullptr};
};

extern LibraryLock libraryLock;

/// The library lock, held by an export for its whole run; waits for it without limit. Holds
/// nothing, and the export does nothing, when the lock was never made.
class LibraryLockHold {
 public:
  LibraryLockHold();
  ~LibraryLockHold();
  LibraryLockHold(const LibraryLockHold&) = delete;
  LibraryLockHold& operator=(const LibraryLockHold&) = delete;

  explicit operator bool() const { return semaphore != nullptr; }

  /// Releases the lock early. Returns 0.
  int release();

 private:
  HANDLE semaphore;
};

}  // namespace ipodctl
