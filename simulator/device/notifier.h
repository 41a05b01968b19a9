#pragma once

#include "device/device_state.h"

namespace simulator {

/// Sends the changes of the player to an accessory that asked for them.
class Notifier {
 public:
  explicit Notifier(DeviceState& device) : state(device) {}

  /// Notifies the accessory of the changes. Call it after every event.
  void update(PlayerChanges changes);
  void stop();
  /// Returns a notification of the present position, also when the accessory did not ask for it.
  Message strayNotification() const;

 private:
  bool wanted() const;
  Message position() const;
  void schedule();
  void tell(const Message& told);

  DeviceState& state;
  Timers::Id nextPosition = 0;  ///< 0: there is none
};

/// Returns the position in ms that is sent to the accessory: never beyond the track's stated
/// length.
uint32_t positionMs(const DeviceState& state);

}  // namespace simulator
