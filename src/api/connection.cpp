// Connecting and disconnecting, and what the host asks about the connection.

#include <windows.h>

#include <mmsystem.h>

#include <cstdio>

#include "api/browse_tree.h"
#include "api/ipodctl.h"
#include "api/library_state.h"
#include "base/os_primitives.h"
#include "isochplay.h"

namespace ipodctl {
namespace {

constexpr char kVersion[] = "01.29";
constexpr int kAudioStartFailed = -1;
constexpr int32_t kYieldMicroseconds = 1;
constexpr WORD kChannels = 2;
constexpr WORD kBitsPerSample = 16;

/// The first version of the Extended Interface lingo that has the commands play and pause. Major
/// and minor are compared separately, so 2.0 does not qualify.
constexpr uint8_t kPlayPauseMajor = 1;
constexpr uint8_t kPlayPauseMinor = 13;

/// Sets the audio library to a new sample rate. Runs on the link's reader thread, also while an
/// export holds the lock.
int RestartPlayForResample(int32_t sampleRate) {
  std::printf("Tavrel RestartPlayForResample %d\n", static_cast<int>(sampleRate));
  ipodSampleRate = static_cast<uint32_t>(sampleRate);
  return SelectFrequency(sampleRate);
}

void disconnect() {
  std::printf("IpodDisconnect start\n");
  StopIpodAudioPlay();
  ipodController.CloseIpod();
  std::printf("IpodDisconnect end\n");
  ipodConnected = 0;
}

uint32_t announcedRate() {
  uint32_t sampleRate = 0;
  ipodController.getSampleRate(sampleRate);
  return sampleRate;
}

bool startStream(uint32_t sampleRate) {
  WAVEFORMATEX format{};
  format.wFormatTag = WAVE_FORMAT_PCM;
  format.nChannels = kChannels;
  format.nSamplesPerSec = sampleRate;
  format.wBitsPerSample = kBitsPerSample;
  return StartIpodAudioPlay(&format) != kAudioStartFailed;
}

/// Starts the stream at the iPod's sample rate. A rate that the reader receives meanwhile is newer
/// than the one that the stream starts with: it is set again.
bool startAudio() {
  uint32_t sampleRate = announcedRate();
  ipodSampleRate = sampleRate;
  if (!startStream(sampleRate)) return false;
  for (uint32_t newer = announcedRate(); newer != sampleRate; newer = announcedRate()) {
    sampleRate = newer;
    ipodSampleRate = newer;
    SelectFrequency(static_cast<int32_t>(newer));
  }
  return true;
}

void learnPlayPause() {
  uint8_t lingo = 0;
  uint8_t major = 0;
  uint8_t minor = 0;
  if (ipodController.RequestLingoProtocolVersion(kExtendedInterfaceLingo, lingo, major, minor) &&
      lingo == kExtendedInterfaceLingo && major >= kPlayPauseMajor && minor >= kPlayPauseMinor) {
    ipodHasPlayPause = 1;
  }
}

/// Once the iPod is identified: the Extended Interface mode and the audio stream.
bool enterService() {
  SelectFullBandwithInterface();
  ipodController.EnterExtendedMode();
  if (!startAudio()) {
    disconnect();
    return false;
  }
  learnPlayPause();
  return true;
}

bool connect() {
  browseTree.clear();
  const bool logoLoaded = ipodController.LoadLogo(logoFileName);
  ipodController.setResampleCallback(RestartPlayForResample);
  ipodHasPlayPause = 0;
  SelectZeroBandwithInterface();
  const LogoBitmap* logo = logoLoaded ? ipodController.logoImage() : nullptr;
  const bool connected = ipodController.connect(usbDeviceName, logo) && enterService();
  std::printf(connected ? "\nIPod connected\n" : "\nNo iPod connected\n");
  taskSleepMicro(kYieldMicroseconds);
  std::printf("IpodConnect end\n");
  return connected;
}

}  // namespace
}  // namespace ipodctl

using namespace ipodctl;

int IPODCTL_CALL IpodConnect(void) {
  const bool lockExists = libraryLock.ensure();
  std::printf("Tavrel version is %s\n", kVersion);
  std::printf("IpodConnect start\n");
  if (!lockExists || !libraryLock.tryTake()) return 0;
  const bool connected = !ipodConnected && connect();
  if (connected) ipodConnected = 1;
  libraryLock.give();
  return connected ? 1 : 0;
}

int IPODCTL_CALL IpodDisconnect(void) {
  const LibraryLockHold lock;
  if (lock) disconnect();
  return 0;
}

int IPODCTL_CALL IpodIsConnect(void) { return ipodConnected; }

int IPODCTL_CALL isIpodAudioPresent(int first, int second, int third, int fourth) {
  return IpodAudioPresent(first, second, third, fourth);
}

void IPODCTL_CALL IpodSetSameIpod(int sameIpod) {
  if (sameIpod == 0) upDownTree.clear();
}

int IPODCTL_CALL IpodValidateUpDownTree(void) {
  LibraryLockHold lock;
  if (!lock) return 0;
  upDownTree = browseTree;
  return lock.release();
}
