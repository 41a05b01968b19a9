#include "socket.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <future>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "clock.h"
#include "open_failure.h"

namespace coredll {
namespace {

constexpr TimeLimit kMostMilliseconds = 2000;
constexpr char kNoAnswer[] = "does not answer within 2 seconds";

struct FreeAddresses {
  void operator()(addrinfo* addresses) const {
    if (addresses != nullptr) freeaddrinfo(addresses);
  }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

/// Returns null for a host that cannot be found.
Addresses find(const std::string& host, const std::string& port, int flags) {
  addrinfo wanted = {};
  wanted.ai_family = AF_UNSPEC;
  wanted.ai_socktype = SOCK_STREAM;
  wanted.ai_flags = flags | AI_NUMERICSERV;
  addrinfo* found = nullptr;
  const int error = getaddrinfo(host.c_str(), port.c_str(), &wanted, &found);
  return Addresses(error == 0 ? found : nullptr);
}

class Connection {
 public:
  Connection(const std::string& hostName, const std::string& portNumber)
      : host(hostName), port(portNumber), end(deadlineIn(kMostMilliseconds)) {}

  Descriptor open() const {
    const Addresses addresses = findAddresses();
    if (!addresses) refuse("is not found", "correct the host in IPODCTL_DEVICES");
    int error = ETIMEDOUT;
    for (const addrinfo* one = addresses.get(); one != nullptr; one = one->ai_next) {
      Descriptor socket = tryAddress(*one, error);
      if (socket.isOpen()) return socket;
    }
    if (error == ETIMEDOUT) refuse(kNoAnswer, "check the host and the network");
    refuse("cannot be reached: " + std::generic_category().message(error),
           "start ipodsim --listen there, or correct IPODCTL_DEVICES");
  }

 private:
  [[noreturn]] void refuse(const std::string& why, const std::string& remedy) const {
    throw OpenFailure(ERROR_FILE_NOT_FOUND, "tcp:" + host + ":" + port + " " + why + "; " + remedy);
  }

  /// The search for a name has no time limit: a thread that lasts too long is left
  /// alone.
  Addresses findAddresses() const {
    if (Addresses numeric = find(host, port, AI_NUMERICHOST)) return numeric;
    auto promise = std::make_shared<std::promise<Addresses>>();
    std::future<Addresses> found = promise->get_future();
    try {
      std::thread([promise, name = host, number = port] {
        promise->set_value(find(name, number, 0));
      }).detach();
    } catch (const std::system_error&) {
      throw OpenFailure(ERROR_NOT_ENOUGH_MEMORY, "has no thread to find " + host +
                                                     "; end other programs, or write its address");
    }
    if (found.wait_until(*end) == std::future_status::ready) return found.get();
    refuse("is not found within 2 seconds", "write its address instead of its name");
  }

  /// Returns a closed descriptor, and sets `error`, when there is no connection.
  Descriptor tryAddress(const addrinfo& address, int& error) const {
    constexpr int kFlags = SOCK_NONBLOCK | SOCK_CLOEXEC;
    Descriptor made(::socket(address.ai_family, address.ai_socktype | kFlags, 0));
    if (!made.isOpen()) {
      error = errno;
      return made;
    }
    error = 0;
    if (connect(made.get(), address.ai_addr, address.ai_addrlen) != 0) error = errno;
    if (error == EINPROGRESS) error = awaitConnection(made.get());
    if (error != 0) return Descriptor();
    const int atOnce = 1;
    setsockopt(made.get(), IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
    return made;
  }

  /// Returns the error, 0 when there is a connection.
  int awaitConnection(int socket) const {
    pollfd watched = {socket, POLLOUT, 0};
    int ready = 0;
    do {
      ready = poll(&watched, 1, pollTimeout(end));
    } while (ready < 0 && errno == EINTR);
    if (ready == 0) return ETIMEDOUT;
    int error = 0;
    socklen_t size = sizeof error;
    const bool isKnown = getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0;
    return isKnown ? error : errno;
  }

  const std::string host;
  const std::string port;
  const Deadline end;
};

}  // namespace

Descriptor connectTo(const std::string& host, const std::string& port) {
  return Connection(host, port).open();
}

}  // namespace coredll
