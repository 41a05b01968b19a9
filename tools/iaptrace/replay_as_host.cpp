#include "iaptrace/replay_as_host.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <termios.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "link/file_descriptor.h"

namespace iaptrace {
namespace {

using simulator::FileDescriptor;
using simulator::Time;

constexpr size_t kReadSize = 4096;

[[noreturn]] void refuseDevice(const std::string& path, const std::string& why) {
  throw std::runtime_error("cannot open " + path + ": " + why +
                           "; plug the iPod in, or start ipodsim --link " + path);
}

FileDescriptor openTerminal(const std::string& path) {
  FileDescriptor terminal(open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  if (!terminal) refuseDevice(path, std::generic_category().message(errno));
  termios settings;
  if (tcgetattr(terminal.get(), &settings) != 0) refuseDevice(path, "it is not a terminal");
  if (flock(terminal.get(), LOCK_EX | LOCK_NB) != 0) refuseDevice(path, "another program uses it");
  cfmakeraw(&settings);
  settings.c_cflag |= CLOCAL | CREAD;
  tcsetattr(terminal.get(), TCSANOW, &settings);
  return terminal;
}

class HostEnd {
 public:
  HostEnd(ReplayedHost& played, std::string device)
      : host(played), path(std::move(device)), begin(std::chrono::steady_clock::now()) {}

  bool run(int interruption) {
    while (true) {
      act();
      if (host.isOver()) return true;
      pollfd waits[] = {
          {interruption, POLLIN, 0},
          {terminal.get(), static_cast<short>(POLLIN | (unwritten.empty() ? 0 : POLLOUT)), 0}};
      poll(waits, std::size(waits), limitMs());
      if (waits[0].revents != 0) return false;
      if (waits[1].revents != 0) serve();
    }
  }

 private:
  Time now() const { return std::chrono::steady_clock::now() - begin; }

  int limitMs() const {
    const std::optional<Time> wake = host.nextWake();
    const Time left = wake ? std::max(*wake - now(), Time(0)) : Time(0);
    const auto ms = std::chrono::ceil<simulator::milliseconds>(left).count();
    return static_cast<int>(std::min<int64_t>(ms, std::numeric_limits<int>::max()));
  }

  void act() {
    for (const ReplayedHost::Action& action : host.takeActions(now())) {
      switch (action.kind) {
        case ReplayedHost::Action::Kind::kOpen:
          terminal = FileDescriptor();
          terminal = openTerminal(path);
          break;
        case ReplayedHost::Action::Kind::kClose:
          terminal = FileDescriptor();
          unwritten.clear();
          break;
        case ReplayedHost::Action::Kind::kSend:
          unwritten.insert(unwritten.end(), action.bytes.begin(), action.bytes.end());
          flush();
          break;
      }
    }
  }

  void serve() {
    uint8_t some[kReadSize];
    const ssize_t size = read(terminal.get(), some, sizeof some);
    if (size > 0) host.receive(now(), ByteView(some, static_cast<size_t>(size)));
    const bool isGone = size == 0 || (size < 0 && errno != EAGAIN && errno != EINTR);
    if (isGone) return host.lose(now());
    flush();
  }

  void flush() {
    if (!terminal || unwritten.empty()) return;
    const ssize_t size = write(terminal.get(), unwritten.data(), unwritten.size());
    if (size > 0) unwritten.erase(unwritten.begin(), unwritten.begin() + size);
  }

  ReplayedHost& host;
  const std::string path;
  const std::chrono::steady_clock::time_point begin;
  FileDescriptor terminal;
  Bytes unwritten;
};

}  // namespace

bool replayAsHost(ReplayedHost& host, const std::string& path, int interruption) {
  return HostEnd(host, path).run(interruption);
}

}  // namespace iaptrace
