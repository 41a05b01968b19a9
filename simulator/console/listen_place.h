#pragma once

#include <cstdint>
#include <string>

namespace simulator {

/// A TCP port of this machine.
struct ListenPlace {
  std::string address;  ///< numeric
  uint16_t port = 0;    ///< 0: the system selects one
};

/// Parses "5000", which is a port of 127.0.0.1, or "192.168.1.5:5000". Throws std::invalid_argument
/// with a message for the user of the option --listen.
ListenPlace parseListenPlace(const std::string& text);

}  // namespace simulator
