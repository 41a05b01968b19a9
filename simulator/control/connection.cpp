#include "control/connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace simulator {

namespace {

/// After so many steps the other programs get their turn.
constexpr int kStepsOfATurn = 64;

}  // namespace

bool Connection::serve(ControlVerbs& verbs, SteadyTime now) {
  nextDue = SteadyTime::max();
  for (int steps = 0; steps < kStepsOfATurn; ++steps) {
    if (!flush(now)) return false;
    if (!output.empty()) return true;
    const Step result = step(verbs, now);
    if (result == Step::kOver) return false;
    if (result == Step::kPause) return true;
    lastWritten = now;
  }
  nextDue = now;
  return flush(now);
}

short Connection::events() const {
  if (!output.empty()) return POLLOUT;
  return wait || isAtEnd ? 0 : POLLIN;
}

/// Does one thing while no answer is waiting to be read.
Connection::Step Connection::step(ControlVerbs& verbs, SteadyTime now) {
  if (wait) return finishWait(verbs, now);
  const size_t lineEnd = input.find('\n');
  const bool isTooLong = std::min(lineEnd, input.size()) > limit.lineBytes;
  if (isTooLong) {
    output = ControlVerbs::refusalOfLongLine(limit.lineBytes) + "\n";
    input.clear();
    isAtEnd = true;
    return Step::kGoOn;
  }
  if (lineEnd != std::string::npos) return answerLine(verbs, lineEnd);
  return isAtEnd ? Step::kOver : readMore();
}

Connection::Step Connection::finishWait(ControlVerbs& verbs, SteadyTime now) {
  if (hasHungUp()) return Step::kOver;
  const std::optional<std::string> answer = verbs.answer(*wait, now, nextDue);
  if (!answer) return Step::kPause;
  output = *answer + "\n";
  wait.reset();
  return Step::kGoOn;
}

Connection::Step Connection::answerLine(ControlVerbs& verbs, size_t lineEnd) {
  const std::string line = input.substr(0, lineEnd);
  input.erase(0, lineEnd + 1);
  if (line.find_first_not_of(" \t\r") == std::string::npos) return Step::kGoOn;
  ControlAnswer answer = verbs.answer(line);
  wait = std::move(answer.wait);
  if (!wait) output = answer.line + "\n";
  return Step::kGoOn;
}

/// The end of the input ends the last line, too.
Connection::Step Connection::readMore() {
  char some[16384];
  const ssize_t size = recv(client.get(), some, sizeof some, 0);
  if (size < 0) return errno == EAGAIN ? Step::kPause : Step::kOver;
  input.append(some, static_cast<size_t>(size));
  if (size > 0) return Step::kGoOn;
  isAtEnd = true;
  if (!input.empty()) input += '\n';
  return Step::kGoOn;
}

/// Writes what the system accepts. Returns false when nobody reads it.
bool Connection::flush(SteadyTime now) {
  if (output.empty()) return true;
  const ssize_t size = send(client.get(), output.data(), output.size(), MSG_NOSIGNAL);
  if (size < 0 && errno != EAGAIN) return false;
  if (size > 0) {
    output.erase(0, static_cast<size_t>(size));
    lastWritten = now;
  }
  if (output.empty()) return true;
  nextDue = lastWritten + limit.patience;
  return now < nextDue;
}

bool Connection::hasHungUp() const {
  pollfd end{client.get(), 0, 0};
  return poll(&end, 1, 0) > 0;
}

}  // namespace simulator
