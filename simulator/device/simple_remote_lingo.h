#pragma once

#include "device/device_state.h"

namespace simulator {

/// The Simple Remote lingo: the accessory reports which buttons are down. Nothing is answered. A
/// button acts when it goes down. It is down until a report without it, or until no report has
/// arrived for kButtonHold.
class SimpleRemoteLingo {
 public:
  static constexpr Time kButtonHold = milliseconds(200);

  explicit SimpleRemoteLingo(DeviceState& device) : state(device) {}

  void handle(const Message& message);
  /// Releases every button without any effect.
  void stop();
  /// Returns the buttons that are down: bit n for button n.
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
