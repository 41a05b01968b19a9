#include "ipodctl/serve/connection_keeper.h"

#include <ipodctl.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tool {
namespace {

using std::chrono::milliseconds;

/// Many iPods acknowledge a connection twice, up to a second later.
constexpr milliseconds kSettleTime(1000);

/// The pauses between attempts grow. An iPod that is plugged in does not wait longer than the last.
constexpr milliseconds kPauses[] = {milliseconds(500), milliseconds(1000), milliseconds(2000),
                                    milliseconds(4000), milliseconds(5000)};

constexpr char kAbsent[] = "No iPod is connected. Plug one in.";
constexpr char kConnecting[] = "Connecting to the iPod.";
constexpr char kSettling[] = "The iPod is connected. One moment, please.";
constexpr char kReady[] = "The iPod is ready.";
constexpr char kOdd[] = "The iPod did not answer. It is asked again in a second.";
constexpr char kLost[] = "The iPod has gone. Check the cable, or plug the iPod in again.";
constexpr char kRestarting[] = "The iPod is being connected again. One moment, please.";

}  // namespace

ConnectionKeeper::ConnectionKeeper(StateBoard& shown, Pause wait)
    : board(shown), pause(std::move(wait)) {
  board.enter(Stage::kAbsent, kAbsent);
}

bool ConnectionKeeper::attempt() {
  board.enter(Stage::kConnecting, kConnecting);
  connected = IpodConnect() == 1;
  if (connected) {
    settle();
  } else {
    expectNext();
  }
  return connected;
}

void ConnectionKeeper::settle() {
  attempts = 0;
  wasLost = false;
  board.enter(Stage::kSettling, kSettling);
  pause(kSettleTime);
}

void ConnectionKeeper::expectNext() {
  const size_t last = std::size(kPauses) - 1;
  next = Clock::now() + kPauses[std::min(static_cast<size_t>(attempts), last)];
  ++attempts;
  board.enter(wasLost ? Stage::kLost : Stage::kAbsent, wasLost ? kLost : kAbsent);
  board.expectRetry(attempts, next);
}

void ConnectionKeeper::showReady() { board.enter(Stage::kReady, kReady); }

void ConnectionKeeper::showOdd() { board.enter(Stage::kOdd, kOdd); }

void ConnectionKeeper::lose() {
  board.enter(Stage::kLost, kLost);
  IpodDisconnect();
  connected = false;
  wasLost = true;
  attempts = 0;
  expectNext();
}

void ConnectionKeeper::restart() {
  board.enter(Stage::kConnecting, kRestarting);
  IpodDisconnect();
  connected = false;
  attempts = 0;
  next = Clock::now();
}

void ConnectionKeeper::end() {
  if (connected) IpodDisconnect();
  connected = false;
}

}  // namespace tool
