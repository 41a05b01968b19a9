#include "control/control_server.h"

#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>

namespace simulator {

ControlServer::ControlServer(const std::filesystem::path& file, ControlVerbs& answering,
                             PtyIpod& running, ControlLimits allowed)
    : verbs(answering),
      pty(running),
      limits(allowed),
      socket(file),
      changes(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
  pty.setChangeHook([this] {
    if (wantsChanges.exchange(false)) eventfd_write(changes.get(), 1);
  });
}

ControlServer::~ControlServer() { pty.setChangeHook(nullptr); }

void ControlServer::appendTo(std::vector<pollfd>& waits) const {
  waits.push_back({socket.descriptor(), POLLIN, 0});
  waits.push_back({changes.get(), POLLIN, 0});
  for (const Connection& connection : connections)
    waits.push_back({connection.descriptor(), connection.events(), 0});
}

int ControlServer::limitMs() const {
  SteadyTime due = SteadyTime::max();
  for (const Connection& connection : connections)
    due = std::min(due, connection.due());
  if (due == SteadyTime::max()) return -1;
  const auto left = std::chrono::ceil<milliseconds>(due - std::chrono::steady_clock::now());
  return static_cast<int>(std::max<int64_t>(left.count(), 0));
}

/// The flag is set before the connections look at the iPod: a change after that is not missed.
void ControlServer::serve() {
  eventfd_t ignored;
  eventfd_read(changes.get(), &ignored);
  wantsChanges = true;
  acceptClients();
  connections.remove_if(
      [&](Connection& each) { return !each.serve(verbs, std::chrono::steady_clock::now()); });
  const bool isAnyWaiting = std::any_of(connections.begin(), connections.end(),
                                        [](const Connection& each) { return each.isWaiting(); });
  if (!isAnyWaiting) wantsChanges = false;
}

void ControlServer::acceptClients() {
  while (FileDescriptor client = socket.accept()) {
    if (connections.size() < limits.clients) {
      connections.emplace_back(std::move(client), limits);
      continue;
    }
    const std::string line = ControlVerbs::refusalOfClient(limits.clients) + "\n";
    send(client.get(), line.data(), line.size(), MSG_NOSIGNAL);
  }
}

}  // namespace simulator
