// The packets of an image that a host uploads, found among the messages.
#pragma once

#include <vector>

#include "iaptrace/exchange.h"

namespace iaptrace {

/// One image. Numbers are indexes in the conversation.
struct Logo {
  std::vector<size_t> packets;
  std::vector<size_t> answers;
  size_t acknowledged = 0;  ///< packets with status 0
  size_t refused = 0;       ///< packets with another status
  size_t pixelBytes = 0;
  uint16_t width = 0;
  uint16_t height = 0;
  std::string format;  ///< empty without the first packet
};

/// Returns the images of at least two packets.
std::vector<Logo> logosOf(const Conversation& items, const Exchanges& exchanges);

/// Returns "60 packets, 160x120 rgb565-low-first, 38400 bytes, all acknowledged".
std::string describe(const Logo& logo);

}  // namespace iaptrace
