// One connection of a client: bytes with limits.
#pragma once

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "ipodctl/serve/request_head.h"

namespace tool {

/// Reads requests and writes answers. Every wait ends: with its time, with the client, or when the
/// server stops. Used by one thread; the socket belongs to the caller.
class ClientConnection {
 public:
  /// `isStopping` must outlive the object.
  ClientConnection(int socket, const std::atomic<bool>& isStopping);

  /// Waits for a head. No value: the client has gone or sends nothing more, or the server stops.
  std::optional<std::variant<RequestHead, Failure>> readHead();

  /// Reads the body that belongs to the head.
  std::variant<std::string, Failure> readBody(const RequestHead& head, size_t size);

  /// Writes everything. Returns false when the client does not take it in time.
  bool write(std::string_view bytes);

  /// Returns whether somebody waits for the answer.
  bool isWanted() const;

  /// Says that nothing more is sent, and reads for a moment what the client still sends: otherwise
  /// the system would throw away the answer to a request that is not read whole.
  void finish();

  int get() const { return socket; }

 private:
  using Clock = std::chrono::steady_clock;
  enum class Wait { kReady, kTimeOut, kOver };

  Wait waitFor(short events, Clock::time_point end) const;
  Wait receive(Clock::time_point end);
  std::variant<RequestHead, Failure> headOf(size_t end);

  const int socket;
  const std::atomic<bool>& isStopping;
  std::string received;  ///< and not used yet
  bool isFirst = true;
};

}  // namespace tool
