// A trace in memory: the bytes between a host and a device, in order.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace trace {

/// Since the recording began.
using Time = std::chrono::microseconds;

struct Record {
  enum class Kind {
    kRead,        ///< bytes that the host read
    kWritten,     ///< bytes that the host wrote
    kOpened,      ///< the host opened the device
    kOpenFailed,  ///< with a code, as the two below
    kClosed,
    kReadFailed,
    kWriteFailed,
    kAudio,  ///< a call of the audio library
  };

  size_t line = 0;  ///< in the file, from 1
  Time at{0};       ///< never before the record above
  Kind kind = Kind::kRead;
  std::string device;  ///< empty: kAudio
  std::vector<uint8_t> bytes;
  uint32_t code = 0;
  std::string call;  ///< kAudio: the call and its values

  bool isData() const { return kind == Kind::kRead || kind == Kind::kWritten; }
};

using Trace = std::vector<Record>;

/// Returns the names of the devices with a record, in the order of their first one.
std::vector<std::string> devicesOf(const Trace& records);

}  // namespace trace
