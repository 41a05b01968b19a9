#include "trace/trace_file_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>

#include "support/eventually.h"
#include "support/recorded_trace.h"
#include "support/temporary_folder.h"

namespace trace_file_writer {
namespace {

using recorded::Lines;
using recorded::linesOf;
using recorded::textsOf;
using simulator::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using trace::Direction;
using trace::Event;
using trace::TraceFileError;
using trace::TraceFileWriter;

/// The complaints of a writer, which another thread makes.
class Complaints {
 public:
  TraceFileWriter::Complain sink() {
    return [this](const std::string& text) {
      const std::lock_guard lock(mutex);
      texts.push_back(text);
    };
  }
  Lines all() const {
    const std::lock_guard lock(mutex);
    return texts;
  }

 private:
  mutable std::mutex mutex;
  Lines texts;
};

class TraceFile : public testing::Test {
 protected:
  std::string contentOf(const std::string& file) const {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
  }

  /// Returns the message of a file that is refused.
  std::string refusalOf(const std::string& file) {
    try {
      TraceFileWriter writer(file, complaints.sink());
    } catch (const TraceFileError& error) {
      return error.what();
    }
    return "not refused";
  }

  void record(const std::string& file) {
    TraceFileWriter writer(file, complaints.sink());
    TraceFileWriter::Step(writer).event("IPD1:", Event::kOpened);
  }

