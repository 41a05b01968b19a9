#pragma once

#include "database/database.h"
#include "device/personality.h"
#include "device/timers.h"
#include "faults/fault_plan.h"

namespace simulator {

/// What the lingoes of one iPod share: its parts, its mode, and the way out for their messages.
struct DeviceState {
  DeviceState(Personality model, MusicLibrary library, uint32_t seed);
  DeviceState(const DeviceState&) = delete;
  DeviceState& operator=(const DeviceState&) = delete;

  /// The iPod's name as the accessory reads it.
  const std::string& name() const;
  /// Enters or leaves the extended mode. What plays is paused by a change; on leaving, everything
  /// that belongs to the mode is forgotten.
  void setExtendedMode(bool on);
  /// Forgets the accessory, as when the cable is pulled.
  void forgetAccessory();
  /// Plays, or goes on playing. An iPod that has nothing to go on with plays all its music.
  void startPlaying();
  void togglePlaying();

  /// Sends a message, in answer to the request at work if there is one.
  void send(Lingo lingo, uint16_t command, Bytes data, std::optional<size_t> textOffset = {});
  /// Sends a message that the iPod sends on its own.
  void sendUnasked(Lingo lingo, uint16_t command, Bytes data);

  /// For the request at work:
  void acknowledge(Status status, std::optional<Time> wait = {});
  /// Answers a command that the iPod does not know, as the personality does.
  void refuseUnknown();
  /// Does what answers the request: at once when there is nothing to wait for, else later.
  void doLater(Time wait, std::function<void()> action);
  /// The same, but acknowledges first that it is pending when there is something to wait for.
  void pendThenDo(Time wait, std::function<void()> action);
  /// Acknowledges that it is pending for so long, and does what answers the request at once. The
  /// next message is in one write with the acknowledgement.
  void pendAndDo(Time stated, const std::function<void()>& action);

  Personality personality;
  Catalogue catalogue;
  Random random;
  Random faultChance;  ///< apart, so that faults leave the shuffled order as it is
  Database database;
  Player player;
  DisplayImage display;
  FaultPlan faults;
  Timers timers;

  Time now{0};
  bool extendedMode = false;
  bool notificationsOn = false;      ///< as the accessory asked
  bool audioAckOutstanding = false;  ///< told audio attributes, not acknowledged yet
  uint32_t announcedLingoes = 0;     ///< bit n: the accessory speaks lingo n
  std::optional<Cause> request;      ///< what is being answered
  std::function<void(Outgoing)> transmit;

 private:
  void forgetExtendedMode();
  Outgoing acknowledgement(Status status, std::optional<Time> wait) const;
};

}  // namespace simulator
