#pragma once

#include <string>

#include "link/file_descriptor.h"
#include "link/port.h"

namespace simulator {

/// The iPod's end of a pseudo-terminal whose other end, the slave, the accessory opens like a
/// device. Nothing here blocks. Constructors throw std::system_error.
class PtyPort final : public Port {
 public:
  PtyPort();

  /// Returns the path of the slave.
  const std::string& place() const override { return path; }
  int descriptor() const override { return masterEnd.get(); }
  int watch() const override { return watcher.get(); }
  Presence presence() override;
  Bytes read() override;
  size_t write(ByteView bytes) override;
  void dropUnread() override;

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
