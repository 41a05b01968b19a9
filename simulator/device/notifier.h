#pragma once

#include "device/device_state.h"

namespace simulator {

/// Tells an accessory that asked for it what changes while playing.
class Notifier {
 public:
  explicit Notifier(DeviceState& device) : state(device) {}

  /// Looks at what the player did; to be called after everything that happens.
  void update(PlayerChanges changes);
  void stop();
  /// The position, now, whether somebody wants to know it or not.
  Message strayNotification() const;

 private:
  bool wanted() const;
  Message position() const;
  void schedule();
  void tell(const Message& told);

  DeviceState& state;
  Timers::Id nextPosition = 0;  ///< 0: none is due
};

/// The position in ms as the accessory is told it: never beyond the track's stated length.
uint32_t positionMs(const DeviceState& state);

}  // namespace simulator
