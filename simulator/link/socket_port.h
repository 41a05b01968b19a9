#pragma once

#include <cstdint>
#include <string>

#include "link/file_descriptor.h"
#include "link/port.h"

namespace simulator {

/// A TCP port. One accessory at a time can connect; others are refused meanwhile. Nothing protects
/// the port: whoever reaches it controls the iPod.
class SocketPort final : public Port {
 public:
  /// `address` is numeric. With the port 0 the system selects one. Throws PortError.
  SocketPort(const std::string& address, uint16_t port, PortNotice notice);

  const std::string& place() const override { return name; }
  int descriptor() const override { return client.get(); }
  int watch() const override { return listener.get(); }
  Presence presence() override;
  Bytes read() override;
  size_t write(ByteView bytes) override;
  void dropUnread() override {}

 private:
  bool isClosing() const;
  void acceptClients();
  void take(FileDescriptor connection, const std::string& from);

  const PortNotice notify;
  FileDescriptor listener;
  FileDescriptor client;
  bool isGone = false;  ///< the client
  std::string name;
};

}  // namespace simulator
