#pragma once

#include "lingo/lingo_message.h"

namespace ipodctl {

/// What GetAccessoryInfo asks for, and the `type` of a RetAccessoryInfo.
enum AccessoryInfoType : uint8_t {
  kInfoCapabilities = 0,
  kInfoFirmwareVersion =
      2,  ///< the iPod names its model and firmware and asks whether they will do
  kInfoLingoVersion = 3,
  kInfoNothing = 0xFF,  ///< no question was asked
};

/// The iPod's question about the accessory. Only the fields of the type are filled.
struct AccessoryInfoQuestion {
  uint8_t type = kInfoNothing;
  uint32_t model = 0;    ///< kInfoFirmwareVersion
  uint8_t major = 0;     ///< kInfoFirmwareVersion
  uint8_t minor = 0;     ///< kInfoFirmwareVersion
  uint8_t revision = 0;  ///< kInfoFirmwareVersion
  uint8_t lingo = 0;     ///< kInfoLingoVersion
};

/// The General lingo (0x00): identification, the Extended Interface mode, and who the iPod is.
/// Builders fail when there is no memory; decoders when command or length do not match, and then,
/// unless they say otherwise, leave their outputs as they were.
class GeneralMessage final : public LingoMessage {
 public:
  static constexpr LingoId kLingo = kGeneralLingo;

  enum Command : uint16_t {
    kIdentify = 0x01,
    kIpodAck = 0x02,
    kReturnRemoteUiMode = 0x04,
    kEnterRemoteUiMode = 0x05,
    kExitRemoteUiMode = 0x06,
    kRequestIpodName = 0x07,
    kReturnIpodName = 0x08,
    kRequestIpodSoftwareVersion = 0x09,
    kReturnIpodSoftwareVersion = 0x0A,
    kRequestIpodSerialNum = 0x0B,
    kReturnIpodSerialNum = 0x0C,
    kRequestIpodModelNum = 0x0D,
    kReturnIpodModelNum = 0x0E,
    kRequestLingoProtocolVersion = 0x0F,
    kReturnLingoProtocolVersion = 0x10,
    kIdentifyDeviceLingoes = 0x13,
    kGetAccessoryInfo = 0x27,
    kRetAccessoryInfo = 0x28,
  };

  GeneralMessage();
  ~GeneralMessage() override;
  uint16_t encode(uint8_t* buffer, uint32_t capacity) const override;

  // To the iPod.
  bool buildIdentify(LingoId lingo);
  bool buildEnterRemoteUiMode();
  bool buildExitRemoteUiMode();
  bool buildRequestIpodName();
  bool buildRequestIpodSoftwareVersion();
  bool buildRequestIpodSerialNum();
  bool buildRequestIpodModelNum();
  bool buildRequestLingoProtocolVersion(uint8_t lingo);

  /// `lingoMask` has bit n set for lingo n. Options and device identifier are sent as 0.
  bool buildIdentifyDeviceLingoes(uint32_t lingoMask);

  bool buildRetAccessoryCapabilities();
  bool buildRetAccessoryFirmwareVersion(uint32_t model, uint8_t major, uint8_t minor,
                                        uint8_t revision);
  bool buildRetAccessoryLingoVersion(uint8_t lingo, uint8_t major, uint8_t minor);

  // From the iPod.

  /// 2 bytes, or 6 with a wait time (ms) that the iPod asks for; without it waitTime becomes 0. The
  /// wait time is the one number on the wire whose first byte is the lowest.
  bool decodeIpodAck(uint8_t& status, uint8_t& command, uint32_t& waitTime) const;

  /// True when this is the iPod's acknowledgement of a command with status 0.
  bool acknowledges(uint16_t command) const;

  bool decodeReturnRemoteUiMode(bool& extendedMode) const;
  bool decodeReturnIpodName(ByteString& name) const;
  bool decodeReturnIpodSoftwareVersion(uint8_t& major, uint8_t& minor, uint8_t& revision) const;

  /// The serial number's bytes as they are, the final zero byte among them.
  bool decodeReturnIpodSerialNum(ByteString& serial) const;

  /// The model text is taken three bytes longer than what follows the id; those bytes are zeros.
  bool decodeReturnIpodModelNum(uint32_t& modelId, ByteString& modelText) const;

  bool decodeReturnLingoProtocolVersion(uint8_t& lingo, uint8_t& major, uint8_t& minor) const;

  /// False for types from 10 on, and for a kInfoFirmwareVersion that lacks one of its fields; the
  /// type is stored anyway. A kInfoLingoVersion without its lingo leaves `question.lingo` as it
  /// was. Without a payload `question.type` stays, and is judged, as it was.
  bool decodeGetAccessoryInfo(AccessoryInfoQuestion& question) const;
};

}  // namespace ipodctl
