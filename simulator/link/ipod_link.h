#pragma once

#include <filesystem>
#include <string>

#include "link/path_claim.h"

namespace simulator {

/// The symbolic link by which an accessory finds the iPod's pseudo-terminal. With an empty path
/// there is no link, and the functions do nothing.
///
/// From claim() to release() the path belongs to one IpodLink of the machine, also while the link
/// does not exist. The end of a process releases its claims.
class IpodLink {
 public:
  explicit IpodLink(std::filesystem::path path) : file(std::move(path)) {}

  const std::filesystem::path& path() const { return file; }

  /// Throws LinkError when another one has claimed the path.
  void claim();
  void release() { claimed = FileDescriptor(); }

  /// Makes the link, and replaces one that a dead iPod left. Throws LinkError when another file has
  /// this name, or the link cannot be made.
  void leadTo(const std::string& slave) const;
  /// Removes the link, unless it leads elsewhere now.
  void removeFrom(const std::string& slave) const;

 private:
  void removeStale(const std::string& slave) const;
  bool isServed(const std::filesystem::path& slave) const;

  std::filesystem::path file;
  FileDescriptor claimed;  ///< a socket whose name represents the path
};

}  // namespace simulator
