#include "contract_server.h"

#include <httplib.h>

#include <map>
#include <mutex>
#include <thread>

class ContractServer::Server {
 public:
  Server() {
    const auto handle = [this](const httplib::Request& request, httplib::Response& response) {
      respond(request, response);
    };
    http.Get(".*", handle);
    http.Post(".*", handle);
    port = http.bind_to_any_port("127.0.0.1");
    thread = std::thread([this] { http.listen_after_bind(); });
    while (!http.is_running())
      std::this_thread::yield();  // stop() does nothing before
  }
  ~Server() {
    http.stop();
    thread.join();
  }

  std::map<std::string, std::vector<std::pair<int, std::string>>> answers;
  std::vector<Request> seen;
  mutable std::mutex mutex;
  int port = 0;

 private:
  void respond(const httplib::Request& request, httplib::Response& response) {
    const std::lock_guard<std::mutex> lock(mutex);
    seen.push_back({request.method, request.target, request.get_header_value("Authorization"),
                    request.get_header_value("Content-Type"), request.body});
    auto& left = answers[request.path];
    if (left.empty()) {
      response.status = 404;
      return;
    }
    response.status = left.front().first;
    const bool isStream = request.path == "/v1/events";
    response.set_content(left.front().second, isStream ? "text/event-stream" : "application/json");
    if (left.size() > 1) left.erase(left.begin());
  }

  httplib::Server http;
  std::thread thread;
};

ContractServer::ContractServer() : server(std::make_unique<Server>()) {}

ContractServer::~ContractServer() = default;

void ContractServer::answer(const std::string& path,
                            std::vector<std::pair<int, std::string>> answers) {
  const std::lock_guard<std::mutex> lock(server->mutex);
  server->answers[path] = std::move(answers);
}

std::string ContractServer::url() const {
  return "http://127.0.0.1:" + std::to_string(server->port);
}

std::vector<ContractServer::Request> ContractServer::requests() const {
  const std::lock_guard<std::mutex> lock(server->mutex);
  return server->seen;
}
