// A device with a line's settings and time-outs.
#pragma once

#include <windows.h>

#include <mutex>
#include <string>
#include <utility>

#include "device.h"

namespace coredll {

class SerialPort final : public Device {
 public:
  static constexpr unsigned kKinds = kSerialPortKind;

  SerialPort(std::string openedName, WireDescriptor terminal, Descriptor wakeSignal)
      : Device(kSerialPortKind, std::move(openedName), std::move(terminal), std::move(wakeSignal)) {
  }

  /// Results are error codes of windows.h.
  DWORD getState(DCB& state);
  DWORD setState(const DCB& wanted);
  DWORD getTimeouts(COMMTIMEOUTS& copy);
  DWORD setTimeouts(const COMMTIMEOUTS& wanted);

 protected:
  TransferPlan planRead(DWORD count) override;
  TransferPlan planWrite(DWORD count) override;

 private:
  COMMTIMEOUTS timeoutsNow();
  DWORD readState(int terminal, DCB& state) const;
  DWORD changeState(int terminal, const DCB& wanted);

  std::mutex mutex;
  COMMTIMEOUTS timeouts = {};            ///< guarded by mutex
  BYTE rtsControl = RTS_CONTROL_ENABLE;  ///< guarded by mutex; opening a terminal raises RTS
};

}  // namespace coredll
