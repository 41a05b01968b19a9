#pragma once

#include <string>

#include "link/file_descriptor.h"
#include "simulated_time.h"

namespace simulator {

/// The accessory's end of a pseudo-terminal: opens the slave like a device. Every wait has an end.
class HostEnd {
 public:
  /// Closed; or open, when there is a device of this path.
  HostEnd() = default;
  explicit HostEnd(const std::string& path);

  bool isOpen() const { return static_cast<bool>(device); }
  int descriptor() const { return device.get(); }
  void close() { device = FileDescriptor(); }
  bool write(const std::string& hexBytes);
  /// Reads exactly so many bytes, in hexadecimal; what came when the time was over or the device
  /// failed, if they were fewer.
  std::string read(size_t size, Time limit = seconds(5));
  /// Whether a read fails, or has nothing more to come, within the time.
  bool readFails(Time limit = seconds(5));

 private:
  FileDescriptor device;
};

}  // namespace simulator
