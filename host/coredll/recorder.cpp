#include "recorder.h"

#include <desk.h>
#include <pthread.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "common/guarded_sink.h"
#include "complaint.h"
#include "trace/trace_file_writer.h"

namespace coredll {

std::atomic<bool> mayBeRecording{true};

namespace {

using trace::TraceFileError;
using trace::TraceFileWriter;

/// The program's sink. Never destroyed: threads may still use it while the process ends.
GuardedSink<DeskTraceSink>& programSink() {
  static auto& ofProcess = *new GuardedSink<DeskTraceSink>;
  return ofProcess;
}

void passToProgram(const char* line, size_t size) {
  programSink().call(line, static_cast<unsigned>(size));
}

/// The trace of this process, if IPODCTL_TRACE names one or the program has a sink.
class Recording {
 public:
  /// Returns the trace, or null.
  std::shared_ptr<TraceFileWriter> current() {
    const std::lock_guard lock(mutex);
    if (!path) look();
    return writer;
  }

  void look() {
    const char* const variable = std::getenv("IPODCTL_TRACE");
    const std::string wanted = variable != nullptr ? variable : "";
    if (path && *path == wanted) return;
    path = wanted;
    writer.reset();
    if (!wanted.empty()) begin();
    recordForSink();
  }

  /// A trace without a file is only for the sink.
  void setHasSink(bool newHasSink) {
    const std::lock_guard lock(mutex);
    hasSink = newHasSink;
    if (!path) look();
    if (path->empty()) writer.reset();
    recordForSink();
  }

  void lookAgain() {
    const std::lock_guard lock(mutex);
    look();
  }

  /// Writes what was recorded. At the end of the process.
  void finish() {
    const std::lock_guard lock(mutex);
    if (writer) writer->finish();
  }

  /// For a process that was forked: the writing thread is in its parent, to which the file belongs.
  void forget() {
    mayBeRecording = false;
    if (writer) ofParents.push_back(std::move(writer));
  }

  void lockForFork() { mutex.lock(); }
  void unlockAfterFork() { mutex.unlock(); }

 private:
  void recordForSink() {
    if (!writer && hasSink) writer = std::make_shared<TraceFileWriter>(passToProgram);
    mayBeRecording = writer != nullptr;
  }

  void begin() {
    try {
      writer = std::make_shared<TraceFileWriter>(
          *path, [](const std::string& text) { complainOnce("IPODCTL_TRACE: " + text); },
          passToProgram);
    } catch (const TraceFileError& error) {
      complainOnce(std::string("IPODCTL_TRACE: ") + error.what());
    }
  }

  std::mutex mutex;
  std::optional<std::string> path;          ///< guarded by mutex; no value: not looked at yet
  std::shared_ptr<TraceFileWriter> writer;  ///< guarded by mutex
  bool hasSink = false;                     ///< guarded by mutex
  std::vector<std::shared_ptr<TraceFileWriter>> ofParents;  ///< guarded by mutex; never destroyed
};

/// Never destroyed: threads may still use it while the process ends.
Recording& recording() {
  static auto& ofProcess = *[] {
    auto* const made = new Recording;
    pthread_atfork([] { recording().lockForFork(); }, [] { recording().unlockAfterFork(); },
                   [] {
                     recording().forget();
                     recording().unlockAfterFork();
                   });
    return made;
  }();
  return ofProcess;
}

/// Runs `record` with a step of the trace, if there is a trace.
template <typename Record>
void inStep(Record record) {
  try {
    const auto writer = recording().current();
    if (!writer) return;
    TraceFileWriter::Step step(*writer);
    record(step);
  } catch (const std::bad_alloc&) {
    // Without memory the trace has a gap; what is recorded goes on.
  }
}

/// Runs after the library's end, and before the process has gone.
__attribute__((destructor)) void writeTheRest() {
  if (mayRecord()) recording().finish();
}

}  // namespace

void lookForTrace() { recording().lookAgain(); }

void recordRead(const std::string& device, const BYTE* bytes, DWORD count) {
  inStep([&](TraceFileWriter::Step& step) {
    step.data(device.c_str(), trace::Direction::kRead, bytes, count);
  });
}

void recordEvent(const std::string& device, trace::Event event, DWORD code) {
  inStep([&](TraceFileWriter::Step& step) { step.event(device.c_str(), event, code); });
}

ssize_t recordWrite(const std::string& device, const BYTE* bytes,
                    const std::function<ssize_t()>& write) {
  const auto writer = recording().current();
  if (!writer) return write();
  TraceFileWriter::Step step(*writer);
  const ssize_t written = write();
  const int error = errno;
  if (written > 0) {
    step.data(device.c_str(), trace::Direction::kWritten, bytes, static_cast<size_t>(written));
  }
  errno = error;
  return written;
}

}  // namespace coredll

void deskTraceAudio(const char* function, const int* values, unsigned count) {
  if (!coredll::mayRecord()) return;
  coredll::inStep([&](trace::TraceFileWriter::Step& step) {
    std::string call = function;
    for (unsigned i = 0; i < count; ++i)
      call += ' ' + std::to_string(values[i]);
    step.audio(call.c_str());
  });
}

void deskSetTraceSink(DeskTraceSink sink, void* context) {
  coredll::programSink().set(sink, context);
  coredll::recording().setHasSink(sink != nullptr);
}
