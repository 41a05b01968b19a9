// Writes a trace to a file of a POSIX system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

#include "trace/trace_line.h"

namespace trace {

/// A file that cannot be recorded to. The message says why, and what to do.
class TraceFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A trace while it is recorded. A separate thread writes the lines at most 100 ms after they were
/// recorded, so that a slow disk delays nobody. If the disk is too slow even for that, lines are
/// left out, and a comment in the trace says how many. All functions may be called on any thread.
class TraceFileWriter {
 public:
  /// Receives one line of text, on the writing thread, when the file cannot be written any more.
  using Complain = std::function<void(const std::string&)>;

  /// Receives each line, with its line feed, on the thread that records it, one at a time. It must
  /// not block or record.
  using Sink = std::function<void(const char* line, size_t size)>;

  /// Makes the file with the mode 0600. An existing one is overwritten only when it is empty or a
  /// trace. Two writers cannot have the same file. Throws TraceFileError.
  TraceFileWriter(const std::string& path, Complain complain, Sink sink = nullptr);
  /// Records without a file, for the sink alone.
  explicit TraceFileWriter(Sink sink);
  /// Calls finish().
  ~TraceFileWriter();
  TraceFileWriter(const TraceFileWriter&) = delete;
  TraceFileWriter& operator=(const TraceFileWriter&) = delete;

  /// Writes what was recorded, and ends the writing thread. Gives up when the disk needs more than
  /// two seconds. Nothing is recorded from then on.
  void finish();

  class Queue;

  /// One thread's step in the trace. While it exists, other threads wait before they record, so
  /// that what happens during it is recorded in the order in which it happens.
  class Step {
   public:
    explicit Step(TraceFileWriter& writer);

    /// Records bytes of one transfer, in several lines with the same time if they are many.
    void data(const char* device, Direction direction, const uint8_t* bytes, size_t count);
    void event(const char* device, Event event, uint32_t code = 0);
    /// `call` is the name of the function, and its values after blanks.
    void audio(const char* call);
    /// A line for a person, which programs ignore.
    void comment(const char* device, const char* text);

   private:
    Queue& queue;
    std::unique_lock<std::mutex> lock;
  };

 private:
  /// The writing thread has it, too: after a finish() that gave up, it ends later than this object.
  std::shared_ptr<Queue> queue;
};

}  // namespace trace
