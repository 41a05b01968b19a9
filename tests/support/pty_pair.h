// A pseudo terminal for tests of devices: the test holds the far end of the wire, the code under
// test opens the near end by a device name.
//
//   PtyPair wire;
//   DeviceMapping devices("IPD1:", wire);
//   ... CreateFileW(u"IPD1:", ...) ...
//   wire.send({0x55, 0x02, 0x00, 0x01, 0xfd});
//   EXPECT_EQ(wire.receive(2), (Bytes{0xff, 0x55}));
//   wire.hangUp();
#ifndef TESTS_HOST_PTY_PAIR_H
#define TESTS_HOST_PTY_PAIR_H

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/bytes.h"
#include "support/patience.h"

namespace host_test {

// The near end is raw from the start, so nothing is echoed or translated before a device opens it.
class PtyPair {
 public:
  PtyPair() : farEnd(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK)) {
    std::array<char, 128> name = {};
    if (farEnd < 0 || grantpt(farEnd) != 0 || unlockpt(farEnd) != 0 ||
        ptsname_r(farEnd, name.data(), name.size()) != 0) {
      throw std::runtime_error("no pseudo terminal");
    }
    nearEndPath = name.data();
    makeRaw();
  }
  PtyPair(const PtyPair&) = delete;
  PtyPair& operator=(const PtyPair&) = delete;
  ~PtyPair() { hangUp(); }

  // The near end's terminal.
  const std::string& path() const { return nearEndPath; }

  // The far end, -1 after a hang-up: for a test that also waits for other things.
  int descriptor() const { return farEnd; }

  // Writes to the device. Returns false if it does not accept everything in time.
  bool send(const Bytes& bytes) {
    std::size_t sent = 0;
    for (const Patience patience; sent < bytes.size() && waitFor(POLLOUT, patience);) {
      const ssize_t n = ::write(farEnd, bytes.data() + sent, bytes.size() - sent);
      if (n > 0) sent += static_cast<std::size_t>(n);
    }
    return sent == bytes.size();
  }

  // As send(), and waits until a reader of the near end would get all of it. For a device that is
  // not reading and has read everything before.
  bool sendAndArrive(const Bytes& bytes) {
    if (!send(bytes)) return false;
    const int nearEnd = ::open(nearEndPath.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    int arrived = 0;
    for (const Patience patience; arrived < static_cast<int>(bytes.size()) && !patience.isOver();) {
      ioctl(nearEnd, FIONREAD, &arrived);
    }
    ::close(nearEnd);
    return arrived == static_cast<int>(bytes.size());
  }

  // Returns the next `count` bytes that the device writes, or fewer if they do not arrive in time.
  Bytes receive(std::size_t count) {
    Bytes bytes(count);
    std::size_t received = 0;
    for (const Patience patience; received < count && waitFor(POLLIN, patience);) {
      const ssize_t n = ::read(farEnd, bytes.data() + received, count - received);
      if (n > 0) received += static_cast<std::size_t>(n);
    }
    bytes.resize(received);
    return bytes;
  }

  // Returns whether anything holds the near end open.
  bool isDeviceOpen() const { return (eventsNow() & POLLHUP) == 0; }

  // Waits until nothing holds the near end open. Returns false if that does not happen in time.
  bool waitUntilDeviceCloses() const {
    pollfd watched = {farEnd, 0, 0};
    return poll(&watched, 1, Patience().left()) > 0 && (watched.revents & POLLHUP) != 0;
  }

  // The near end's settings.
  termios settings() const {
    termios now = {};
    tcgetattr(farEnd, &now);
    return now;
  }

  void changeSettings(const termios& wanted) const {
    if (tcsetattr(farEnd, TCSANOW, &wanted) != 0) throw std::runtime_error("no such settings");
  }

  // Pulls the plug: bytes that the device has not read yet may be lost. The path is free then for
  // another program's terminal unless the device is still open.
  void hangUp() {
    if (farEnd >= 0) ::close(std::exchange(farEnd, -1));
  }

 private:
  void makeRaw() const {
    termios raw = settings();
    cfmakeraw(&raw);
    changeSettings(raw);
    // Only an end that was open once reads as closed.
    ::close(::open(nearEndPath.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  }

  short eventsNow() const {
    pollfd watched = {farEnd, 0, 0};
    poll(&watched, 1, 0);
    return watched.revents;
  }

  // False when the far end is not ready in time. While nothing holds the near end open, it looks
  // again every millisecond: a poll would return at once.
  bool waitFor(short events, const Patience& patience) const {
    constexpr int kLookAgain = 1;
    while (!patience.isOver()) {
      pollfd watched = {farEnd, events, 0};
      poll(&watched, 1, patience.left());
      if ((watched.revents & events) != 0) return true;
      poll(nullptr, 0, kLookAgain);
    }
    return false;
  }

  int farEnd;
  std::string nearEndPath;
};

// Sets IPODCTL_DEVICES while it lives. For tests without other threads that open devices.
class DeviceMapping {
 public:
  explicit DeviceMapping(const std::string& entries) : before(value()) {
    setenv(kVariable, entries.c_str(), 1);
  }
  DeviceMapping(const std::string& name, const PtyPair& wire)
      : DeviceMapping(name + "=" + wire.path()) {}
  DeviceMapping(const DeviceMapping&) = delete;
  DeviceMapping& operator=(const DeviceMapping&) = delete;
  ~DeviceMapping() {
    if (before) {
      setenv(kVariable, before->c_str(), 1);
    } else {
      unsetenv(kVariable);
    }
  }

 private:
  static constexpr const char* kVariable = "IPODCTL_DEVICES";

  static std::optional<std::string> value() {
    const char* const text = getenv(kVariable);
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
  }

  const std::optional<std::string> before;
};

}  // namespace host_test

#endif
