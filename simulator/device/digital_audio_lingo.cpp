#include "device/digital_audio_lingo.h"

#include <algorithm>

#include "device/command_table.h"

namespace simulator {

namespace {

constexpr uint32_t kCommonRate = 44100;

}  // namespace

struct DigitalAudioTable {
  static constexpr CommandRow<DigitalAudioLingo> kRows[] = {
      {kAccAck, 2, 2, &DigitalAudioLingo::takeAcknowledgement},
      {kRetAccSampleRateCaps, 0, kNoLimit, &DigitalAudioLingo::takeRates},
  };
};

void DigitalAudioLingo::handle(const Message& message) {
  dispatch(DigitalAudioTable::kRows, *this, message);
}

void DigitalAudioLingo::start(std::function<void()> whenTold) {
  stop();
  isActive = true;
  onTold = std::move(whenTold);
  if (state.personality.asksSampleRates) {
    isAwaitingRates = true;
    state.sendUnasked(Lingo::kDigitalAudio, kGetAccSampleRateCaps, {});
    return;
  }
  rates = {32000, 44100, 48000};
  tellFirst();
}

void DigitalAudioLingo::stop() {
  state.timers.cancel(firstTold);
  isActive = false;
  isAwaitingRates = false;
  rates.clear();
  toldRate = 0;
  onTold = nullptr;
}

void DigitalAudioLingo::followTrack() {
  if (isActive && toldRate != 0 && state.player.currentTrack() && streamRate() != toldRate) {
    announce(streamRate());
  }
}

void DigitalAudioLingo::announce(uint32_t rate) {
  toldRate = rate;
  state.audioAckOutstanding = true;
  PayloadWriter writer;
  writer.u32(rate).u32(0).u32(0);  // no sound check, no volume adjustment
  state.sendUnasked(Lingo::kDigitalAudio, kTrackNewAudioAttributes, writer.take());
}

uint32_t DigitalAudioLingo::acknowledgedRate() const {
  return isActive && !state.audioAckOutstanding ? toldRate : 0;
}

void DigitalAudioLingo::takeRates(PayloadReader& data) {
  if (!isAwaitingRates) return;
  isAwaitingRates = false;
  for (uint32_t rate = data.u32(); data.ok(); rate = data.u32())
    rates.push_back(rate);
  const Time delay = state.personality.audioAttributesDelay;
  if (delay <= Time(0)) return tellFirst();
  firstTold = state.timers.at(state.now + delay, [this] { tellFirst(); });
}

void DigitalAudioLingo::takeAcknowledgement(PayloadReader& data) {
  data.u8();
  if (data.u8() == kTrackNewAudioAttributes) state.audioAckOutstanding = false;
}

void DigitalAudioLingo::tellFirst() {
  announce(streamRate());
  if (onTold) onTold();
}

/// A rate that the accessory cannot play is converted to one that every accessory can.
uint32_t DigitalAudioLingo::streamRate() const {
  const std::optional<uint32_t> track = state.player.currentTrack();
  const uint32_t rate = track ? state.catalogue.track(*track).sampleRate : kCommonRate;
  const bool isPlayable = std::find(rates.begin(), rates.end(), rate) != rates.end();
  return isPlayable ? rate : kCommonRate;
}

}  // namespace simulator
