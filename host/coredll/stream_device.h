// A device that delivers bytes as they come: the iPod's stream driver.
#ifndef COREDLL_STREAM_DEVICE_H
#define COREDLL_STREAM_DEVICE_H

#include "device.h"

namespace coredll {

class StreamDevice final : public Device {
 public:
  using Device::Device;

 protected:
  TransferPlan planRead(DWORD) override { return {1, std::nullopt, std::nullopt}; }
  TransferPlan planWrite(DWORD count) override { return {count, std::nullopt, std::nullopt}; }
};

}  // namespace coredll

#endif
