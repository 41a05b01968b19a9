// Shuffle and repeat. The host numbers the modes from 1, the iPod from 0.

#include <cstdint>
#include <cstdio>

#include "api/ipodctl.h"
#include "api/library_state.h"

namespace ipodctl {
namespace {

constexpr int kModeCount = 3;

/// Shuffle or repeat: the iPod's commands for it and the words for its three modes.
struct ModeSetting {
  bool (IpodControllerBase::*set)(PlayMode mode);
  bool (IpodControllerBase::*get)(PlayMode& mode);
  const char* setTexts[kModeCount];
  const char* getTexts[kModeCount];
};

constexpr ModeSetting kShuffle = {
    &IpodControllerBase::SetShuffle,
    &IpodControllerBase::GetShuffle,
    {"\nShuffle Off\n", "\nShuffle tracks activated\n", "\nShuffle album activated\n"},
    {"\nThe shuffle is off\n", "\nThe shuffle is active in mode Tracks\n",
     "\nThe shuffle is active in mode Albums\n"}};

constexpr ModeSetting kRepeat = {
    &IpodControllerBase::SetRepeat,
    &IpodControllerBase::GetRepeat,
    {"\nRepeat Off\n", "\nRepeat tracks activated\n", "\nRepeat album activated\n"},
    {"\nThe Repeat is off\n", "\nThe Repeat is active in mode Tracks\n",
     "\nThe Repeat is active in mode Albums\n"}};

int setMode(const ModeSetting& setting, int hostMode) {
  const LibraryLockHold lock;
  if (!lock || hostMode < IPOD_MODE_OFF || hostMode > IPOD_MODE_ALBUMS) return 0;
  const int mode = hostMode - IPOD_MODE_OFF;
  (ipodController.*setting.set)(static_cast<PlayMode>(mode));
  std::printf("%s", setting.setTexts[mode]);
  return 0;
}

int getMode(const ModeSetting& setting, int* hostMode) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  PlayMode current{};
  if (!(ipodController.*setting.get)(current)) return 0;
  const auto mode = static_cast<int>(current);
  if (mode >= kModeCount) return 0;
  std::printf("%s", setting.getTexts[mode]);
  if (hostMode != nullptr) *hostMode = mode + IPOD_MODE_OFF;
  return 0;
}

}  // namespace
}  // namespace ipodctl

using namespace ipodctl;

int IPODCTL_CALL IpodSetShuffleMode(int mode) { return setMode(kShuffle, mode); }

int IPODCTL_CALL IpodGetShuffleMode(int* mode) { return getMode(kShuffle, mode); }

int IPODCTL_CALL IpodSetRepeatMode(int mode) { return setMode(kRepeat, mode); }

int IPODCTL_CALL IpodGetRepeatMode(int* mode) { return getMode(kRepeat, mode); }
