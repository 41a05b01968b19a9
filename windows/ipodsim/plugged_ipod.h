#pragma once

#include <windows.h>

#include <chrono>
#include <optional>

#include "accessory_port.h"
#include "device/simulated_ipod.h"

namespace simulator {

/// Runs a simulated iPod in real time at a TCP port, on the calling thread. A fault can pull the
/// cable: the port is then closed, and stays closed.
class PluggedIpod {
 public:
  /// The iPod must outlive this. Throws PortError.
  PluggedIpod(SimulatedIpod& device, const ListenPlace& place, AccessoryPort::Notice notice);

  const std::string& place() const { return name; }

  /// Runs the iPod until the event is set.
  void runUntil(HANDLE ending);

 private:
  void serve();
  void receive();
  void noticeAccessory();
  void send();
  void flush();
  void pullWhenDue();
  DWORD waitLimitMs() const;
  Time now() const { return std::chrono::steady_clock::now() - begin; }

  SimulatedIpod& ipod;
  const AccessoryPort::Notice notify;
  const std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
  std::optional<AccessoryPort> port;  ///< while the cable is plugged
  const std::string name;
  bool isAccessoryThere = false;
  Bytes unwritten;
  std::optional<Time> pullAt;  ///< the iPod is unplugged: when its port is to be closed
};

}  // namespace simulator
