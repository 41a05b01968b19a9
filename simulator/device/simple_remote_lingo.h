#pragma once

#include "device/device_state.h"

namespace simulator {

/// The Simple Remote lingo: the accessory reports which buttons are down. Nothing is answered. A
/// button acts when it goes down; it is down until a report without it, or until no report came for
/// kButtonHold.
class SimpleRemoteLingo {
 public:
  static constexpr Time kButtonHold = milliseconds(200);

  explicit SimpleRemoteLingo(DeviceState& device) : state(device) {}

  void handle(const Message& message);
  /// Lets go of every button, without a sign of it.
  void stop();
  /// Bit n: button n is down.
  uint32_t held() const { return buttons; }

 private:
  void report(uint32_t down);
  void press(unsigned button);
  void release(unsigned button);
  void stepAlbum(int direction);

  DeviceState& state;
  uint32_t buttons = 0;
  Timers::Id holdEnd = 0;
};

}  // namespace simulator
