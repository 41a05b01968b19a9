#include "recorder/settings.h"

#include <gtest/gtest.h>

#include <string>

namespace recorder::settings {
namespace {

Settings settingsOf(const std::string& text) {
  Settings settings;
  readSettings(text.data(), text.size(), settings);
  return settings;
}

TEST(RecorderSettings, AreUsualWithoutAFile) {
  const Settings settings = settingsOf("");
  EXPECT_STREQ(settings.file, "ipod.trace");
  EXPECT_EQ(settings.buffer, 65536u);
  EXPECT_EQ(settings.limit, 16777216u);
  EXPECT_EQ(settings.wrongCount, 0u);
}

TEST(RecorderSettings, AreReadWithBlanksAndEitherLineEnd) {
  const Settings settings = settingsOf(
      "# a comment\r\n\r\n  file =\t\\Storage Card\\a = b.trace \r\nbuffer=8192\nlimit = "
      "2000000000");
  EXPECT_STREQ(settings.file, "\\Storage Card\\a = b.trace");
  EXPECT_EQ(settings.buffer, 8192u);
  EXPECT_EQ(settings.limit, 2000000000u);
  EXPECT_EQ(settings.wrongCount, 0u);
}

TEST(RecorderSettings, BeginAfterAMarkOfUtf8) {
  EXPECT_EQ(settingsOf("\xEF\xBB\xBF"
                       "buffer = 9000\n")
                .buffer,
            9000u);
}

class WrongSetting : public testing::TestWithParam<const char*> {};

TEST_P(WrongSetting, ChangesNothingAndIsNoted) {
  const Settings settings = settingsOf(std::string("# first\n") + GetParam() + "\nbuffer = 9000\n");
  EXPECT_STREQ(settings.file, "ipod.trace");
  EXPECT_EQ(settings.buffer, 9000u);
  EXPECT_EQ(settings.limit, 16777216u);
  ASSERT_EQ(settings.wrongCount, 1u);
  EXPECT_EQ(settings.wrongLines[0], 2u);
}

INSTANTIATE_TEST_SUITE_P(Each, WrongSetting,
                         testing::Values("buffer", "buffer =", "buffer = 8191", "buffer = 16777217",
                                         "buffer = 9000x", "buffer = -1", "limit = 2000000001",
                                         "limit = 99999999999999999999", "limit = 0",
                                         "file =", "files = x", "= 9000", "Buffer = 9000"));

TEST(RecorderSettings, RefuseAPathThatIsTooLong) {
  EXPECT_EQ(settingsOf("file = " + std::string(511, 'a')).wrongCount, 0u);
  EXPECT_EQ(settingsOf("file = " + std::string(512, 'a')).wrongCount, 1u);
  EXPECT_EQ(settingsOf(std::string("file = a\0b", 10)).wrongCount, 1u);
}

TEST(RecorderSettings, KeepTheFirstEightWrongLines) {
  const Settings settings = settingsOf("1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n");
  ASSERT_EQ(settings.wrongCount, 8u);
  EXPECT_EQ(settings.wrongLines[0], 1u);
  EXPECT_EQ(settings.wrongLines[7], 8u);
}

}  // namespace
}  // namespace recorder::settings
