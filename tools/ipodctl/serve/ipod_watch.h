// The events about the simulated iPod.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace tool {

class EventLog;
class EventStreams;
class IpodControl;

/// Publishes the status of the simulated iPod when it changes. It is asked twice a second, and only
/// while somebody reads about it.
class IpodWatch {
 public:
  IpodWatch(const IpodControl& control, const EventStreams& eventStreams, EventLog& log);
  ~IpodWatch();
  IpodWatch(const IpodWatch&) = delete;
  IpodWatch& operator=(const IpodWatch&) = delete;

 private:
  void run();
  void look();

  const IpodControl& ipod;
  const EventStreams& streams;
  EventLog& events;
  std::string published;
  size_t readers = 0;
  std::mutex mutex;
  std::condition_variable changed;
  bool isOver = false;  ///< guarded by mutex
  std::thread thread;
};

}  // namespace tool
