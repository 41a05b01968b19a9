// The wire: what passes between the library and the iPod, decoded while it passes.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>

#include "iaptrace/check_findings.h"
#include "trace/trace.h"

namespace tool {

class EventLog;

/// The end of a growing trace, decoded. It needs memory for at most some hundred records.
class GrowingTrace {
 public:
  /// Adds records, and returns the document of a wire event about the messages that they complete;
  /// empty when there are none. A request is there once more, with its line, when it is certain
  /// that it has no answer.
  std::string add(const trace::Trace& records);

 private:
  void forgetTheOldest();

  trace::Trace window;    ///< the latest records
  size_t published = 0;   ///< the line of the latest message
  std::set<size_t> late;  ///< lines of the window's requests that are known to have no answer
};

/// The records of the current connection, and what is wrong with them. Of a long connection the
/// first records and the latest ones are kept.
class ConnectionCheck {
 public:
  void add(const trace::Trace& more);

  /// Returns the documents of the findings that are new. A finding is reported when it has been
  /// there for two seconds: what is still under way looks unfinished.
  std::vector<std::string> newFindings(std::chrono::steady_clock::time_point now);

 private:
  trace::Trace records;
  std::vector<size_t> gaps;  ///< the lines after which records were left out
  bool isChanged = false;
  std::chrono::steady_clock::time_point checked;
  iaptrace::checking::Diagnosis diagnosis;
  std::map<std::string, std::chrono::steady_clock::time_point> seen;  ///< by cause and first line
  std::set<std::string> reported;
};

/// Records the wire of this process in memory, publishes it as `wire` events, at most ten a second,
/// and what is wrong as `finding` events. There may be one object at a time.
class WireMonitor {
 public:
  explicit WireMonitor(EventLog& log);
  ~WireMonitor();
  WireMonitor(const WireMonitor&) = delete;
  WireMonitor& operator=(const WireMonitor&) = delete;

  /// Returns the recorded trace, of which the latest 4 MB are kept.
  std::string trace() const;

 private:
  void take(const char* line, size_t size);
  void run();
  void decode(const std::string& lines, size_t before);

  EventLog& events;
  mutable std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::string> kept;  ///< guarded by mutex, like all up to the thread
  size_t keptSize = 0;
  size_t leftOut = 0;   ///< lines that are not kept any more
  std::string pending;  ///< lines that are not decoded yet
  size_t pendingLines = 0;
  size_t decodedLines = 0;
  bool isOver = false;
  GrowingTrace growing;   ///< of the thread
  ConnectionCheck check;  ///< of the thread
  std::thread thread;
};

/// Returns the document about an uploaded trace: its messages and findings. Of a long trace the
/// first part is decoded, and `left_out` is the number of the other records. Throws
/// trace::ParseError.
std::string explainedTrace(const std::string& text);

}  // namespace tool
