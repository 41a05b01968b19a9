#pragma once

#include <memory>
#include <optional>
#include <string>

#include "link/file_descriptor.h"
#include "simulated_time.h"

namespace simulator {

/// The answer of a simulated iPod's control socket. Places in it are JSON pointers, like
/// "/track/title". What is not there, or of another kind, is empty, -1 or false.
class ControlAnswer {
 public:
  /// An empty line means that there was no answer.
  explicit ControlAnswer(std::string line);
  ~ControlAnswer();
  ControlAnswer(ControlAnswer&& other) noexcept;

  bool isOk() const { return flag("/ok"); }
  /// Returns the code of a failure; "no-answer" when nothing has arrived in time, and an empty
  /// text for a success.
  std::string error() const;
  std::string message() const { return text("/error/message"); }

  bool has(const std::string& place) const;
  std::string text(const std::string& place) const;
  long long number(const std::string& place) const;
  bool flag(const std::string& place) const;
  /// Returns the number of elements of a list.
  size_t size(const std::string& place) const;
  const std::string& raw() const { return line; }

 private:
  struct Content;

  std::string line;
  std::unique_ptr<Content> content;
};

/// A program at the control socket of ipodsim. Every wait has an end.
class ControlClient {
 public:
  /// Connects. Without a socket every answer is "no-answer".
  explicit ControlClient(const std::string& socketPath);

  bool isConnected() const { return static_cast<bool>(connection); }
  void close() { connection = FileDescriptor(); }
  /// Sends bytes as they are. Returns false when they cannot be sent in time.
  bool send(const std::string& bytes, Time limit = seconds(20));
  /// Ends what is sent; answers can still arrive.
  void endInput();
  /// Sends a line and returns the answer.
  ControlAnswer ask(const std::string& line, Time limit = seconds(20));
  /// Returns the next answer.
  ControlAnswer readAnswer(Time limit = seconds(20));
  /// Returns whether the other end closes the connection in time. Drops answers that arrive before.
  bool isEnded(Time limit = seconds(20));
  /// Does the same, and reads nothing.
  bool isHungUp(Time limit = seconds(20)) const;

 private:
  bool receive(Time limit);

  FileDescriptor connection;
  std::string received;
};

}  // namespace simulator
