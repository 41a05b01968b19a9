#include <gtest/gtest.h>

#include <string>

#include "lingo/lingo_message.h"
#include "support/message_bytes.h"
#include "support/row_name.h"

namespace ipodctl {
namespace {

using namespace std::string_literals;

std::u16string wideText(const WideString& wide) { return {wide.text(), wide.size()}; }

WideString wideString(const std::u16string& text) {
  WideString wide;
  EXPECT_TRUE(wide.assign(text.data(), static_cast<uint32_t>(text.size())));
  return wide;
}

TEST(Utf8SequenceLength, FollowsFromTheLeadByte) {
  const struct {
    uint8_t lead;
    int length;
  } rows[] = {{0x00, 1}, {0x41, 1}, {0x7F, 1}, {0xC0, 2}, {0xC3, 2}, {0xDF, 2},
              {0xE0, 3}, {0xEF, 3}, {0xF0, 4}, {0xF7, 4}, {0xF8, 5}, {0xFB, 5},
              {0xFC, 6}, {0xFD, 6}, {0x80, 1}, {0xBF, 1}, {0xFE, 1}, {0xFF, 1}};
  for (const auto& row : rows)
    EXPECT_EQ(LingoMessage::utf8SequenceLength(row.lead), row.length) << int(row.lead);
}

TEST(Utf8CharCount, CountsASequenceAsOne) {
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("")), 0u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("abc")), 3u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("Caf\xC3\xA9")), 4u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("\xE2\x82\xAC\xF0\x9F\x8E\xB5")), 2u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("\xF8\x88\x80\x80\x80\xFC\x84\x80\x80\x80\x80")), 2u);
}

TEST(Utf8CharCount, CountsACutSequenceAsOne) {
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("\xE2\x82")), 1u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("\xE2\x82z")), 2u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("\xC3")), 1u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("\xC3\xC3\xA9")), 2u);
}

TEST(Utf8CharCount, CountsAStrayContinuationByteAsOne) {
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("\x80\x81")), 2u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("a\xBFz")), 3u);
  EXPECT_EQ(LingoMessage::utf8CharCount(utf8("\xC3\xA9\xA9")), 2u);
}

struct Character : NamedRow {
  const char* bytes;
  int length;
  int consumed;
  uint32_t value;
};

class Utf8DecodeChar : public testing::TestWithParam<Character> {};

TEST_P(Utf8DecodeChar, GivesCodePointAndBytesConsumed) {
  uint32_t value = 0xA5A5A5A5;
  EXPECT_EQ(LingoMessage::utf8DecodeChar(utf8(GetParam().bytes), GetParam().length, value),
            GetParam().consumed);
  EXPECT_EQ(value, GetParam().value);
}

const Character kCharacters[] = {
    {"OfOneByte", "A", 1, 1, 0x41},
    {"OfTwoBytes", "\xC3\xA9", 2, 2, 0xE9},
    {"OfThreeBytes", "\xE2\x82\xAC", 3, 3, 0x20AC},
    {"OfFourBytes", "\xF0\x9F\x8E\xB5", 4, 4, 0x1F3B5},
    {"OfFiveBytes", "\xF9\x81\x82\x83\x84", 5, 5, 0x10420C4},
    {"OfSixBytes", "\xFD\x81\x82\x83\x84\x85", 6, 6, 0x41083105},
    {"TheHighestOfTwoBytes", "\xDF\xBF", 2, 2, 0x7FF},
    {"TheHighestOfThreeBytes", "\xEF\xBF\xBF", 3, 3, 0xFFFF},
    {"WrittenLongerThanNeeded", "\xC1\x81", 2, 2, 0x41},
    {"ThatIsAStrayContinuationByteKeepsSevenBits", "\x85", 1, 1, 0x05},
    {"ThatIsFFKeepsSevenBits", "\xFF", 1, 1, 0x7F},
    {"CutByAnotherLead", "\xE2\x82\x41", 3, 2, 0xFFFFFFFF},
    {"CutByTheEnd", "\xC3", 2, 1, 0xFFFFFFFF},
    {"FollowedByMoreContinuationBytes", "\xC3\xA9\xA9", 2, 2, 0xE9},
    {"OfOneByteFollowedByAContinuationByte", "A\x80", 1, 1, 0x41},
};

INSTANTIATE_TEST_SUITE_P(Characters, Utf8DecodeChar, testing::ValuesIn(kCharacters),
                         rowName<Character>);

TEST(Utf8ToWide, ConvertsEachCharacter) {
  WideString wide;
  EXPECT_TRUE(LingoMessage::utf8ToWide(utf8("Caf\xC3\xA9 \xE2\x82\xAC"), wide));
  EXPECT_EQ(wideText(wide), u"Caf\u00E9 \u20AC"s);
}

TEST(Utf8ToWide, OfAnEmptyTextIsEmpty) {
  WideString wide = wideString(u"before");
  EXPECT_TRUE(LingoMessage::utf8ToWide(utf8(""), wide));
  EXPECT_EQ(wide.size(), 0u);
}

TEST(Utf8ToWide, TakesTheHighest16BitCharacter) {
  WideString wide;
  EXPECT_TRUE(LingoMessage::utf8ToWide(utf8("\xEF\xBF\xBF"), wide));
  EXPECT_EQ(wideText(wide), u"\uFFFF"s);
}

