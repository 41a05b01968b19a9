#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "link/file_descriptor.h"
#include "simulated_time.h"

namespace simulator {

/// A program that runs at the same time as the test. Every wait has an end. The destructor kills
/// it.
class Program {
 public:
  Program(const std::string& file, const std::vector<std::string>& arguments);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Returns its next line of output without the line end, or nothing if none arrives in time.
  std::optional<std::string> readLine(Time limit = seconds(20));
  /// Reads lines until one contains the text. Returns false if none arrives in time.
  bool readUntil(const std::string& text, Time limit = seconds(20));
  void type(const std::string& line);
  void endInput() { input = FileDescriptor(); }
  void signal(int number);
  pid_t process() const { return child; }
  /// Returns its exit status, or nothing if it does not end in time or a signal ends it.
  std::optional<int> waitForEnd(Time limit = seconds(20));
  /// Returns all output that readLine() has not returned. Call it when the program has ended.
  std::string restOfOutput();
  /// Returns what it has written to stderr since the last call.
  std::string errors();

 private:
  pid_t child = -1;
  FileDescriptor input;
  FileDescriptor output;
  FileDescriptor errorOutput;
  std::string pending;
};

}  // namespace simulator
