#pragma once

#include <string>
#include <vector>

#include "device/simulated_ipod.h"
#include "support/small_library.h"

namespace simulator {

using Payloads = std::vector<std::string>;

/// An accessory at the end of the simulated iPod's cable, with its own time. It uses payloads,
/// written in hexadecimal. Its code for frames is separate from that of the simulator.
class Bench {
 public:
  explicit Bench(Personality personality = {}, MusicLibrary library = smallLibrary(),
                 uint32_t seed = 1);

  /// Sends a payload in a USB frame.
  void send(const std::string& payload);
  /// Sends bytes as they are.
  void sendRaw(const std::string& bytes);
  /// Returns the payloads of the frames that the iPod has sent.
  Payloads take();
  /// Sends a payload, and returns what the iPod sends without time passing.
  Payloads ask(const std::string& payload);
  /// Returns the writes of the iPod up to now, as they are.
  Payloads takeRaw();
  /// Lets the time pass, advances the iPod at each of its events, and returns what it sent.
  Payloads wait(Time span);

  /// Enters the extended mode.
  void enter();
  /// Counts the category and selects the record. Expects both to work.
  void select(uint8_t category, uint32_t index);
  /// Returns the names of all records of a category, requested one by one.
  std::vector<std::string> list(uint8_t category);
  uint32_t count(uint8_t category);

  Time now{0};
  SimulatedIpod ipod;
};

/// Returns a USB frame in short form, or in long form if the payload needs it.
Bytes usbFrame(ByteView payload);
/// Returns the payloads of USB frames without other bytes between them.
Payloads usbPayloads(ByteView stream);
/// Returns a number as four bytes, high byte first: " 00 00 00 07".
std::string u32(uint32_t value);

}  // namespace simulator
