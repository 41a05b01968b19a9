// The controller over the system's serial port COM1, to which a script has connected a simulated
// iPod.

#include <gtest/gtest.h>

#include <atomic>

#include "controller/ipod_controller.h"
#include "session/eventually.h"

namespace {

using session::eventually;

constexpr uint8_t kArtists = 2;
constexpr uint8_t kTracks = 5;
constexpr uint8_t kPause = 11;
constexpr uint32_t kStatePlaying = 1;
constexpr uint32_t kStatePaused = 2;

std::atomic<int> announcedRate{0};

int remember(int32_t rate) {
  announcedRate = rate;
  return 0;
}

std::string textOf(const ByteString& text) { return {text.text(), text.size()}; }

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
  uint32_t state = 0;
  EXPECT_TRUE(eventually(
      [&] { return controller.GetPlayStatus(length, position, state) && position > 0; }));
  EXPECT_EQ(state, kStatePlaying);
  ASSERT_TRUE(controller.PlayControl(kPause));
  EXPECT_TRUE(controller.GetPlayStatus(length, position, state));
  EXPECT_EQ(state, kStatePaused);
}

}  // namespace
