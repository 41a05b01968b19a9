#include "virtual/story.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <string_view>

#include "virtual/library_watch.h"

namespace virtual_session {
namespace {

using Text = std::string_view;

bool contains(Text text, Text part) { return text.find(part) != Text::npos; }

bool beginsWithOneOf(Text text, std::initializer_list<Text> beginnings) {
  return std::any_of(beginnings.begin(), beginnings.end(),
                     [&](Text beginning) { return text.substr(0, beginning.size()) == beginning; });
}

/// A line of a trace that outlives this object: "300316 host 1: calls IpodDisconnect".
struct Event {
  explicit Event(Text line) {
    const std::size_t time = line.find(' ');
    const std::size_t end = line.find(": ");
    thread = line.substr(time + 1, end - time - 1);
    text = line.substr(end + 2);
  }

  bool isReaders() const { return beginsWithOneOf(thread, {"library"}); }
  bool isOfTheLock() const { return contains(text, kLibraryLock); }
  bool takesTheLock() const {
    return isOfTheLock() && contains(text, "WaitForSingleObject") && contains(text, " = 0");
  }
  bool releasesTheLock() const { return isOfTheLock() && contains(text, "ReleaseSemaphore"); }

  Text thread;
  Text text;
};

bool isOfAStory(const Event& event) {
  if (event.isOfTheLock()) return event.takesTheLock() || event.releasesTheLock();
  return !contains(event.text, "semaphore") && !contains(event.text, "thread") &&
         !beginsWithOneOf(event.text, {"ReadFile", "FlushFileBuffers", "Sleep(100)"});
}

std::string toldAs(const Event& event) {
  if (event.takesTheLock()) return "takes the library's lock";
  if (event.releasesTheLock()) return "releases the library's lock";
  if (!beginsWithOneOf(event.text, {"WriteFile"})) return std::string(event.text);
  return "sends" + std::string(event.text.substr(event.text.find(" bytes") + 6));
}

bool needsTheLock(const Event& event) {
  return beginsWithOneOf(event.text,
                         {"prints", "sends", "WriteFile", "PostMessageW", "Select", "StartIpod",
                          "StopIpod", "CreateFileW", "CreateThread", "changes", "sets"});
}

/// What an export may do without the lock.
bool isFree(const Event& event, Text call) {
  if (call == "IpodConnect") {
    return beginsWithOneOf(event.text, {"prints Tavrel version", "prints IpodConnect start"});
  }
  if (call == "IpodSetSameIpod") return beginsWithOneOf(event.text, {"changes the snapshot"});
  if (call == "IpodDisableTabVisualizationActive") {
    return beginsWithOneOf(event.text, {"changes the browse tree"});
  }
  if (call == "IpodEnableTabVisualizationActive") {
    return beginsWithOneOf(event.text, {"prints", "changes the browse tree"});
  }
  return call == "IpodGetNumberOfPlaylist" && beginsWithOneOf(event.text, {"WriteFile"});
}

/// Follows a trace line by line.
class LockOrder {
 public:
  bool allows(const Event& event) {
    if (event.isReaders()) return !event.isOfTheLock();
    if (event.takesTheLock()) return take(event);
    if (event.releasesTheLock()) return release(event);
    if (beginsWithOneOf(event.text, {"calls "})) calls[event.thread] = event.text.substr(6);
    return !needsTheLock(event) || holder == event.thread || isFree(event, calls[event.thread]);
  }

 private:
  bool take(const Event& event) {
    const bool wasFree = holder.empty();
    holder = event.thread;
    return wasFree;
  }

  bool release(const Event& event) {
    const bool wasMine = holder == event.thread;
    holder = {};
    return wasMine;
  }

  Text holder;                 ///< a thread; empty: none
  std::map<Text, Text> calls;  ///< by thread, its export
};

}  // namespace

Lines storyOf(const Lines& trace) {
  Lines story;
  for (const std::string& line : trace) {
    const Event event(line);
    if (isOfAStory(event)) story.push_back((event.isReaders() ? "reader: " : "") + toldAs(event));
  }
  return story;
}

bool tellsOfState(const std::string& line) {
  return beginsWithOneOf(Event(line).text, {"changes", "sets"});
}

std::string findDisorder(const Lines& trace) {
  LockOrder order;
  const auto found = std::find_if(trace.begin(), trace.end(), [&](const std::string& line) {
    return !order.allows(Event(line));
  });
  return found != trace.end() ? *found + ", without the lock" : "";
}

}  // namespace virtual_session
