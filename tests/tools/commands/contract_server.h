#pragma once

#include <memory>
#include <string>
#include <vector>

/// A small HTTP server that answers as `ipodctl serve` does, with fixed texts. It listens on a free
/// port of the loopback address.
class ContractServer {
 public:
  struct Request {
    std::string method;
    std::string target;  ///< the path and the query
    std::string token;
    std::string type;
    std::string body;
  };

  ContractServer();
  ~ContractServer();
  ContractServer(const ContractServer&) = delete;
  ContractServer& operator=(const ContractServer&) = delete;

  /// Answers the next request for the path with these, the last one of them from then on.
  void answer(const std::string& path, std::vector<std::pair<int, std::string>> answers);
  std::string url() const;
  std::vector<Request> requests() const;

 private:
  class Server;
  std::unique_ptr<Server> server;
};
