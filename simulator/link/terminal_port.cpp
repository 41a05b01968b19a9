#include "link/terminal_port.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace simulator {

namespace {

constexpr size_t kTerminalReadSize = 4096;

struct Speed {
  unsigned baud;
  speed_t code;
};

constexpr Speed kSpeeds[] = {
    {300, B300},       {1200, B1200},     {2400, B2400},     {4800, B4800},
    {9600, B9600},     {19200, B19200},   {38400, B38400},   {57600, B57600},
    {115200, B115200}, {230400, B230400}, {460800, B460800}, {921600, B921600},
};

const Speed* findSpeed(unsigned baud) {
  for (const Speed& speed : kSpeeds) {
    if (speed.baud == baud) return &speed;
  }
  return nullptr;
}

[[noreturn]] void refuseTerminal(const std::string& path, const std::string& why) {
  throw PortError("cannot use " + path + ": " + why);
}

/// Returns whether the mark of an exclusive use would stay after the end of its program.
bool isPseudoTerminal(int terminal) {
  constexpr unsigned kFirstMajor = 136;
  constexpr unsigned kLastMajor = 143;
  struct stat status = {};
  if (fstat(terminal, &status) != 0) return false;
  return major(status.st_rdev) >= kFirstMajor && major(status.st_rdev) <= kLastMajor;
}

void claim(int terminal, const std::string& path) {
  const bool isFree = flock(terminal, LOCK_EX | LOCK_NB) == 0 &&
                      (isPseudoTerminal(terminal) || ioctl(terminal, TIOCEXCL) == 0);
  if (!isFree) refuseTerminal(path, "another program has it open; end that program");
}

void setUp(int terminal, const std::string& path, unsigned baud) {
  termios settings = {};
  if (tcgetattr(terminal, &settings) != 0) {
    refuseTerminal(path, "it is not a terminal; name a serial port, like /dev/ttyUSB0");
  }
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  settings.c_cflag &= ~tcflag_t{CSTOPB | CRTSCTS};
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  const Speed* const speed = findSpeed(baud);
  const bool isSet = speed != nullptr && cfsetspeed(&settings, speed->code) == 0 &&
                     tcsetattr(terminal, TCSANOW, &settings) == 0 &&
                     tcgetattr(terminal, &settings) == 0 && cfgetospeed(&settings) == speed->code;
  if (!isSet)
    refuseTerminal(path, "it does not accept " + std::to_string(baud) + " baud; try --baud 57600");
}

}  // namespace

std::string terminalSpeeds() {
  std::string all;
  for (const Speed& speed : kSpeeds)
    all += (all.empty() ? "" : " ") + std::to_string(speed.baud);
  return all;
}

bool isTerminalSpeed(unsigned baud) { return findSpeed(baud) != nullptr; }

TerminalPort::TerminalPort(std::string devicePath, unsigned baud, PortNotice notice)
    : path(std::move(devicePath)),
      notify(std::move(notice)),
      terminal(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
  if (!terminal) {
    const std::string why = std::generic_category().message(errno);
    refuseTerminal(path, why + "; name a serial port that this user may open, like /dev/ttyUSB0");
  }
  if (isatty(terminal.get()) == 0) {
    refuseTerminal(path, "it is not a terminal; name a serial port, like /dev/ttyUSB0");
  }
  claim(terminal.get(), path);
  setUp(terminal.get(), path, baud);
}

Port::Presence TerminalPort::presence() {
  if (!isGone || !terminal) return {false, static_cast<bool>(terminal)};
  terminal = FileDescriptor();
  notify(path + " is gone; plug it in and start ipodsim again");
  return {true, false};
}

Bytes TerminalPort::read() {
  Bytes all;
  uint8_t some[kTerminalReadSize];
  ssize_t size = 0;
  while ((size = ::read(terminal.get(), some, sizeof some)) > 0)
    all.insert(all.end(), some, some + size);
  isGone = size == 0 || (errno != EAGAIN && errno != EINTR);
  return all;
}

size_t TerminalPort::write(ByteView bytes) {
  const ssize_t written = ::write(terminal.get(), bytes.begin(), bytes.size());
  return written > 0 ? static_cast<size_t>(written) : 0;
}

}  // namespace simulator
