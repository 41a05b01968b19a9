#include "ipodctl/serve/http_server.h"

#include <httplib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <set>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "ipodctl/serve/client_connection.h"
#include "ipodctl/serve/limits.h"

namespace tool {
namespace {

/// For every answer.
const httplib::Headers& safeHeaders() {
  static const httplib::Headers kHeaders = {{"Content-Security-Policy", "default-src 'self'"},
                                            {"X-Content-Type-Options", "nosniff"},
                                            {"Cache-Control", "no-store"},
                                            {"Referrer-Policy", "no-referrer"}};
  return kHeaders;
}

/// The whole answer to a client whose request is not read.
std::string refusalText() {
  const Answer answer = answerOf(
      {503, "too-many-connections", "Close other pages and programs, and try again in a second."});
  std::string text = "HTTP/1.1 503 Service Unavailable\r\nConnection: close\r\n";
  for (const auto& [name, value] : safeHeaders())
    text.append(name).append(": ").append(value).append("\r\n");
  return text + "Content-Type: " + answer.type +
         "\r\nContent-Length: " + std::to_string(answer.body.size()) + "\r\n\r\n" + answer.body;
}

/// The thread that accepts connections refuses this one.
thread_local bool refuses = false;

/// A thread for each connection.
class ConnectionThreads : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> serve) override {
    if (shared->take() && run(serve)) return;
    refuses = true;
    serve();
    refuses = false;
  }

  void shutdown() override { shared->awaitEnd(); }

 private:
  struct Shared {
    bool take() {
      const std::lock_guard lock(mutex);
      if (running == limits::kConnections) return false;
      ++running;
      return true;
    }

    void release() {
      const std::lock_guard lock(mutex);
      --running;
      ended.notify_all();
    }

    void awaitEnd() {
      std::unique_lock lock(mutex);
      ended.wait(lock, [this] { return running == 0; });
    }

    std::mutex mutex;
    std::condition_variable ended;
    size_t running = 0;
  };

  /// Returns false when the system makes no more threads.
  bool run(const std::function<void()>& serve) {
    try {
      std::thread([serve, mine = shared] {
        serve();
        mine->release();
      }).detach();
      return true;
    } catch (const std::system_error&) {
      shared->release();
      return false;
    }
  }

  /// Also of the threads: the last one uses it after this object may have gone.
  const std::shared_ptr<Shared> shared = std::make_shared<Shared>();
};

/// What httplib reads and writes: a checked request in memory, and the connection.
///
/// httplib gets only the method and the body, because it would do more than is wanted with the
/// rest: match the path with a recursive expression, unpack bodies and parse forms.
class CheckedStream : public httplib::Stream {
 public:
  CheckedStream(ClientConnection& client, const Request& request, bool closes)
      : connection(client),
        text(request.method +
             " / HTTP/1.1\r\nContent-Length: " + std::to_string(request.body.size()) + "\r\n" +
             (closes ? "Connection: close\r\n" : "") + "\r\n" + request.body) {}

  bool is_readable() const override { return at < text.size(); }
  bool is_writable() const override { return true; }
  ssize_t read(char* bytes, size_t size) override {
    const size_t count = text.copy(bytes, size, at);
    at += count;
    return static_cast<ssize_t>(count);
  }
  ssize_t write(const char* bytes, size_t size) override {
    return connection.write({bytes, size}) ? static_cast<ssize_t>(size) : -1;
  }
  void get_remote_ip_and_port(std::string&, int&) const override {}
  void get_local_ip_and_port(std::string&, int&) const override {}
  socket_t socket() const override { return connection.get(); }

 private:
  ClientConnection& connection;
  const std::string text;
  size_t at = 0;
};

bool isUpload(const std::string& path) { return path == "/v1/logo" || path == "/v1/trace"; }

/// The request of this thread, for the handler.
thread_local const Answer* currentAnswer = nullptr;

void give(const Answer& answer, httplib::Response& response) {
  response.status = answer.status;
  for (const auto& [name, value] : answer.headers) {
    response.headers.erase(name);
    response.set_header(name, value);
  }
  if (!answer.more) return response.set_content(answer.body, answer.type);
  response.set_content_provider(answer.type, [more = answer.more](size_t, httplib::DataSink& sink) {
    return more([&sink](const std::string& text) { return sink.write(text.data(), text.size()); });
  });
}

}  // namespace

class HttpServer::Implementation : private httplib::Server {
 public:
  Implementation(const std::string& address, int wantedPort, const std::string& token,
                 Handle theHandle)
      : handle(std::move(theHandle)),
        number(listenOn(address, wantedPort)),
        rules(address, number, token) {
    new_task_queue = [] { return new ConnectionThreads; };
    set_default_headers(safeHeaders());
    const auto answer = [](const httplib::Request&, httplib::Response& response) {
      give(*currentAnswer, response);
    };
    Get("/", answer);
    Post("/", answer);
  }
  ~Implementation() override { end(); }
  Implementation(const Implementation&) = delete;
  Implementation& operator=(const Implementation&) = delete;

