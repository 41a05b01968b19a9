#pragma once

#include <cstdio>
#include <string>

namespace virtual_session {

/// While a RecordedConsole lives, printed lines are not shown. Each becomes a line in the trace of
/// the running world, "prints IPod connected".
class RecordedConsole {
 public:
  RecordedConsole();
  ~RecordedConsole();
  RecordedConsole(const RecordedConsole&) = delete;
  RecordedConsole& operator=(const RecordedConsole&) = delete;

 private:
  static ssize_t take(void* console, const char* text, std::size_t size);

  std::string line;  ///< until its end is printed
  std::FILE* const before;
};

}  // namespace virtual_session
