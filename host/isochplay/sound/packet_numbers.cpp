#include "packet_numbers.h"

#include <utility>

namespace isochplay {

std::string PacketNumbers::check(uint32_t number) {
  const uint32_t expected = std::exchange(next, number + 1);
  if (number == expected) return "";
  if (number > expected) {
    return std::to_string(number - expected) + " packets are missing before packet " +
           std::to_string(number) + "; this program or the iPod's was too slow";
  }
  next = expected;
  return "packet " + std::to_string(number) + " has arrived twice; restart ipodsim";
}

}  // namespace isochplay
