// The image that takes four functions from ipodtrace.dll, and the recorder in that DLL: a host
// program in another process uses them, with a simulated iPod in this one.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "support/program.h"
#include "support/session_ipod.h"
#include "trace/trace_parser.h"
#include "wire/frame_decoder.h"
#include "wire/hex_text.h"

namespace session {
namespace {

using simulator::ByteView;
using simulator::FrameDecoder;
using simulator::FrameKind;
using simulator::Program;
using simulator::Traffic;
using testing::HasSubstr;
using testing::StartsWith;
using trace::Record;

/// A write of the slow card. A request that waits for one write is not quicker.
constexpr char kSlowWrite[] = "500";
constexpr int kSlowWriteMilliseconds = 500;

/// Sets a variable of the environment during its lifetime.
class Variable {
 public:
  Variable(const char* variable, const std::string& value) : name(variable) {
    setenv(name, value.c_str(), 1);
  }
  ~Variable() { unsetenv(name); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

 private:
  const char* const name;
};

/// A message at one end of the wire.
struct Said {
  bool isByHost = false;
  std::string payload;  ///< in hex
};

using Payloads = std::vector<std::string>;

Payloads by(bool isHost, const std::vector<Said>& all) {
  Payloads payloads;
  for (const Said& said : all)
    if (said.isByHost == isHost) payloads.push_back(said.payload);
  return payloads;
}

/// Returns how many messages of the host precede each message of the iPod.
std::vector<size_t> precedingRequests(const std::vector<Said>& all) {
  std::vector<size_t> result;
  size_t requests = 0;
  for (const Said& said : all) {
    if (said.isByHost) {
      ++requests;
    } else {
      result.push_back(requests);
    }
  }
  return result;
}

std::vector<Said> messagesOf(const trace::Trace& records) {
  std::vector<Said> all;
  FrameDecoder host(FrameKind::kUsb);
  FrameDecoder ipod(FrameKind::kUsb);
  for (const Record& record : records) {
    if (!record.isData()) continue;
    const bool isByHost = record.kind == Record::Kind::kWritten;
    (isByHost ? host : ipod).push({}, record.bytes, [&](ByteView payload) {
      all.push_back({isByHost, simulator::hexText(payload, payload.size())});
    });
  }
  return all;
}

/// A folder with the DLLs, as an integrator fills it, and an iPod.
class Recorder : public testing::Test {
 protected:
  Recorder() : image("IPODCTL_IMAGE", (ipod.folder / "ipodctl.dll").string()) {
    for (const char* const file : {"ipodctl.dll", "ipodtrace.dll"})
      std::filesystem::copy_file(std::filesystem::path(TRACED_IMAGES) / file, ipod.folder / file);
    ipod.look([this](simulator::SimulatedIpod& device) {
      device.setTrace([this](const Traffic& traffic) { note(traffic); });
    });
  }
  ~Recorder() override {
    ipod.look([](simulator::SimulatedIpod& device) { device.setTrace({}); });
  }

  void set(const std::string& settings) const {
    std::ofstream(ipod.folder / "ipodtrace.txt") << settings;
  }

  /// Runs the host program. Returns the time of its longest request in milliseconds, -1 when it
  /// fails.
  int runHost(const std::vector<std::string>& arguments) {
    Program host(TRACED_HOST, arguments);
    const std::string label = "longest request: ";
    std::optional<std::string> line;
    do {
      line = host.readLine();
    } while (line && line->rfind(label, 0) != 0);
    EXPECT_EQ(host.waitForEnd(), 0);
    errors = host.errors();
    return line ? std::stoi(line->substr(label.size())) : -1;
  }
  int runAndAwait(const std::string& wanted) { return runHost({trace().string(), wanted}); }

  std::filesystem::path trace() const { return ipod.folder / "ipod.trace"; }
  std::string text() const { return contentOf(trace()); }

  std::vector<Said> messagesAtTheIpod() {
    const std::lock_guard lock(mutex);
    return said;
  }

  SessionIpod ipod;
  std::string errors;  ///< what the host program printed there

 private:
  void note(const Traffic& traffic) {
    const std::lock_guard lock(mutex);
    const bool isByHost = traffic.kind == Traffic::Kind::kReceived;
    if (!isByHost && traffic.kind != Traffic::Kind::kSent) return;
    const simulator::Bytes payload = simulator::messagePayload(traffic.message);
    said.push_back({isByHost, simulator::hexText(payload, payload.size())});
  }

