// The controller over the system's serial port COM1, to which a script has connected a simulated
// iPod.

#include <gtest/gtest.h>

#include <atomic>

#include "controller/ipod_controller.h"
#include "support/eventually.h"

using namespace ipodctl;

namespace {

using session::eventually;

constexpr Category kArtists = Category::kArtists;
constexpr Category kTracks = Category::kTracks;
constexpr PlayControlCode kPause = PlayControlCode::kPause;
constexpr PlayState kStatePlaying = PlayState::kPlaying;
constexpr PlayState kStatePaused = PlayState::kPaused;

std::atomic<int> announcedRate{0};

int remember(int32_t rate) {
  announcedRate = rate;
  return 0;
}

std::string textOf(const ByteString& text) { return {text.text(), text.text() + text.size()}; }

class SerialSession : public testing::Test {
 protected:
  void SetUp() override {
    controller.setResampleCallback(remember);
    ASSERT_TRUE(controller.connect("COM1:", nullptr));
    ASSERT_TRUE(controller.EnterExtendedMode());
  }
  void TearDown() override { EXPECT_TRUE(controller.CloseIpod()); }

  /// Selects the first artist. The iPod refuses a record of a category that was not counted before.
  void selectFirstArtist() {
    uint32_t count = 0;
    ASSERT_TRUE(controller.ResetDbSelection());
    ASSERT_TRUE(controller.GetDbRecordCount(kArtists, count));
    ASSERT_TRUE(controller.SelectDbRecord(kArtists, 0));
  }

  IpodController controller{kSerialLink};
};

TEST_F(SerialSession, ReadsTheIpodsName) {
  ByteString name;
  ASSERT_TRUE(controller.RequestIpodName(name));
  EXPECT_EQ(textOf(name), "Demo iPod");
}

TEST_F(SerialSession, WalksTheDatabase) {
  ASSERT_TRUE(controller.ResetDbSelection());
  uint32_t count = 0;
  ASSERT_TRUE(controller.GetDbRecordCount(kArtists, count));
  RecordList records;
  ASSERT_TRUE(controller.RetrieveDbRecords(kArtists, 0, count, records));
  ASSERT_EQ(records.size(), count);
  EXPECT_EQ(textOf(records[0].name), "Aalto Varispeed");
  ASSERT_NO_FATAL_FAILURE(selectFirstArtist());
  ASSERT_TRUE(controller.GetDbRecordCount(kTracks, count));
  EXPECT_EQ(count, 8u);
}

TEST_F(SerialSession, PlaysPausesAndFollowsTheSampleRate) {
  ASSERT_NO_FATAL_FAILURE(selectFirstArtist());
  ASSERT_TRUE(controller.PlayCurrentSelection(1));
  EXPECT_TRUE(eventually([] { return announcedRate == 48000; }));
  uint32_t length = 0;
  uint32_t position = 0;
  PlayState state{};
  EXPECT_TRUE(eventually(
      [&] { return controller.GetPlayStatus(length, position, state) && position > 0; }));
  EXPECT_EQ(state, kStatePlaying);
  ASSERT_TRUE(controller.PlayControl(kPause));
  EXPECT_TRUE(controller.GetPlayStatus(length, position, state));
  EXPECT_EQ(state, kStatePaused);
}

}  // namespace
