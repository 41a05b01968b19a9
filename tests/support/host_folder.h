#pragma once

#include <filesystem>
#include <string>

#include "support/temporary_folder.h"

namespace session {

/// The folder of a host program: the current directory while this object lives, empty at first.
class HostFolder {
 public:
  HostFolder();
  ~HostFolder();
  HostFolder(const HostFolder&) = delete;
  HostFolder& operator=(const HostFolder&) = delete;

  /// Copies the head unit's own logo there.
  void putLogo() const;
  /// Writes a logo file of these bytes there.
  void writeLogo(const std::string& bytes) const;
  void removeLogo() const;

  std::filesystem::path operator/(const std::string& name) const { return folder / name; }

 private:
  const std::filesystem::path before;
  const simulator::TemporaryFolder folder;
};

/// Returns the path of the head unit's own logo.
std::filesystem::path headUnitLogo();

std::string contentOf(const std::filesystem::path& file);

}  // namespace session
