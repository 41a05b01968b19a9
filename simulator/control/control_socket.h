#pragma once

#include <sys/types.h>

#include <filesystem>

#include "link/path_claim.h"

namespace simulator {

/// A Unix socket that only its owner may use. The file is removed at the end.
class ControlSocket {
 public:
  /// Listens, and replaces a socket that nobody serves. Throws LinkError when there is another file
  /// of this name, or another program serves the socket.
  explicit ControlSocket(std::filesystem::path path);
  ~ControlSocket();
  ControlSocket(const ControlSocket&) = delete;
  ControlSocket& operator=(const ControlSocket&) = delete;

  int descriptor() const { return listener.get(); }
  /// Returns the next program that has connected; closed when there is none.
  FileDescriptor accept() const;

 private:
  void removeStale() const;

  const std::filesystem::path file;
  const FileDescriptor claimed;
  FileDescriptor listener;
  dev_t device = 0;  ///< of the file, with its number
  ino_t number = 0;
};

}  // namespace simulator
