#include "virtual/recorded_console.h"

#include "virtual/call.h"

namespace virtual_session {

RecordedConsole::RecordedConsole() : before(stdout) {
  std::fflush(stdout);
  stdout = fopencookie(this, "w", {nullptr, take, nullptr, nullptr});
  std::setvbuf(stdout, nullptr, _IONBF, 0);
}

RecordedConsole::~RecordedConsole() {
  std::fclose(stdout);
  stdout = before;
}

ssize_t RecordedConsole::take(void* console, const char* text, std::size_t size) {
  std::string& line = static_cast<RecordedConsole*>(console)->line;
  for (const char letter : std::string(text, size)) {
    if (letter != '\n') {
      line += letter;
      continue;
    }
    virtual_platform::note("prints " + line);
    line.clear();
  }
  return static_cast<ssize_t>(size);
}

}  // namespace virtual_session
