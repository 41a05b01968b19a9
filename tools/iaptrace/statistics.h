// How often and how fast the commands of a trace were answered.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "iaptrace/exchange.h"

namespace iaptrace {

/// The requests with one command.
struct CommandStatistics {
  Sender sender = Sender::kHost;
  uint8_t lingo = 0;
  uint16_t command = 0;
  size_t count = 0;
  size_t unanswered = 0;
  size_t refused = 0;                  ///< acknowledged with a failure
  std::vector<trace::Time> latencies;  ///< to the last answer, in rising order

  size_t failures() const { return unanswered + refused; }
  /// Returns the middle one of the latencies; the lower one of two.
  trace::Time median() const { return latencies[(latencies.size() - 1) / 2]; }
};

/// A step of a connection.
struct Milestone {
  std::string stage;
  trace::Time at{0};
  size_t line = 0;
};

/// What follows an open of the device, or what is before the first one.
struct ConnectionStatistics {
  trace::Time opened{0};
  size_t line = 0;
  std::vector<Milestone> milestones;  ///< those that were reached, in the order of time
  bool isConnected = false;
};

struct DirectionStatistics {
  size_t bytes = 0;
  size_t messages = 0;
  size_t damaged = 0;  ///< frames that are not whole, not correct or without a command
  size_t noise = 0;    ///< bytes outside any frame
};

struct Statistics {
  trace::Time duration{0};                  ///< up to the last item
  std::vector<CommandStatistics> commands;  ///< those of the host first, by lingo and command
  std::vector<ConnectionStatistics> connections;
  DirectionStatistics fromHost;
  DirectionStatistics fromIpod;
  size_t unsolicited = 0;
  size_t unexpected = 0;  ///< answers for which no request was open
};

Statistics statisticsOf(const Conversation& items, const Exchanges& exchanges);

}  // namespace iaptrace
