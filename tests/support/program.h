#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "link/file_descriptor.h"
#include "simulated_time.h"

namespace simulator {

/// A program that runs beside the test. Every wait has an end; at the end of its life it is killed.
class Program {
 public:
  Program(const std::string& file, const std::vector<std::string>& arguments);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Its next line of output, without the line end; nothing when none comes in time.
  std::optional<std::string> readLine(Time limit = seconds(20));
  /// Reads lines until one contains the text; false when none comes in time.
  bool readUntil(const std::string& text, Time limit = seconds(20));
  void type(const std::string& line);
  void endInput() { input = FileDescriptor(); }
  void signal(int number);
  pid_t process() const { return child; }
  /// Its exit status; nothing when it does not end in time, or is ended by a signal.
  std::optional<int> waitForEnd(Time limit = seconds(20));
  /// Everything that it has written and that no readLine() took, once it has ended.
  std::string restOfOutput();
  /// What it has written as errors and nobody took.
  std::string errors();

 private:
  pid_t child = -1;
  FileDescriptor input;
  FileDescriptor output;
  FileDescriptor errorOutput;
  std::string pending;
};

}  // namespace simulator
