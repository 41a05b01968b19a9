// Many iPods acknowledge a change of mode twice: pending, then done. The second acknowledgement can
// arrive after the next request was sent.

#include <chrono>
#include <thread>

#include "api/api_test.h"

namespace {

using std::chrono::milliseconds;

/// The iPod takes this long for each answer, one after the other.
constexpr milliseconds kAnswerTime{100};

class LateAcknowledgementTest : public ConnectedApiTest {
 protected:
  /// The first request for the playing index gets the late acknowledgement. The second request is
  /// then sent before the first is answered, and so on.
  void SetUp() override {
    ConnectedApiTest::SetUp();
    ipod.answerOnce(kGetCurrentTrackIndex, {"00 02 00 05", {"04 00 1F 00 00 00 01", kAnswerTime}});
    ipod.answerOnce(kGetCurrentTrackIndex, {{"04 00 1F 00 00 00 02", 2 * kAnswerTime}});
    ipod.answerOnce(kGetCurrentTrackIndex, {{"04 00 1F 00 00 00 03", 2 * kAnswerTime}});
    ipod.answerOnce(kGetCurrentTrackIndex, {{"04 00 1F 00 00 00 04", 2 * kAnswerTime}});
  }

  /// Returns the playing index, or -2 if the call failed.
  static int trackIndex() {
    int index = -1;
    return IpodGetTrackIndex(&index) == 1 ? index : -2;
  }
};

TEST_F(LateAcknowledgementTest, GivesEachCallTheAnswerOfThePreviousCall) {
  EXPECT_EQ(trackIndex(), -2);
  EXPECT_EQ(trackIndex(), 1);
  EXPECT_EQ(trackIndex(), 2);
  EXPECT_EQ(trackIndex(), 3);
}

TEST_F(LateAcknowledgementTest, IsForgottenAfterAPauseLongerThanTheAnswersAreLate) {
  EXPECT_EQ(trackIndex(), -2);
  EXPECT_EQ(trackIndex(), 1);
  std::this_thread::sleep_for(10 * kAnswerTime);
  EXPECT_EQ(trackIndex(), 3);
}

}  // namespace
