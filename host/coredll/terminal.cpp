#include "terminal.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>

#include <cerrno>

#include "last_error.h"

namespace coredll {
namespace {

DWORD openError(int error) {
  switch (error) {
    case EBUSY:
      return ERROR_SHARING_VIOLATION;
    case EACCES:
    case EPERM:
      return ERROR_ACCESS_DENIED;
    case EMFILE:
    case ENFILE:
      return ERROR_TOO_MANY_OPEN_FILES;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    default:
      return ERROR_FILE_NOT_FOUND;
  }
}

bool isPseudoTerminal(int terminal) {
  constexpr unsigned kFirstMajor = 136;
  constexpr unsigned kLastMajor = 143;
  struct stat status = {};
  if (fstat(terminal, &status) != 0) return false;
  return major(status.st_rdev) >= kFirstMajor && major(status.st_rdev) <= kLastMajor;
}

bool claim(int terminal) {
  if (flock(terminal, LOCK_EX | LOCK_NB) != 0) return false;
  // The mark would stay on a pseudo-terminal as long as its other end is open, even if the program
  // that set it was killed.
  return isPseudoTerminal(terminal) || ioctl(terminal, TIOCEXCL) == 0;
}

bool makeRaw(int terminal) {
  termios settings = {};
  if (tcgetattr(terminal, &settings) != 0) return false;
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  // Each read waits for at least one byte, so a read of 0 bytes means that the other side has
  // closed.
  settings.c_cc[VMIN] = 1;
  settings.c_cc[VTIME] = 0;
  return tcsetattr(terminal, TCSANOW, &settings) == 0;
}

}  // namespace

bool hasOutputQueue(int terminal) { return !isPseudoTerminal(terminal); }

Descriptor openTerminal(const std::string& path) {
  Descriptor terminal(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!terminal.isOpen()) return fail(openError(errno), Descriptor());
  if (isatty(terminal.get()) == 0) return fail(ERROR_FILE_NOT_FOUND, Descriptor());
  if (!claim(terminal.get())) return fail(ERROR_SHARING_VIOLATION, Descriptor());
  if (!makeRaw(terminal.get())) return fail(ERROR_FILE_NOT_FOUND, Descriptor());
  return terminal;
}

}  // namespace coredll
