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
  /// To be polled for input and output while the accessory has the slave open.
  int master() const { return masterEnd.get(); }
  /// To be polled for input at any time: readable when the accessory opened or closed the slave.
  int watch() const { return watcher.get(); }

  /// What happened on the slave since the last look, in its order.
  struct Presence {
    bool closed = false;  ///< the last one who had it open closed it
    bool open = false;    ///< somebody has it open now
  };
  Presence presence();

  /// Everything that has arrived.
  Bytes read();
  /// Writes as much as there is room for now, and returns how many bytes that was.
  size_t write(ByteView bytes);
  /// Drops what was written and not read yet.
  void dropUnread();

 private:
  bool notice(uint32_t event);
  bool hungUp() const;

  FileDescriptor masterEnd;
  FileDescriptor watcher;
  std::string path;
  int openCount = 0;
  bool everOpened = false;
};

}  // namespace simulator
