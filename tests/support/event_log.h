#pragma once

#include <condition_variable>
#include <initializer_list>
#include <mutex>
#include <string>
#include <vector>

/// What happened around the library, in order. Every party of a test writes here, each from its own
/// thread: the iPod its requests, the audio library its calls, the desk its window messages.
class EventLog {
 public:
  void add(const std::string& event);

  std::vector<std::string> events() const;

  /// The events without those that begin with one of these words.
  std::vector<std::string> eventsWithout(std::initializer_list<const char*> words) const;

  /// Waits until an event that begins with these words has happened `times` times since the last
  /// clear(); false when it has not in time.
  bool waitFor(const std::string& beginning, int times = 1) const;

  void clear();

  /// From now on each event also goes to stdout, as a line in square brackets, so that it has its
  /// place among the library's own lines.
  void tellStdout();

 private:
  int count(const std::string& beginning) const;

  mutable std::mutex mutex;
  mutable std::condition_variable added;
  std::vector<std::string> entries;
  bool tells = false;
};

bool beginsWith(const std::string& text, const std::string& beginning);
