#include "music/text.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace simulator {
namespace {

using namespace std::string_literals;

TEST(IsUtf8, AcceptsWellFormedSequencesOfEveryLength) {
  EXPECT_TRUE(isUtf8(""));
  EXPECT_TRUE(isUtf8("plain"));
  EXPECT_TRUE(isUtf8("\x7F"));
  EXPECT_TRUE(isUtf8("\xC2\x80"));
  EXPECT_TRUE(isUtf8("\xDF\xBF"));
  EXPECT_TRUE(isUtf8("\xE0\xA0\x80"));
  EXPECT_TRUE(isUtf8("\xED\x9F\xBF"));
  EXPECT_TRUE(isUtf8("\xEE\x80\x80"));
  EXPECT_TRUE(isUtf8("\xEF\xBF\xBF"));
  EXPECT_TRUE(isUtf8("\xF0\x90\x80\x80"));
  EXPECT_TRUE(isUtf8("\xF4\x8F\xBF\xBF"));
  EXPECT_TRUE(isUtf8("caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\xA7\xBA"));
  EXPECT_TRUE(isUtf8("a\0b"s));
}

class NotUtf8 : public testing::TestWithParam<std::string_view> {};

TEST_P(NotUtf8, IsRefusedAloneAndBetweenLetters) {
  EXPECT_FALSE(isUtf8(GetParam()));
  EXPECT_FALSE(isUtf8("a" + std::string(GetParam()) + "b"));
}

INSTANTIATE_TEST_SUITE_P(Stray, NotUtf8, testing::Values("\x80", "\xBF", "\xC3\xA9\xA9", "\xFE"));
INSTANTIATE_TEST_SUITE_P(Short, NotUtf8,
                         testing::Values("\xC3", "\xE2\x82", "\xF0\x9F\xA7", "\xE2", "\xF0"));
INSTANTIATE_TEST_SUITE_P(Overlong, NotUtf8,
                         testing::Values("\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF",
                                         "\xF0\x8F\xBF\xBF"));
INSTANTIATE_TEST_SUITE_P(OutOfRange, NotUtf8,
                         testing::Values("\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
                                         "\xF8\x88\x80\x80\x80"));
INSTANTIATE_TEST_SUITE_P(WrongContinuation, NotUtf8,
                         testing::Values("\xC3\x41", "\xE2\x82\xC0", "\xF0\x9F\x41\xBA",
                                         "\xE2\xFF\x80"));

TEST(ToUtf8, DoesNotChangeUtf8) {
  EXPECT_EQ(toUtf8("caf\xC3\xA9 \xE2\x82\xAC"), "caf\xC3\xA9 \xE2\x82\xAC");
}

TEST(ToUtf8, TreatsOtherBytesAsLatin1) {
  EXPECT_EQ(toUtf8("caf\xE9"), "caf\xC3\xA9");
  EXPECT_EQ(toUtf8("\x80\xBF\xC0\xFF"), "\xC2\x80\xC2\xBF\xC3\x80\xC3\xBF");
}

TEST(Trimmed, RemovesPaddingOnlyAtBothEnds) {
  EXPECT_EQ(trimmed(" \t\r\n\0two words\0 \n"s), "two words");
  EXPECT_EQ(trimmed("two words"), "two words");
  EXPECT_EQ(trimmed("a"), "a");
  EXPECT_EQ(trimmed(" \0 "s), "");
  EXPECT_EQ(trimmed(""), "");
}

TEST(LowerCase, ChangesOnlyTheLettersAToZ) {
  EXPECT_EQ(lowerCase("@AMZ[ amz 3"), "@amz[ amz 3");
  EXPECT_EQ(lowerCase("\xC3\x89T\xC3\x89"), "\xC3\x89t\xC3\x89");
}

}  // namespace
}  // namespace simulator
