#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "console/listen_place.h"
#include "socket.h"
#include "wire/bytes.h"

namespace simulator {

/// An error whose message says why there is no port, and what to do.
class PortError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The iPod's end of a wire: a TCP port. One accessory at a time can connect; others are refused
/// meanwhile. Nothing here blocks. Winsock must be started before.
class AccessoryPort {
 public:
  /// Receives a line for the user.
  using Notice = std::function<void(const std::string&)>;

  /// Throws PortError.
  AccessoryPort(const ListenPlace& wanted, Notice notice);

  /// Returns where an accessory finds the iPod.
  const std::string& place() const { return name; }
  /// Returns the event that is set when an accessory has connected or left, when bytes have
  /// arrived, and when bytes can be written again.
  WSAEVENT event() const { return changed.get(); }

  /// What accessories have done since the last call, in this order.
  struct Presence {
    bool closed = false;  ///< the one that was there has left
    bool open = false;    ///< one is there now
  };
  Presence presence();

  /// Returns everything that has arrived.
  Bytes read();
  /// Writes as many bytes as the system accepts now, and returns their number.
  size_t write(ByteView bytes);

 private:
  void acceptClients();
  void take(Socket connection, const std::string& from);

  const Notice notify;
  const Event changed;
  Socket listener;
  Socket client;
  bool isGone = false;  ///< the client
  std::string name;
};

}  // namespace simulator
