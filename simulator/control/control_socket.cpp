#include "control/control_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <string>
#include <system_error>

namespace simulator {

namespace {

namespace fs = std::filesystem;

constexpr char kWhat[] = "control socket";
constexpr mode_t kOwnerOnly = 0600;

[[noreturn]] void refuse(const fs::path& file, const std::string& why) {
  refusePath(kWhat, file, why + "; use another one");
}

std::string messageOf(int error) { return std::generic_category().message(error); }

sockaddr_un addressOf(const fs::path& file) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string path = file.string();
  if (path.size() >= sizeof address.sun_path) {
    refuse(file,
           "its path has more than " + std::to_string(sizeof address.sun_path - 1) + " characters");
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

FileDescriptor openSocket() {
  return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// Calls bind or connect. Returns the error number, or 0.
template <typename Call>
int callWith(Call call, const FileDescriptor& end, const fs::path& file) {
  const sockaddr_un address = addressOf(file);
  return call(end.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ? 0
                                                                                           : errno;
}

}  // namespace

/// The mode is set before the file has its name. Nobody can connect before listen().
ControlSocket::ControlSocket(fs::path path)
    : file(std::move(path)), claimed(claimPath(kWhat, file)), listener(openSocket()) {
  removeStale();
  if (fchmod(listener.get(), kOwnerOnly) != 0) refuse(file, messageOf(errno));
  if (const int error = callWith(::bind, listener, file); error != 0) {
    refuse(file, messageOf(error));
  }
  struct stat made;
  if (lstat(file.c_str(), &made) != 0) refuse(file, messageOf(errno));
  device = made.st_dev;
  number = made.st_ino;
  if (listen(listener.get(), SOMAXCONN) != 0) refuse(file, messageOf(errno));
}

ControlSocket::~ControlSocket() {
  struct stat there;
  const bool isOwn =
      lstat(file.c_str(), &there) == 0 && there.st_dev == device && there.st_ino == number;
  if (isOwn) unlink(file.c_str());
}

FileDescriptor ControlSocket::accept() const {
  return FileDescriptor(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
}

void ControlSocket::removeStale() const {
  struct stat there;
  if (lstat(file.c_str(), &there) != 0) return;
  if (!S_ISSOCK(there.st_mode)) refuse(file, "there is a file of this name");
  const int error = callWith(::connect, openSocket(), file);
  if (error == 0 || error == EAGAIN) refuse(file, "another program serves it");
  if (error != ECONNREFUSED) refuse(file, messageOf(error));
  if (unlink(file.c_str()) != 0) refuse(file, messageOf(errno));
}

}  // namespace simulator
