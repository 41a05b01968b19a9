#pragma once

#include "lingo/lingo_message.h"

namespace ipodctl {

/// The Digital Audio lingo (0x0A): the sample rates that the accessory plays and the one that the
/// iPod streams.
class DigitalAudioMessage final : public LingoMessage {
 public:
  static constexpr LingoId kLingo = kDigitalAudioLingo;

  enum Command : uint16_t {
    kAccAck = 0x00,
    kGetAccSampleRateCaps = 0x02,
    kRetAccSampleRateCaps = 0x03,
    kTrackNewAudioAttributes = 0x04,
  };

  /// A sample rate by its place in the list of rates that the lingo knows.
  enum RateCode : uint8_t {
    kRate8000 = 0,
    kRate11025 = 1,
    kRate12000 = 2,
    kRate16000 = 3,
    kRate22050 = 4,
    kRate24000 = 5,
    kRate32000 = 6,
    kRate44100 = 7,
    kRate48000 = 8,
  };

  DigitalAudioMessage();
  ~DigitalAudioMessage() override;
  uint16_t encode(uint8_t* buffer, uint32_t capacity) const override;

  bool buildAccAck(uint8_t status, uint8_t command);

  /// Carries the rate of each code in Hz. A code beyond the list repeats the rate before it (as the
  /// first one: 0 Hz). The payload's length is kept to 16 bits.
  bool buildRetAccSampleRateCaps(const uint8_t* rateCodes, uint32_t count);

  /// Sample rate in Hz, sound check and volume adjustment; exactly 12 bytes, else false with the
  /// outputs as they were.
  bool decodeTrackNewAudioAttributes(uint32_t& sampleRate, uint32_t& soundCheck,
                                     uint32_t& volumeAdjustment) const;
};

}  // namespace ipodctl
