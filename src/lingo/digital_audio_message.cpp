#include "lingo/digital_audio_message.h"

namespace ipodctl {
namespace {

constexpr uint32_t kRatesInHz[] = {8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
constexpr uint8_t kRateCount = sizeof(kRatesInHz) / sizeof(kRatesInHz[0]);

}  // namespace

DigitalAudioMessage::DigitalAudioMessage() : LingoMessage(kLingo) {}

DigitalAudioMessage::~DigitalAudioMessage() = default;

uint16_t DigitalAudioMessage::encode(uint8_t* buffer, uint32_t capacity) const {
  return encodeBody(buffer, capacity, sizeof(uint8_t));
}

bool DigitalAudioMessage::buildAccAck(uint8_t status, uint8_t command) {
  return build(kAccAck, status, command);
}

bool DigitalAudioMessage::buildRetAccSampleRateCaps(const uint8_t* rateCodes, uint32_t count) {
  setCommand(kRetAccSampleRateCaps);
  uint32_t rate = 0;
  for (uint32_t i = 0; i < count; ++i) {
    if (rateCodes[i] < kRateCount) rate = kRatesInHz[rateCodes[i]];
    uint8_t field[sizeof(rate)];
    putUint32(field, rate);
    if (!appendData(field, sizeof(field))) return false;
  }
  return true;
}

bool DigitalAudioMessage::decodeTrackNewAudioAttributes(uint32_t& sampleRate, uint32_t& soundCheck,
                                                        uint32_t& volumeAdjustment) const {
  return decodeExactly(kTrackNewAudioAttributes, sampleRate, soundCheck, volumeAdjustment);
}

}  // namespace ipodctl
