// A disk that accepts nothing for a while. This program replaces write(), so that the trace is
// written to such a disk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>

#include "support/eventually.h"
#include "support/recorded_trace.h"
#include "support/temporary_folder.h"
#include "trace/trace_file_writer.h"

namespace {

std::mutex mutex;
std::condition_variable accepted;
bool isStuck = false;

/// The disk accepts nothing during its lifetime.
class StuckDisk {
 public:
  StuckDisk() {
    const std::lock_guard lock(mutex);
    isStuck = true;
  }
  StuckDisk(const StuckDisk&) = delete;
  StuckDisk& operator=(const StuckDisk&) = delete;
  ~StuckDisk() {
    const std::lock_guard lock(mutex);
    isStuck = false;
    accepted.notify_all();
  }
};

}  // namespace

extern "C" ssize_t write(int descriptor, const void* bytes, size_t count) {
  if (descriptor > STDERR_FILENO) {
    std::unique_lock lock(mutex);
    accepted.wait(lock, [] { return !isStuck; });
  }
  return syscall(SYS_write, descriptor, bytes, count);
}

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using trace::TraceFileWriter;

constexpr size_t kMegabyte = 1 << 20;

class SlowTraceFile : public testing::Test {
 protected:
  void recordBytes(size_t count) {
    const std::vector<uint8_t> bytes(1024, 0x55);
    for (size_t done = 0; done < count; done += bytes.size()) {
      TraceFileWriter::Step(writer).data("IPD1:", trace::Direction::kRead, bytes.data(),
                                         bytes.size());
    }
  }

  const simulator::TemporaryFolder folder;
  const std::string path = (folder / "car.trace").string();
  TraceFileWriter writer{path, [](const std::string& text) { ADD_FAILURE() << text; }};
};

TEST_F(SlowTraceFile, DelaysNoRecordAndLosesNone) {
  {
    const StuckDisk disk;
    const auto begin = steady_clock::now();
    recordBytes(kMegabyte);
    EXPECT_LT(steady_clock::now() - begin, milliseconds(1000));
  }
  writer.finish();
  EXPECT_EQ(recorded::textsOf(path).size(), 1024u);
}

TEST_F(SlowTraceFile, SaysHowManyLinesAreMissing) {
  {
    const StuckDisk disk;
    recordBytes(10 * kMegabyte);
  }
  // The disk accepts what waits, and then the next line.
  EXPECT_TRUE(session::eventually([&] { return !recorded::textsOf(path).empty(); }));
  recordBytes(1024);
  writer.finish();
  const recorded::Lines texts = recorded::textsOf(path);
  EXPECT_LT(texts.size(), 10240u);
  std::smatch number;
  size_t missing = 0;
  for (const std::string& line : recorded::linesOf(path)) {
    static const std::regex kMissing(R"(# (\d+) lines are missing here: the file was too slow)");
    const bool isComment = line[0] == '#';
    if (isComment && std::regex_match(line, number, kMissing)) missing += std::stoul(number[1]);
  }
  EXPECT_EQ(texts.size() + missing, 10241u);
}

/// Takes two seconds.
TEST_F(SlowTraceFile, DoesNotKeepTheProgramFromItsEnd) {
  const StuckDisk disk;
  recordBytes(1024);
  const auto begin = steady_clock::now();
  writer.finish();
  EXPECT_LT(steady_clock::now() - begin, milliseconds(4000));
}

}  // namespace
