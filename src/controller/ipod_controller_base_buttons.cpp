// The buttons of the iPod's remote control, and the identifications that older iPods want for them.

#include "base/debug_print.h"
#include "base/os_primitives.h"
#include "controller/ipod_controller_base.h"

namespace ipodctl {
namespace {

constexpr int kButtonsPerByte = 8;
constexpr int kLastButton = 26;
constexpr int kSelectButton = 24;
constexpr uint8_t kNoButton = 0x00;

// A press is a quarter of a second of repeated reports: the iPod takes silence for a release.
constexpr int kPressReports = 50;
constexpr int32_t kPressPauseMicroseconds = 5000;
constexpr int kAudioReports = 22;
constexpr int32_t kAudioPauseMicroseconds = 50000;

struct Button {
  int byteIndex;
  uint8_t bitmask;
};

/// The place of a button in the reported state: eight to a byte, the lowest bit first.
Button buttonOf(int code) {
  if (code < 1 || code > kLastButton) return {0, kNoButton};
  return {(code - 1) / kButtonsPerByte, static_cast<uint8_t>(1 << (code - 1) % kButtonsPerByte)};
}

}  // namespace

bool IpodControllerBase::PressButton(int buttonCode) {
  if (!transport) return false;
  debugPrint("<cmd %d>\n", buttonCode);
  if (buttonCode == kSelectButton) debugPrint("<cmd %d>\tSelect\n", buttonCode);
  const Button button = buttonOf(buttonCode);
  SimpleRemoteMessage report;
  if (!report.buildContextButtonStatus(button.byteIndex, button.bitmask)) return false;
  for (int i = 0; i < kPressReports; ++i) {
    clearReplies();
    transport->sendMessage(report);
    taskSleepMicro(kPressPauseMicroseconds);
  }
  return true;
}

bool IpodControllerBase::SendAudioButton(uint32_t value) {
  for (int i = 0; i < kAudioReports; ++i) {
    if (!sendOnly(&SimpleRemoteMessage::buildAudioButtonStatus, value)) return false;
    taskSleepMicro(kAudioPauseMicroseconds);
  }
  return true;
}

bool IpodControllerBase::ReleaseButtons() {
  constexpr int kFirstByte = 0;
  return sendOnly(&SimpleRemoteMessage::buildContextButtonStatus, kFirstByte, kNoButton);
}

bool IpodControllerBase::IdentifySimpleRemote() {
  sendOnly(&GeneralMessage::buildIdentify, kSimpleRemoteLingo);
  return false;
}

bool IpodControllerBase::IdentifyExtendedInterface() {
  sendOnly(&GeneralMessage::buildIdentify, kExtendedInterfaceLingo);
  return false;
}

}  // namespace ipodctl
