#include "base/text_string.h"

#include <gtest/gtest.h>

#include <string>

#include "support/message_bytes.h"

namespace ipodctl {
namespace {

using namespace std::string_literals;

TEST(TextString, StartsEmptyAndTerminated) {
  const ByteString text;
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.size(), 0u);
  ASSERT_NE(text.text(), nullptr);
  EXPECT_EQ(text.text()[0], '\0');
}

TEST(TextString, CopiesZeroUnits) {
  uint8_t source[] = {'a', 0, 'b'};
  ByteString text;
  ASSERT_TRUE(text.assign(source, 3));
  source[0] = 'x';
  EXPECT_EQ(textOf(text), "a\0b"s);
  EXPECT_EQ(text.text()[3], '\0');
}

TEST(TextString, HoldsZerosAfterAResize) {
  ByteString text = byteString("before");
  ASSERT_TRUE(text.resize(3));
  EXPECT_EQ(textOf(text), "\0\0\0"s);
  EXPECT_EQ(text.text()[3], '\0');
}

TEST(TextString, IsCutToItsFirstUnits) {
  ByteString text = byteString("before");
  text.shorten(2);
  EXPECT_EQ(textOf(text), "be");
  EXPECT_EQ(text.text()[2], '\0');
  text.shorten(2);
  EXPECT_EQ(textOf(text), "be");
  text.shorten(0);
  EXPECT_TRUE(text.empty());
}

TEST(TextString, IsCutToNothingWhenItHasNothing) {
  ByteString text;
  text.shorten(0);
  EXPECT_TRUE(text.empty());
}

TEST(TextString, IsEmptyAfterAnAssignOfNoUnits) {
  ByteString text = byteString("before");
  ASSERT_TRUE(text.assign(nullptr, 0));
  EXPECT_TRUE(text.empty());
  EXPECT_EQ(text.text()[0], '\0');
}

TEST(TextString, CopiesWideUnitsWhole) {
  WideString text;
  ASSERT_TRUE(text.assign(u"\u20AC\u1234", 2));
  ASSERT_EQ(text.size(), 2u);
  EXPECT_EQ(text[0], u'\u20AC');
  EXPECT_EQ(text[1], u'\u1234');
  EXPECT_EQ(text.text()[2], u'\0');
}

}  // namespace
}  // namespace ipodctl
