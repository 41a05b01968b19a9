#include "tcp_device.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <cwchar>

namespace {

constexpr long kPatienceSeconds = 3;
constexpr int kLongestHost = 256;
constexpr int kLongestPort = 8;

SOCKET socketOf(HANDLE device) { return reinterpret_cast<SOCKET>(device); }

/// Copies the host or the port. Returns false when it is empty, too long or not ASCII.
template <int kSize>
bool copyAscii(char (&out)[kSize], const wchar_t* begin, const wchar_t* end) {
  const auto length = end - begin;
  if (length <= 0 || length >= kSize) return false;
  for (int i = 0; i < length; ++i) {
    if (begin[i] > 0x7E) return false;
    out[i] = static_cast<char>(begin[i]);
  }
  out[length] = '\0';
  return true;
}

/// Returns the addresses of "HOST:PORT", which freeaddrinfo() releases; null when it has none.
addrinfo* addressesOf(const wchar_t* place) {
  const wchar_t* const colon = std::wcsrchr(place, L':');
  char host[kLongestHost];
  char port[kLongestPort];
  if (colon == nullptr || !copyAscii(host, place, colon) ||
      !copyAscii(port, colon + 1, colon + std::wcslen(colon)))
    return nullptr;
  addrinfo hints = {};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  return getaddrinfo(host, port, &hints, &found) == 0 ? found : nullptr;
}

/// Returns whether a connection that was begun is made in time.
bool isConnected(SOCKET made) {
  fd_set writable;
  FD_ZERO(&writable);
  FD_SET(made, &writable);
  fd_set failed = writable;
  timeval limit = {kPatienceSeconds, 0};
  return select(0, nullptr, &writable, &failed, &limit) > 0 && FD_ISSET(made, &writable);
}

/// Makes the socket wait in later calls, and send each write at once.
void setUp(SOCKET made) {
  u_long waits = 0;
  ioctlsocket(made, static_cast<long>(FIONBIO), &waits);
  const BOOL atOnce = TRUE;
  setsockopt(made, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&atOnce), sizeof atOnce);
  const DWORD limit = kPatienceSeconds * 1000;
  setsockopt(made, SOL_SOCKET, SO_SNDTIMEO, reinterpret_cast<const char*>(&limit), sizeof limit);
}

SOCKET connectTo(const addrinfo& address) {
  const SOCKET made = socket(address.ai_family, address.ai_socktype, address.ai_protocol);
  if (made == INVALID_SOCKET) return made;
  u_long doesNotWait = 1;
  ioctlsocket(made, static_cast<long>(FIONBIO), &doesNotWait);
  const bool isMade = connect(made, address.ai_addr, static_cast<int>(address.ai_addrlen)) == 0 ||
                      (WSAGetLastError() == WSAEWOULDBLOCK && isConnected(made));
  if (isMade) {
    setUp(made);
    return made;
  }
  closesocket(made);
  return INVALID_SOCKET;
}

}  // namespace

HANDLE openTcpDevice(const wchar_t* place) {
  WSADATA details;
  if (WSAStartup(MAKEWORD(2, 2), &details) != 0) return INVALID_HANDLE_VALUE;
  addrinfo* const addresses = addressesOf(place);
  SOCKET made = INVALID_SOCKET;
  for (const addrinfo* one = addresses; one != nullptr && made == INVALID_SOCKET;
       one = one->ai_next)
    made = connectTo(*one);
  if (addresses != nullptr) freeaddrinfo(addresses);
  if (made == INVALID_SOCKET) WSACleanup();
  return reinterpret_cast<HANDLE>(made);
}

bool isTcpDevice(HANDLE device) {
  int kind = 0;
  int size = sizeof kind;
  return getsockopt(socketOf(device), SOL_SOCKET, SO_TYPE, reinterpret_cast<char*>(&kind), &size) ==
         0;
}

BOOL readTcpDevice(HANDLE device, void* buffer, DWORD maximum, DWORD* received, DWORD limit) {
  *received = 0;
  const SOCKET connection = socketOf(device);
  fd_set readable;
  FD_ZERO(&readable);
  FD_SET(connection, &readable);
  timeval wait = {0, static_cast<long>(limit) * 1000};
  const int ready = select(0, &readable, nullptr, nullptr, &wait);
  if (ready == 0) return TRUE;
  const int size = ready > 0
                       ? recv(connection, static_cast<char*>(buffer), static_cast<int>(maximum), 0)
                       : SOCKET_ERROR;
  if (size > 0) {
    *received = static_cast<DWORD>(size);
    return TRUE;
  }
  SetLastError(ERROR_DEVICE_NOT_CONNECTED);
  return FALSE;
}

BOOL writeTcpDevice(HANDLE device, const void* bytes, DWORD count, DWORD* written) {
  const int size =
      send(socketOf(device), static_cast<const char*>(bytes), static_cast<int>(count), 0);
  *written = size > 0 ? static_cast<DWORD>(size) : 0;
  if (size >= 0) return TRUE;
  SetLastError(ERROR_DEVICE_NOT_CONNECTED);
  return FALSE;
}

BOOL closeTcpDevice(HANDLE device) {
  const bool isClosed = closesocket(socketOf(device)) == 0;
  WSACleanup();
  return isClosed;
}
