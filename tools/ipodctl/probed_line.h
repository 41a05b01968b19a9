// A terminal that is opened to try settings on it.
#pragma once

#include <termios.h>

#include <chrono>
#include <string>

#include "link/file_descriptor.h"
#include "wire/bytes.h"

namespace tool {

/// Opens a terminal raw, and restores its settings at its end. Throws std::runtime_error with a
/// message for the user.
class ProbedLine {
 public:
  explicit ProbedLine(const std::string& path);
  ProbedLine(const ProbedLine&) = delete;
  ProbedLine& operator=(const ProbedLine&) = delete;
  ~ProbedLine();

  /// A pseudo-terminal has no speed.
  bool hasSpeed() const { return !isPseudo; }
  /// Drops what has arrived. `baud` is one of the speeds that supportsSpeed() knows.
  void setSpeed(unsigned baud);
  void write(simulator::ByteView bytes);
  /// Waits for bytes. Returns none when the time is over, the line hung up, or `stop` is readable.
  simulator::Bytes read(std::chrono::milliseconds limit, int stop);

 private:
  simulator::FileDescriptor terminal;
  termios before = {};
  bool isPseudo = false;
};

}  // namespace tool
