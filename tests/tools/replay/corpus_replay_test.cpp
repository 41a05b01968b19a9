// Each recorded session again: the same calls, to a replay instead of an iPod, have the same
// results and outputs.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "support/program.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

/// The sessions mostly wait.
constexpr unsigned kAtTheSameTime = 20;

std::string contentOf(const fs::path& file) {
  std::ostringstream content;
  content << std::ifstream(file).rdbuf();
  return content.str();
}

/// Returns the traces that have calls: every EVERY-th one.
std::vector<fs::path> recordedSessions() {
  std::vector<fs::path> all;
  for (const auto& entry : fs::directory_iterator(TRACES_FOLDER)) {
    if (entry.path().extension() == ".trace") all.push_back(entry.path());
  }
  std::sort(all.begin(), all.end());
  std::vector<fs::path> some;
  for (size_t i = 0; i < all.size(); i += EVERY)
    some.push_back(all[i]);
  return some;
}

/// The logo of the recorded sessions: 8 x 4 pixels, whose bytes are 1, 2, 3, ... in each row.
void writeLogo(const fs::path& file) {
  std::string bitmap("BM\x96\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\x08\0\0\0\x04\0\0\0\x01\0\x18\0",
                     30);
  bitmap.append(std::string("\0\0\0\0\x60\0\0\0", 8)).append(16, '\0');
  for (int row = 0; row < 4; ++row) {
    for (char byte = 1; byte <= 24; ++byte)
      bitmap.push_back(byte);
  }
  std::ofstream(file, std::ios::binary) << bitmap;
}

/// Returns what differs from the recorded session; empty when nothing does.
std::string differenceOf(const fs::path& trace) {
  const TemporaryFolder folder;
  const std::string link = (folder / "ipod").string();
  const fs::path calls = fs::path(trace).replace_extension(".calls");
  const std::string recorded = contentOf(trace);
  const bool wantsLogo = recorded.find("> 55 03 04 00 39 C0") != std::string::npos;
  const bool hasDevice = recorded.find(" IPD1: ") != std::string::npos;
  if (wantsLogo) writeLogo(folder / "logo_zel.bmp");
  std::optional<Program> replay;
  if (hasDevice) {
    replay.emplace(IAPTRACE_PROGRAM, std::vector<std::string>{"replay", trace.string(), "--link",
                                                              link, "--speed", "max"});
    if (replay->readLine() != "iPod ready on " + link) return "does not begin: " + replay->errors();
  }
  Program driver("/usr/bin/env", {"-C", (folder / "").string(), "IPODCTL_DEVICES=IPD1:=" + link,
                                  DRIVER_PROGRAM, calls.string(), (folder / "calls").string()});
  if (driver.waitForEnd() != 0) return "the calls do not end: " + driver.errors();
  const std::string summary = replay ? replay->readLine().value_or("no summary") : "";
  if (replay && replay->waitForEnd() != 0) return "the replay fails: " + replay->errors();
  const std::string now = contentOf(folder / "calls");
  return now == contentOf(calls) ? "" : "the calls are now, with " + summary + ":\n" + now;
}

TEST(CorpusReplay, EveryCallHasTheRecordedResult) {
  const std::vector<fs::path> all = recordedSessions();
  ASSERT_FALSE(all.empty());
  std::atomic<size_t> next{0};
  std::mutex guard;
  std::string differences;
  const auto playSome = [&] {
    for (size_t i = next++; i < all.size(); i = next++) {
      const std::string difference = differenceOf(all[i]);
      const std::lock_guard<std::mutex> lock(guard);
      if (!difference.empty()) differences += all[i].stem().string() + ": " + difference + "\n";
    }
  };
  std::vector<std::thread> players;
  for (unsigned i = 0; i < kAtTheSameTime; ++i)
    players.emplace_back(playSome);
  for (std::thread& player : players)
    player.join();
  EXPECT_EQ(differences, "");
}

}  // namespace
}  // namespace simulator
