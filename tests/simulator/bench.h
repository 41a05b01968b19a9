#pragma once

#include <string>
#include <vector>

#include "device/simulated_ipod.h"
#include "support/small_library.h"

namespace simulator {

using Payloads = std::vector<std::string>;

/// An accessory at the end of the simulated iPod's cable, in a time of its own. It speaks in
/// payloads, written in hexadecimal; the framing here is its own, not the simulator's.
class Bench {
 public:
  explicit Bench(Personality personality = {}, MusicLibrary library = smallLibrary(),
                 uint32_t seed = 1);

  /// Sends a payload in a USB frame.
  void send(const std::string& payload);
  /// Sends bytes as they are.
  void sendRaw(const std::string& bytes);
  /// The payloads that the iPod sent up to now, taken out of their frames.
  Payloads take();
  /// Sends, then takes what comes back without time passing.
  Payloads ask(const std::string& payload);
  /// The writes of the iPod up to now, unparsed.
  Payloads takeRaw();
  /// Lets time pass, waking the iPod whenever it wants to be woken, and takes what it sent.
  Payloads wait(Time span);

  /// Enters the extended mode.
  void enter();
  /// Counts the category, selects the record, and expects both to work.
  void select(uint8_t category, uint32_t index);
  /// Names of all records of a category, fetched one by one and without their indexes.
  std::vector<std::string> list(uint8_t category);
  uint32_t count(uint8_t category);

  Time now{0};
  SimulatedIpod ipod;
};

/// A USB frame in short form, or long form where the payload needs it.
Bytes usbFrame(ByteView payload);
/// The payloads of USB frames that follow each other without anything between.
Payloads usbPayloads(ByteView stream);
/// A number as four bytes, high byte first: " 00 00 00 07".
std::string u32(uint32_t value);

}  // namespace simulator
