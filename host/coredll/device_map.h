// Says what an entry of IPODCTL_DEVICES leads to.
#pragma once

#include <windows.h>

#include <string>

namespace coredll {

/// The other side of an entry's '='.
struct WireEnd {
  enum class Kind {
    kTerminal,    ///< "/dev/pts/4": a terminal that carries the bytes as they are
    kSerialLine,  ///< "serial:/dev/ttyUSB0@57600": frames have a sync byte there
    kSocket,      ///< "tcp:HOST:PORT"
  };

  Kind kind = Kind::kTerminal;
  std::string path;  ///< of a terminal
  DWORD speed = 0;   ///< kSerialLine
  std::string host;  ///< kSocket
  std::string port;
};

/// Throws OpenFailure for a text that is not complete.
WireEnd wireEndOf(const std::string& text);

}  // namespace coredll
