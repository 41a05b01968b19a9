#pragma once

#include <cstdint>
#include <string>

namespace isochplay {

/// Checks that each packet of a connection arrives once and in order.
class PacketNumbers {
 public:
  /// Returns what is wrong with this packet; empty when it is the next one.
  std::string check(uint32_t number);
  void startOver() { next = 0; }

 private:
  uint32_t next = 0;
};

}  // namespace isochplay
