#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <type_traits>

/// Messages between a program on Linux and the library under Wine over a socket. Both run on
/// the same processor, so numbers go as they are in memory. Include the system's socket functions
/// first.
namespace remote {

using Socket = decltype(socket(0, 0, 0));

/// Fields, taken in the order in which they were put.
class Message {
 public:
  template <class Number>
  void put(Number number) {
    static_assert(std::is_trivially_copyable_v<Number>);
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
  }
  void putText(const std::string& text) {
    put<uint32_t>(static_cast<uint32_t>(text.size()));
    bytes += text;
  }

  template <class Number>
  Number take() {
    Number number;
    takeBytes(sizeof number).copy(reinterpret_cast<char*>(&number), sizeof number);
    return number;
  }
  std::string takeText() { return takeBytes(take<uint32_t>()); }

  void send(Socket to) const {
    Message size;
    size.put<uint32_t>(static_cast<uint32_t>(bytes.size()));
    // In one piece: a second one would wait until the other side has acknowledged the first.
    const std::string whole = size.bytes + bytes;
    for (size_t sent = 0; sent < whole.size();) {
      const auto now = ::send(to, whole.data() + sent, static_cast<int>(whole.size() - sent), 0);
      if (now <= 0) throw std::runtime_error("the other side has gone");
      sent += static_cast<size_t>(now);
    }
  }
  /// Throws at the end of the connection.
  static Message receive(Socket from) {
    Message size;
    size.bytes = receiveBytes(from, sizeof(uint32_t));
    Message message;
    message.bytes = receiveBytes(from, size.take<uint32_t>());
    return message;
  }

 private:
  static std::string receiveBytes(Socket from, size_t count) {
    std::string bytes(count, '\0');
    for (size_t received = 0; received < count;) {
      const auto now = recv(from, &bytes[received], static_cast<int>(count - received), 0);
      if (now <= 0) throw std::runtime_error("the other side has gone");
      received += static_cast<size_t>(now);
    }
    return bytes;
  }
  std::string takeBytes(size_t count) {
    if (bytes.size() - at < count) throw std::runtime_error("a message is too short");
    at += count;
    return bytes.substr(at - count, count);
  }

  std::string bytes;
  size_t at = 0;
};

/// An argument of a call.
enum class Kind : uint8_t {
  kNumber,
  kNull,
  kNumberOut,  ///< a pointer to a number, which goes there and comes back
  kTextOut,    ///< a buffer of 16-bit units, likewise
};

/// A call of the platform that the library makes.
enum class Upcall : uint8_t { kAudio, kWindowMessage };

/// A connection to a port of this machine.
inline Socket connectTo(uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  const Socket connection = socket(AF_INET, SOCK_STREAM, 0);
  if (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    throw std::runtime_error("no connection");
  return connection;
}

/// A socket that listens at a free port of this machine, and that port.
inline Socket listenAtFreePort(uint16_t& port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const Socket listener = socket(AF_INET, SOCK_STREAM, 0);
  socklen_t size = sizeof address;
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
      listen(listener, SOMAXCONN) != 0 ||
      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
    throw std::runtime_error("no port is free");
  port = ntohs(address.sin_port);
  return listener;
}

}  // namespace remote
