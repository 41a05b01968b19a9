#pragma once

#include <string>

#include "link/file_descriptor.h"
#include "simulated_time.h"

namespace simulator {

/// The accessory's end of a pseudo-terminal: opens the slave like a device. Every wait has an end.
class HostEnd {
 public:
  /// Makes a closed end. With a path it is open if there is such a device.
  HostEnd() = default;
  explicit HostEnd(const std::string& path);
  /// Connects to a TCP port of this machine, like "127.0.0.1:5000". Closed if nobody listens.
  static HostEnd connectedTo(const std::string& place);

  bool isOpen() const { return static_cast<bool>(device); }
  int descriptor() const { return device.get(); }
  void close() { device = FileDescriptor(); }
  bool write(const std::string& hexBytes);
  /// Reads exactly `size` bytes and returns them in hexadecimal. Returns fewer when the time is
  /// over or the device fails.
  std::string read(size_t size, Time limit = seconds(5));
  /// Returns whether a read fails or reports the end within the time.
  bool readFails(Time limit = seconds(5));

 private:
  FileDescriptor device;
};

}  // namespace simulator
