#include "accessory_port.h"

#include <ws2tcpip.h>

#include <memory>

namespace simulator {

namespace {

constexpr size_t kSocketReadSize = 4096;
constexpr long kClientEvents = FD_READ | FD_WRITE | FD_CLOSE;

std::string placeOf(const std::string& address, const std::string& port) {
  const bool isVersion6 = address.find(':') != std::string::npos;
  return (isVersion6 ? "[" + address + "]" : address) + ":" + port;
}

[[noreturn]] void refusePlace(const std::string& place, const std::string& why) {
  throw PortError("cannot listen on " + place + ": " + why);
}

/// Throws with the reason of the last failed call.
[[noreturn]] void refusePlace(const std::string& place) {
  switch (const int error = WSAGetLastError()) {
    case WSAEADDRINUSE:
    case WSAEACCES:
      refusePlace(place, "another program uses the port; try another one with --listen");
    case WSAEADDRNOTAVAIL:
      refusePlace(place, "this machine does not have the address; try --listen 5000");
    default:
      refusePlace(place,
                  "Winsock error " + std::to_string(error) + "; try another port with --listen");
  }
}

/// A socket's address.
struct Address {
  sockaddr_storage storage = {};
  int size = sizeof(sockaddr_storage);

  sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }

  std::string place() {
    char host[NI_MAXHOST] = "?";
    char port[NI_MAXSERV] = "?";
    getnameinfo(get(), size, host, sizeof host, port, sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
    return placeOf(host, port);
  }
};

void setOption(const Socket& socket, int level, int option) {
  const BOOL on = TRUE;
  setsockopt(socket.get(), level, option, reinterpret_cast<const char*>(&on), sizeof on);
}

/// Without the option the system would let two programs share a port.
Socket listenAt(const addrinfo& address, const std::string& place) {
  Socket made(socket(address.ai_family, address.ai_socktype, address.ai_protocol));
  if (!made) refusePlace(place);
  setOption(made, SOL_SOCKET, SO_EXCLUSIVEADDRUSE);
  const bool isListening =
      bind(made.get(), address.ai_addr, static_cast<int>(address.ai_addrlen)) == 0 &&
      listen(made.get(), SOMAXCONN) == 0;
  if (!isListening) refusePlace(place);
  return made;
}

Socket listenAt(const ListenPlace& wanted) {
  const std::string number = std::to_string(wanted.port);
  const std::string place = placeOf(wanted.address, number);
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = AI_NUMERICHOST;
  addrinfo* found = nullptr;
  if (getaddrinfo(wanted.address.c_str(), number.c_str(), &hints, &found) != 0) {
    refusePlace(place, "that is not an address; write one like 127.0.0.1:5000");
  }
  const std::unique_ptr<addrinfo, decltype(&freeaddrinfo)> owned(found, freeaddrinfo);
  return listenAt(*found, place);
}

/// Makes the other side's next read or write fail.
void reset(Socket connection) {
  const linger atOnce = {1, 0};
  setsockopt(connection.get(), SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce),
             sizeof atOnce);
}

}  // namespace

AccessoryPort::AccessoryPort(const ListenPlace& wanted, Notice notice)
    : notify(std::move(notice)), listener(listenAt(wanted)) {
  WSAEventSelect(listener.get(), changed.get(), FD_ACCEPT);
  Address own;
  getsockname(listener.get(), own.get(), &own.size);
  name = own.place();
}

AccessoryPort::Presence AccessoryPort::presence() {
  Presence now;
  if (isGone) {
    client = Socket();
    isGone = false;
    now.closed = true;
  }
  acceptClients();
  now.open = static_cast<bool>(client);
  return now;
}

void AccessoryPort::acceptClients() {
  for (;;) {
    Address from;
    Socket connection(accept(listener.get(), from.get(), &from.size));
    if (!connection) return;
    take(std::move(connection), from.place());
  }
}

void AccessoryPort::take(Socket connection, const std::string& from) {
  if (client) {
    notify("a second client is refused: " + from);
    return reset(std::move(connection));
  }
  client = std::move(connection);
  WSAEventSelect(client.get(), changed.get(), kClientEvents);
  setOption(client, IPPROTO_TCP, TCP_NODELAY);
}

Bytes AccessoryPort::read() {
  Bytes all;
  if (!client) return all;
  char some[kSocketReadSize];
  int size = 0;
  while ((size = recv(client.get(), some, sizeof some, 0)) > 0)
    all.insert(all.end(), some, some + size);
  isGone = size == 0 || WSAGetLastError() != WSAEWOULDBLOCK;
  return all;
}

size_t AccessoryPort::write(ByteView bytes) {
  const int written = send(client.get(), reinterpret_cast<const char*>(bytes.begin()),
                           static_cast<int>(bytes.size()), 0);
  return written > 0 ? static_cast<size_t>(written) : 0;
}

}  // namespace simulator
