#pragma once

#include <winsock2.h>

#include <utility>

namespace simulator {

/// Owns a socket and closes it.
class Socket {
 public:
  Socket() = default;
  explicit Socket(SOCKET owned) : number(owned) {}
  Socket(Socket&& other) noexcept : number(std::exchange(other.number, INVALID_SOCKET)) {}
  Socket& operator=(Socket&& other) noexcept {
    std::swap(number, other.number);
    return *this;
  }
  ~Socket() {
    if (number != INVALID_SOCKET) closesocket(number);
  }

  SOCKET get() const { return number; }
  explicit operator bool() const { return number != INVALID_SOCKET; }

 private:
  SOCKET number = INVALID_SOCKET;
};

/// Owns an event and closes it.
class Event {
 public:
  Event() : handle(WSACreateEvent()) {}
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;
  ~Event() { WSACloseEvent(handle); }

  WSAEVENT get() const { return handle; }

 private:
  const WSAEVENT handle;
};

}  // namespace simulator
