// Ends the test program to which it is linked when one of its tests hangs.
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

class TestDeadline : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo&) override {
    constexpr unsigned kSeconds = 60;
    alarm(kSeconds);
  }
  void OnTestEnd(const testing::TestInfo&) override { alarm(0); }
};

[[maybe_unused]] const bool isListening = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new TestDeadline);
  return true;
}();

}  // namespace
