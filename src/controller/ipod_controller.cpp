#include "controller/ipod_controller.h"

#include <utility>

namespace ipodctl {
namespace {

constexpr uint32_t kDefaultSampleRate = 44100;

}  // namespace

IpodController::IpodController(int transportKind)
    : IpodControllerBase(transportKind), sampleRate(kDefaultSampleRate) {}

// The reader calls onIncomingMessage of this class: it must have ended before the class goes.
IpodController::~IpodController() { releaseTransport(); }

bool IpodController::connect(const char* deviceName, const LogoBitmap* image) {
  if (!transport) return false;
  constexpr uint16_t kCommand = DigitalAudioMessage::kTrackNewAudioAttributes;
  // The identification takes the notifications itself, also when a connection was never closed.
  transport->removeHandler(this, notificationTrampoline, kCommand, kDigitalAudioLingo);
  if (!IdentifyIpod(deviceName, image != nullptr)) return false;
  return transport->addHandler(this, notificationTrampoline, kCommand, kDigitalAudioLingo);
}

bool IpodController::CloseIpod() {
  if (!transport) return false;
  transport->removeHandlers(this);
  IpodControllerBase::CloseIpod();
  return true;
}

bool IpodController::getSampleRate(uint32_t& rate) {
  rate = sampleRate;
  return rate > 0;
}

bool IpodController::setResampleCallback(ResampleCallback callback) {
  resampleCallback = callback;
  return true;
}

}  // namespace ipodctl
