#pragma once

#include "device/identification.h"

namespace simulator {

/// The General lingo: who the accessory is, who the iPod is, and the extended mode.
class GeneralLingo {
 public:
  GeneralLingo(DeviceState& device, Identification& questions)
      : state(device), identification(questions) {}

  void handle(const Message& message);
  /// Returns whether this model ignores the message, of any lingo, because it has not accepted an
  /// announcement yet.
  bool comesTooEarly(const Message& message) const;
  /// Forgets the accessory.
  void stop();

 private:
  void identify(PayloadReader& data);
  void requestMode(PayloadReader& data);
  void enterMode(PayloadReader& data);
  void exitMode(PayloadReader& data);
  void requestName(PayloadReader& data);
  void requestSoftwareVersion(PayloadReader& data);
  void requestSerialNumber(PayloadReader& data);
  void requestModelNumber(PayloadReader& data);
  void requestLingoVersion(PayloadReader& data);
  void identifyDeviceLingoes(PayloadReader& data);
  void accessoryInfo(PayloadReader& data);

  void changeMode(bool isOn);
  void replyText(uint16_t command, const std::string& text);
  bool speaksAll(uint32_t lingoes) const;

  DeviceState& state;
  Identification& identification;
  unsigned announcements = 0;  ///< since the accessory connected
  bool wasAnnounced = false;   ///< one of them was accepted

  friend struct GeneralTable;
};

}  // namespace simulator