  const Variable image;
  std::mutex mutex;
  std::vector<Said> said;
};

TEST_F(Recorder, RecordsTheMessagesThatTheIpodSeesInTheirOrder) {
  ASSERT_GE(runAndAwait(" close\n"), 0) << errors;
  EXPECT_THAT(text(), StartsWith("# ipodctl-trace 1\n# It contains the iPod's name"));
  const trace::Trace records = trace::readTrace(trace().string());
  ASSERT_GT(records.size(), 2u);
  EXPECT_EQ(trace::devicesOf(records), std::vector<std::string>{"IPD1:"});
  EXPECT_EQ(records.front().kind, Record::Kind::kOpened);
  EXPECT_EQ(records.back().kind, Record::Kind::kClosed);
  const std::vector<Said> here = messagesOf(records);
  EXPECT_GT(here.size(), 200u);
  EXPECT_TRUE(
      eventually([&] { return by(true, messagesAtTheIpod()).size() >= by(true, here).size(); }));
  std::vector<Said> there = messagesAtTheIpod();
  // The iPod may acknowledge the last message, but the library closes the device at once.
  if (here.size() < there.size() && !there.back().isByHost) there.pop_back();
  EXPECT_EQ(by(true, here), by(true, there));
  EXPECT_EQ(by(false, here), by(false, there));
  // What both ends said at once can be in another order at each, but not a request and its answer.
  EXPECT_THAT(precedingRequests(here), testing::Pointwise(testing::Ge(), precedingRequests(there)));
}

TEST_F(Recorder, RecordsAnOpenThatFails) {
  const host_test::DeviceMapping nothing("IPD1:=/nothing");
  EXPECT_EQ(runAndAwait(" IPD1: open failed 2\n"), -1) << "there is no iPod";
}

TEST_F(Recorder, TakesNoTimeThatARequestNotices) {
  ipod.folder.putLogo();
  const int with = runHost({});
  const Variable plain("IPODCTL_IMAGE", PLAIN_IMAGE);
  const int without = runHost({});
  EXPECT_GE(without, 0) << errors;
  EXPECT_LT(with, kSlowWriteMilliseconds);
  std::printf("longest request %d ms, without a recorder %d ms\n", with, without);
}

TEST_F(Recorder, CountsTheLinesThatASlowCardCosts) {
  ipod.folder.putLogo();
  set("buffer = 8192\n");
  const Variable delay("IPODCTL_CARD_DELAY", kSlowWrite);
  const int slow = runAndAwait(" lines were lost: the file was too slow\n");
  EXPECT_GE(slow, 0) << errors;
  EXPECT_LT(slow, kSlowWriteMilliseconds);
  EXPECT_GT(trace::readTrace(trace().string()).size(), 2u);
  std::printf("slow card: longest request %d ms\n", slow);
}

TEST_F(Recorder, DoesNotDisturbTheLibraryWhenTheCardIsFull) {
  ipod.folder.putLogo();
  const Variable size("IPODCTL_CARD_SIZE", "5000");
  const int full = runHost({});
  EXPECT_GE(full, 0) << errors;
  EXPECT_LT(full, kSlowWriteMilliseconds);
  EXPECT_LE(text().size(), 5000u);
  std::printf("full card: longest request %d ms\n", full);
}

TEST_F(Recorder, DoesNotOverwriteAFileThatIsNotATrace) {
  std::ofstream(trace()) << "somebody's diary\n";
  EXPECT_GE(runHost({}), 0) << errors;
  EXPECT_EQ(text(), "somebody's diary\n");
}

TEST_F(Recorder, FollowsItsSettings) {
  const std::filesystem::path other = ipod.folder / "other.trace";
  set("# a comment\nfile = " + other.string() + "\nfaster = yes\nlimit = 9000\n");
  std::ofstream(other) << "# ipodctl-trace 1\n0.000000 IPD1: < 55\n";
  ASSERT_GE(runHost({other.string(), " lines were lost: the limit of the trace is reached\n"}), 0)
      << errors;
  const std::string recorded = contentOf(other);
  EXPECT_LT(recorded.size(), 9300u);
  EXPECT_THAT(recorded, HasSubstr("# line 3 of ipodtrace.txt is not a setting, and is ignored\n"));
  EXPECT_THAT(recorded, testing::Not(HasSubstr("0.000000 IPD1: < 55\n")));
  EXPECT_FALSE(std::filesystem::exists(trace()));
}

}  // namespace
}  // namespace session
