#include "ipodctl/serve/runtime_file.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include "link/file_descriptor.h"

namespace tool {
namespace {

using simulator::FileDescriptor;

constexpr char kName[] = "serve.json";
constexpr mode_t kOnlyForTheUser = 0700;
constexpr mode_t kOthers = 0077;

[[noreturn]] void refuse(const std::string& what, const std::string& why) {
  throw std::runtime_error("cannot use " + what + ": " + why +
                           "; set XDG_RUNTIME_DIR to a folder of yours");
}

/// Opens the folder itself: what is checked is what is used.
FileDescriptor openFolder(const std::string& folder) {
  FileDescriptor opened(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat status = {};
  if (!opened || fstat(opened.get(), &status) != 0) refuse(folder, std::strerror(errno));
  if (status.st_uid != geteuid()) refuse(folder, "it belongs to another user");
  if ((status.st_mode & kOthers) != 0) refuse(folder, "others may use it");
  return opened;
}

/// Returns the process that the file names; 0 without one.
int processIn(const FileDescriptor& folder) {
  const FileDescriptor file(openat(folder.get(), kName, O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
  if (!file) return 0;
  char bytes[4096] = {};
  const ssize_t size = read(file.get(), bytes, sizeof bytes - 1);
  const std::string_view text(bytes, static_cast<size_t>(std::max<ssize_t>(0, size)));
  constexpr std::string_view kKey = "\"pid\":";
  const size_t at = text.rfind(kKey);
  return at == std::string_view::npos ? 0 : std::atoi(bytes + at + kKey.size());
}

bool isRunning(int process) { return process > 0 && (kill(process, 0) == 0 || errno == EPERM); }

/// A reader sees the old file or the whole new one.
void writeFile(const FileDescriptor& folder, const std::string& text) {
  const std::string name = std::string(kName) + "." + std::to_string(getpid());
  unlinkat(folder.get(), name.c_str(), 0);
  const FileDescriptor file(openat(folder.get(), name.c_str(),
                                   O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  const auto size = static_cast<ssize_t>(text.size());
  const bool isWritten = file && write(file.get(), text.data(), text.size()) == size &&
                         renameat(folder.get(), name.c_str(), folder.get(), kName) == 0;
  if (!isWritten) refuse(kName, std::strerror(errno));
}

}  // namespace

std::string runtimeFolder() {
  const char* const folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder != nullptr && *folder == '/') return std::string(folder) + "/ipodctl";
  return "/tmp/ipodctl-" + std::to_string(geteuid());
}

void prepareRuntimeFolder(const std::string& folder) {
  if (mkdir(folder.c_str(), kOnlyForTheUser) != 0 && errno != EEXIST) {
    refuse(folder, std::strerror(errno));
  }
  openFolder(folder);
}

RuntimeFile::RuntimeFile(const std::string& theFolder, const std::string& url,
                         const std::string& token)
    : folder(theFolder) {
  prepareRuntimeFolder(folder);
  const FileDescriptor opened = openFolder(folder);
  const int before = processIn(opened);
  if (before != getpid() && isRunning(before)) {
    other = before;
    return;
  }
  // Neither text has a character that JSON would escape.
  writeFile(opened, "{\"url\":\"" + url + "\",\"token\":\"" + token +
                        "\",\"pid\":" + std::to_string(getpid()) + "}\n");
}

RuntimeFile::~RuntimeFile() {
  if (other != 0) return;
  const FileDescriptor opened(
      open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (opened && processIn(opened) == getpid()) unlinkat(opened.get(), kName, 0);
}

}  // namespace tool
