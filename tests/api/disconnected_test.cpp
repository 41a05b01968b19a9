#include <optional>

#include "api/api_test.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// After a connection in which the host opened three artists and took the snapshot.
class DisconnectedTest : public ConnectedApiTest {
 protected:
  void SetUp() override {
    ConnectedApiTest::SetUp();
    openTree(IPOD_ARTISTS, 3);
    IpodValidateUpDownTree();
    IpodDisconnect();
    forgetEvents();
    quickTimeOuts.emplace();
  }

  // The library sends nothing and waits for nothing.
  void TearDown() override {
    EXPECT_THAT(requests(), IsEmpty());
    EXPECT_EQ(quickTimeOuts->passed(), 0);
    ConnectedApiTest::TearDown();
  }

  std::optional<QuickTimeOuts> quickTimeOuts;
  int value = -77;
  Units buffer = untouched(8);
};

TEST_F(DisconnectedTest, CommandsFailAndPostAsTheyDoWhenTheIpodRefuses) {
  for (int code = 1; code <= 14; ++code) {
    log.clear();
    EXPECT_EQ(IpodCommand(code), 0);
    const bool posts = code == 3 || code == 4 || code == 14;
    EXPECT_EQ(events(), posts ? std::vector<std::string>{kRefresh} : std::vector<std::string>{})
        << code;
  }
}

TEST_F(DisconnectedTest, SongPlayPosts) {
  EXPECT_EQ(IpodSongPlay(0), 0);
  EXPECT_EQ(IpodSongPlay(-1), 0);
  EXPECT_EQ(IpodSongPlay(100), 0);
  EXPECT_THAT(events(), ElementsAre(kRefresh, kRefresh, kRefresh));
}

TEST_F(DisconnectedTest, CountsStatusAndPositionAreZero) {
  for (const auto read : {IpodSongGetNumElem, IpodGetMediaFileCount, IpodGetCurrentPlayStatus,
                          IpodGetCurrentTrackPosition}) {
    value = -77;
    EXPECT_EQ(read(&value), 0);
    EXPECT_EQ(value, 0);
  }
  EXPECT_EQ(IpodGetNumberOfPlaylist(), 0);
}

TEST_F(DisconnectedTest, IndexAndModesAreNotWritten) {
  for (const auto read : {IpodGetTrackIndex, IpodGetShuffleMode, IpodGetRepeatMode}) {
    EXPECT_EQ(read(&value), 0);
    EXPECT_EQ(value, -77);
  }
  EXPECT_EQ(IpodSetShuffleMode(1), 0);
  EXPECT_EQ(IpodSetRepeatMode(1), 0);
}

TEST_F(DisconnectedTest, TextsAreNotWritten) {
  EXPECT_EQ(IpodGetTrackInfo(&value, buffer.data(), buffer.data(), buffer.data(), buffer.data(),
                             buffer.data(), 8),
            -1);
  EXPECT_EQ(IpodGetName(buffer.data(), 8), 0);
  EXPECT_EQ(IpodGetSerialNumber(buffer.data(), 8), 0);
  IpodGetNextItem();
  EXPECT_EQ(IpodGetItemName(0, buffer.data(), buffer.data(), 8), 0);
  EXPECT_EQ(IpodGetParentUpDownName(0, buffer.data(), buffer.data(), 8), 0);
  EXPECT_EQ(value, -77);
  EXPECT_EQ(buffer, untouched(8));
}

TEST_F(DisconnectedTest, TheTreeCanStillBeWalked) {
  const int* const index = IpodGetNextItem();
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(*index, 0);
  EXPECT_EQ(IpodGetPrevItem(), index);
  EXPECT_EQ(*index, -1);
  EXPECT_EQ(IpodIsPlayAll(), 1);
  EXPECT_EQ(IpodGetType(), 2);
  EXPECT_EQ(IpodIsTrack(), 0);
  EXPECT_EQ(IpodCurItemIsEmpty(), 1);
  EXPECT_EQ(IpodValidateUpDownTree(), 0);
  EXPECT_EQ(IpodGetParentItem(), nullptr);
}

TEST_F(DisconnectedTest, ListsOpenEmpty) {
  const int* const index = IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(*index, -1);
  EXPECT_EQ(browseTree.levels[1].count, 0);
  EXPECT_NE(IpodGetFirstItem(1, IPOD_TRACKS, 1), nullptr);
  EXPECT_EQ(browseTree.levels[2].count, 0);
  EXPECT_EQ(IpodGetNextItem(), nullptr);
}

TEST_F(DisconnectedTest, NothingIsConnected) {
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_EQ(isIpodAudioPresent(0, 0, 0, 0), 1);
}

}  // namespace
