// A device that delivers bytes as they arrive: the iPod's stream driver.
#pragma once

#include <string>
#include <utility>

#include "device.h"

namespace coredll {

class StreamDevice : public Device {
 public:
  StreamDevice(std::string openedName, WireDescriptor terminal, Descriptor wakeSignal)
      : Device(kStreamDeviceKind, std::move(openedName), std::move(terminal),
               std::move(wakeSignal)) {}

 protected:
  TransferPlan planRead(DWORD) override { return {1, std::nullopt, std::nullopt}; }
  TransferPlan planWrite(DWORD count) override { return {count, std::nullopt, std::nullopt}; }
};

}  // namespace coredll
