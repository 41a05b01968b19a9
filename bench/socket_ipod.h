#pragma once

#include <sys/types.h>

namespace bench {

/// An iPod at the other end of a socket pair, in a separate process, that answers a request as
/// soon as it has read it. While it lives, the platform opens the socket for "IPD1:". Over a pseudo
/// terminal the same request takes a time that swings by half.
///
/// It answers what a connection needs, the play status, counts, and retrievals of any number of
/// records. It ignores everything else.
class SocketIpod {
 public:
  SocketIpod();
  ~SocketIpod();
  SocketIpod(const SocketIpod&) = delete;
  SocketIpod& operator=(const SocketIpod&) = delete;

  /// The host's end. A program that speaks to the iPod without the library uses it.
  int hostEnd() const { return host; }

  pid_t process() const { return child; }

 private:
  int host;
  pid_t child;
};

}  // namespace bench
