#include "support/host_end.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include "support/hex.h"

namespace simulator {

namespace {

using Clock = std::chrono::steady_clock;

/// Returns false when nothing arrived in time.
bool waitForInput(int descriptor, Clock::time_point end) {
  pollfd wait{descriptor, POLLIN, 0};
  const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
  return left > 0 && poll(&wait, 1, static_cast<int>(left)) > 0;
}

}  // namespace

HostEnd::HostEnd(const std::string& path)
    : device(::open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC)) {}

HostEnd HostEnd::connectedTo(const std::string& place) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(std::stoi(place.substr(place.find(':') + 1))));
  HostEnd end;
  end.device = FileDescriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const auto* const general = reinterpret_cast<const sockaddr*>(&address);
  if (connect(end.device.get(), general, sizeof address) != 0) return HostEnd();
  const int flags = fcntl(end.device.get(), F_GETFL);
  fcntl(end.device.get(), F_SETFL, flags | O_NONBLOCK);
  return end;
}

bool HostEnd::write(const std::string& hexBytes) {
  const Bytes bytes = hex(hexBytes);
  return ::write(device.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

std::string HostEnd::read(size_t size, Time limit) {
  const auto end = Clock::now() + limit;
  Bytes bytes;
  while (bytes.size() < size && waitForInput(device.get(), end)) {
    uint8_t some[4096];
    const ssize_t got = ::read(device.get(), some, std::min(sizeof some, size - bytes.size()));
    if (got <= 0) break;
    bytes.insert(bytes.end(), some, some + got);
  }
  return toHex(bytes);
}

bool HostEnd::readFails(Time limit) {
  const auto end = Clock::now() + limit;
  while (waitForInput(device.get(), end)) {
    uint8_t some[4096];
    if (::read(device.get(), some, sizeof some) <= 0) return true;
  }
  return false;
}

}  // namespace simulator
