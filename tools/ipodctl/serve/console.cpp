#include "ipodctl/serve/console.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <system_error>

#include "ipodctl/serve/event_log.h"

namespace tool {
namespace {

/// A longer line is published in pieces.
constexpr size_t kLongestLine = 1000;

simulator::FileDescriptor checked(int descriptor, const char* what) {
  if (descriptor < 0) throw std::system_error(errno, std::generic_category(), what);
  return simulator::FileDescriptor(descriptor);
}

}  // namespace

Console::Console(EventLog& log)
    : events(log),
      saved(checked(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0), "standard output")),
      stopper(checked(eventfd(0, EFD_CLOEXEC), "an event counter")) {
  int ends[2] = {};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "a pipe");
  }
  readEnd = simulator::FileDescriptor(ends[0]);
  const simulator::FileDescriptor writeEnd(ends[1]);
  fcntl(readEnd.get(), F_SETFL, O_NONBLOCK);
  std::fflush(stdout);
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
  dup2(writeEnd.get(), STDOUT_FILENO);
  reader = std::thread([this] { publishLines(); });
}

Console::~Console() {
  std::fflush(stdout);
  dup2(saved.get(), STDOUT_FILENO);
  constexpr uint64_t kStop = 1;
  static_cast<void>(write(stopper.get(), &kStop, sizeof kStop) == sizeof kStop);
  reader.join();
}

/// Reads until it is stopped, and then what is left. Another process can have the write end, so the
/// end of the pipe is not waited for.
void Console::publishLines() {
  std::array<char, 4096> buffer{};
  std::array<pollfd, 2> sources{{{readEnd.get(), POLLIN, 0}, {stopper.get(), POLLIN, 0}}};
  for (;;) {
    const ssize_t size = read(readEnd.get(), buffer.data(), buffer.size());
    for (ssize_t i = 0; i < size; ++i) {
      const char each = buffer[static_cast<size_t>(i)];
      if (each != '\n') line += each;
      if (each == '\n' || line.size() >= kLongestLine) publishLine();
    }
    if (size > 0 || (size < 0 && errno == EINTR)) continue;
    if (size == 0 || sources[1].revents != 0) break;
    poll(sources.data(), sources.size(), -1);
  }
  publishLine();
}

void Console::publishLine() {
  if (line.empty()) return;
  const nlohmann::json document = {{"line", line}};
  line.clear();
  events.publish(Topic::kConsole,
                 document.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

}  // namespace tool
