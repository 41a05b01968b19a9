// Where commands find the running `ipodctl serve`.
#pragma once

#include <string>

namespace tool {

/// Returns the folder of this user's runtime files: $XDG_RUNTIME_DIR/ipodctl, or a folder in /tmp.
std::string runtimeFolder();

/// Makes the folder, if it is not there, with the mode 0700. Throws std::runtime_error with a
/// message for the user when it is not a folder that only this user can write to.
void prepareRuntimeFolder(const std::string& folder);

/// The file serve.json with the address and the token, of the mode 0600, from the construction of
/// the object to its end. The file of a process that has gone is replaced; that of a running one
/// stays.
class RuntimeFile {
 public:
  RuntimeFile(const std::string& folder, const std::string& url, const std::string& token);
  ~RuntimeFile();
  RuntimeFile(const RuntimeFile&) = delete;
  RuntimeFile& operator=(const RuntimeFile&) = delete;

  /// Returns the process to which the file belongs instead; 0 when it is this one's.
  int otherProcess() const { return other; }

 private:
  const std::string folder;
  int other = 0;
};

}  // namespace tool
