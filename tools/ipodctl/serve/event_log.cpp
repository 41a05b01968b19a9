#include "ipodctl/serve/event_log.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <utility>

namespace tool {

/// The events that one reader has not taken yet.
class EventLog::Queue {
 public:
  explicit Queue(std::vector<Topic> chosen) : topics(std::move(chosen)) {}

  void add(const Event& event) {
    if (std::find(topics.begin(), topics.end(), event.topic) == topics.end()) return;
    {
      const std::lock_guard<std::mutex> lock(mutex);
      if (isOver) return;
      if (events.size() < kMostLate) {
        events.push_back(event);
      } else {
        end();
      }
    }
    changed.notify_all();
  }

  void close() {
    {
      const std::lock_guard<std::mutex> lock(mutex);
      end();
    }
    changed.notify_all();
  }

  std::optional<Event> take(std::chrono::milliseconds limit) {
    std::unique_lock<std::mutex> lock(mutex);
    changed.wait_for(lock, limit, [this] { return isOver || !events.empty(); });
    if (events.empty()) return std::nullopt;
    Event event = std::move(events.front());
    events.pop_front();
    return event;
  }

  bool isClosed() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return isOver;
  }

 private:
  void end() {
    isOver = true;
    events.clear();
  }

  const std::vector<Topic> topics;
  mutable std::mutex mutex;
  std::condition_variable changed;
  std::deque<Event> events;
  bool isOver = false;
};

EventLog::EventLog() = default;
EventLog::~EventLog() = default;

void EventLog::publish(Topic topic, std::string data) {
  const std::lock_guard<std::mutex> lock(mutex);
  const Event event{++lastId, topic, std::move(data)};
  for (const std::weak_ptr<Queue>& each : queues) {
    if (const std::shared_ptr<Queue> queue = each.lock()) queue->add(event);
  }
}

std::unique_ptr<EventLog::Reader> EventLog::read(std::vector<Topic> topics) {
  class QueueReader : public Reader {
   public:
    explicit QueueReader(std::shared_ptr<Queue> ours) : queue(std::move(ours)) {}
    std::optional<Event> next(std::chrono::milliseconds limit) override {
      return queue->take(limit);
    }
    bool isClosed() const override { return queue->isClosed(); }

   private:
    const std::shared_ptr<Queue> queue;
  };

  auto queue = std::make_shared<Queue>(std::move(topics));
  const std::lock_guard<std::mutex> lock(mutex);
  queues.erase(std::remove_if(queues.begin(), queues.end(),
                              [](const std::weak_ptr<Queue>& each) { return each.expired(); }),
               queues.end());
  queues.push_back(queue);
  if (isClosed) queue->close();
  return std::make_unique<QueueReader>(std::move(queue));
}

void EventLog::close() {
  const std::lock_guard<std::mutex> lock(mutex);
  isClosed = true;
  for (const std::weak_ptr<Queue>& each : queues) {
    if (const std::shared_ptr<Queue> queue = each.lock()) queue->close();
  }
}

}  // namespace tool