  const TemporaryFolder folder;
  const std::string path = (folder / "car.trace").string();
  Complaints complaints;
};

TEST_F(TraceFile, BeginsWithItsMarkAndSaysWhatItContains) {
  { TraceFileWriter writer(path, complaints.sink()); }
  EXPECT_EQ(contentOf(path),
            "# ipodctl-trace 1\n"
            "# It contains the iPod's name and serial number, and the titles of its music.\n"
            "# iaptrace redact FILE replaces them.\n");
}

TEST_F(TraceFile, IsForItsUserOnly) {
  const mode_t before = umask(0);
  record(path);
  umask(before);
  struct stat status = {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(TraceFile, HasALineForEachRecord) {
  {
    TraceFileWriter writer(path, complaints.sink());
    const uint8_t frame[] = {0x55, 0x02, 0x00, 0x07, 0xF7};
    TraceFileWriter::Step(writer).event("IPD1:", Event::kOpened);
    TraceFileWriter::Step(writer).data("IPD1:", Direction::kWritten, frame, sizeof frame);
    TraceFileWriter::Step(writer).data("IPD1:", Direction::kRead, frame, 1);
    TraceFileWriter::Step(writer).audio("SelectFrequency 48000");
    TraceFileWriter::Step(writer).comment("IPD1:", "the cable is pulled");
    TraceFileWriter::Step(writer).event("IPD1:", Event::kReadFailed, 31);
  }
  EXPECT_THAT(textsOf(path), ElementsAre("# IPD1: open ok", "IPD1: > 55 02 00 07 F7", "IPD1: < 55",
                                         "# audio SelectFrequency 48000",
                                         "# IPD1: the cable is pulled", "# IPD1: read-failed 31"));
}

TEST_F(TraceFile, SplitsALongTransferIntoLinesOfOneTime) {
  {
    TraceFileWriter writer(path, complaints.sink());
    const std::vector<uint8_t> bytes(2500, 0xAB);
    TraceFileWriter::Step(writer).data("IPD1:", Direction::kRead, bytes.data(), bytes.size());
  }
  const Lines lines = linesOf(path);
  ASSERT_EQ(lines.size(), 6u);
  std::vector<double> times;
  std::vector<size_t> sizes;
  for (size_t i = 3; i < 6; ++i) {
    const auto entry = recorded::entryOf(lines[i]);
    ASSERT_TRUE(entry);
    times.push_back(entry->seconds);
    sizes.push_back((entry->text.size() - std::string("IPD1: <").size()) / 3);
  }
  EXPECT_THAT(sizes, ElementsAre(1024u, 1024u, 452u));
  EXPECT_THAT(times, ElementsAre(times[0], times[0], times[0]));
}

TEST_F(TraceFile, IsWrittenWhileTheRecordingGoesOn) {
  TraceFileWriter writer(path, complaints.sink());
  TraceFileWriter::Step(writer).event("IPD1:", Event::kOpened);
  EXPECT_TRUE(session::eventually([&] { return textsOf(path) == Lines{"# IPD1: open ok"}; }));
  TraceFileWriter::Step(writer).event("IPD1:", Event::kClosed);
  EXPECT_TRUE(session::eventually([&] { return textsOf(path).size() == 2; }));
}

TEST_F(TraceFile, OverwritesATraceAndAnEmptyFile) {
  const std::string longer = "# ipodctl-trace 1\n" + std::string(10000, '#') + "\n";
  for (const std::string& old : {longer, std::string("# ipodctl-trace 1\r\n# x\r\n"),
                                 std::string("# ipodctl-trace 1"), std::string()}) {
    std::ofstream(path) << old;
    record(path);
    EXPECT_EQ(linesOf(path).size(), 4u) << old.substr(0, 30);
    EXPECT_THAT(textsOf(path), ElementsAre("# IPD1: open ok"));
  }
}

TEST_F(TraceFile, DoesNotOverwriteAnotherFile) {
  for (const std::string old : {"precious\n", "# ipodctl-trace 12\n", "# ipodctl-trac", "\n"}) {
    std::ofstream(path) << old;
    EXPECT_EQ(refusalOf(path), "cannot record to " + path +
                                   ": it is there and is not a trace; name another file, or "
                                   "remove it");
    EXPECT_EQ(contentOf(path), old);
  }
}

TEST_F(TraceFile, IsARegularFile) {
  const std::string fifo = (folder / "fifo").string();
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& other : {fifo, std::string("/dev/null"), std::string("/dev/full")}) {
    EXPECT_EQ(refusalOf(other),
              "cannot record to " + other + ": it is not a regular file; name another one");
  }
}

TEST_F(TraceFile, IsRefusedWhereItCannotBeMade) {
  const std::string hint = "; name a file that you may write, in a folder that exists";
  const std::string none = (folder / "none/car.trace").string();
  EXPECT_EQ(refusalOf(none), "cannot record to " + none + ": No such file or directory" + hint);
  const std::string here = (folder / ".").string();
  EXPECT_EQ(refusalOf(here), "cannot record to " + here + ": Is a directory" + hint);
}

TEST_F(TraceFile, BelongsToOneWriter) {
  TraceFileWriter writer(path, complaints.sink());
  TraceFileWriter::Step(writer).event("IPD1:", Event::kOpened);
  EXPECT_EQ(refusalOf(path), "cannot record to " + path +
                                 ": another program records to it; name another file, or end that "
                                 "program");
  writer.finish();
  EXPECT_THAT(textsOf(path), ElementsAre("# IPD1: open ok"));
}

TEST_F(TraceFile, CanBeRecordedToAgainAtOnce) {
  for (int i = 0; i < 200; ++i)
    ASSERT_NO_THROW(record(path)) << "recording " << i;
}

TEST_F(TraceFile, RecordsNothingAfterItsEnd) {
  TraceFileWriter writer(path, complaints.sink());
  writer.finish();
  TraceFileWriter::Step(writer).event("IPD1:", Event::kOpened);
  writer.finish();
  EXPECT_THAT(textsOf(path), ElementsAre());
}

/// The lines of several threads that record at the same time.
class CrowdedTraceFile : public TraceFile {
 protected:
  static constexpr size_t kThreads = 4;
  static constexpr size_t kRecords = 500;

  void recordFromManyThreads() {
    TraceFileWriter writer(path, complaints.sink());
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kThreads; ++i) {
      threads.emplace_back([&writer, i] {
        const std::vector<uint8_t> bytes(30, static_cast<uint8_t>(i));
        for (size_t n = 0; n < kRecords; ++n) {
          TraceFileWriter::Step(writer).data("IPD1:", Direction::kRead, bytes.data(), bytes.size());
        }
      });
    }
    for (std::thread& thread : threads)
      thread.join();
  }
};

TEST_F(CrowdedTraceFile, HasWholeLinesInTheOrderOfTime) {
  recordFromManyThreads();
  Lines whole;
  for (const char* const digits : {" 00", " 01", " 02", " 03"}) {
    std::string line = "IPD1: <";
    for (int i = 0; i < 30; ++i)
      line += digits;
    whole.push_back(line);
  }
  std::vector<size_t> counts(kThreads);
  double latest = 0;
  for (const std::string& line : linesOf(path)) {
    const auto entry = recorded::entryOf(line);
    if (!entry) continue;
    EXPECT_GE(entry->seconds, latest);
    latest = entry->seconds;
    const auto found = std::find(whole.begin(), whole.end(), entry->text);
    ASSERT_NE(found, whole.end()) << line;
    ++counts[static_cast<size_t>(found - whole.begin())];
  }
  EXPECT_THAT(counts, ElementsAre(kRecords, kRecords, kRecords, kRecords));
}

/// No file of this process can be larger during its lifetime: its disk is full.
class FullDisk {
 public:
  explicit FullDisk(rlim_t size) {
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {size, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before); }

 private:
  rlimit before = {};
};

/// A file beyond the limit also sends a signal, which ends a program that does not block it.
TEST_F(TraceFile, OnAFullDiskEndsWithOneComplaint) {
  const FullDisk disk(200);
  TraceFileWriter writer(path, complaints.sink());
  const std::vector<uint8_t> bytes(100, 0x55);
  const auto isReported = [&] { return !complaints.all().empty(); };
  EXPECT_TRUE(session::eventually([&] {
    TraceFileWriter::Step(writer).data("IPD1:", Direction::kRead, bytes.data(), bytes.size());
    return isReported();
  }));
  TraceFileWriter::Step(writer).data("IPD1:", Direction::kRead, bytes.data(), bytes.size());
  writer.finish();
  EXPECT_THAT(complaints.all(), ElementsAre("the trace " + path +
                                            " ends here: File too large; make room or name "
                                            "another file, and record again"));
  EXPECT_EQ(contentOf(path).size(), 200u);
}

}  // namespace
}  // namespace trace_file_writer
