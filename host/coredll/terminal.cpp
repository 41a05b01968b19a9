#include "terminal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>

#include <cerrno>
#include <system_error>

#include "comm_state.h"
#include "open_failure.h"

namespace coredll {
namespace {

OpenFailure inUse(const std::string& path) {
  return {ERROR_SHARING_VIOLATION, path + " is in use; end the program that has it open"};
}

OpenFailure notATerminal(const std::string& path) {
  return {ERROR_FILE_NOT_FOUND, path + " is not a terminal; correct the path in IPODCTL_DEVICES"};
}

OpenFailure openFailure(const std::string& path, int error) {
  switch (error) {
    case EBUSY:
      return inUse(path);
    case EACCES:
    case EPERM:
      return {ERROR_ACCESS_DENIED,
              path + " may not be opened by this user; ls -l shows the group that may"};
    case EMFILE:
    case ENFILE:
      return {ERROR_TOO_MANY_OPEN_FILES,
              path + " cannot be opened: too many open files; close some in this program"};
    case ENOMEM:
      return {ERROR_NOT_ENOUGH_MEMORY, path + " cannot be opened: no memory; end other programs"};
    case ENOENT:
      return {ERROR_FILE_NOT_FOUND,
              path + ": no such file; start ipodsim, plug the iPod in, or correct IPODCTL_DEVICES"};
    case EISDIR:
      return notATerminal(path);
    default:
      return {ERROR_FILE_NOT_FOUND,
              path + " cannot be opened: " + std::generic_category().message(error) +
                  "; plug the iPod in again, or correct IPODCTL_DEVICES"};
  }
}

bool isPseudoTerminal(int terminal) {
  struct stat status = {};
  return fstat(terminal, &status) == 0 && coredll::isPseudoTerminal(status);
}

bool claim(int terminal) {
  if (flock(terminal, LOCK_EX | LOCK_NB) != 0) return false;
  // The mark would stay on a pseudo-terminal as long as its other end is open, even if the program
  // that set it was killed.
  return isPseudoTerminal(terminal) || ioctl(terminal, TIOCEXCL) == 0;
}

DWORD speedOf(int terminal) {
  termios line = {};
  DCB state = {};
  if (tcgetattr(terminal, &line) == 0) getLineSettings(line, state);
  return state.BaudRate;
}

void makeRaw(int terminal, std::optional<DWORD> speed, const std::string& path) {
  termios settings = {};
  if (tcgetattr(terminal, &settings) != 0) throw notATerminal(path);
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  if (speed) putSpeed(*speed, settings);
  // Each read waits for at least one byte, so a read of 0 bytes means that the other side has
  // closed.
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  if (tcsetattr(terminal, TCSANOW, &settings) != 0) throw notATerminal(path);
  if (speed && speedOf(terminal) != *speed) {
    throw OpenFailure(ERROR_FILE_NOT_FOUND, path + " does not accept " + std::to_string(*speed) +
                                                " baud; write another speed after the @");
  }
}

}  // namespace

bool isPseudoTerminal(const struct stat& status) {
  constexpr unsigned kFirstMajor = 136;
  constexpr unsigned kLastMajor = 143;
  const unsigned number = major(status.st_rdev);
  return number >= kFirstMajor && number <= kLastMajor;
}

bool hasOutputQueue(int terminal) { return !isPseudoTerminal(terminal); }

Descriptor openTerminal(const std::string& path, std::optional<DWORD> speed) {
  Descriptor terminal(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!terminal.isOpen()) throw openFailure(path, errno);
  if (isatty(terminal.get()) == 0) throw notATerminal(path);
  if (!claim(terminal.get())) throw inUse(path);
  makeRaw(terminal.get(), speed, path);
  return terminal;
}

std::string settingsOf(int wire) {
  termios line = {};
  if (tcgetattr(wire, &line) != 0) return "without settings";
  DCB state = {};
  getLineSettings(line, state);
  return std::to_string(state.BaudRate) + " baud, " + std::to_string(state.ByteSize) + " bits, " +
         (state.Parity == NOPARITY ? "no parity, " : "parity, ") +
         (state.StopBits == ONESTOPBIT ? "1 stop bit" : "2 stop bits");
}

}  // namespace coredll
