#include "ipodctl/serve/client_connection.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "ipodctl/serve/limits.h"

namespace tool {
namespace {

constexpr std::string_view kHeadEnd = "\r\n\r\n";

Failure slowHead() { return {408, "slow-request", "Send the whole head within 5 seconds."}; }

}  // namespace

ClientConnection::ClientConnection(int theSocket, const std::atomic<bool>& stopping)
    : socket(theSocket), isStopping(stopping) {}

std::optional<std::variant<RequestHead, Failure>> ClientConnection::readHead() {
  const auto end = Clock::now() + limits::kHeadTime;
  const bool wasFirst = std::exchange(isFirst, false);
  for (size_t from = 0;;) {
    const size_t at = received.find(kHeadEnd, from);
    if (std::min(at, received.size()) + kHeadEnd.size() > limits::kHeadSize) {
      return Failure{431, "long-head", "Send a head of at most 8 KB."};
    }
    if (at != std::string::npos) return headOf(at);
    from = received.size() - std::min(received.size(), kHeadEnd.size());
    const Wait result = receive(end);
    if (result == Wait::kOver) return std::nullopt;
    if (result == Wait::kReady) continue;
    // Between two requests a client may be silent.
    if (received.empty() && !wasFirst) return std::nullopt;
    return slowHead();
  }
}

std::variant<RequestHead, Failure> ClientConnection::headOf(size_t end) {
  auto head = parseHead(std::string_view(received).substr(0, end));
  received.erase(0, end + kHeadEnd.size());
  return head;
}

std::variant<std::string, Failure> ClientConnection::readBody(const RequestHead& head,
                                                              size_t size) {
  const auto end = Clock::now() + limits::kBodyTime;
  if (head.header("expect") != nullptr && received.size() < size) {
    write("HTTP/1.1 100 Continue\r\n\r\n");
  }
  while (received.size() < size) {
    if (receive(end) != Wait::kReady) {
      return Failure{408, "slow-request", "Send the whole body within 10 seconds."};
    }
  }
  std::string body = received.substr(0, size);
  received.erase(0, size);
  return body;
}

/// Appends what has arrived.
ClientConnection::Wait ClientConnection::receive(Clock::time_point end) {
  const Wait result = waitFor(POLLIN, end);
  if (result != Wait::kReady) return result;
  char bytes[16 << 10];
  const ssize_t count = recv(socket, bytes, sizeof bytes, MSG_DONTWAIT);
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return Wait::kReady;
  if (count <= 0) return Wait::kOver;
  received.append(bytes, static_cast<size_t>(count));
  return Wait::kReady;
}

bool ClientConnection::write(std::string_view bytes) {
  const auto end = Clock::now() + limits::kWriteTime;
  while (!bytes.empty()) {
    const ssize_t count = send(socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count > 0) {
      bytes.remove_prefix(static_cast<size_t>(count));
      continue;
    }
    const bool mayTryAgain = errno == EINTR || errno == EAGAIN;
    if (!mayTryAgain || waitFor(POLLOUT, end) != Wait::kReady) return false;
  }
  return true;
}

/// The end of the server shuts the socket down, and with it this wait.
ClientConnection::Wait ClientConnection::waitFor(short events, Clock::time_point end) const {
  while (!isStopping) {
    const auto rest =
        std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    if (rest <= 0) return Wait::kTimeOut;
    pollfd one = {socket, events, 0};
    const int count = poll(&one, 1, static_cast<int>(rest));
    if (count > 0) return Wait::kReady;
    if (count < 0 && errno != EINTR) return Wait::kOver;
  }
  return Wait::kOver;
}

bool ClientConnection::isWanted() const {
  if (isStopping) return false;
  char one = 0;
  const ssize_t count = recv(socket, &one, 1, MSG_PEEK | MSG_DONTWAIT);
  return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

void ClientConnection::finish() {
  shutdown(socket, SHUT_WR);
  const auto end = Clock::now() + limits::kLingerTime;
  received.clear();
  for (size_t read = 0; read < limits::kLingerSize && receive(end) == Wait::kReady;) {
    read += received.size();
    received.clear();
  }
}

}  // namespace tool
