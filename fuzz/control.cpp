// What programs send to the control socket of the simulated iPod.

#include <sys/socket.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "control/connection.h"
#include "support/require.h"
#include "support/small_library.h"

namespace {

using namespace simulator;

/// An iPod without a thread, whose cable stays unplugged: a pseudo-terminal belongs to the system.
struct Bay {
  ReplaceableIpod replaceable{Personality{}, smallLibrary(), std::nullopt, 1};
  PtyIpod pty{replaceable.ipod(), FrameKind::kUsb};
  LiveScreen screen{FontFiles{}};
  ControlVerbs verbs{pty, replaceable, screen};
};

/// Returns whether the line could make a large library, which takes seconds.
bool isSlow(const std::string& line) {
  const auto isDigit = [](char letter) { return letter >= '0' && letter <= '9'; };
  return line.find("tracks") != std::string::npos &&
         std::count_if(line.begin(), line.end(), isDigit) > 3;
}

void checkAnswer(const std::string& line) {
  require(line.find('\n') == std::string::npos, "an answer of several lines");
  const auto answer = nlohmann::json::parse(line, nullptr, false);
  require(answer.is_object() && answer.contains("ok"), "an answer without a result");
  if (answer["ok"] == true) return;
  require(!answer["error"]["message"].get<std::string>().empty(), "refused without a reason");
}

void checkLine(Bay& bay, const std::string& line) {
  const ControlAnswer answer = bay.verbs.answer(line);
  if (!answer.wait) return checkAnswer(answer.line);
  SteadyTime again;
  const auto later = bay.verbs.answer(*answer.wait, answer.wait->deadline, again);
  require(later.has_value(), "a wait without an end");
  checkAnswer(*later);
}

/// Returns what a program reads that sends these bytes and then nothing more.
std::string answersTo(Bay& bay, const std::string& bytes) {
  int ends[2];
  require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends) == 0, "no socket");
  const FileDescriptor program(ends[0]);
  Connection connection(FileDescriptor(ends[1]), {});
  send(program.get(), bytes.data(), bytes.size(), 0);
  shutdown(program.get(), SHUT_WR);
  std::string answers;
  char some[65536];
  for (SteadyTime now{}; connection.serve(bay.verbs, now); now += milliseconds(100)) {
    for (ssize_t size; (size = recv(program.get(), some, sizeof some, 0)) > 0;)
      answers.append(some, static_cast<size_t>(size));
    if (now > SteadyTime{} + seconds(100000)) require(false, "a connection without an end");
  }
  for (ssize_t size; (size = recv(program.get(), some, sizeof some, 0)) > 0;)
    answers.append(some, static_cast<size_t>(size));
  return answers;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(data, data + size);
  if (isSlow(text)) return 0;
  Bay bay;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    checkLine(bay, line);
  if (text.find("wait") != std::string::npos) return 0;  // it would wait in real time
  std::istringstream answers(answersTo(bay, text));
  for (std::string answer; std::getline(answers, answer);)
    checkAnswer(answer);
  return 0;
}
