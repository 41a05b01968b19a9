#include "control_client.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <chrono>
#include <cstring>
#include <nlohmann/json.hpp>

namespace simulator {

namespace {

using Json = nlohmann::json;
using Clock = std::chrono::steady_clock;

int leftMs(Clock::time_point end) {
  const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

bool isReady(const FileDescriptor& connection, short events, Clock::time_point end) {
  pollfd ready{connection.get(), events, 0};
  return poll(&ready, 1, leftMs(end)) > 0;
}

Json objectIn(const std::string& line) {
  Json found = Json::parse(line, nullptr, false);
  return found.is_object() ? found : Json::object();
}

FileDescriptor connectedTo(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) return {};
  std::memcpy(address.sun_path, path.data(), path.size());
  FileDescriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const auto* const general = reinterpret_cast<const sockaddr*>(&address);
  if (connect(connection.get(), general, sizeof address) != 0) return {};
  return connection;
}

}  // namespace

struct ControlAnswer::Content {
  Json json;
};

ControlAnswer::ControlAnswer(std::string answered)
    : line(std::move(answered)), content(std::make_unique<Content>(Content{objectIn(line)})) {}

ControlAnswer::~ControlAnswer() = default;
ControlAnswer::ControlAnswer(ControlAnswer&& other) noexcept = default;

std::string ControlAnswer::error() const {
  if (isOk()) return "";
  return line.empty() ? "no-answer" : text("/error/code");
}

bool ControlAnswer::has(const std::string& place) const {
  return content->json.contains(Json::json_pointer(place));
}

std::string ControlAnswer::text(const std::string& place) const {
  const Json found = content->json.value(Json::json_pointer(place), Json());
  return found.is_string() ? found.get<std::string>() : "";
}

long long ControlAnswer::number(const std::string& place) const {
  const Json found = content->json.value(Json::json_pointer(place), Json());
  return found.is_number_integer() ? found.get<long long>() : -1;
}

bool ControlAnswer::flag(const std::string& place) const {
  return content->json.value(Json::json_pointer(place), Json()) == Json(true);
}

size_t ControlAnswer::size(const std::string& place) const {
  const Json found = content->json.value(Json::json_pointer(place), Json());
  return found.is_array() ? found.size() : 0;
}

ControlClient::ControlClient(const std::string& socketPath) : connection(connectedTo(socketPath)) {}

bool ControlClient::send(const std::string& bytes, Time limit) {
  const auto end = Clock::now() + limit;
  for (size_t sent = 0; sent < bytes.size();) {
    if (!isConnected() || !isReady(connection, POLLOUT, end)) return false;
    const ssize_t size = ::send(connection.get(), bytes.data() + sent, bytes.size() - sent,
                                MSG_NOSIGNAL | MSG_DONTWAIT);
    if (size <= 0) return false;
    sent += static_cast<size_t>(size);
  }
  return true;
}

void ControlClient::endInput() { shutdown(connection.get(), SHUT_WR); }

ControlAnswer ControlClient::ask(const std::string& line, Time limit) {
  return send(line + "\n") ? readAnswer(limit) : ControlAnswer("");
}

ControlAnswer ControlClient::readAnswer(Time limit) {
  const auto end = Clock::now() + limit;
  size_t lineEnd = received.find('\n');
  while (lineEnd == std::string::npos) {
    if (!receive(end - Clock::now())) return ControlAnswer("");
    lineEnd = received.find('\n');
  }
  ControlAnswer answer(received.substr(0, lineEnd));
  received.erase(0, lineEnd + 1);
  return answer;
}

bool ControlClient::isEnded(Time limit) {
  const auto end = Clock::now() + limit;
  while (Clock::now() < end) {
    if (!isReady(connection, POLLIN, end)) return false;
    if (!receive(end - Clock::now())) return true;
  }
  return false;
}

bool ControlClient::isHungUp(Time limit) const {
  return isReady(connection, 0, Clock::now() + limit);
}

/// Receives what arrives in time. Returns false at the end of the connection, too.
bool ControlClient::receive(Time limit) {
  if (!isConnected() || !isReady(connection, POLLIN, Clock::now() + limit)) return false;
  char some[16384];
  const ssize_t size = recv(connection.get(), some, sizeof some, 0);
  if (size <= 0) return false;
  received.append(some, static_cast<size_t>(size));
  return true;
}

}  // namespace simulator
