#include "device/device_state.h"

#include "wire/payload.h"

namespace simulator {

namespace {

SortOrder orderOfAllTracks(TrackOrder order) {
  return order == TrackOrder::kByName ? SortOrder::kName : SortOrder::kDefault;
}

}  // namespace

DeviceState::DeviceState(Personality model, MusicLibrary library, uint32_t seed)
    : personality(std::move(model)),
      catalogue(std::move(library)),
      random(seed),
      database(catalogue, orderOfAllTracks(personality.trackOrder)),
      player(catalogue, personality.player, random),
      display(personality.display),
      faults(random) {}

const std::string& DeviceState::name() const {
  return personality.name.empty() ? catalogue.library().name : personality.name;
}

void DeviceState::setExtendedMode(bool on) {
  if (on == extendedMode) return;
  extendedMode = on;
  player.pause(now);
  if (!on) forgetExtendedMode();
}

void DeviceState::forgetAccessory() {
  player.pause(now);
  extendedMode = false;
  forgetExtendedMode();
  timers.clear();
  announcedLingoes = 0;
  audioAckOutstanding = false;
}

void DeviceState::forgetExtendedMode() {
  notificationsOn = false;
  database.reset();
  display.clear();
}

void DeviceState::startPlaying() {
  if (!player.list().empty()) return player.resume(now);
  if (!catalogue.music().empty()) player.play(catalogue.music(), 0, now);
}

void DeviceState::togglePlaying() {
  if (player.state() == PlayState::kPlaying) {
    player.pause(now);
  } else {
    startPlaying();
  }
}

void DeviceState::send(Lingo lingo, uint16_t command, Bytes data, std::optional<size_t> textOffset,
                       Time delay) {
  Outgoing outgoing;
  outgoing.message = {static_cast<uint8_t>(lingo), command, std::move(data)};
  outgoing.cause = request.value_or(Cause{static_cast<uint8_t>(lingo), command});
  outgoing.textOffset = textOffset;
  outgoing.delay = delay;
  transmit(std::move(outgoing));
}

void DeviceState::sendUnasked(Lingo lingo, uint16_t command, Bytes data) {
  const std::optional<Cause> atWork = request;
  request.reset();
  send(lingo, command, std::move(data));
  request = atWork;
}

void DeviceState::acknowledge(Status status, std::optional<Time> wait) {
  const bool extended = request->lingo == static_cast<uint8_t>(Lingo::kExtendedInterface);
  PayloadWriter writer;
  writer.u8(static_cast<uint8_t>(status));
  if (extended) {
    writer.u16(request->command);
  } else {
    writer.u8(static_cast<uint8_t>(request->command));
  }
  if (wait) {
    writer.u32(static_cast<uint32_t>(std::chrono::duration_cast<milliseconds>(*wait).count()));
  }
  const Lingo lingo = extended ? Lingo::kExtendedInterface : Lingo::kGeneral;
  send(lingo, extended ? uint16_t{kExtendedAck} : uint16_t{kAck}, writer.take(), {},
       personality.acknowledgementDelay);
}

void DeviceState::refuseUnknown() {
  switch (personality.unknownCommand) {
    case UnknownCommand::kUnknownId:
      return acknowledge(Status::kUnknownId);
    case UnknownCommand::kFailed:
      return acknowledge(Status::kFailed);
    case UnknownCommand::kSilence:
      return;
  }
}

void DeviceState::pendThenDo(Time wait, std::function<void()> action) {
  if (wait <= Time(0)) return action();
  acknowledge(Status::kPending, wait);
  const std::optional<Cause> asked = request;
  timers.at(now + wait, [this, asked, action = std::move(action)] {
    request = asked;
    action();
    request.reset();
  });
}

}  // namespace simulator
