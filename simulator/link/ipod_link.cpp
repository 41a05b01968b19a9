#include "link/ipod_link.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <functional>
#include <optional>
#include <system_error>
#include <tuple>

namespace simulator {

namespace {

namespace fs = std::filesystem;

constexpr char kTerminals[] = "/dev/pts";

[[noreturn]] void refuse(const fs::path& link, const std::string& why) {
  throw LinkError("cannot make the link " + link.string() + ": " + why);
}

std::string messageOf(int error) { return std::generic_category().message(error); }

struct SocketName {
  sockaddr_un address{};
  socklen_t size = 0;

  const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address); }
};

/// Returns a name that depends on the folder, not on the spelling of its path. The kernel keeps
/// such a name, which is not in a folder, as long as the socket is open.
SocketName nameOf(const fs::path& link) {
  const fs::path whole = fs::absolute(link);
  struct stat folder;
  if (stat(whole.parent_path().c_str(), &folder) != 0) {
    refuse(link, messageOf(errno) + "; make its folder, or use another link");
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

[[noreturn]] void refuseClaimed(const fs::path& link, const SocketName& name) {
  const std::optional<pid_t> holder = holderOf(name);
  throw LinkError("the link " + link.string() + " is in use by another simulated iPod" +
                  (holder ? ", process " + std::to_string(*holder) : "") +
                  "; end that one, or use another link");
}

/// Returns a time as numbers that can be compared.
std::tuple<time_t, long> momentOf(const timespec& time) { return {time.tv_sec, time.tv_nsec}; }

}  // namespace

void IpodLink::claim() {
  if (file.empty()) return;
  const SocketName name = nameOf(file);
  FileDescriptor named = openSocket();
  if (bind(named.get(), name.get(), name.size) != 0) {
    if (errno == EADDRINUSE) refuseClaimed(file, name);
    refuse(file, messageOf(errno));
  }
  // Later processes connect to learn which process has the name.
  listen(named.get(), SOMAXCONN);
  claimed = std::move(named);
}

/// Makes the link. If two processes make it at the same time, one of them finds the other's link.
void IpodLink::leadTo(const std::string& slave) const {
  if (file.empty()) return;
  removeStale(slave);
  std::error_code error;
  fs::create_symlink(slave, file, error);
  if (error) refuse(file, error.message() + "; use another link");
}

void IpodLink::removeFrom(const std::string& slave) const {
  std::error_code ignored;
  if (file.empty() || fs::read_symlink(file, ignored) != slave) return;
  fs::remove(file, ignored);
}

void IpodLink::removeStale(const std::string& slave) const {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(file, error);
  if (!fs::exists(status)) return;
  if (!fs::is_symlink(status)) refuse(file, "there is a file of this name; use another link");
  const fs::path target = fs::read_symlink(file, error);
  if (target.parent_path() != kTerminals) {
    refuse(file,
           "it is there and leads to " + target.string() + "; remove it, or use another link");
  }
  if (target != slave && isServed(target)) {
    refuse(file, "it is there and leads to " + target.string() +
                     ", which another program serves; end that program, or use another link");
  }
  fs::remove(file, error);
  if (error) refuse(file, error.message() + "; use another link");
}

/// Returns whether the process that made the link may still run. A terminal that is younger than
/// the link belongs to another process, which got the same number.
bool IpodLink::isServed(const fs::path& slave) const {
  struct stat terminal;
  struct stat link;
  if (stat(slave.c_str(), &terminal) != 0 || lstat(file.c_str(), &link) != 0) return false;
  return momentOf(terminal.st_ctim) <= momentOf(link.st_mtim);
}

}  // namespace simulator
