#include "device/simple_remote_lingo.h"

#include <algorithm>

namespace simulator {

namespace {

/// The button of each bit, counted from the lowest bit of the first byte. Those of the iPod's
/// controls (volume, menu, light, power) have no effect here.
enum Button : unsigned {
  kPlayPauseButton = 0,
  kNextTrackButton = 3,
  kPreviousTrackButton = 4,
  kNextAlbumButton = 5,
  kPreviousAlbumButton = 6,
  kStopButton = 7,
  kPlayButton = 8,
  kPauseButton = 9,
  kNextChapterButton = 11,
  kPreviousChapterButton = 12,
  kShuffleButton = 15,
  kRepeatButton = 16,
  kFastForwardButton = 20,
  kRewindButton = 21,
};

constexpr unsigned kButtons = 32;
constexpr size_t kStateBytes = 4;
constexpr uint32_t kAudioButtons = 0xFFFF;  // of AudioButtonStatus only these are distinguished
constexpr unsigned kModes = 3;              // of shuffle and of repeat

uint32_t buttonState(const Bytes& data) {
  uint32_t state = 0;
  for (size_t i = 0; i < std::min(data.size(), kStateBytes); ++i) {
    state |= uint32_t{data[i]} << (8 * i);
  }
  return state;
}

template <typename Mode>
Mode nextMode(Mode mode) {
  return static_cast<Mode>((static_cast<unsigned>(mode) + 1) % kModes);
}

}  // namespace

void SimpleRemoteLingo::handle(const Message& message) {
  if (message.command == kContextButtonStatus) report(buttonState(message.data));
  if (message.command == kAudioButtonStatus) report(buttonState(message.data) & kAudioButtons);
}

void SimpleRemoteLingo::stop() {
  state.timers.cancel(holdEnd);
  buttons = 0;
}

void SimpleRemoteLingo::report(uint32_t down) {
  const uint32_t before = buttons;
  buttons = down;
  for (unsigned button = 0; button < kButtons; ++button) {
    const bool isDown = (down >> button & 1) != 0;
    const bool wasDown = (before >> button & 1) != 0;
    if (isDown && !wasDown) press(button);
    if (wasDown && !isDown) release(button);
  }
  state.timers.cancel(holdEnd);
  if (down != 0) holdEnd = state.timers.at(state.now + kButtonHold, [this] { report(0); });
}

void SimpleRemoteLingo::press(unsigned button) {
  Player& player = state.player;
  switch (button) {
    case kPlayPauseButton:
      return state.togglePlaying();
    case kNextTrackButton:
    case kNextChapterButton:
      return player.next(state.now);
    case kPreviousTrackButton:
    case kPreviousChapterButton:
      return player.previous(state.now);
    case kNextAlbumButton:
      return stepAlbum(1);
    case kPreviousAlbumButton:
      return stepAlbum(-1);
    case kStopButton:
      return player.stop(state.now);
    case kPlayButton:
      return state.startPlaying();
    case kPauseButton:
      return player.pause(state.now);
    case kShuffleButton:
      return player.setShuffle(nextMode(player.shuffle()));
    case kRepeatButton:
      return player.setRepeat(nextMode(player.repeat()));
    case kFastForwardButton:
      return player.startSeek(SeekDirection::kForward, state.now);
    case kRewindButton:
      return player.startSeek(SeekDirection::kBackward, state.now);
    default:
      return;
  }
}

void SimpleRemoteLingo::release(unsigned button) {
  if (button == kFastForwardButton || button == kRewindButton) state.player.endSeek(state.now);
}

/// Moves to the nearest track of another album in this direction; does nothing at the end of the
/// list.
void SimpleRemoteLingo::stepAlbum(int direction) {
  const std::optional<uint32_t> current = state.player.currentTrack();
  if (!current) return;
  const PlayingList& list = state.player.list();
  const std::string& album = state.catalogue.track(*current).album;
  int64_t index = int64_t{list.currentIndex()} + direction;
  for (; index >= 0 && index < int64_t{list.size()}; index += direction) {
    const uint32_t track = list.trackAt(static_cast<uint32_t>(index));
    if (state.catalogue.track(track).album == album) continue;
    return state.player.goTo(static_cast<uint32_t>(index), state.now);
  }
}

}  // namespace simulator
