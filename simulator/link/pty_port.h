#pragma once

#include <optional>
#include <string>

#include "link/file_descriptor.h"
#include "wire/bytes.h"

namespace simulator {

/// The iPod's end of a pseudo-terminal whose other end, the slave, the accessory opens like a
/// device. Nothing here blocks. Constructors throw std::system_error.
class PtyPort {
 public:
  PtyPort();

  const std::string& slavePath() const { return path; }
  /// Returns the descriptor to poll for input and output while the accessory has the slave open.
  int master() const { return masterEnd.get(); }
  /// Returns the descriptor to poll for input at any time: it is readable when the accessory opened
  /// or closed the slave.
  int watch() const { return watcher.get(); }

  /// The events of the slave since the last call, in their order.
  struct Presence {
    bool closed = false;  ///< the last process that had it open closed it
    bool open = false;    ///< a process has it open now
  };
  Presence presence();

  /// Returns everything that has arrived.
  Bytes read();
  /// Writes as many bytes as the kernel accepts now, and returns their number.
  size_t write(ByteView bytes);
  /// Drops what was written and not yet read.
  void dropUnread();

 private:
  bool notice(uint32_t event);
  bool hungUp() const;

  FileDescriptor masterEnd;
  FileDescriptor watcher;
  std::string path;
  int openCount = 0;
  bool wasOpened = false;
};

}  // namespace simulator
