#pragma once

#include <poll.h>

#include <atomic>
#include <list>
#include <vector>

#include "control/connection.h"
#include "control/control_socket.h"

namespace simulator {

/// Serves the control socket on the thread of its user, which polls:
///
///     server.appendTo(waits);
///     poll(waits.data(), waits.size(), server.limitMs());
///     server.serve();
class ControlServer {
 public:
  /// Throws LinkError when there can be no socket.
  ControlServer(const std::filesystem::path& file, ControlVerbs& verbs, PtyIpod& running,
                ControlLimits limits = {});
  ~ControlServer();
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

  /// Appends the descriptors to poll, with their events.
  void appendTo(std::vector<pollfd>& waits) const;
  /// Returns how long to poll at most; -1: without limit.
  int limitMs() const;
  void serve();

 private:
  void acceptClients();

  ControlVerbs& verbs;
  PtyIpod& pty;
  const ControlLimits limits;
  ControlSocket socket;
  FileDescriptor changes;  ///< an event counter: the iPod may have changed
  std::atomic<bool> wantsChanges{false};
  std::list<Connection> connections;
};

}  // namespace simulator
