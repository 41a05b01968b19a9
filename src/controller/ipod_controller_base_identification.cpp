// The identification of an accessory that announces the General lingo only and requests the
// Extended Interface mode, and what both identifications do alike.

#include "base/debug_print.h"
#include "base/os_primitives.h"
#include "controller/ipod_controller_base.h"

namespace ipodctl {
namespace {

constexpr uint32_t kGeneralLingoMask = 1u << kGeneralLingo;
constexpr int32_t kPauseBeforeSyncMicroseconds = 80000;
constexpr int32_t kPauseAfterSyncMicroseconds = 20000;

/// The lowest lingo version that the accessory needs, whatever lingo the iPod asked about.
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
        sendWithoutClearing(&GeneralMessage::buildIdentifyDeviceLingoes, kGeneralLingoMask);
      },
      [this](const LingoMessage& message) {
        const auto* general = messageAs<GeneralMessage>(message);
        if (general != nullptr) answerIdentification(*general);
      });
}

void IpodControllerBase::answerIdentification(const GeneralMessage& message) {
  answerInBothIdentifications(message);
  if (message.acknowledges(GeneralMessage::kIdentifyDeviceLingoes)) {
    sendWithoutClearing(&GeneralMessage::buildRequestLingoProtocolVersion, kGeneralLingo);
  }
  if (message.getCommand() == GeneralMessage::kReturnLingoProtocolVersion) {
    sendWithoutClearing(&GeneralMessage::buildEnterRemoteUiMode);
  }
}

void IpodControllerBase::answerInBothIdentifications(const GeneralMessage& message) {
  switch (message.getCommand()) {
    case GeneralMessage::kIpodAck:
      if (message.acknowledges(GeneralMessage::kEnterRemoteUiMode)) identified = 1;
      break;
    case GeneralMessage::kReturnRemoteUiMode:
      answerRemoteUiMode(message);
      break;
    case GeneralMessage::kGetAccessoryInfo:
      answerAccessoryInfo(message);
      break;
    default:
      break;
  }
}

void IpodControllerBase::answerRemoteUiMode(const GeneralMessage& message) {
  bool extendedMode = false;
  if (message.decodeReturnRemoteUiMode(extendedMode) && extendedMode) {
    sendWithoutClearing(&GeneralMessage::buildEnterRemoteUiMode);
  }
}

void IpodControllerBase::answerAccessoryInfo(const GeneralMessage& message) {
  AccessoryInfoQuestion question;
  if (!message.decodeGetAccessoryInfo(question)) return;
  switch (question.type) {
    case kInfoCapabilities:
      sendWithoutClearing(&GeneralMessage::buildRetAccessoryCapabilities);
      break;
    case kInfoFirmwareVersion:
      // The accessory works with every model and firmware: it confirms what the iPod reports.
      sendWithoutClearing(&GeneralMessage::buildRetAccessoryFirmwareVersion, question.model,
                          question.major, question.minor, question.revision);
      break;
    case kInfoLingoVersion:
      sendWithoutClearing(&GeneralMessage::buildRetAccessoryLingoVersion, kAnsweredLingo,
                          kAnsweredMajor, kAnsweredMinor);
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
