#include "ipod_socket.h"

#include <desk.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace isochplay {
namespace {

constexpr char kDevice[] = "IPD1:";
constexpr size_t kHeadSize = 2 * sizeof(uint32_t);  // the number, and a rate that is not used
constexpr size_t kLargestPacket = 4096;

std::string systemError() { return std::generic_category().message(errno); }

/// Returns the path of the socket; empty when the device has none.
std::string socketPath() {
  char device[sizeof(sockaddr_un::sun_path)] = {};
  if (deskDevicePath(kDevice, device, sizeof device) == 0) return "";
  return std::string(device) + ".audio";
}

bool isOfThisUser(int socket) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

}  // namespace

std::string IpodSocket::connect() {
  close();
  const std::string path = socketPath();
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) {
    return "there is no sound from this IPD1:; map it to the link of an ipodsim, like /tmp/ipod";
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  coredll::Descriptor made(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (::connect(made.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return "there is no sound from " + path + ": " + systemError() +
           "; start an ipodsim with this --link";
  }
  if (!isOfThisUser(made.get())) {
    return "there is no sound from " + path +
           ": it belongs to another user; start your own ipodsim";
  }
  socket = std::move(made);
  return "";
}

void IpodSocket::selectBandwidth(bool isFull) {
  const uint8_t selected = isFull ? 1 : 0;
  if (isOpen() && send(socket.get(), &selected, 1, MSG_NOSIGNAL) != 1) close();
}

std::optional<Packet> IpodSocket::receive() {
  uint8_t bytes[kLargestPacket];
  ssize_t size = -1;
  do {
    if (!isOpen()) return std::nullopt;
    size = recv(socket.get(), bytes, sizeof bytes, 0);
  } while (size < 0 && errno == EINTR);
  if (size < 0 && errno == EAGAIN) return std::nullopt;
  if (size < static_cast<ssize_t>(kHeadSize)) {
    close();
    return std::nullopt;
  }
  Packet packet;
  std::memcpy(&packet.number, bytes, sizeof packet.number);
  packet.frames.resize((static_cast<size_t>(size) - kHeadSize) / sizeof(Frame));
  std::memcpy(packet.frames.data(), bytes + kHeadSize, packet.frames.size() * sizeof(Frame));
  return packet;
}

}  // namespace isochplay
