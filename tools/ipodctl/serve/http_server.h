// The HTTP server of `ipodctl serve`.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ipodctl/serve/access.h"
#include "ipodctl/serve/request.h"

namespace tool {

/// Answers a request that may be answered. Called on the threads of the connections, at once.
using Handle = std::function<Answer(const Request&)>;

/// Listens and answers.
///
/// Each connection has its own thread, so that none waits for another; there are at most
/// limits::kConnections. One more is answered with 503 and closed. Every request is checked by
/// `Access` before its body is read.
class HttpServer {
 public:
  /// Listens on the address; port 0 is any free one. Throws std::runtime_error with a message for
  /// the user when it cannot.
  HttpServer(const std::string& address, int port, const std::string& token, Handle handle);
  /// Stops.
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  int port() const;
  const Access& access() const;

  /// Begins to answer.
  void start();

  /// Ends all waits for clients, and waits until all threads have ended.
  void stop();

  /// Serves one connection on this thread; the socket is not closed. For tests with bytes.
  void serve(int socket);

 private:
  class Implementation;
  std::unique_ptr<Implementation> implementation;
};

}  // namespace tool
