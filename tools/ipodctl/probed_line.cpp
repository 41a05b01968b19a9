#include "ipodctl/probed_line.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace tool {
namespace {

bool isPseudoTerminal(int terminal) {
  constexpr unsigned kFirstMajor = 136;
  constexpr unsigned kLastMajor = 143;
  struct stat status = {};
  return fstat(terminal, &status) == 0 && major(status.st_rdev) >= kFirstMajor &&
         major(status.st_rdev) <= kLastMajor;
}

speed_t speedOf(unsigned baud) {
  switch (baud) {
    case 9600:
      return B9600;
    case 19200:
      return B19200;
    case 38400:
      return B38400;
    case 115200:
      return B115200;
    default:
      return B57600;
  }
}

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
  throw std::runtime_error(path + " cannot be probed: " + why);
}

}  // namespace

ProbedLine::ProbedLine(const std::string& path)
    : terminal(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
  if (!terminal) refuse(path, std::strerror(errno));
  if (flock(terminal.get(), LOCK_EX | LOCK_NB) != 0) refuse(path, "another program uses it");
  if (tcgetattr(terminal.get(), &before) != 0) refuse(path, "it is not a terminal");
  isPseudo = isPseudoTerminal(terminal.get());
  termios raw = before;
  cfmakeraw(&raw);
  raw.c_cflag |= CLOCAL | CREAD;
  tcsetattr(terminal.get(), TCSANOW, &raw);
}

ProbedLine::~ProbedLine() { tcsetattr(terminal.get(), TCSANOW, &before); }

void ProbedLine::setSpeed(unsigned baud) {
  termios settings = {};
  if (tcgetattr(terminal.get(), &settings) != 0) return;
  cfsetspeed(&settings, speedOf(baud));
  tcsetattr(terminal.get(), TCSANOW, &settings);
  tcflush(terminal.get(), TCIOFLUSH);
}

void ProbedLine::write(simulator::ByteView bytes) {
  // A request fits in the queue of every line; what does not fit is as good as not answered.
  static_cast<void>(!::write(terminal.get(), bytes.begin(), bytes.size()));
}

simulator::Bytes ProbedLine::read(std::chrono::milliseconds limit, int stop) {
  pollfd waits[] = {{terminal.get(), POLLIN, 0}, {stop, POLLIN, 0}};
  const int ready = poll(waits, 2, static_cast<int>(limit.count()));
  if (ready <= 0 || waits[1].revents != 0) return {};
  simulator::Bytes bytes(1024);
  const ssize_t count = ::read(terminal.get(), bytes.data(), bytes.size());
  bytes.resize(count > 0 ? static_cast<size_t>(count) : 0);
  return bytes;
}

}  // namespace tool