  int port() const { return number; }
  const Access& access() const { return rules; }

  void start() {
    thread = std::thread([this] { listen_after_bind(); });
    // stop() does nothing before.
    while (!is_running())
      std::this_thread::yield();
  }

  void end() {
    isStopping = true;
    stop();
    {
      const std::lock_guard lock(mutex);
      for (const int socket : sockets)
        shutdown(socket, SHUT_RDWR);
    }
    if (thread.joinable()) thread.join();
  }

  void serve(int socket) {
    ClientConnection connection(socket, isStopping);
    while (!isStopping && answerOne(connection)) {
    }
    connection.finish();
  }

 private:
  int listenOn(const std::string& address, int wantedPort) {
    // Not SO_REUSEPORT: two servers would share the requests.
    set_socket_options([](socket_t socket) {
      const int yes = 1;
      setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    set_tcp_nodelay(true);
    errno = 0;
    const int bound = wantedPort == 0                     ? bind_to_any_port(address)
                      : bind_to_port(address, wantedPort) ? wantedPort
                                                          : -1;
    if (bound > 0) {
      ::listen(svr_sock_, static_cast<int>(limits::kConnections));
      return bound;
    }
    throw std::runtime_error("cannot listen on " + address + " port " + std::to_string(wantedPort) +
                             ": " + std::strerror(errno) +
                             "; end the program that uses it, or choose another --port");
  }

  bool process_and_close_socket(socket_t socket) override {
    if (refuses) {
      static const std::string kText = refusalText();
      send(socket, kText.data(), kText.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
      shutdown(socket, SHUT_WR);
    } else {
      note(socket);
      serve(socket);
      forget(socket);
    }
    close(socket);
    return true;
  }

  void note(int socket) {
    const std::lock_guard lock(mutex);
    sockets.insert(socket);
  }

  void forget(int socket) {
    const std::lock_guard lock(mutex);
    sockets.erase(socket);
  }

  /// Returns false when the connection ends with this answer.
  bool answerOne(ClientConnection& connection) {
    const auto read = connection.readHead();
    if (!read) return false;
    if (const auto* const failure = std::get_if<Failure>(&*read)) {
      return refuse(connection, *failure);
    }
    const auto& head = std::get<RequestHead>(*read);
    if (const auto failure = rules.refusalOf(head)) return refuse(connection, *failure);
    Request request;
    request.method = head.method;
    request.path = head.path;
    request.query = head.query;
    request.isWanted = [&connection] { return connection.isWanted(); };
    if (const auto failure = readBody(connection, head, request))
      return refuse(connection, *failure);
    const Answer answer = rules.opensThePage(head) ? openedPage() : handled(request);
    return write(connection, request, answer, !head.keepsAlive() || answer.more);
  }

  static std::optional<Failure> readBody(ClientConnection& connection, const RequestHead& head,
                                         Request& request) {
    const auto size =
        bodySizeOf(head, isUpload(head.path) ? limits::kUploadSize : limits::kBodySize);
    if (const auto* const failure = std::get_if<Failure>(&size)) return *failure;
    auto body = connection.readBody(head, std::get<size_t>(size));
    if (const auto* const failure = std::get_if<Failure>(&body)) return *failure;
    request.body = std::move(std::get<std::string>(body));
    return std::nullopt;
  }

  Answer handled(const Request& request) const {
    try {
      return handle(request);
    } catch (const std::exception&) {
      return answerOf({500, "fault", "Restart ipodctl serve, and report what you did."});
    }
  }

  Answer openedPage() const {
    return {303, "text/plain", "", {{"Location", "/"}, {"Set-Cookie", rules.cookie()}}};
  }

  /// What follows a refused request may be its body: it is not read as a request.
  bool refuse(ClientConnection& connection, const Failure& failure) {
    Request request;
    request.method = "GET";
    write(connection, request, answerOf(failure), true);
    return false;
  }

  bool write(ClientConnection& connection, const Request& request, const Answer& answer,
             bool closes) {
    CheckedStream stream(connection, request, closes);
    bool isClosed = false;
    currentAnswer = &answer;
    const bool isWritten = process_request(stream, closes, isClosed, nullptr);
    currentAnswer = nullptr;
    return isWritten && !closes && !isClosed;
  }

  const Handle handle;
  const int number;
  const Access rules;
  std::atomic<bool> isStopping{false};
  std::mutex mutex;
  std::set<int> sockets;  ///< guarded by mutex
  std::thread thread;
};

HttpServer::HttpServer(const std::string& address, int port, const std::string& token,
                       Handle handle)
    : implementation(std::make_unique<Implementation>(address, port, token, std::move(handle))) {}
HttpServer::~HttpServer() = default;

int HttpServer::port() const { return implementation->port(); }
const Access& HttpServer::access() const { return implementation->access(); }
void HttpServer::start() { implementation->start(); }
void HttpServer::stop() { implementation->end(); }
void HttpServer::serve(int socket) { implementation->serve(socket); }

}  // namespace tool
