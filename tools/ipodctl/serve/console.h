#pragma once

#include <string>
#include <thread>

#include "link/file_descriptor.h"

namespace tool {

class EventLog;

/// Publishes what this process writes to its standard output, line by line: the library prints
/// there. The program's own output goes to original().
class Console {
 public:
  explicit Console(EventLog& log);
  /// Standard output is again what it was.
  ~Console();
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  /// The descriptor of what was standard output before.
  int original() const { return saved.get(); }

 private:
  void publishLines();
  void publishLine();

  EventLog& events;
  simulator::FileDescriptor saved;
  simulator::FileDescriptor readEnd;
  simulator::FileDescriptor stopper;  ///< an event counter that ends the thread
  std::string line;                   ///< what has arrived of the current line
  std::thread reader;
};

}  // namespace tool