TEST(Utf8ToWide, PutsASpaceForACharacterBeyond16BitsAndGoesOn) {
  WideString wide;
  EXPECT_FALSE(LingoMessage::utf8ToWide(utf8("a\xF0\x90\x80\x80z"), wide));
  EXPECT_EQ(wideText(wide), u"a z"s);
}

TEST(Utf8ToWide, PutsASpaceForACutSequenceAndContinuesAfterIt) {
  WideString wide;
  EXPECT_FALSE(LingoMessage::utf8ToWide(utf8("a\xE2\x82z\xC3"), wide));
  EXPECT_EQ(wideText(wide), u"a z "s);
}

TEST(Utf8ToWide, TakesAStrayContinuationByteAsItsLowSevenBits) {
  WideString wide;
  EXPECT_TRUE(LingoMessage::utf8ToWide(utf8("a\x85z"), wide));
  EXPECT_EQ(wideText(wide), u"a\u0005z"s);
}

TEST(Utf8ToWide, TakesHalfOfASurrogatePairAsACharacter) {
  WideString wide;
  EXPECT_TRUE(LingoMessage::utf8ToWide(utf8("a\xED\xA0\x80z\xED\xBF\xBF"), wide));
  EXPECT_EQ(wideText(wide), (std::u16string{u'a', 0xD800, u'z', 0xDFFF}));
}

TEST(WideToNarrow, KeepsCharactersUpTo255) {
  ByteString narrow;
  EXPECT_TRUE(LingoMessage::wideToNarrow(wideString(u"Caf\u00E9\u00FF"), narrow));
  EXPECT_EQ(textOf(narrow), "Caf\xE9\xFF");
}

TEST(WideToNarrow, PutsASpaceForACharacterAbove255AndGoesOn) {
  ByteString narrow;
  EXPECT_FALSE(LingoMessage::wideToNarrow(wideString(u"a\u0100\uFFFFz"), narrow));
  EXPECT_EQ(textOf(narrow), "a  z");
}

TEST(WideToNarrow, OfAnEmptyTextIsEmpty) {
  ByteString narrow = byteString("before");
  EXPECT_TRUE(LingoMessage::wideToNarrow(WideString(), narrow));
  EXPECT_EQ(narrow.size(), 0u);
}

TEST(WideToNarrow, TakesAsManyCharactersAsAFrameCarries) {
  const std::u16string text(65535, u'a');
  ByteString narrow;
  EXPECT_TRUE(LingoMessage::wideToNarrow(wideString(text), narrow));
  EXPECT_EQ(textOf(narrow), std::string(65535, 'a'));
}

TEST(Utf8ToNarrow, ConvertsToLatin1) {
  ByteString narrow;
  EXPECT_TRUE(LingoMessage::utf8ToNarrow(utf8("\x43\x61\x66\xC3\xA9"), 5, narrow));
  EXPECT_EQ(textOf(narrow), "\x43\x61\x66\xE9");
}

TEST(Utf8ToNarrow, PutsASpaceForA16BitCharacterAndFails) {
  ByteString narrow;
  EXPECT_FALSE(LingoMessage::utf8ToNarrow(utf8("\xE2\x82\xAC"), 3, narrow));
  EXPECT_EQ(textOf(narrow), " ");
}

TEST(Utf8ToNarrow, PutsASpaceForHalfOfASurrogatePairAndGoesOn) {
  ByteString narrow;
  EXPECT_FALSE(LingoMessage::utf8ToNarrow(utf8("a\xED\xA0\x80z"), 5, narrow));
  EXPECT_EQ(textOf(narrow), "a z");
}

TEST(Utf8ToNarrow, LeavesTheOutputWhenACharacterIsBeyond16Bits) {
  ByteString narrow = byteString("before");
  EXPECT_FALSE(LingoMessage::utf8ToNarrow(utf8("ab\xF0\x9F\x8E\xB5"), 6, narrow));
  EXPECT_EQ(textOf(narrow), "before");
}

TEST(Utf8ToNarrow, LeavesTheOutputWhenASequenceIsCut) {
  ByteString narrow = byteString("before");
  EXPECT_FALSE(LingoMessage::utf8ToNarrow(utf8("ab\xC3"), 3, narrow));
  EXPECT_EQ(textOf(narrow), "before");
}

TEST(Utf8ToNarrow, FailsWithoutATextOrALength) {
  ByteString narrow = byteString("before");
  EXPECT_FALSE(LingoMessage::utf8ToNarrow(nullptr, 5, narrow));
  EXPECT_FALSE(LingoMessage::utf8ToNarrow(utf8("text"), 0, narrow));
  EXPECT_EQ(textOf(narrow), "before");
}

TEST(Utf8ToNarrow, ReadsUpToTheTerminatorWhateverTheLength) {
  ByteString narrow;
  EXPECT_TRUE(LingoMessage::utf8ToNarrow(utf8("text"), 1, narrow));
  EXPECT_EQ(textOf(narrow), "text");
  EXPECT_TRUE(LingoMessage::utf8ToNarrow(utf8("ab\0cd"), 5, narrow));
  EXPECT_EQ(textOf(narrow), "ab");
}

TEST(Utf8ToNarrow, OfAnEmptyTextIsEmpty) {
  ByteString narrow = byteString("before");
  EXPECT_TRUE(LingoMessage::utf8ToNarrow(utf8(""), 1, narrow));
  EXPECT_EQ(narrow.size(), 0u);
}

}  // namespace
}  // namespace ipodctl
