#include "recorder/text_ring.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace recorder::ring {
namespace {

class TextRingTest : public testing::Test {
 protected:
  TextRingTest() { ring.use(memory.data(), static_cast<uint32_t>(memory.size())); }

  bool append(const std::string& text) {
    return ring.append(text.data(), static_cast<uint32_t>(text.size()));
  }
  std::string first() const {
    const TextRing::Piece piece = ring.first();
    return {piece.text, piece.size};
  }
  /// Takes everything.
  std::string take() {
    std::string all;
    for (std::string piece = first(); !piece.empty(); piece = first()) {
      all += piece;
      ring.remove(static_cast<uint32_t>(piece.size()));
    }
    return all;
  }

  std::vector<char> memory = std::vector<char>(8);
  TextRing ring;
};

TEST_F(TextRingTest, ReturnsWhatWasAppended) {
  EXPECT_EQ(first(), "");
  EXPECT_TRUE(append("ab"));
  EXPECT_TRUE(append("cd"));
  EXPECT_EQ(ring.used(), 4u);
  EXPECT_EQ(first(), "abcd");
  ring.remove(1);
  EXPECT_EQ(first(), "bcd");
}

TEST_F(TextRingTest, IsFullWithOneByteLessThanItsMemory) {
  EXPECT_EQ(ring.capacity(), 7u);
  EXPECT_FALSE(append("12345678"));
  EXPECT_TRUE(append("1234567"));
  EXPECT_EQ(ring.room(), 0u);
  EXPECT_FALSE(append("8"));
  EXPECT_EQ(take(), "1234567");
}

TEST_F(TextRingTest, AppendsNothingOfATextWithoutRoom) {
  EXPECT_TRUE(append("12345"));
  EXPECT_FALSE(append("678"));
  EXPECT_EQ(take(), "12345");
}

TEST_F(TextRingTest, GoesOnAtTheBeginningOfItsMemory) {
  for (const char* const text : {"12345", "6789", "abcdefg", "hij", "klmnopq"}) {
    EXPECT_TRUE(append(text));
    EXPECT_EQ(take(), text);
  }
}

TEST_F(TextRingTest, HasNoRoomWithoutMemory) {
  TextRing empty;
  EXPECT_EQ(empty.capacity(), 0u);
  EXPECT_FALSE(empty.append("a", 1));
  EXPECT_EQ(empty.first().size, 0u);
}

TEST_F(TextRingTest, KeepsTheOrderBetweenTwoThreads) {
  constexpr int kBytes = 10000;
  std::thread appending([this] {
    for (int i = 0; i < kBytes;) {
      const char digit = static_cast<char>('0' + i % 10);
      if (ring.append(&digit, 1)) ++i;
    }
  });
  int taken = 0;
  bool isRight = true;
  while (taken < kBytes) {
    for (const char digit : take())
      isRight = isRight && digit == '0' + taken++ % 10;
  }
  appending.join();
  EXPECT_TRUE(isRight);
}

}  // namespace
}  // namespace recorder::ring
