// The limits that a user meets, as README.md states them.

#include <gtest/gtest.h>
#include <ipodctl.h>

#include <ostream>
#include <string>

#include "support/host_screen.h"
#include "support/session_ipod.h"

namespace session {
namespace {

/// A text that the host asks for, and the longest that arrives.
struct TextLimit {
  const char* name;
  const char* reply;  ///< as a fault addresses it
  int longest;        ///< bytes without the final zero
  std::string (*read)();
};

void PrintTo(const TextLimit& limit, std::ostream* out) { *out << limit.name; }

std::string title() { return trackTexts().title; }
std::string artist() { return trackTexts().artist; }
std::string album() { return trackTexts().album; }
std::string genre() { return trackTexts().genre; }

const TextLimit kTextLimits[] = {
    {"Title", "@04:0020", 251, title},         {"Artist", "@04:0022", 251, artist},
    {"Album", "@04:0024", 251, album},         {"Genre", "@04:000C", 250, genre},
    {"RecordName", "@04:001A", 247, itemName}, {"IpodName", "@00:07", 252, ipodName},
};

class LongText : public testing::TestWithParam<TextLimit> {
 protected:
  void SetUp() override {
    ASSERT_EQ(IpodConnect(), 1);
    ASSERT_TRUE(ipod.settle());
    ASSERT_NE(IpodGetFirstItem(0, IPOD_GENRES, 0), nullptr);
    IpodSongPlay(0);
  }
  void TearDown() override { IpodDisconnect(); }

  std::string readWithLength(int bytes) {
    ipod.addFault("text-length=" + std::to_string(bytes) + GetParam().reply);
    return GetParam().read();
  }

  /// Returns whether the link is still open: the reader closes the device when the link ends.
  bool answers() {
    int count = -1;
    IpodGetMediaFileCount(&count);
    return count > 0;
  }

  SessionIpod ipod;
};

TEST_P(LongText, ArrivesUpToTheLongestShortFrame) {
  EXPECT_NE(readWithLength(GetParam().longest), "");
  EXPECT_TRUE(answers());
}

TEST_P(LongText, OfOneByteMoreLosesTheConnection) {
  EXPECT_EQ(readWithLength(GetParam().longest + 1), "");
  EXPECT_FALSE(answers());
  EXPECT_EQ(IpodIsConnect(), 1);
  IpodDisconnect();
  EXPECT_EQ(IpodConnect(), 1);
}

INSTANTIATE_TEST_SUITE_P(Texts, LongText, testing::ValuesIn(kTextLimits),
                         [](const auto& limit) { return std::string(limit.param.name); });

}  // namespace
}  // namespace session
