// GET /v1/events: the events of one client.
#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/request.h"

namespace tool {

/// Makes the answers of /v1/events, at most limits::kEventStreams at a time. All functions may be
/// called on any thread.
class EventStreams {
 public:
  /// `firstState` returns the document that each stream begins with. `completing` adds to the
  /// document of a state event what the head unit does not know.
  EventStreams(EventLog& events, std::function<std::string()> firstState,
               std::function<void(std::string&)> completing);

  /// `names` is "state,console"; empty: all topics.
  Answer open(const std::string& names, std::function<bool()> isWanted);

  /// Returns the number of streams with the topic.
  size_t readersOf(Topic topic) const;

 private:
  class Stream;
  struct Readers {
    std::atomic<size_t> all{0};
    std::array<std::atomic<size_t>, 6> ofTopic{};
  };

  EventLog& log;
  const std::function<std::string()> state;
  const std::function<void(std::string&)> complete;
  /// Also of the streams, which can end later than this object.
  const std::shared_ptr<Readers> readers = std::make_shared<Readers>();
};

/// Returns the event as text/event-stream has it.
std::string eventText(const Event& event);

}  // namespace tool
