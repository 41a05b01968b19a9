#include "device/notifier.h"

#include <algorithm>

#include "wire/payload.h"

namespace simulator {

namespace {

constexpr Time kShortestInterval = milliseconds(10);

Message notification(PlayStatusChange change, std::optional<uint32_t> value) {
  PayloadWriter writer;
  writer.u8(static_cast<uint8_t>(change));
  if (value) writer.u32(*value);
  return {static_cast<uint8_t>(Lingo::kExtendedInterface), kPlayStatusChangeNotification,
          writer.take()};
}

}  // namespace

uint32_t positionMs(const DeviceState& state) {
  const std::optional<uint32_t> track = state.player.currentTrack();
  if (!track) return 0;
  const Time position = state.player.position(state.now);
  const auto ms = std::chrono::duration_cast<milliseconds>(position).count();
  return std::min(static_cast<uint32_t>(ms), state.catalogue.track(*track).lengthMs);
}

void Notifier::update(PlayerChanges changes) {
  const bool isPlaying = state.player.state() == PlayState::kPlaying;
  if (!wanted() || !isPlaying || changes.track) stop();
  if (!wanted()) return;
  if (changes.track) {
    tell(notification(PlayStatusChange::kTrackIndex, state.player.list().currentIndex()));
  }
  if (changes.stopped) tell(notification(PlayStatusChange::kStopped, std::nullopt));
  if (isPlaying && nextPosition == 0) schedule();
}

void Notifier::stop() {
  state.timers.cancel(nextPosition);
  nextPosition = 0;
}

Message Notifier::strayNotification() const { return position(); }

bool Notifier::wanted() const {
  const bool isHeld = state.personality.audioAckOpensNotifications && state.audioAckOutstanding;
  return state.notificationsOn && !isHeld;
}

Message Notifier::position() const {
  return notification(PlayStatusChange::kPosition, positionMs(state));
}

void Notifier::schedule() {
  const Time jitter = state.personality.notificationJitter;
  const auto jitterMs = std::chrono::duration_cast<milliseconds>(jitter).count();
  const Time late = milliseconds(state.random.below(static_cast<uint32_t>(jitterMs) + 1));
  const Time interval = std::max(state.personality.positionInterval, kShortestInterval);
  nextPosition = state.timers.at(state.now + interval + late, [this] {
    tell(position());
    schedule();
  });
}

void Notifier::tell(const Message& told) {
  state.sendUnasked(Lingo::kExtendedInterface, told.command, told.data);
}

}  // namespace simulator
