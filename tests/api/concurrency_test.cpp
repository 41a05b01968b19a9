#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "api/api_test.h"
#include "support/exports.h"

using namespace ipodctl;

namespace {

/// Runs each work on a separate thread until all are done.
void runTogether(const std::vector<std::function<void()>>& works) {
  std::vector<std::thread> threads;
  for (const auto& work : works)
    threads.emplace_back(work);
  for (std::thread& thread : threads)
    thread.join();
}

std::function<void()> repeated(int times, const std::function<void()>& work) {
  return [times, work] {
    for (int i = 0; i < times; ++i)
      work();
  };
}

/// Calls every export that takes no lock and asks the iPod nothing.
void callLockFreeExports() {
  constexpr unsigned kVariety = 1;  // of IpodSetSameIpod: it is the same iPod
  for (const exports::Export& each : exports::allExports()) {
    if (each.lock != exports::Lock::kNone || !each.asksNothing()) continue;
    EXPECT_TRUE(each.isLegal(each.make(kVariety))) << each.name;
  }
}

class ConcurrencyTest : public ConnectedApiTest {
 protected:
  void SetUp() override {
    ConnectedApiTest::SetUp();
    count("05", 300);
    playingIndex(258);
    playState("01", 5000);
    ipod.answer(kRequestIpodName, {"00 08" + textBytes("Anna")});
    ipod.answer(kRequestSerialNumber, {"00 0C" + textBytes("5U82")});
    ipod.answer(kGetShuffle, {"04 00 2D 01"});
    ipod.answer(kGetRepeat, {"04 00 30 02"});
    ipod.answer(kGetTrackTitle + " 00 00 01 02", {"04 00 21" + textBytes("Waterloo")});
  }
};

TEST_F(ConcurrencyTest, EachHostThreadGetsItsOwnAnswer) {
  constexpr int kTimes = 25;
  runTogether({repeated(kTimes,
                        [] {
                          Units name = untouched(4);
                          IpodGetName(name.data(), 4);
                          EXPECT_EQ(name, holding("Anna", 4));
                        }),
               repeated(kTimes,
                        [] {
                          Units serial = untouched(4);
                          IpodGetSerialNumber(serial.data(), 4);
                          EXPECT_EQ(serial, holding("5U82", 4));
                        }),
               repeated(kTimes,
                        [] {
                          int tracks = 0;
                          IpodSongGetNumElem(&tracks);
                          EXPECT_EQ(tracks, 300);
                          int index = 0;
                          EXPECT_EQ(IpodGetTrackIndex(&index), 1);
                          EXPECT_EQ(index, 258);
                        }),
               repeated(kTimes, [] {
                 int shuffle = 0;
                 IpodGetShuffleMode(&shuffle);
                 EXPECT_EQ(shuffle, 2);
                 int repeat = 0;
                 IpodGetRepeatMode(&repeat);
                 EXPECT_EQ(repeat, 3);
                 Units title = untouched(8);
                 EXPECT_EQ(
                     IpodGetTrackInfo(nullptr, nullptr, nullptr, title.data(), nullptr, nullptr, 8),
                     0);
                 EXPECT_EQ(title, holding("Waterloo", 8));
               })});
}

TEST_F(ConcurrencyTest, CommandsOfTwoThreadsDoNotMix) {
  constexpr int kTimes = 20;
  forgetEvents();
  runTogether({repeated(kTimes, [] { IpodCommand(IPOD_NEXT_TRACK); }),
               repeated(kTimes, [] { IpodCommand(IPOD_PREVIOUS_TRACK); })});
  const std::vector<std::string> happened = events();
  const std::vector<std::string> kNext = {kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                          kNextTrack, kRefresh};
  const std::vector<std::string> kPrevious = {kGetPlayStatus, kGetCurrentTrackIndex, kCountTracks,
                                              kPreviousTrack, kGetCurrentTrackIndex, kRefresh};
  int commands = 0;
  for (auto at = happened.begin(); at != happened.end(); ++commands) {
    const auto refresh = std::find(at, happened.end(), kRefresh);
    ASSERT_NE(refresh, happened.end());
    const std::vector<std::string> command(at, refresh + 1);
    EXPECT_TRUE(command == kNext || command == kPrevious) << testing::PrintToString(command);
    at = refresh + 1;
  }
  EXPECT_EQ(commands, 2 * kTimes);
}

TEST_F(ConcurrencyTest, LockFreeExportsDoNotDisturbTheOthers) {
  openTree(IPOD_GENRES, 300);
  record("04", 0, "Rock");
  std::atomic<bool> done{false};
  const auto callWhileOthersWork = [&] {
    while (!done)
      callLockFreeExports();
  };
  testing::internal::CaptureStdout();
  runTogether({callWhileOthersWork, callWhileOthersWork, [&] {
                 for (int i = 0; i < 20; ++i) {
                   EXPECT_NE(IpodGetFirstItem(0, IPOD_GENRES, 0), nullptr);
                   EXPECT_NE(IpodGetNextItem(), nullptr);
                   EXPECT_EQ(IpodGetType(), 4);
                   IpodValidateUpDownTree();
                   int tracks = 0;
                   IpodSongGetNumElem(&tracks);
                   EXPECT_EQ(tracks, 300);
                   Units name = untouched(12);
                   IpodGetItemName(0, name.data(), nullptr, 12);
                   IpodGetParentItem();
                 }
                 done = true;
               }});
  testing::internal::GetCapturedStdout();
}

TEST_F(ConcurrencyTest, ClearingTheSnapshotDuringOtherCallsLeavesItCleared) {
  openTree(IPOD_ALBUMS, 9);
  ASSERT_NE(IpodGetFirstItem(1, IPOD_TRACKS, 1), nullptr);
  browseTree.levels[1].index = 4;
  runTogether({repeated(20,
                        [] {
                          IpodValidateUpDownTree();
                          IpodCommand(IPOD_NEXT_GROUP);
                          IpodGetParentUpDownName(0, nullptr, nullptr, 8);
                        }),
               repeated(2000, [] { IpodSetSameIpod(0); })});
  IpodSetSameIpod(0);
  EXPECT_EQ(treeText(upDownTree)[0], "level 0");
  EXPECT_EQ(levelText(upDownTree, 1), kUnknownLevel);
}

TEST_F(ConcurrencyTest, GetNumberOfPlaylistReturnsDuringOtherRequests) {
  openTree(IPOD_PLAYLISTS, 9);
  IpodValidateUpDownTree();
  {
    const QuickTimeOuts quickTimeOuts;
    runTogether({repeated(10, [] { IpodGetNumberOfPlaylist(); }),
                 repeated(10, [] { IpodGetNumberOfPlaylist(); }), repeated(10, [] {
                   int index = 0;
                   IpodGetTrackIndex(&index);
                 })});
  }
  EXPECT_EQ(IpodGetNumberOfPlaylist(), 9);
  EXPECT_TRUE(libraryLockIsFree());
}

TEST_F(ConcurrencyTest, ConnectionsAndDisconnectionsOfTwoThreadsLeaveAWorkingLibrary) {
  std::atomic<int> connections{0};
  const auto connectAndDisconnect = repeated(8, [&] {
    connections += IpodConnect();
    IpodGetName(nullptr, 4);
    IpodDisconnect();
  });
  IpodDisconnect();
  runTogether({connectAndDisconnect, connectAndDisconnect});
  EXPECT_GE(connections, 1);
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_EQ(IpodConnect(), 1);
  Units name = untouched(4);
  IpodGetName(name.data(), 4);
  EXPECT_EQ(name, holding("Anna", 4));
}

TEST_F(ConcurrencyTest, NotificationsAreFollowedDuringRequests) {
  std::thread notifier([this] {
    for (int i = 0; i < 20; ++i)
      ipod.send("0A 04 00 00 BB 80 00 00 00 00 00 00 00 00");
  });
  for (int i = 0; i < 50; ++i) {
    Units name = untouched(4);
    IpodGetName(name.data(), 4);
    EXPECT_EQ(name, holding("Anna", 4));
  }
  notifier.join();
  EXPECT_TRUE(log.waitFor("SelectFrequency(48000 Hz)", 20));
  EXPECT_TRUE(log.waitFor(kAcknowledgeAudioAttributes, 20));
}

TEST_F(ConcurrencyTest, DisconnectingWaitsForTheRequestThatIsUnderWay) {
  ipod.hold(kRequestIpodName);
  Units name = untouched(4);
  std::thread reader([&] { IpodGetName(name.data(), 4); });
  ASSERT_TRUE(log.waitFor(kRequestIpodName));
  std::thread disconnecter([] { IpodDisconnect(); });
  EXPECT_FALSE(libraryLockIsFree());
  EXPECT_EQ(IpodIsConnect(), 1);
  ipod.release();
  reader.join();
  disconnecter.join();
  EXPECT_EQ(name, holding("Anna", 4));
  EXPECT_EQ(IpodIsConnect(), 0);
}

}  // namespace
