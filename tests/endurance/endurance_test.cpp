// The library is connected and disconnected, loaded and unloaded thousands of times, sometimes with
// the cable pulled in the middle: nothing remains. ENDURANCE_CYCLES=<n> sets the number of cycles.

#include <desk.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

#include "support/last_words.h"
#include "support/loaded_library.h"
#include "support/program.h"
#include "support/remains.h"

namespace session {
namespace {

constexpr int kUsualCycles = 20;
// After this many cycles, with pulled cables among them, all permanent objects exist.
constexpr int kFirstCycles = 20;
constexpr unsigned kCycleSeconds = 60;

int wantedCycles() {
  const char* const wanted = std::getenv("ENDURANCE_CYCLES");
  return wanted != nullptr ? std::atoi(wanted) : kUsualCycles;
}

/// Returns how many KiB of the C library's heap are in use by the whole process. Not exact: each
/// thread keeps some of what it frees.
int heapInUse() { return static_cast<int>(mallinfo2().uordblks / 1024); }

/// The iPod is in another process, so that this one's heap shows only the library's objects.
class Endurance : public testing::Test {
 protected:
  using Cycle = std::function<void(int number)>;

  // A sanitizer starts its own thread together with the program's first thread.
  Endurance() {
    std::thread([] {}).join();
  }
  void SetUp() override { ASSERT_TRUE(ipodsim.readUntil("iPod ready")); }

  /// Repeats the cycle, and expects that each one leaves as much as the first ones.
  void repeat(const Cycle& cycle);
  void connect(const LoadedLibrary& library) {
    ASSERT_EQ(library.IpodConnect(), 1);
    ++connections;
  }
  static void use(const LoadedLibrary& library);
  /// Pulls the cable as soon as the iPod has sent this many bytes from now on.
  void pullBehind(int bytes) {
    ipodsim.type("fault unplug-sent=" + std::to_string(bytes));
    ++pulls;
  }
  void plugAgain();

  const HostFolder folder;
  const host_test::DeviceMapping devices{"IPD1:=" + (folder / "ipod").string()};
  simulator::Program ipodsim{IPODSIM_PROGRAM,
                             {"--quiet", "--interactive", "--link", (folder / "ipod").string()}};
  int connections = 0;
  int pulls = 0;

 private:
  static void record(const std::string& when, const Remains& remains, int heap);
};

void Endurance::use(const LoadedLibrary& library) {
  unsigned short name[20] = {};
  library.IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  library.IpodGetNextItem();
  library.IpodGetItemName(0, name, nullptr, 20);
  library.IpodSongPlay(0);
  int status = -1;
  library.IpodGetCurrentPlayStatus(&status);
}

// A cable that a fault pulls is still plugged for a moment.
void Endurance::plugAgain() {
  ipodsim.type("clear");
  ipodsim.type("unplug");
  ASSERT_TRUE(ipodsim.readUntil("unplugged"));
  ipodsim.type("plug");
  ASSERT_TRUE(ipodsim.readUntil("plugged in on"));
}

void Endurance::record(const std::string& when, const Remains& remains, int heap) {
  RecordProperty("handles_" + when, static_cast<int>(remains.open.handles));
  RecordProperty("threads_" + when, static_cast<int>(remains.open.threads));
  RecordProperty("descriptors_" + when, static_cast<int>(remains.open.descriptors));
  RecordProperty("objects_" + when, static_cast<int>(remains.objects));
  RecordProperty("bytes_" + when, static_cast<int>(remains.bytes));
  RecordProperty("heap_kib_" + when, heap);
}

void Endurance::repeat(const Cycle& cycle) {
  constexpr int kHeapNoise = 256;
  const unsigned threads = openThings().threads;
  for (int number = 0; number < kFirstCycles; ++number)
    ASSERT_NO_FATAL_FAILURE(cycle(number));
  ASSERT_TRUE(eventually([&] { return openThings().threads == threads; }));
  const Remains before = remains();
  const int heapBefore = heapInUse();
  connections = pulls = 0;
  const int cycles = wantedCycles();
  for (int number = 0; number < cycles; ++number) {
    const LastWords words("cycle " + std::to_string(number));
    alarm(kCycleSeconds);
    ASSERT_NO_FATAL_FAILURE(cycle(number)) << number;
    ASSERT_EQ(deskRunningThreads(), 0u) << number;
    ASSERT_TRUE(eventually([&] { return remains() == before; }))
        << number << ": " << remains() << ", before: " << before;
  }
  const int heapAfter = heapInUse();
  EXPECT_LE(heapAfter, heapBefore + kHeapNoise);
  const Remains after = remains();
  record("start", before, heapBefore);
  record("end", after, heapAfter);
  RecordProperty("cycles", cycles);
  RecordProperty("connections", connections);
  RecordProperty("pulls", pulls);
}

TEST_F(Endurance, ConnectsAndDisconnects) {
  const LoadedLibrary library;
  repeat([&](int number) {
    const bool isPulled = number % 10 == 9;
    if (isPulled) {
      pullBehind(number * 37 % 600);
      library.IpodConnect();
    } else {
      ASSERT_NO_FATAL_FAILURE(connect(library));
    }
    use(library);
    EXPECT_EQ(library.IpodDisconnect(), 0);
    if (isPulled) plugAgain();
  });
}

TEST_F(Endurance, LoadsAndUnloads) {
  repeat([&](int number) {
    const bool isUsed = number % 4 == 0;
    const bool isPulled = number % 20 == 16;
    const LoadedLibrary library;
    if (isUsed) {
      ASSERT_NO_FATAL_FAILURE(connect(library));
      if (isPulled) pullBehind(600 + number * 37 % 400);
      use(library);
    }
    if (number % 8 == 0) library.IpodDisconnect();
    if (isPulled) plugAgain();  // the library may still be connected to the cable that was pulled
  });
}

}  // namespace
}  // namespace session
