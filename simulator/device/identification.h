#pragma once

#include <deque>

#include "device/digital_audio_lingo.h"

namespace simulator {

/// The questions of an iPod to an accessory that has announced its lingoes, one after the other:
/// its capabilities, the information that they offer, then its sample rates. A model that asks late
/// begins with digital audio meanwhile.
class Identification {
 public:
  Identification(DeviceState& device, DigitalAudioLingo& digitalAudio)
      : state(device), audio(digitalAudio) {}

  /// Starts again, after the announcement was acknowledged.
  void begin();
  /// Stops the identification.
  void stop();
  /// Handles the data of a RetAccessoryInfo.
  void takeAccessoryInfo(PayloadReader& data);

 private:
  bool waitsForAnswers() const;
  void askWhenDue(uint8_t type);
  void ask(uint8_t type);
  void askNext();
  void patienceIsOver();
  void planQuestions(uint32_t capabilities);
  void startAudio();
  void finish();

  DeviceState& state;
  DigitalAudioLingo& audio;
  std::optional<uint8_t> asked;  ///< the info type of the awaited answer
  bool wasRepeated = false;
  std::deque<uint8_t> questions;
  Timers::Id nextStep = 0;  ///< the late question, or the end of the wait for its answer
};

}  // namespace simulator
