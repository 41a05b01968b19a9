// Shuffle and repeat. The host counts the modes from 1, the iPod from 0.

#include <cstdint>
#include <cstdio>

#include "api/ipodctl.h"
#include "api/library_state.h"

namespace ipodctl {
namespace {

constexpr uint32_t kModeCount = 3;

/// A play mode: the iPod's commands for it and the words for its three values.
struct PlayMode {
  bool (IpodControllerBase::*set)(uint8_t mode);
  bool (IpodControllerBase::*get)(uint32_t& mode);
  const char* setTexts[kModeCount];
  const char* getTexts[kModeCount];
};

constexpr PlayMode kShuffle = {
    &IpodControllerBase::SetShuffle,
    &IpodControllerBase::GetShuffle,
    {"\nShuffle Off\n", "\nShuffle tracks activated\n", "\nShuffle album activated\n"},
    {"\nThe shuffle is off\n", "\nThe shuffle is active in mode Tracks\n",
     "\nThe shuffle is active in mode Albums\n"}};

constexpr PlayMode kRepeat = {
    &IpodControllerBase::SetRepeat,
    &IpodControllerBase::GetRepeat,
    {"\nRepeat Off\n", "\nRepeat tracks activated\n", "\nRepeat album activated\n"},
    {"\nThe Repeat is off\n", "\nThe Repeat is active in mode Tracks\n",
     "\nThe Repeat is active in mode Albums\n"}};

int setMode(const PlayMode& playMode, int hostMode) {
  const LibraryLockHold lock;
  if (!lock || hostMode < IPOD_MODE_OFF || hostMode > IPOD_MODE_ALBUMS) return 0;
  const auto mode = static_cast<uint8_t>(hostMode - IPOD_MODE_OFF);
  (ipodController.*playMode.set)(mode);
  std::printf("%s", playMode.setTexts[mode]);
  return 0;
}

int getMode(const PlayMode& playMode, int* hostMode) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  uint32_t mode = kModeCount;  // none of them, when the iPod does not answer
  (ipodController.*playMode.get)(mode);
  if (mode >= kModeCount) return 0;
  std::printf("%s", playMode.getTexts[mode]);
  if (hostMode != nullptr) *hostMode = static_cast<int>(mode) + IPOD_MODE_OFF;
  return 0;
}

}  // namespace
}  // namespace ipodctl

using namespace ipodctl;

int IPODCTL_CALL IpodSetShuffleMode(int mode) { return setMode(kShuffle, mode); }

int IPODCTL_CALL IpodGetShuffleMode(int* mode) { return getMode(kShuffle, mode); }

int IPODCTL_CALL IpodSetRepeatMode(int mode) { return setMode(kRepeat, mode); }

int IPODCTL_CALL IpodGetRepeatMode(int* mode) { return getMode(kRepeat, mode); }
