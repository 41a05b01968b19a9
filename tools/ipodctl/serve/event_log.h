#pragma once

#include <chrono>
#include <cstdint>
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
/// publish() never waits for a reader: each has its own queue, and one that is more than
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

  EventLog();
  ~EventLog();
  EventLog(const EventLog&) = delete;
  EventLog& operator=(const EventLog&) = delete;

  void publish(Topic topic, std::string data);
  std::unique_ptr<Reader> read(std::vector<Topic> topics);
  /// Closes all readers, also later ones.
  void close();

 private:
  class Queue;

  std::mutex mutex;
  std::vector<std::weak_ptr<Queue>> queues;
  uint64_t lastId = 0;
  bool isClosed = false;
};

}  // namespace tool
