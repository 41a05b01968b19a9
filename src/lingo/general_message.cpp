#include "lingo/general_message.h"

namespace ipodctl {
namespace {

/// The one capability bit that the accessory reports.
constexpr uint32_t kCapabilityBits = 1;

/// Information types from here on are not answered.
constexpr uint8_t kInfoTypeLimit = 10;

constexpr uint16_t kModelIdSize = 4;
constexpr uint32_t kNoOptions = 0;
constexpr uint32_t kNoDeviceId = 0;

}  // namespace

GeneralMessage::GeneralMessage() : LingoMessage(kLingo) {}

GeneralMessage::~GeneralMessage() = default;

uint16_t GeneralMessage::encode(uint8_t* buffer, uint32_t capacity) const {
  return encodeBody(buffer, capacity, sizeof(uint8_t));
}

bool GeneralMessage::buildIdentify(LingoId lingo) { return build(kIdentify, uint8_t{lingo}); }

bool GeneralMessage::buildEnterRemoteUiMode() { return build(kEnterRemoteUiMode); }

bool GeneralMessage::buildExitRemoteUiMode() { return build(kExitRemoteUiMode); }

bool GeneralMessage::buildRequestIpodName() { return build(kRequestIpodName); }

bool GeneralMessage::buildRequestIpodSoftwareVersion() {
  return build(kRequestIpodSoftwareVersion);
}

bool GeneralMessage::buildRequestIpodSerialNum() { return build(kRequestIpodSerialNum); }

bool GeneralMessage::buildRequestIpodModelNum() { return build(kRequestIpodModelNum); }

bool GeneralMessage::buildRequestLingoProtocolVersion(uint8_t lingo) {
  return build(kRequestLingoProtocolVersion, lingo);
}

bool GeneralMessage::buildIdentifyDeviceLingoes(uint32_t lingoMask) {
  return build(kIdentifyDeviceLingoes, lingoMask, kNoOptions, kNoDeviceId);
}

bool GeneralMessage::buildRetAccessoryCapabilities() {
  return build(kRetAccessoryInfo, uint8_t{kInfoCapabilities}, kCapabilityBits);
}

bool GeneralMessage::buildRetAccessoryFirmwareVersion(uint32_t model, uint8_t major, uint8_t minor,
                                                      uint8_t revision) {
  return build(kRetAccessoryInfo, uint8_t{kInfoFirmwareVersion}, model, major, minor, revision);
}

bool GeneralMessage::buildRetAccessoryLingoVersion(uint8_t lingo, uint8_t major, uint8_t minor) {
  return build(kRetAccessoryInfo, uint8_t{kInfoLingoVersion}, lingo, major, minor);
}

bool GeneralMessage::decodeIpodAck(uint8_t& status, uint8_t& command, uint32_t& waitTime) const {
  uint8_t lowest = 0;
  uint8_t low = 0;
  uint8_t high = 0;
  uint8_t highest = 0;
  const bool pending = decodeExactly(kIpodAck, status, command, lowest, low, high, highest);
  if (!pending && !decodeExactly(kIpodAck, status, command)) return false;
  waitTime = uint32_t{highest} << 24 | uint32_t{high} << 16 | uint32_t{low} << 8 | uint32_t{lowest};
  return true;
}

bool GeneralMessage::acknowledges(uint16_t command) const {
  uint8_t status = kStatusOk;
  uint8_t acknowledgedCommand = 0;
  uint32_t waitTime = 0;
  return decodeIpodAck(status, acknowledgedCommand, waitTime) && status == kStatusOk &&
         acknowledgedCommand == command;
}

bool GeneralMessage::decodeReturnRemoteUiMode(bool& extendedMode) const {
  uint8_t mode = 0;
  if (!decodeExactly(kReturnRemoteUiMode, mode)) return false;
  extendedMode = mode != 0;
  return true;
}

bool GeneralMessage::decodeReturnIpodName(ByteString& name) const {
  return getCommand() == kReturnIpodName && getDataLength() > 0 &&
         decodeText(0, getDataLength(), name);
}

bool GeneralMessage::decodeReturnIpodSoftwareVersion(uint8_t& major, uint8_t& minor,
                                                     uint8_t& revision) const {
  return decodeExactly(kReturnIpodSoftwareVersion, major, minor, revision);
}

bool GeneralMessage::decodeReturnIpodSerialNum(ByteString& serial) const {
  return getCommand() == kReturnIpodSerialNum && getDataLength() > 0 &&
         copyText(0, getDataLength(), serial);
}

bool GeneralMessage::decodeReturnIpodModelNum(uint32_t& modelId, ByteString& modelText) const {
  uint32_t id = 0;
  if (!decodeFirst(kReturnIpodModelNum, id) || getDataLength() <= kModelIdSize) return false;
  if (!copyText(kModelIdSize, getDataLength() - 1u, modelText)) return false;
  modelId = id;
  return true;
}

bool GeneralMessage::decodeReturnLingoProtocolVersion(uint8_t& lingo, uint8_t& major,
                                                      uint8_t& minor) const {
  return decodeExactly(kReturnLingoProtocolVersion, lingo, major, minor);
}

bool GeneralMessage::decodeGetAccessoryInfo(AccessoryInfoQuestion& question) const {
  if (getCommand() != kGetAccessoryInfo) return false;
  uint8_t type = question.type;
  decodeFirst(kGetAccessoryInfo, type);
  const bool complete = type != kInfoFirmwareVersion ||
                        decodeFirst(kGetAccessoryInfo, type, question.model, question.major,
                                    question.minor, question.revision);
  if (type == kInfoLingoVersion) decodeFirst(kGetAccessoryInfo, type, question.lingo);
  question.type = type;
  return complete && type < kInfoTypeLimit;
}

}  // namespace ipodctl
