// The identification of an accessory that speaks the General lingo only and asks its way into the
// Extended Interface mode, and what both identifications do alike.

#include "base/debug_print.h"
#include "base/os_primitives.h"
#include "controller/ipod_controller_base.h"

namespace ipodctl {
namespace {

constexpr uint32_t kGeneralLingoMask = 1u << kGeneralLingo;
constexpr int32_t kPauseBeforeSyncMicroseconds = 80000;
constexpr int32_t kPauseAfterSyncMicroseconds = 20000;

/// The lingo version that the accessory asks for, whatever lingo the iPod asked about.
constexpr uint8_t kAnsweredLingo = 0;
constexpr uint8_t kAnsweredMajor = 1;
constexpr uint8_t kAnsweredMinor = 7;

}  // namespace

bool IpodControllerBase::indentifyIpod() {
  if (!clearReplies()) {
    debugPrint("indentifyIpod C = false \n");
    return false;
  }
  return identifyInAttempts(
      [this] {
        taskSleepMicro(kPauseBeforeSyncMicroseconds);
        transport->sendSyncByte();
        transport->sendSyncByte();
        taskSleepMicro(kPauseAfterSyncMicroseconds);
        clearReplies();
        send(&GeneralMessage::buildIdentifyDeviceLingoes, kGeneralLingoMask);
      },
      [this](const LingoMessage& message) {
        if (message.getLingo() == kGeneralLingo) {
          answerIdentification(static_cast<const GeneralMessage&>(message));
        }
      });
}

void IpodControllerBase::answerIdentification(const GeneralMessage& message) {
  switch (message.getCommand()) {
    case GeneralMessage::kIpodAck:
      if (acknowledges(message, GeneralMessage::kIdentifyDeviceLingoes)) {
        send(&GeneralMessage::buildRequestLingoProtocolVersion, kGeneralLingo);
      }
      if (acknowledges(message, GeneralMessage::kEnterRemoteUiMode)) identified = 1;
      break;
    case GeneralMessage::kReturnRemoteUiMode:
      answerRemoteUiMode(message);
      break;
    case GeneralMessage::kReturnLingoProtocolVersion:
      send(&GeneralMessage::buildEnterRemoteUiMode);
      break;
    case GeneralMessage::kGetAccessoryInfo:
      answerAccessoryInfo(message);
      break;
    default:
      break;
  }
}

bool IpodControllerBase::acknowledges(const GeneralMessage& message,
                                      GeneralMessage::Command command) {
  uint8_t status = kStatusOk;
  uint8_t acknowledgedCommand = 0;
  uint32_t waitTime = 0;
  return message.decodeIpodAck(status, acknowledgedCommand, waitTime) && status == kStatusOk &&
         acknowledgedCommand == command;
}

void IpodControllerBase::answerRemoteUiMode(const GeneralMessage& message) {
  bool extendedMode = false;
  if (message.decodeReturnRemoteUiMode(extendedMode) && extendedMode) {
    send(&GeneralMessage::buildEnterRemoteUiMode);
  }
}

void IpodControllerBase::answerAccessoryInfo(const GeneralMessage& message) {
  AccessoryInfoQuestion question;
  if (!message.decodeGetAccessoryInfo(question)) return;
  switch (question.type) {
    case kInfoCapabilities:
      send(&GeneralMessage::buildRetAccessoryCapabilities);
      break;
    case kInfoFirmwareVersion:
      // Whatever model and firmware the iPod names will do.
      send(&GeneralMessage::buildRetAccessoryFirmwareVersion, question.model, question.major,
           question.minor, question.revision);
      break;
    case kInfoLingoVersion:
      send(&GeneralMessage::buildRetAccessoryLingoVersion, kAnsweredLingo, kAnsweredMajor,
           kAnsweredMinor);
      break;
    default:
      break;
  }
}

bool IpodControllerBase::concludeIdentification(int attemptsLeft) {
  if (identified && attemptsLeft > 0) {
    debugPrint("indentifyIpod A = true \n");
    return true;
  }
  identified = 0;
  debugPrint("indentifyIpod B = false \n");
  return false;
}

}  // namespace ipodctl
