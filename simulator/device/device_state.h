#pragma once

#include <memory>

#include "database/database.h"
#include "device/personality.h"
#include "device/timers.h"
#include "faults/fault_plan.h"

namespace simulator {

/// The state that the lingoes of one iPod share: its parts, its mode, and the functions that send
/// messages.
struct DeviceState {
  DeviceState(Personality model, std::shared_ptr<const Catalogue> music, uint32_t seed);
  DeviceState(const DeviceState&) = delete;
  DeviceState& operator=(const DeviceState&) = delete;

  /// Returns the iPod's name as the accessory reads it.
  const std::string& name() const;
  /// Enters or leaves the extended mode. A change pauses the player. Leaving the mode clears
  /// everything that belongs to it.
  void setExtendedMode(bool isOn);
  /// Forgets the accessory, as when the cable is pulled.
  void forgetAccessory();
  /// Plays, or continues to play. An iPod that has not played anything plays all its music.
  void startPlaying();
  void togglePlaying();

  /// Sends a message, as the answer to the current request if there is one.
  void send(Lingo lingo, uint16_t command, Bytes data, std::optional<size_t> textOffset = {});
  /// Sends a message that the iPod sends on its own.
  void sendUnasked(Lingo lingo, uint16_t command, Bytes data);

  /// These answer the current request:
  void acknowledge(Status status, std::optional<Time> wait = {});
  /// Answers an unknown command as the personality says.
  void refuseUnknown();
  /// Calls `action`, which answers the request, after `wait`; at once when that is 0.
  void doLater(Time wait, std::function<void()> action);
  /// Does the same, but first acknowledges the request as pending when `wait` is not 0.
  void pendThenDo(Time wait, std::function<void()> action);
  /// Acknowledges the request as pending for `stated`, and calls `action` at once. The next message
  /// is in one write with the acknowledgement.
  void pendAndDo(Time stated, const std::function<void()>& action);

  Personality personality;
  const std::shared_ptr<const Catalogue> sharedCatalogue;
  const Catalogue& catalogue = *sharedCatalogue;
  Random random;
  Random faultChance;  ///< separate, so that faults do not change the shuffled order
  Database database;
  Player player;
  DisplayImage display;
  FaultPlan faults;
  Timers timers;

  Time now{0};
  bool extendedMode = false;
  bool notificationsOn = false;      ///< as the accessory requested
  bool audioAckOutstanding = false;  ///< audio attributes were sent, but not acknowledged yet
  uint32_t announcedLingoes = 0;     ///< bit n: the accessory speaks lingo n
  std::optional<Cause> request;      ///< what is being answered
  std::function<void(Outgoing)> transmit;

 private:
  void forgetExtendedMode();
  Outgoing acknowledgement(Status status, std::optional<Time> wait) const;
};

}  // namespace simulator
