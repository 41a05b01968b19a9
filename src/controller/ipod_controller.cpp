#include "controller/ipod_controller.h"

#include <utility>

namespace {

constexpr uint32_t kDefaultSampleRate = 44100;

}  // namespace

IpodController::IpodController(int transportKind)
    : IpodControllerBase(transportKind), sampleRate(kDefaultSampleRate) {}

// The reader calls onIncomingMessage of this class: it must have ended before the class goes.
IpodController::~IpodController() { releaseTransport(); }

bool IpodController::connect(const char* deviceName, const LogoBitmap* image) {
  if (!transport || !IdentifyIpod(deviceName, image != nullptr)) return false;
  transport->addHandler(this, notificationTrampoline, DigitalAudioMessage::kTrackNewAudioAttributes,
                        kDigitalAudioLingo);
  return true;
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
