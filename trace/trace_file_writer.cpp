#include "trace/trace_file_writer.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <new>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "common/signals_blocked.h"

namespace trace {
namespace {

using Clock = std::chrono::steady_clock;

/// The lines of this time are written together.
constexpr std::chrono::milliseconds kBatch{50};
constexpr std::chrono::seconds kMostSecondsToFinish{2};
/// The most text that waits for the disk.
constexpr size_t kMostPending = size_t{4} << 20;

std::string messageOf(int error) { return std::generic_category().message(error); }

[[noreturn]] void refuse(const std::string& path, const std::string& why) {
  throw TraceFileError("cannot record to " + path + ": " + why);
}

/// Returns whether the file is empty or begins with the first line of a trace. A line feed may be
/// missing, or be CR LF.
bool mayBeOverwritten(int file) {
  constexpr std::string_view kMark(kFirstLine, sizeof kFirstLine - 2);
  char start[sizeof kFirstLine];
  const ssize_t size = pread(file, start, sizeof start, 0);
  if (size <= 0) return size == 0;
  std::string_view line(start, static_cast<size_t>(size));
  line = line.substr(0, line.find_first_of("\r\n"));
  return line == kMark;
}

/// Makes the opened file empty.
void prepare(int file, const std::string& path) {
  if (file < 0) {
    refuse(path, messageOf(errno) + "; name a file that you may write, in a folder that exists");
  }
  struct stat status = {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    refuse(path, "it is not a regular file; name another one");
  }
  if (flock(file, LOCK_EX | LOCK_NB) != 0) {
    refuse(path, "another program records to it; name another file, or end that program");
  }
  if (!mayBeOverwritten(file)) {
    refuse(path, "it is there and is not a trace; name another file, or remove it");
  }
  if (ftruncate(file, 0) != 0) refuse(path, messageOf(errno) + "; name another file");
}

/// Returns the error, 0 when everything was written.
int writeAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return written < 0 ? errno : ENOSPC;
    text.remove_prefix(static_cast<size_t>(written));
  }
  return 0;
}

}  // namespace

/// The lines between the recording threads and the writing one.
class TraceFileWriter::Queue {
 public:
  Queue(const std::string& filePath, Complain complaining, Sink lineSink)
      : path(filePath),
        file(std::make_unique<File>(filePath)),
        complain(std::move(complaining)),
        sink(std::move(lineSink)) {
    prepare(file->get(), path);
    pending = std::string(kFirstLine) + kWarning;
  }

  /// Without a file, and so without a thread that writes.
  explicit Queue(Sink lineSink) : sink(std::move(lineSink)), isDone(true) {}

  std::unique_lock<std::mutex> take() { return std::unique_lock(mutex); }

  /// Returns the time for a line. The caller has the lock, as for append().
  uint64_t micros() const {
    const auto since = Clock::now() - begin;
    return static_cast<uint64_t>(
        std::chrono::duration_cast<std::chrono::microseconds>(since).count());
  }

  void append(const char* line, size_t size) {
    if (sink) sink(line, size);
    if (isOver || !file) return;
    if (!hasRoomFor(size)) {
      ++lost;
      return;
    }
    const bool isFirst = pending.empty();
    try {
      pending.append(line, size);
    } catch (const std::bad_alloc&) {
      ++lost;
    }
    if (isFirst) changed.notify_one();
  }

  /// The writing thread. It closes the file before finish() returns, so that the file can be
  /// recorded to again at once.
  void run() {
    auto lock = take();
    while (!isOver || !pending.empty()) {
      changed.wait(lock, [this] { return isOver || !pending.empty(); });
      changed.wait_for(lock, kBatch, [this] { return isOver; });
      writePending(lock);
    }
    lock.unlock();
    file.reset();
    lock.lock();
    isDone = true;
    done.notify_all();
  }

  void finish() {
    auto lock = take();
    isOver = true;
    changed.notify_one();
    done.wait_for(lock, kMostSecondsToFinish, [this] { return isDone; });
  }

 private:
  class File {
   public:
    explicit File(const std::string& path)
        : number(open(path.c_str(), O_RDWR | O_CREAT | O_NOCTTY | O_NONBLOCK | O_CLOEXEC, 0600)) {}
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
      if (number >= 0) close(number);
    }

    int get() const { return number; }

   private:
    const int number;
  };

  bool hasRoomFor(size_t size) const { return pending.size() + size <= kMostPending; }

  /// Returns a line about the lines that are missing after the pending ones, if there are any.
  std::string takeMissing() {
    if (lost == 0) return "";
    return "# " + std::to_string(std::exchange(lost, 0)) +
           " lines are missing here: the file was too slow\n";
  }

  void writePending(std::unique_lock<std::mutex>& lock) {
    std::string text = std::move(pending);
    pending = takeMissing();
    lock.unlock();
    const int error = writeAll(file->get(), text);
    if (error != 0) {
      complain("the trace " + path + " ends here: " + messageOf(error) +
               "; make room or name another file, and record again");
    }
    lock.lock();
    if (error == 0) return;
    isOver = true;
    pending.clear();
  }

  const std::string path;
  std::unique_ptr<File> file;  ///< null: without one, and after the end
  const Complain complain;
  const Sink sink;
  const Clock::time_point begin = Clock::now();
  std::mutex mutex;  ///< guards everything below
  std::condition_variable changed;
  std::condition_variable done;
  std::string pending;
  uint64_t lost = 0;  ///< lines after the pending ones
  bool isOver = false;
  bool isDone = false;
};

TraceFileWriter::TraceFileWriter(const std::string& path, Complain complain, Sink sink)
    : queue(std::make_shared<Queue>(path, std::move(complain), std::move(sink))) {
  const SignalsBlocked blocked;
  try {
    std::thread([shared = queue] { shared->run(); }).detach();
  } catch (const std::system_error&) {
    refuse(path, "the system makes no more threads; end other programs, and record again");
  }
}

TraceFileWriter::TraceFileWriter(Sink sink) : queue(std::make_shared<Queue>(std::move(sink))) {}

TraceFileWriter::~TraceFileWriter() { finish(); }

void TraceFileWriter::finish() { queue->finish(); }

TraceFileWriter::Step::Step(TraceFileWriter& writer) : queue(*writer.queue), lock(queue.take()) {}

void TraceFileWriter::Step::data(const char* device, Direction direction, const uint8_t* bytes,
                                 size_t count) {
  const Place place = {queue.micros(), device};
  char line[kLongestLine];
  for (size_t at = 0; at < count; at += kBytesALine) {
    const size_t some = std::min(count - at, kBytesALine);
    queue.append(line, dataLine(line, place, direction, bytes + at, some));
  }
}

void TraceFileWriter::Step::event(const char* device, Event event, uint32_t code) {
  char line[kLongestLine];
  queue.append(line, eventLine(line, {queue.micros(), device}, event, code));
}

void TraceFileWriter::Step::audio(const char* call) {
  char line[kLongestLine];
  queue.append(line, audioLine(line, queue.micros(), call));
}

void TraceFileWriter::Step::comment(const char* device, const char* text) {
  char line[kLongestLine];
  queue.append(line, commentLine(line, {queue.micros(), device}, text));
}

}  // namespace trace
