#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace tool {

/// What an event is about; also the name of the event on the wire, in small letters.
enum class Topic { kState, kConsole, kRefresh, kWire, kFinding, kIpod };

struct Event {
  uint64_t id;  ///< grows by one with each event
  Topic topic;
  std::string data;  ///< one JSON document in one line
};

/// The events of `ipodctl serve`, for any number of readers.
///
/// publish() never waits for a reader: each has a queue of its own, and one that is more than
/// kMostLate events late is closed. All functions may be called on any thread.
class EventLog {
 public:
  static constexpr size_t kMostLate = 256;

  /// A reader of the events from its construction on.
  class Reader {
   public:
    virtual ~Reader() = default;
    /// Waits for the next event, at most `limit`. No value: the time is over or the reader is
    /// closed.
    virtual std::optional<Event> next(std::chrono::milliseconds limit) = 0;
    virtual bool isClosed() const = 0;
  };

  void publish(Topic topic, std::string data);
  std::unique_ptr<Reader> read(std::vector<Topic> topics);
  /// Closes all readers, also those that come later.
  void close();
};

}  // namespace tool
