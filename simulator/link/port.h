#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

#include "wire/bytes.h"

namespace simulator {

/// An error whose message says why there is no port, and what to do.
class PortError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The iPod's end of a wire. Nothing here blocks.
class Port {
 public:
  virtual ~Port() = default;

  /// Returns where an accessory finds the iPod.
  virtual const std::string& place() const = 0;
  /// Returns the descriptor to poll for input and output while an accessory is there.
  virtual int descriptor() const = 0;
  /// Returns the descriptor to poll for input at any time: it is readable when an accessory may
  /// have connected or left. -1 when there is none.
  virtual int watch() const = 0;

  /// What accessories have done since the last call, in this order.
  struct Presence {
    bool closed = false;  ///< the last one that had it open closed it
    bool open = false;    ///< one has it open now
  };
  virtual Presence presence() = 0;

  /// Returns everything that has arrived.
  virtual Bytes read() = 0;
  /// Writes as many bytes as the system accepts now, and returns their number.
  virtual size_t write(ByteView bytes) = 0;
  /// Drops what was written and not yet read, if that is possible.
  virtual void dropUnread() = 0;
};

/// Makes the port when the cable is plugged in. Throws PortError or std::system_error.
using PortMaker = std::function<std::unique_ptr<Port>()>;

/// Receives a line for the user. It is called while the iPod is locked.
using PortNotice = std::function<void(const std::string&)>;

}  // namespace simulator
