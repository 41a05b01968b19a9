// The server of `ipodctl serve` with a head unit without an iPod, and clients that send bytes.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

#include "fake_head_unit.h"
#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/event_stream.h"
#include "ipodctl/serve/http_server.h"
#include "ipodctl/serve/ipod_control.h"
#include "ipodctl/serve/routes.h"
#include "ipodctl/serve/static_files.h"

namespace serving {

constexpr char kToken[] = "0123456789abcdef0123456789abcdef";

/// One connection of a client.
class Client {
 public:
  explicit Client(int port) : number(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(number, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      throw std::runtime_error("cannot connect");
    }
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client() { close(); }

  void close() {
    if (number >= 0) ::close(number);
    number = -1;
  }

  bool send(const std::string& bytes) {
    for (size_t at = 0; at < bytes.size();) {
      const ssize_t count = ::send(number, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
      if (count <= 0) return false;
      at += static_cast<size_t>(count);
    }
    return true;
  }

  /// Returns what arrives until the text does, the connection ends, or 15 s have passed.
  std::string readUntil(const std::string& text) {
    std::string bytes;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    while (std::chrono::steady_clock::now() < end) {
      pollfd one = {number, POLLIN, 0};
      if (poll(&one, 1, 100) <= 0) continue;
      char some[4096];
      const ssize_t count = recv(number, some, sizeof some, 0);
      if (count <= 0) return bytes;
      bytes.append(some, static_cast<size_t>(count));
      if (!text.empty() && bytes.find(text) != std::string::npos) return bytes;
    }
    return bytes + "<nothing more within 15 s>";
  }

  /// Returns everything up to the end of the connection.
  std::string readAll() { return readUntil(""); }

  /// Lets the system keep little of what is sent: send() waits for the other end.
  void keepLittle() const {
    const int bytes = 8 << 10;
    setsockopt(number, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes);
  }

 private:
  int number;
};

/// A running server.
struct ServeBench {
  tool::EventLog events;
  FakeHeadUnit headUnit;
  tool::StaticFiles files;
  tool::IpodControl ipod;
  tool::EventStreams streams{events, [this] { return tool::stateDocument(parts); },
                             [this](std::string& state) { tool::completeState(parts, state); }};
  tool::RoutedParts parts{headUnit,
                          streams,
                          files,
                          ipod,
                          [] { return std::string("# ipodctl-trace 1\n"); },
                          [](const std::string& trace) -> std::string {
                            if (trace.empty()) throw std::runtime_error("It is empty.");
                            return R"({"messages":[],"findings":[]})";
                          },
                          [](const std::string& png, const std::string& model) {
                            if (png != "PNG") throw std::runtime_error("It is not a PNG.");
                            return "bitmap" + model;
                          }};
  tool::HttpServer server{"127.0.0.1", 0, kToken,
                          [this](const tool::Request& request) { return route(parts, request); }};

  explicit ServeBench(const std::string& page = "", const std::string& socket = "")
      : files(page), ipod(socket) {
    server.start();
  }
  ~ServeBench() {
    events.close();
    server.stop();
  }
  ServeBench(const ServeBench&) = delete;
  ServeBench& operator=(const ServeBench&) = delete;

  std::string host() const { return "127.0.0.1:" + std::to_string(server.port()); }

  /// Returns the head of a request with the token, without its empty line.
  std::string head(const std::string& firstLine) const {
    return firstLine + " HTTP/1.1\r\nHost: " + host() + "\r\nAuthorization: Bearer " + kToken +
           "\r\n";
  }

  std::string getText(const std::string& target) const {
    return head("GET " + target) + "Connection: close\r\n\r\n";
  }

  std::string postText(const std::string& path, const std::string& body) const {
    return head("POST " + path) + "Connection: close\r\nContent-Type: application/json\r\n" +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
  }

  /// Returns the answer to bytes, up to the end of the connection.
  std::string answerTo(const std::string& bytes) const {
    Client client(server.port());
    client.send(bytes);
    return client.readAll();
  }

  std::string get(const std::string& target) const { return answerTo(getText(target)); }
  std::string post(const std::string& path, const std::string& body) const {
    return answerTo(postText(path, body));
  }
};

}  // namespace serving
