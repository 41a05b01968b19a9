#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "ipodctl/serve/state_board.h"

namespace tool {

/// Connects whenever there is an iPod, and shows the stage of the connection.
class ConnectionKeeper {
 public:
  using Clock = std::chrono::steady_clock;
  /// Waits so long, or less when the head unit ends.
  using Pause = std::function<void(std::chrono::milliseconds)>;

  ConnectionKeeper(StateBoard& shown, Pause wait);

  bool isConnected() const { return connected; }
  Clock::time_point nextAttempt() const { return next; }

  /// Tries to connect. After a connection it leaves the iPod alone for a second.
  bool attempt();

  /// While the connection lasts.
  void showReady();
  void showOdd();

  /// The iPod has gone: ends the connection.
  void lose();

  /// Ends the connection, if there is one, and lets the next attempt be made at once.
  void restart();

  /// Ends the connection at the end of the head unit.
  void end();

 private:
  void settle();
  void expectNext();

  StateBoard& board;
  const Pause pause;
  bool connected = false;
  bool wasLost = false;
  int attempts = 0;  ///< since the last connection
  Clock::time_point next = Clock::now();
};

}  // namespace tool
