// The pseudo-terminal at which a host finds a replayed iPod.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "iaptrace/replayed_ipod.h"
#include "link/file_descriptor.h"
#include "link/ipod_link.h"
#include "link/pty_port.h"

namespace iaptrace {

/// Connects a replayed iPod with a host in real time. A link leads to the pseudo-terminal; while
/// the host's attempts to open the device are to fail, it leads to a file that is not a terminal.
class ReplayCable {
 public:
  /// Throws LinkError when the link cannot be made, std::system_error when there is no
  /// pseudo-terminal.
  ReplayCable(ReplayedIpod& player, const std::filesystem::path& linkPath);
  ~ReplayCable();
  ReplayCable(const ReplayCable&) = delete;
  ReplayCable& operator=(const ReplayCable&) = delete;

  /// Runs until the replay is over, or `interruption` is readable. Returns false in that case.
  bool run(int interruption);

 private:
  using Time = simulator::Time;

  Time now() const;
  void serve();
  void notice();
  bool noticeClosed();
  void hostCame();
  void noticeRefused();
  void act();
  void offer();
  void refuse();
  void pull();
  void write(const Bytes& bytes);
  void flush();
  int waitLimitMs() const;

  ReplayedIpod& ipod;
  const std::chrono::steady_clock::time_point begin;
  simulator::IpodLink link;
  std::optional<simulator::PtyPort> port;
  bool isHostThere = false;
  Bytes unwritten;
  std::filesystem::path folder;       ///< with the file that is not a terminal
  std::string target;                 ///< where the link leads
  simulator::FileDescriptor watcher;  ///< of that file
};

}  // namespace iaptrace
