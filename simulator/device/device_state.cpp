#include "device/device_state.h"

#include "wire/payload.h"

namespace simulator {

namespace {

SortOrder orderOfAllTracks(TrackOrder order) {
  return order == TrackOrder::kByName ? SortOrder::kName : SortOrder::kDefault;
}

}  // namespace

DeviceState::DeviceState(Personality model, std::shared_ptr<const Catalogue> music, uint32_t seed)
    : personality(std::move(model)),
      sharedCatalogue(std::move(music)),
      random(seed),
      faultChance(~seed),
      database(catalogue, orderOfAllTracks(personality.trackOrder)),
      player(catalogue, personality.player, random),
      display(personality.display),
      faults(faultChance) {}

const std::string& DeviceState::name() const {
  return personality.name.empty() ? catalogue.library().name : personality.name;
}

void DeviceState::setExtendedMode(bool isOn) {
  if (isOn == extendedMode) return;
  extendedMode = isOn;
  player.pause(now);
  if (!isOn) forgetExtendedMode();
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

void DeviceState::send(Lingo lingo, uint16_t command, Bytes data,
                       std::optional<size_t> textOffset) {
  Outgoing outgoing;
  outgoing.message = {static_cast<uint8_t>(lingo), command, std::move(data)};
  outgoing.cause = request.value_or(Cause{static_cast<uint8_t>(lingo), command});
  outgoing.textOffset = textOffset;
  transmit(std::move(outgoing));
}

void DeviceState::sendUnasked(Lingo lingo, uint16_t command, Bytes data) {
  const std::optional<Cause> atWork = request;
  request.reset();
  send(lingo, command, std::move(data));
  request = atWork;
}

void DeviceState::acknowledge(Status status, std::optional<Time> wait) {
  transmit(acknowledgement(status, wait));
}

Outgoing DeviceState::acknowledgement(Status status, std::optional<Time> wait) const {
  const bool isExtended = request->lingo == static_cast<uint8_t>(Lingo::kExtendedInterface);
  PayloadWriter writer;
  writer.u8(static_cast<uint8_t>(status));
  if (isExtended) {
    writer.u16(request->command);
  } else {
    writer.u8(static_cast<uint8_t>(request->command));
  }
  if (wait) {
    writer.u32(static_cast<uint32_t>(std::chrono::duration_cast<milliseconds>(*wait).count()));
  }
  const Lingo lingo = isExtended ? Lingo::kExtendedInterface : Lingo::kGeneral;
  const uint16_t command = isExtended ? uint16_t{kExtendedAck} : uint16_t{kAck};
  Outgoing outgoing;
  outgoing.message = {static_cast<uint8_t>(lingo), command, writer.take()};
  outgoing.cause = *request;
  outgoing.delay = personality.acknowledgementDelay;
  return outgoing;
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

void DeviceState::doLater(Time wait, std::function<void()> action) {
  if (wait <= Time(0)) return action();
  const std::optional<Cause> asked = request;
  timers.at(now + wait, [this, asked, action = std::move(action)] {
    request = asked;
    action();
    request.reset();
  });
}

void DeviceState::pendThenDo(Time wait, std::function<void()> action) {
  if (wait > Time(0)) acknowledge(Status::kPending, wait);
  doLater(wait, std::move(action));
}

void DeviceState::pendAndDo(Time stated, const std::function<void()>& action) {
  Outgoing pending = acknowledgement(Status::kPending, stated);
  pending.together = true;
  transmit(std::move(pending));
  action();
}

}  // namespace simulator
