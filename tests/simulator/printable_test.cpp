#include "wire/printable.h"

#include <gtest/gtest.h>

namespace simulator {
namespace {

TEST(Printable, KeepsVisibleTextOfEveryLanguage) {
  EXPECT_EQ(printable("Juno"), "Juno");
  EXPECT_EQ(printable("\xC3\xA9\xE3\x81\x82\xF0\x9F\x8E\xB5"),
            "\xC3\xA9\xE3\x81\x82\xF0\x9F\x8E\xB5");
  EXPECT_EQ(printable("a \"b\" \\"), "a \"b\" \\");
}

TEST(Printable, EscapesControlCharacters) {
  EXPECT_EQ(printable("\x1B[2J\r\n\x7F"), "\\x1B[2J\\x0D\\x0A\\x7F");
  EXPECT_EQ(printable(std::string_view("\0", 1)), "\\x00");
  EXPECT_EQ(printable("\xC2\x9B"), "\\u{9B}");
}

TEST(Printable, EscapesWhatReordersOrHidesText) {
  EXPECT_EQ(printable("a\xE2\x80\xAE"
                      "b"),
            "a\\u{202E}b");
  EXPECT_EQ(printable("\xE2\x81\xA6"), "\\u{2066}");
  EXPECT_EQ(printable("\xE2\x80\x8B"), "\\u{200B}");
  EXPECT_EQ(printable("\xEF\xBB\xBF"), "\\u{FEFF}");
  EXPECT_EQ(printable("\xD8\x9C"), "\\u{61C}");
  EXPECT_EQ(printable("\xF3\xA0\x81\x81"), "\\u{E0041}");
  EXPECT_EQ(printable("\xE2\x80\xA8"), "\\u{2028}");
  EXPECT_EQ(printable("\xEF\xBF\xBF"), "\\u{FFFF}");
}

TEST(Printable, EscapesEachByteThatIsNotUtf8) {
  EXPECT_EQ(printable("\xE9t\xE9"), "\\xE9t\\xE9");
  EXPECT_EQ(printable("\xC0\x80"), "\\xC0\\x80");           // longer than needed
  EXPECT_EQ(printable("\xE0\x80\x80"), "\\xE0\\x80\\x80");  // the same in three bytes
  EXPECT_EQ(printable("\xED\xA0\x80"), "\\xED\\xA0\\x80");  // a surrogate
  EXPECT_EQ(printable("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");
  EXPECT_EQ(printable("\xE3\x81"), "\\xE3\\x81");  // cut
}

TEST(Quoted, EscapesQuotationMarksAndBackslashes) {
  EXPECT_EQ(quoted("a \"b\" \\x41"), "\"a \\\"b\\\" \\\\x41\"");
  EXPECT_EQ(quoted("\n"), "\"\\x0A\"");
}

}  // namespace
}  // namespace simulator
