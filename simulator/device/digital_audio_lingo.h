#pragma once

#include <functional>
#include <vector>

#include "device/device_state.h"
#include "wire/payload.h"

namespace simulator {

/// The Digital Audio lingo: asks which sample rates the accessory plays, and sends it the rate of
/// the iPod's stream.
class DigitalAudioLingo {
 public:
  explicit DigitalAudioLingo(DeviceState& device) : state(device) {}

  void handle(const Message& message);

  /// Begins with an accessory that announced the lingo. Calls `whenTold` when the audio attributes
  /// were sent for the first time.
  void start(std::function<void()> whenTold);
  /// Forgets the accessory.
  void stop();
  /// Sends the attributes again when the current track has another rate.
  void followTrack();
  /// Sends this rate, whatever plays.
  void announce(uint32_t rate);
  /// Returns the rate of the stream in Hz; 0 when there is none: the accessory must have
  /// acknowledged the rate that was announced last.
  uint32_t acknowledgedRate() const;

 private:
  void takeRates(PayloadReader& data);
  void takeAcknowledgement(PayloadReader& data);
  void tellFirst();
  uint32_t streamRate() const;

  DeviceState& state;
  bool isActive = false;
  bool isAwaitingRates = false;
  std::vector<uint32_t> rates;  ///< Hz, as the accessory listed them
  uint32_t toldRate = 0;        ///< Hz; 0: none yet
  std::function<void()> onTold;
  Timers::Id firstTold = 0;

  friend struct DigitalAudioTable;
};

}  // namespace simulator
