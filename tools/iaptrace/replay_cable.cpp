#include "iaptrace/replay_cable.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>

namespace iaptrace {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failToMake(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), "cannot make " + what);
}

fs::path makeFolder() {
  std::string name = (fs::temp_directory_path() / "iaptrace-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr)
    failToMake("a folder in " + fs::temp_directory_path().string());
  return name;
}

}  // namespace

ReplayCable::ReplayCable(ReplayedIpod& player, const fs::path& linkPath)
    : ipod(player), begin(std::chrono::steady_clock::now()), link(linkPath) {
  link.claim();
  act();
  // The link exists from now on, so that a host that waits for it can begin.
  if (target.empty()) offer();
}

ReplayCable::~ReplayCable() {
  pull();
  std::error_code ignored;
  if (!folder.empty()) fs::remove_all(folder, ignored);
}

ReplayCable::Time ReplayCable::now() const { return std::chrono::steady_clock::now() - begin; }

bool ReplayCable::run(int interruption) {
  while (true) {
    serve();
    if (ipod.state() != ReplayedIpod::State::kPlaying) return true;
    const bool hasOutput = !unwritten.empty();
    pollfd waits[] = {{interruption, POLLIN, 0},
                      {port ? port->watch() : -1, POLLIN, 0},
                      {port && isHostThere ? port->descriptor() : -1,
                       static_cast<short>(POLLIN | (hasOutput ? POLLOUT : 0)), 0},
                      {watcher ? watcher.get() : -1, POLLIN, 0}};
    poll(waits, std::size(waits), waitLimitMs());
    if (waits[0].revents != 0) return false;
  }
}

void ReplayCable::serve() {
  if (watcher) noticeRefused();
  if (port) notice();
  flush();
  act();
}

/// Passes on what the host did.
void ReplayCable::notice() {
  simulator::PtyPort::Presence presence = port->presence();
  if (presence.closed) presence.open = noticeClosed();
  if (presence.open && port && !isHostThere) hostCame();
  if (port && isHostThere) ipod.receive(now(), port->read());
}

/// Returns whether the device was opened again meanwhile. What the first host wrote is still
/// handled, and what it did not read is dropped. When the device is open again, bytes can be of
/// either host: they are of the first one if the trace has a further request of it.
bool ReplayCable::noticeClosed() {
  const Bytes last = port->read();
  const bool isOpenAgain = port->presence().open;
  if (!isHostThere) hostCame();
  const bool isOfFirst = !isOpenAgain || ipod.expectsRequest();
  if (isOfFirst) ipod.receive(now(), last);
  ipod.hostCloses(now());
  isHostThere = false;
  unwritten.clear();
  act();
  if (port) port->dropUnread();
  if (!isOpenAgain || !port) return false;
  hostCame();
  if (!isOfFirst) ipod.receive(now(), last);
  return true;
}

void ReplayCable::hostCame() {
  isHostThere = true;
  ipod.hostOpens(now());
}

/// An attempt to open the device is over when the host has closed the file again.
void ReplayCable::noticeRefused() {
  alignas(inotify_event) char events[4096];
  for (ssize_t size; (size = ::read(watcher.get(), events, sizeof events)) > 0;) {
    for (ssize_t at = 0; at < size;) {
      inotify_event event;
      std::memcpy(&event, events + at, sizeof event);
      at += static_cast<ssize_t>(sizeof event + event.len);
      if ((event.mask & IN_CLOSE) != 0) ipod.hostFailsToOpen(now());
    }
  }
}

void ReplayCable::act() {
  for (const ReplayedIpod::Action& action : ipod.takeActions(now())) {
    switch (action.kind) {
      case ReplayedIpod::Action::Kind::kOffer:
        offer();
        break;
      case ReplayedIpod::Action::Kind::kRefuse:
        refuse();
        break;
      case ReplayedIpod::Action::Kind::kSend:
        write(action.bytes);
        break;
      case ReplayedIpod::Action::Kind::kPull:
        pull();
        break;
    }
  }
}

void ReplayCable::offer() {
  if (port) return;
  pull();
  port.emplace();
  link.leadTo(port->place());
  target = port->place();
}

void ReplayCable::refuse() {
  pull();
  if (folder.empty()) folder = makeFolder();
  const fs::path file = folder / "no-ipod";
  const simulator::FileDescriptor made(open(file.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  if (!made) failToMake(file.string());
  watcher = simulator::FileDescriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!watcher || inotify_add_watch(watcher.get(), file.c_str(), IN_CLOSE) < 0) {
    failToMake("a watch of " + file.string());
  }
  link.leadTo(file.string());
  target = file.string();
}

void ReplayCable::pull() {
  if (!target.empty()) link.removeFrom(target);
  target.clear();
  port.reset();
  watcher = simulator::FileDescriptor();
  isHostThere = false;
  unwritten.clear();
}

void ReplayCable::write(const Bytes& bytes) {
  if (!port || !isHostThere) return;
  const size_t written = unwritten.empty() ? port->write(bytes) : 0;
  unwritten.insert(unwritten.end(), bytes.begin() + static_cast<std::ptrdiff_t>(written),
                   bytes.end());
}

void ReplayCable::flush() {
  if (unwritten.empty() || !port || !isHostThere) return;
  const size_t written = port->write(unwritten);
  unwritten.erase(unwritten.begin(), unwritten.begin() + static_cast<std::ptrdiff_t>(written));
}

int ReplayCable::waitLimitMs() const {
  const std::optional<Time> wake = ipod.nextWake();
  if (!wake) return -1;
  const auto left = std::chrono::ceil<simulator::milliseconds>(std::max(*wake - now(), Time(0)));
  return static_cast<int>(std::min<int64_t>(left.count(), std::numeric_limits<int>::max()));
}

}  // namespace iaptrace
