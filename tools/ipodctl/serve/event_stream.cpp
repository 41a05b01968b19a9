#include "ipodctl/serve/event_stream.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>

#include "ipodctl/serve/limits.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::array<std::string_view, 6> kNames = {"state", "console", "refresh",
                                                    "wire",  "finding", "ipod"};
/// How long a stream that has nothing to write does not see that its client has gone.
constexpr std::chrono::milliseconds kLookAgain{500};
constexpr std::chrono::seconds kLongestSilence{10};

/// Returns no value when a name is unknown.
std::optional<std::vector<Topic>> topicsOf(std::string_view names) {
  std::vector<Topic> topics;
  while (!names.empty()) {
    const std::string_view name = names.substr(0, names.find(','));
    names.remove_prefix(std::min(name.size() + 1, names.size()));
    const auto found = std::find(kNames.begin(), kNames.end(), name);
    if (found == kNames.end()) return std::nullopt;
    const auto topic = static_cast<Topic>(found - kNames.begin());
    if (std::find(topics.begin(), topics.end(), topic) == topics.end()) topics.push_back(topic);
  }
  return topics;
}

std::vector<Topic> allTopics() {
  return {Topic::kState, Topic::kConsole, Topic::kRefresh,
          Topic::kWire,  Topic::kFinding, Topic::kIpod};
}

}  // namespace

std::string eventText(const Event& event) {
  return "id: " + std::to_string(event.id) +
         "\nevent: " + std::string(kNames[static_cast<size_t>(event.topic)]) +
         "\ndata: " + event.data + "\n\n";
}

/// One stream, and its place among those that there may be.
class EventStreams::Stream {
 public:
  Stream(std::shared_ptr<Readers> all, std::vector<Topic> theTopics, std::function<bool()> wanted,
         std::function<void(std::string&)> completing)
      : readers(std::move(all)),
        topics(std::move(theTopics)),
        isWanted(std::move(wanted)),
        complete(std::move(completing)) {
    for (const Topic topic : topics)
      ++readers->ofTopic[static_cast<size_t>(topic)];
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    for (const Topic topic : topics)
      --readers->ofTopic[static_cast<size_t>(topic)];
    --readers->all;
  }

  /// Reads from now on, so that nothing is missing between the first state and the next.
  void begin(EventLog& events, const std::function<std::string()>& wholeState) {
    reader = events.read(topics);
    const bool readsState = std::find(topics.begin(), topics.end(), Topic::kState) != topics.end();
    first = readsState ? eventText({0, Topic::kState, wholeState()}) : ": ready\n\n";
  }

  bool writeMore(const Write& write) {
    if (!first.empty()) return write(std::exchange(first, ""));
    auto event = reader->next(kLookAgain);
    if (reader->isClosed()) return false;
    if (!event && !isWanted()) return false;
    const bool isSilent = !event && Clock::now() - written > kLongestSilence;
    if (!event && !isSilent) return true;
    written = Clock::now();
    if (event && event->topic == Topic::kState) complete(event->data);
    return write(event ? eventText(*event) : ": still here\n\n");
  }

 private:
  const std::shared_ptr<Readers> readers;
  const std::vector<Topic> topics;
  const std::function<bool()> isWanted;
  const std::function<void(std::string&)> complete;
  std::unique_ptr<EventLog::Reader> reader;
  std::string first;
  Clock::time_point written = Clock::now();
};

EventStreams::EventStreams(EventLog& events, std::function<std::string()> firstState,
                           std::function<void(std::string&)> completing)
    : log(events), state(std::move(firstState)), complete(std::move(completing)) {}

Answer EventStreams::open(const std::string& names, std::function<bool()> isWanted) {
  const auto topics = names.empty() ? allTopics() : topicsOf(names);
  if (!topics) {
    return answerOf({400, "bad-request",
                     "Choose topics among state, console, refresh, wire, finding and ipod."});
  }
  if (readers->all.fetch_add(1) >= limits::kEventStreams) {
    --readers->all;
    return answerOf({503, "too-many-streams", "Close another page, and open this one again."});
  }
  const auto stream = std::make_shared<Stream>(readers, *topics, std::move(isWanted), complete);
  stream->begin(log, state);
  Answer answer;
  answer.type = "text/event-stream";
  answer.more = [stream](const Write& write) { return stream->writeMore(write); };
  return answer;
}

size_t EventStreams::readersOf(Topic topic) const {
  return readers->ofTopic[static_cast<size_t>(topic)];
}

}  // namespace tool
