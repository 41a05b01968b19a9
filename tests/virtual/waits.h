#pragma once

#include <algorithm>
#include <chrono>

#include "virtual/scripts.h"

/// How long the parts of a call may take when the iPod falls silent at any moment.
namespace virtual_session {

using std::chrono::milliseconds;

constexpr milliseconds kReply(1000);  // what a request waits for
constexpr milliseconds kAtOnce(1);    // a call of the platform takes a microsecond
constexpr milliseconds kSteps(10);    // all other work of the requests

/// A question waits for one reply, a question for records for each of them. A command waits for its
/// acknowledgement and, after a refusal or any other message, for another second: while an iPod
/// sends, there is no limit.
constexpr milliseconds requests(int questions, int commands = 0) {
  return (questions + 2 * commands) * kReply + kSteps;
}

/// The reader has 300 ms to notice that it must stop, and then a second to end.
constexpr milliseconds kClosing(1300);

/// Two pauses, and silence instead of an answer. There are three attempts; the third never
/// succeeds.
constexpr milliseconds kAttempt = milliseconds(100) + kReply;

/// Closes an open link first. An identification in the second attempt is followed by the question
/// for the screen's limits, `others` questions and the logo's packets.
constexpr milliseconds connecting(int others) {
  return kClosing + std::max(3 * kAttempt, 2 * kAttempt + requests(1 + others, kLogoPackets));
}

}  // namespace virtual_session
