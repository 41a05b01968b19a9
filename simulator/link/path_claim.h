#pragma once

#include <filesystem>
#include <stdexcept>

#include "link/file_descriptor.h"

namespace simulator {

/// An error whose message says why there is no link or socket, and what to do.
class LinkError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws a LinkError. `what` is what cannot be made, for example "link".
[[noreturn]] void refusePath(const char* what, const std::filesystem::path& path,
                             const std::string& why);

/// Claims a path for this process, whether there is a file or not. The claim ends when the result
/// is closed. Throws LinkError when another process has claimed it.
FileDescriptor claimPath(const char* what, const std::filesystem::path& path);

}  // namespace simulator
