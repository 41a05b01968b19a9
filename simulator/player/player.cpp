#include "player/player.h"

#include <algorithm>

namespace simulator {

namespace {

/// The length of a track of unknown length, so that a list of such tracks takes some time.
constexpr Time kShortestTrack = milliseconds(100);

}  // namespace

void Player::advance(Time now) {
  for (auto end = nextEnd(); end && *end <= now; end = nextEnd())
    endTrack(*end);
  settle(now);
}

std::optional<Time> Player::nextEnd() const {
  if (speed() <= 0) return std::nullopt;
  const Time left = duration() - settledPosition;
  return settledAt + (left + Time(speed() - 1)) / speed();
}

PlayerChanges Player::takeChanges() {
  const PlayerChanges taken = changes;
  changes = {};
  return taken;
}

void Player::play(std::vector<uint32_t> tracks, size_t first, Time now) {
  advance(now);
  if (tracks.empty()) return stopAt(0, now);
  playing.assign(std::move(tracks), first, shuffleMode, catalogue, random);
  playState = PlayState::kPlaying;
  seek = 0;
  startTrack(playing.currentIndex(), now);
}

void Player::resume(Time now) {
  advance(now);
  if (playState == PlayState::kPlaying || playing.empty()) return;
  const bool wasStopped = playState == PlayState::kStopped;
  playState = PlayState::kPlaying;
  if (wasStopped) startTrack(playing.currentIndex(), now);
}

void Player::pause(Time now) {
  advance(now);
  if (playState == PlayState::kPlaying) playState = PlayState::kPaused;
}

void Player::stop(Time now) {
  advance(now);
  if (playState != PlayState::kStopped) stopAt(playing.currentIndex(), now);
}

void Player::next(Time now) {
  advance(now);
  if (playState == PlayState::kStopped) return;
  const uint32_t index = playing.currentIndex() + 1;
  if (index < playing.size()) return startTrack(index, now);
  if (repeatMode == Repeat::kAll) return startTrack(0, now);
  stopAt(0, now);
}

void Player::previous(Time now) {
  advance(now);
  if (playState == PlayState::kStopped) return;
  const uint32_t index = playing.currentIndex();
  const bool mustRestart =
      habits.previousRestartsAfter > Time(0) && settledPosition >= habits.previousRestartsAfter;
  if (mustRestart) return startTrack(index, now);
  if (index > 0) return startTrack(index - 1, now);
  startTrack(repeatMode == Repeat::kAll ? playing.size() - 1 : 0, now);
}

void Player::startSeek(SeekDirection direction, Time now) {
  advance(now);
  if (playState != PlayState::kStopped) seek = static_cast<int>(direction);
}

void Player::endSeek(Time now) {
  advance(now);
  seek = 0;
}

void Player::moveTo(Time position, Time now) {
  advance(now);
  if (playState == PlayState::kStopped) return;
  settledPosition = std::clamp(position, Time(0), duration());
  advance(now);
}

void Player::goTo(uint32_t index, Time now) {
  advance(now);
  startTrack(index, now);
}

void Player::setShuffle(Shuffle mode) {
  shuffleMode = mode;
  if (playing.empty()) return;
  const uint32_t before = playing.currentIndex();
  playing.arrange(mode, catalogue, random);
  const bool hasMoved = playing.currentIndex() != before;
  if (hasMoved && playState != PlayState::kStopped) changes.track = true;
}

std::optional<uint32_t> Player::currentTrack() const {
  if (playState == PlayState::kStopped) return std::nullopt;
  return playing.currentTrack();
}

Time Player::position(Time now) const {
  if (playState == PlayState::kStopped) return Time(0);
  const Time hasMoved = settledPosition + (now - settledAt) * speed();
  return std::clamp(hasMoved, Time(0), duration());
}

int Player::speed() const {
  if (playState == PlayState::kStopped) return 0;
  if (seek != 0) return seek * habits.seekSpeed;
  return playState == PlayState::kPlaying ? 1 : 0;
}

Time Player::duration() const {
  const Time told = milliseconds(catalogue.track(playing.currentTrack()).lengthMs);
  return std::max(told, kShortestTrack);
}

void Player::settle(Time now) {
  settledPosition = position(now);
  settledAt = now;
}

void Player::startTrack(uint32_t index, Time now) {
  playing.moveTo(index);
  settledPosition = Time(0);
  settledAt = now;
  changes.track = true;
}

void Player::endTrack(Time now) {
  const uint32_t index = playing.currentIndex();
  if (repeatMode == Repeat::kOne) return startTrack(index, now);
  if (index + 1 < playing.size()) return startTrack(index + 1, now);
  if (repeatMode == Repeat::kAll) return startTrack(0, now);
  stopAt(0, now);
}

void Player::stopAt(uint32_t index, Time now) {
  playing.moveTo(index);
  playState = PlayState::kStopped;
  seek = 0;
  settledPosition = Time(0);
  settledAt = now;
  changes.stopped = true;
}

}  // namespace simulator
