#include "link/path_claim.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <system_error>

namespace simulator {

namespace {

namespace fs = std::filesystem;

std::string messageOf(int error) { return std::generic_category().message(error); }

struct SocketName {
  sockaddr_un address{};
  socklen_t size = 0;

  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address); }
};

/// Returns a name that depends on the folder, not on the spelling of its path. The kernel keeps
/// such a name, which is not in a folder, as long as the socket is open.
SocketName nameOf(const char* what, const fs::path& path) {
  const fs::path whole = fs::absolute(path);
  struct stat folder;
  if (stat(whole.parent_path().c_str(), &folder) != 0) {
    refusePath(what, path, messageOf(errno) + "; make its folder, or use another " + what);
  }
  const size_t file = std::hash<std::string>()(whole.filename().string());
  const std::string text = "ipodsim:" + std::to_string(folder.st_dev) + ":" +
                           std::to_string(folder.st_ino) + ":" + std::to_string(file);
  SocketName name;
  name.address.sun_family = AF_UNIX;
  static_assert(sizeof name.address.sun_path > sizeof("ipodsim:::") + size_t{3} * 20,
                "room for it");
  std::memcpy(name.address.sun_path + 1, text.data(), text.size());
  name.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + text.size());
  return name;
}

FileDescriptor openSocket() {
  return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// Returns the process that listens under this name, if it can be found.
std::optional<pid_t> holderOf(const SocketName& name) {
  const FileDescriptor asking = openSocket();
  ucred holder{};
  socklen_t size = sizeof holder;
  const bool isKnown = connect(asking.get(), name.get(), name.size) == 0 &&
                       getsockopt(asking.get(), SOL_SOCKET, SO_PEERCRED, &holder, &size) == 0;
  if (!isKnown || holder.pid <= 0) return std::nullopt;
  return holder.pid;
}

[[noreturn]] void refuseClaimed(const char* what, const fs::path& path, const SocketName& name) {
  const std::optional<pid_t> holder = holderOf(name);
  throw LinkError("the " + std::string(what) + " " + path.string() +
                  " is in use by another simulated iPod" +
                  (holder ? ", process " + std::to_string(*holder) : "") +
                  "; end that one, or use another " + what);
}

}  // namespace

void refusePath(const char* what, const fs::path& path, const std::string& why) {
  throw LinkError("cannot make the " + std::string(what) + " " + path.string() + ": " + why);
}

FileDescriptor claimPath(const char* what, const fs::path& path) {
  const SocketName name = nameOf(what, path);
  FileDescriptor named = openSocket();
  if (bind(named.get(), name.get(), name.size) != 0) {
    if (errno == EADDRINUSE) refuseClaimed(what, path, name);
    refusePath(what, path, messageOf(errno));
  }
  // Later processes connect to learn which process has the name.
  listen(named.get(), SOMAXCONN);
  return named;
}

}  // namespace simulator
