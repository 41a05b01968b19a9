// A device of a virtual world.
#pragma once

#include <windows.h>

#include <cstddef>
#include <optional>

#include "virtual_time.h"

namespace virtual_platform {

/// The state that a read or a write finds.
enum class Readiness {
  kWaits,   ///< nothing can be moved now
  kReady,   ///< at least one byte can
  kEnded,   ///< reads only: there are no more bytes, but the call succeeds
  kFailed,  ///< the device fails the call
};

/// None of these calls may call the platform.
class VirtualDevice {
 public:
  virtual ~VirtualDevice() = default;

  virtual bool canBeOpened() const = 0;
  virtual void opened(Time now) = 0;
  virtual void closed(Time now) = 0;

  virtual Readiness readReadiness(Time now) = 0;
  virtual Readiness writeReadiness(Time now) = 0;
  /// Moves bytes when the device is ready, and returns their number. A write may move none when it
  /// made the device fail.
  virtual std::size_t read(Time now, BYTE* buffer, std::size_t count) = 0;
  virtual std::size_t write(Time now, const BYTE* bytes, std::size_t count) = 0;

  /// Returns how long a read of no bytes takes at the end of the data.
  virtual Time endOfFileTime() const { return std::chrono::milliseconds(1); }

  /// Returns when the readiness may change by itself, if ever.
  virtual std::optional<Time> nextWake() const = 0;
};

}  // namespace virtual_platform
