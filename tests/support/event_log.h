#pragma once

#include <condition_variable>
#include <initializer_list>
#include <mutex>
#include <string>
#include <vector>

/// What happened around the library, in order. Each part of a test adds events from its own thread:
/// the iPod adds requests, the audio library its calls, the host its window messages.
class EventLog {
 public:
  void add(const std::string& event);

  std::vector<std::string> events() const;

  /// The events without those that begin with one of these words.
  std::vector<std::string> eventsWithout(std::initializer_list<const char*> words) const;

  /// Waits until an event that begins with these words has happened `times` times since the last
  /// clear(). Returns false if it has not in time.
  bool waitFor(const std::string& beginning, int times = 1) const;

  void clear();

  /// From now on, prints each event to stdout, too, as a line in square brackets among the
  /// library's own lines.
  void printToStdout();

 private:
  int count(const std::string& beginning) const;

  mutable std::mutex mutex;
  mutable std::condition_variable added;
  std::vector<std::string> entries;
  bool prints = false;
};

bool beginsWith(const std::string& text, const std::string& beginning);
