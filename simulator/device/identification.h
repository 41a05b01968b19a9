#pragma once

#include <deque>

#include "device/digital_audio_lingo.h"

namespace simulator {

/// What an iPod asks of an accessory that has announced its lingoes, one question after the other:
/// what it can tell about itself, those things, then how it takes digital audio. A model that asks
/// late begins with digital audio meanwhile.
class Identification {
 public:
  Identification(DeviceState& device, DigitalAudioLingo& digitalAudio)
      : state(device), audio(digitalAudio) {}

  /// Begins anew, after the announcement was acknowledged.
  void begin();
  /// Gives up what was begun.
  void stop();
  /// Takes the data of a RetAccessoryInfo.
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
  std::optional<uint8_t> asked;  ///< the info type that is waited for
  bool repeated = false;
  std::deque<uint8_t> questions;
  Timers::Id nextStep =
      0;  ///< the question, while it is late, or the end of the wait for its answer
};

}  // namespace simulator
