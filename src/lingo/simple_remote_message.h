#pragma once

#include "lingo/lingo_message.h"

namespace ipodctl {

/// The Simple Remote lingo (0x02): the accessory presses the iPod's buttons.
class SimpleRemoteMessage final : public LingoMessage {
 public:
  static constexpr LingoId kLingo = kSimpleRemoteLingo;

  enum Command : uint16_t {
    kContextButtonStatus = 0x00,
    kAudioButtonStatus = 0x04,
  };

  SimpleRemoteMessage();
  ~SimpleRemoteMessage() override;
  uint16_t encode(uint8_t* buffer, uint32_t capacity) const override;

  /// The state of up to 32 buttons: `buttonBitmasks` in byte `byteIndex` (0 to 3), nothing pressed
  /// in the bytes before it, no bytes after it. Another index gives an empty payload.
  bool buildContextButtonStatus(int byteIndex, uint8_t buttonBitmasks);

  /// A button state of four bytes.
  bool buildAudioButtonStatus(uint32_t buttons);
};

}  // namespace ipodctl
