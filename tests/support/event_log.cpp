#include "support/event_log.h"

#include <algorithm>
#include <cstdio>

#include "support/patience.h"

bool beginsWith(const std::string& text, const std::string& beginning) {
  return text.compare(0, beginning.size(), beginning) == 0;
}

void EventLog::add(const std::string& event) {
  const std::lock_guard<std::mutex> lock(mutex);
  entries.push_back(event);
  if (prints) std::printf("[%s]\n", event.c_str());
  added.notify_all();
}

std::vector<std::string> EventLog::events() const { return eventsWithout({}); }

std::vector<std::string> EventLog::eventsWithout(std::initializer_list<const char*> words) const {
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<std::string> wanted;
  for (const std::string& event : entries) {
    const auto opensEvent = [&](const char* word) { return beginsWith(event, word); };
    if (std::none_of(words.begin(), words.end(), opensEvent)) wanted.push_back(event);
  }
  return wanted;
}

bool EventLog::waitFor(const std::string& beginning, int times) const {
  std::unique_lock<std::mutex> lock(mutex);
  return added.wait_for(lock, host_test::kPatience, [&] { return count(beginning) >= times; });
}

void EventLog::clear() {
  const std::lock_guard<std::mutex> lock(mutex);
  entries.clear();
}

void EventLog::printToStdout() {
  const std::lock_guard<std::mutex> lock(mutex);
  prints = true;
}

int EventLog::count(const std::string& beginning) const {
  return static_cast<int>(
      std::count_if(entries.begin(), entries.end(),
                    [&](const std::string& event) { return beginsWith(event, beginning); }));
}
