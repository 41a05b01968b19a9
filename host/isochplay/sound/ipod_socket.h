#pragma once

#include <optional>
#include <string>

#include "coredll/descriptor.h"
#include "frame.h"

namespace isochplay {

/// What the iPod sends in one millisecond.
struct Packet {
  uint32_t number = 0;  ///< from 0 on for each connection
  Frames frames;
};

/// The connection to the simulated iPod's sound. simulator/audio/audio_socket.h describes what
/// crosses it. Nothing here blocks.
class IpodSocket {
 public:
  /// Connects to the socket next to the link that IPD1: is mapped to. Returns why there is no
  /// connection; empty when there is one.
  std::string connect();
  void close() { socket = coredll::Descriptor(); }
  bool isOpen() const { return socket.isOpen(); }
  int descriptor() const { return socket.get(); }

  void selectBandwidth(bool isFull);
  /// Returns the next packet that has arrived. Closes the connection when the iPod has closed it.
  std::optional<Packet> receive();

 private:
  coredll::Descriptor socket;
};

}  // namespace isochplay
