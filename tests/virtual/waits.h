#pragma once

#include <algorithm>
#include <chrono>

#include "virtual/scripts.h"

/// How long the parts of a call may take when the iPod falls silent at any moment.
namespace virtual_session {

using std::chrono::milliseconds;

constexpr milliseconds kReply(1000);  // what a request waits for
constexpr milliseconds kAtOnce(1);    // a call of the platform takes a microsecond
constexpr milliseconds kSteps(10);    // the same for all that requests do besides

/// A question waits for one reply, that of records for each of them. A command waits for its
/// acknowledgement and, behind a refusal or whatever else comes, for another second: so long as an
/// iPod talks there is no limit.
constexpr milliseconds requests(int questions, int commands = 0) {
  return (questions + 2 * commands) * kReply + kSteps;
}

/// Gives the reader 300 ms to see that it is to stop, and then a second to end.
constexpr milliseconds kClosing(1300);

/// Two pauses, and silence in place of an answer. Three attempts are made, of which the third one
/// leads to nothing.
constexpr milliseconds kAttempt = milliseconds(100) + kReply;

/// What is left open is closed, and an identification in the second attempt is followed by so many
/// requests: the question for the screen's limits and others, and the logo's packets.
constexpr milliseconds connecting(int others) {
  return kClosing + std::max(3 * kAttempt, 2 * kAttempt + requests(1 + others, kLogoPackets));
}

}  // namespace virtual_session
