#include "link/socket_port.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace simulator {

namespace {

constexpr size_t kSocketReadSize = 4096;

[[noreturn]] void refusePlace(const std::string& place, const std::string& why) {
  throw PortError("cannot listen on " + place + ": " + why);
}

std::string placeOf(const std::string& address, const std::string& port) {
  const bool isVersion6 = address.find(':') != std::string::npos;
  return (isVersion6 ? "[" + address + "]" : address) + ":" + port;
}

/// A socket's address.
struct Address {
  sockaddr_storage storage = {};
  socklen_t size = sizeof(sockaddr_storage);

  sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }

  std::string place() {
    char host[NI_MAXHOST] = "?";
    char port[NI_MAXSERV] = "?";
    getnameinfo(get(), size, host, sizeof host, port, sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
    return placeOf(host, port);
  }
};

FileDescriptor listenAt(const addrinfo& address, const std::string& place) {
  FileDescriptor made(
      socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!made) refusePlace(place, std::generic_category().message(errno) + "; try another address");
  const int again = 1;
  setsockopt(made.get(), SOL_SOCKET, SO_REUSEADDR, &again, sizeof again);
  const bool isListening = bind(made.get(), address.ai_addr, address.ai_addrlen) == 0 &&
                           listen(made.get(), SOMAXCONN) == 0;
  if (!isListening) {
    refusePlace(place, std::generic_category().message(errno) +
                           "; try another port, or an address of this machine");
  }
  return made;
}

FileDescriptor listenAt(const std::string& address, uint16_t port) {
  const std::string number = std::to_string(port);
  const std::string place = placeOf(address, number);
  addrinfo wanted = {};
  wanted.ai_socktype = SOCK_STREAM;
  wanted.ai_flags = AI_NUMERICHOST | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  if (getaddrinfo(address.c_str(), number.c_str(), &wanted, &found) != 0) {
    refusePlace(place, "that is not an address; write one like 127.0.0.1:5000");
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(found, freeaddrinfo);
  return listenAt(*found, place);
}

/// Makes the other side's next read or write fail.
void reset(FileDescriptor connection) {
  const linger atOnce = {1, 0};
  setsockopt(connection.get(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

}  // namespace

SocketPort::SocketPort(const std::string& address, uint16_t port, PortNotice notice)
    : notify(std::move(notice)), listener(listenAt(address, port)) {
  Address own;
  getsockname(listener.get(), own.get(), &own.size);
  name = own.place();
}

Port::Presence SocketPort::presence() {
  Presence now;
  if (isGone) {
    client = FileDescriptor();
    isGone = false;
    now.closed = true;
  }
  // A client that has hung up is still read; the next one waits that long.
  if (!client || !isClosing()) acceptClients();
  now.open = static_cast<bool>(client);
  return now;
}

bool SocketPort::isClosing() const {
  pollfd state{client.get(), POLLRDHUP, 0};
  return poll(&state, 1, 0) > 0;
}

void SocketPort::acceptClients() {
  for (;;) {
    Address from;
    FileDescriptor connection(
        accept4(listener.get(), from.get(), &from.size, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!connection) return;
    take(std::move(connection), from.place());
  }
}

void SocketPort::take(FileDescriptor connection, const std::string& from) {
  if (client) {
    notify("a second client is refused: " + from);
    return reset(std::move(connection));
  }
  client = std::move(connection);
  const int atOnce = 1;
  setsockopt(client.get(), IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
}

Bytes SocketPort::read() {
  Bytes all;
  if (!client) return all;
  uint8_t some[kSocketReadSize];
  ssize_t size = 0;
  while ((size = recv(client.get(), some, sizeof some, 0)) > 0)
    all.insert(all.end(), some, some + size);
  isGone = size == 0 || (errno != EAGAIN && errno != EINTR);
  return all;
}

size_t SocketPort::write(ByteView bytes) {
  const ssize_t written = send(client.get(), bytes.begin(), bytes.size(), MSG_NOSIGNAL);
  return written > 0 ? static_cast<size_t>(written) : 0;
}

}  // namespace simulator
