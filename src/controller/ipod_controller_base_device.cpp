// Who the iPod is: name, software, serial number, model and the lingoes that it speaks; and the
// mode that it is in.

#include "controller/ipod_controller_base.h"

namespace ipodctl {

bool IpodControllerBase::GetIpodName(ByteString& name) {
  return sendAndAwaitReply(&ExtendedInterfaceMessage::buildRequestIpodName)
      .read(&ExtendedInterfaceMessage::decodeReturnIpodName, name);
}

bool IpodControllerBase::RequestIpodName(ByteString& name) {
  return sendAndAwaitReply(&GeneralMessage::buildRequestIpodName)
      .read(&GeneralMessage::decodeReturnIpodName, name);
}

bool IpodControllerBase::RequestSoftwareVersion(uint8_t& major, uint8_t& minor, uint8_t& revision) {
  return sendAndAwaitReply(&GeneralMessage::buildRequestIpodSoftwareVersion)
      .read(&GeneralMessage::decodeReturnIpodSoftwareVersion, major, minor, revision);
}

bool IpodControllerBase::RequestSerialNumber(ByteString& serial) {
  return sendAndAwaitReply(&GeneralMessage::buildRequestIpodSerialNum)
      .read(&GeneralMessage::decodeReturnIpodSerialNum, serial);
}

bool IpodControllerBase::RequestModelNumber(uint16_t& modelId, ByteString& modelText) {
  uint32_t wholeId = 0;
  if (!sendAndAwaitReply(&GeneralMessage::buildRequestIpodModelNum)
           .read(&GeneralMessage::decodeReturnIpodModelNum, wholeId, modelText)) {
    return false;
  }
  modelId = static_cast<uint16_t>(wholeId >> 16);
  return true;
}

bool IpodControllerBase::RequestLingoProtocolVersion(uint8_t lingo, uint8_t& answeredLingo,
                                                     uint8_t& major, uint8_t& minor) {
  return sendAndAwaitReply(&GeneralMessage::buildRequestLingoProtocolVersion, lingo)
      .read(&GeneralMessage::decodeReturnLingoProtocolVersion, answeredLingo, major, minor);
}

bool IpodControllerBase::EnterExtendedMode() {
  return sendAndAwaitReply(&GeneralMessage::buildEnterRemoteUiMode)
      .acknowledges(GeneralMessage::kEnterRemoteUiMode);
}

bool IpodControllerBase::ExitExtendedMode() {
  return sendOnly(&GeneralMessage::buildExitRemoteUiMode);
}

}  // namespace ipodctl
