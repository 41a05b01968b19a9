#include "link/pty_port.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <system_error>

namespace simulator {

namespace {

constexpr size_t kReadSize = 4096;

[[noreturn]] void fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

std::string slaveNameOf(int master) {
  char name[PATH_MAX];
  if (ptsname_r(master, name, sizeof name) != 0) fail("cannot name a pseudo-terminal");
  return name;
}

/// Makes the slave raw: on Linux the master's settings are those of the slave.
void makeRaw(int master) {
  termios settings;
  if (tcgetattr(master, &settings) != 0) fail("cannot read a pseudo-terminal's settings");
  cfmakeraw(&settings);
  if (tcsetattr(master, TCSANOW, &settings) != 0) fail("cannot set up a pseudo-terminal");
}

}  // namespace

PtyPort::PtyPort()
    : masterEnd(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)),
      watcher(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
  if (!masterEnd) fail("cannot open a pseudo-terminal");
  if (!watcher) fail("cannot watch files");
  const bool isUsable = grantpt(masterEnd.get()) == 0 && unlockpt(masterEnd.get()) == 0;
  if (!isUsable) fail("cannot unlock a pseudo-terminal");
  makeRaw(masterEnd.get());
  path = slaveNameOf(masterEnd.get());
  if (inotify_add_watch(watcher.get(), path.c_str(), IN_OPEN | IN_CLOSE) < 0) {
    fail("cannot watch " + path);
  }
}

Port::Presence PtyPort::presence() {
  Presence now;
  alignas(inotify_event) char events[kReadSize];
  for (ssize_t size; (size = ::read(watcher.get(), events, sizeof events)) > 0;) {
    for (ssize_t at = 0; at < size;) {
      inotify_event event;
      std::memcpy(&event, events + at, sizeof event);
      at += static_cast<ssize_t>(sizeof event + event.len);
      if (notice(event.mask)) now.closed = true;
    }
  }
  now.open = wasOpened && !hungUp();
  return now;
}

/// Returns true when the last process that had the slave open closed it.
bool PtyPort::notice(uint32_t event) {
  if ((event & IN_OPEN) != 0) {
    wasOpened = true;
    ++openCount;
  }
  if ((event & IN_CLOSE) == 0) return false;
  openCount = std::max(openCount - 1, 0);
  return openCount == 0;
}

/// Returns whether no process has the slave open any more. The kernel does not report this before a
/// process has opened it.
bool PtyPort::hungUp() const {
  pollfd state{masterEnd.get(), 0, 0};
  return poll(&state, 1, 0) > 0 && (state.revents & POLLHUP) != 0;
}

Bytes PtyPort::read() {
  Bytes all;
  uint8_t some[kReadSize];
  for (ssize_t size; (size = ::read(masterEnd.get(), some, sizeof some)) > 0;) {
    all.insert(all.end(), some, some + size);
  }
  return all;
}

size_t PtyPort::write(ByteView bytes) {
  const ssize_t written = ::write(masterEnd.get(), bytes.begin(), bytes.size());
  return written > 0 ? static_cast<size_t>(written) : 0;
}

/// Drops what the slave has not read. Settings that are applied with a flush drop it without
/// opening the slave.
void PtyPort::dropUnread() {
  tcflush(masterEnd.get(), TCOFLUSH);
  termios settings;
  if (tcgetattr(masterEnd.get(), &settings) == 0) {
    tcsetattr(masterEnd.get(), TCSAFLUSH, &settings);
  }
}

}  // namespace simulator
