// A program loads and unloads the library repeatedly: nothing of the library remains.

#include <desk.h>
#include <gtest/gtest.h>

#include "support/loaded_library.h"
#include "support/program.h"
#include "support/remains.h"

namespace session {
namespace {

constexpr int kRounds = 100;

using Use = void (*)(const LoadedLibrary& library);

/// The iPod is in another process, so that this one's heap shows only the library's objects.
class UnloadedLibrary : public testing::Test {
 protected:
  // A sanitizer starts its own thread together with the program's first thread.
  UnloadedLibrary() {
    std::thread([] {}).join();
  }

  void SetUp() override { ASSERT_TRUE(ipodsim.readUntil("iPod ready")); }

  static void loadOnce(Use use) {
    const LoadedLibrary library;
    EXPECT_TRUE(LoadedLibrary::isLoaded());
    use(library);
  }

  // The platform stays loaded: what the first round leaves belongs to it.
  void loadAgainAndAgain(Use use) {
    const unsigned threads = openThings().threads;
    loadOnce(use);
    ASSERT_TRUE(eventually([&] { return openThings().threads == threads; }));
    const Remains before = remains();
    for (int round = 0; round < kRounds; ++round) {
      loadOnce(use);
      ASSERT_FALSE(LoadedLibrary::isLoaded()) << round;
      ASSERT_EQ(deskRunningThreads(), 0u) << round;
      ASSERT_TRUE(eventually([&] { return remains() == before; }))
          << round << ": " << remains() << ", before: " << before;
    }
  }

  const HostFolder folder;
  const host_test::DeviceMapping devices{"IPD1:=" + (folder / "ipod").string()};
  simulator::Program ipodsim{IPODSIM_PROGRAM, {"--quiet", "--link", (folder / "ipod").string()}};
};

TEST_F(UnloadedLibrary, LeavesNothingOpenUnused) {
  loadAgainAndAgain([](const LoadedLibrary& library) { EXPECT_EQ(library.IpodIsConnect(), 0); });
}

TEST_F(UnloadedLibrary, LeavesNothingOpenAfterAConnection) {
  loadAgainAndAgain([](const LoadedLibrary& library) {
    ASSERT_EQ(library.IpodConnect(), 1);
    library.IpodGetFirstItem(0, IPOD_ARTISTS, 0);
    library.IpodSongPlay(0);
    library.IpodDisconnect();
  });
}

TEST_F(UnloadedLibrary, LeavesNothingOpenWithAConnectionThatWasNeverClosed) {
  loadAgainAndAgain([](const LoadedLibrary& library) { ASSERT_EQ(library.IpodConnect(), 1); });
}

TEST_F(UnloadedLibrary, LeavesNothingOpenWithoutAnIpod) {
  const host_test::DeviceMapping noDevices("");
  loadAgainAndAgain([](const LoadedLibrary& library) { ASSERT_EQ(library.IpodConnect(), 0); });
}

TEST_F(UnloadedLibrary, StartsAfresh) {
  {
    const LoadedLibrary library;
    ASSERT_EQ(library.IpodConnect(), 1);
    ASSERT_NE(library.IpodGetFirstItem(0, IPOD_ARTISTS, 0), nullptr);
  }
  const LoadedLibrary library;
  EXPECT_EQ(library.IpodIsConnect(), 0);
  EXPECT_EQ(library.IpodGetFirstItem(0, IPOD_ARTISTS, 0), nullptr) << "no lock yet";
}

}  // namespace
}  // namespace session
