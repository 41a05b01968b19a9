#include "audio/audio_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string>
#include <system_error>

namespace simulator {
namespace {

namespace fs = std::filesystem;

constexpr uint8_t kFullBandwidth = 1;

[[noreturn]] void refuse(const fs::path& file, const std::string& why) {
  throw AudioSocketError("no sound: cannot make the socket " + file.string() + ": " + why);
}

std::string lastError() { return std::generic_category().message(errno); }

FileDescriptor openSocket() {
  return FileDescriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

sockaddr_un addressOf(const fs::path& file) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string& name = file.native();
  if (name.size() >= sizeof address.sun_path) {
    refuse(file, "its path is too long; use a shorter --link");
  }
  std::memcpy(address.sun_path, name.data(), name.size());
  return address;
}

const sockaddr* generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

bool isServed(const sockaddr_un& address) {
  const FileDescriptor asking = openSocket();
  return connect(asking.get(), generic(address), sizeof address) == 0 || errno == EAGAIN;
}

void removeStale(const fs::path& file, const sockaddr_un& address) {
  std::error_code error;
  const fs::file_status status = fs::symlink_status(file, error);
  if (!fs::exists(status)) return;
  if (!fs::is_socket(status)) {
    refuse(file, "there is a file of this name; remove it, or use another link");
  }
  if (isServed(address)) refuse(file, "another program serves it; end that program");
  fs::remove(file, error);
}

bool isOfThisUser(int socket) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

template <typename Value>
void append(Bytes& bytes, const Value* values, size_t count) {
  const auto* const first = reinterpret_cast<const uint8_t*>(values);
  bytes.insert(bytes.end(), first, first + count * sizeof(Value));
}

}  // namespace

AudioSocket::AudioSocket(fs::path path) : file(std::move(path)), listener(openSocket()) {
  listenAt();
}

AudioSocket::~AudioSocket() {
  std::error_code ignored;
  fs::remove(file, ignored);
}

void AudioSocket::listenAt() {
  const sockaddr_un address = addressOf(file);
  removeStale(file, address);
  constexpr int kWaitingConnections = 4;
  // The mode before the bind is that of the file from its start.
  const bool isReady = listener && fchmod(listener.get(), 0600) == 0 &&
                       bind(listener.get(), generic(address), sizeof address) == 0 &&
                       listen(listener.get(), kWaitingConnections) == 0;
  if (!isReady) refuse(file, lastError() + "; use another link");
}

void AudioSocket::addWaits(std::vector<pollfd>& waits) const {
  waits.push_back({listener.get(), POLLIN, 0});
  const int events = POLLIN | (waiting.empty() ? 0 : POLLOUT);
  if (connection) waits.push_back({connection.get(), static_cast<short>(events), 0});
}

void AudioSocket::serve() {
  acceptOne();
  if (connection) receive();
  if (connection) send();
}

void AudioSocket::acceptOne() {
  FileDescriptor accepted(accept4(listener.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!accepted) return;
  // The old connection may have ended without having been served.
  if (connection) receive();
  if (connection || !isOfThisUser(accepted.get())) return;
  connection = std::move(accepted);
  number = 0;
}

void AudioSocket::receive() {
  uint8_t selected = 0;
  for (;;) {
    const ssize_t size = recv(connection.get(), &selected, sizeof selected, 0);
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (size <= 0) return closeConnection();
    hasFullBandwidth = selected == kFullBandwidth;
    if (!hasFullBandwidth) dropWaiting();
  }
}

/// Nobody wants the waiting packets any more, so that their numbers are not missed.
void AudioSocket::dropWaiting() {
  if (!waiting.empty()) std::memcpy(&number, waiting.front().data(), sizeof number);
  waiting.clear();
}

void AudioSocket::send() {
  while (!waiting.empty()) {
    const Bytes& first = waiting.front();
    const ssize_t sent = ::send(connection.get(), first.data(), first.size(), MSG_NOSIGNAL);
    if (sent < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (sent < 0) return closeConnection();
    waiting.pop_front();
  }
}

void AudioSocket::closeConnection() {
  connection = FileDescriptor();
  hasFullBandwidth = false;
  waiting.clear();
}

void AudioSocket::packet(uint32_t rate, const Frame* frames, size_t count) {
  if (!hasFullBandwidth) return;
  if (waiting.size() >= kMostWaiting) return missed(1);
  Bytes bytes;
  bytes.reserve(2 * sizeof(uint32_t) + count * sizeof(Frame));
  append(bytes, &number, 1);
  append(bytes, &rate, 1);
  append(bytes, frames, count);
  ++number;
  waiting.push_back(std::move(bytes));
}

}  // namespace simulator
