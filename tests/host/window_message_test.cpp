#include <desk.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <optional>
#include <vector>

#include "support/background_call.h"

namespace {

using host_test::BackgroundCall;

struct Message {
  HWND window;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
};

void keepMessage(void* context, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  static_cast<std::vector<Message>*>(context)->push_back({window, message, wParam, lParam});
}

class MessageSink : public testing::Test {
 protected:
  ~MessageSink() override { deskSetMessageSink(nullptr, nullptr); }
};

TEST_F(MessageSink, ReceivesWhatIsPosted) {
  std::vector<Message> messages;
  deskSetMessageSink(keepMessage, &messages);
  EXPECT_TRUE(PostMessageW(HWND_BROADCAST, 0x2400, 0, 0));
  EXPECT_TRUE(PostMessageW(nullptr, 0x0401, 7, -1));
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].window, HWND_BROADCAST);
  EXPECT_EQ(messages[0].message, 0x2400u);
  EXPECT_EQ(messages[0].wParam, 0u);
  EXPECT_EQ(messages[0].lParam, 0);
  EXPECT_EQ(messages[1].window, nullptr);
  EXPECT_EQ(messages[1].message, 0x0401u);
  EXPECT_EQ(messages[1].wParam, 7u);
  EXPECT_EQ(messages[1].lParam, -1);
}

TEST_F(MessageSink, IsNotNeeded) { EXPECT_TRUE(PostMessageW(HWND_BROADCAST, 0x2400, 0, 0)); }

TEST_F(MessageSink, ReceivesNothingAfterItsRemoval) {
  std::vector<Message> messages;
  deskSetMessageSink(keepMessage, &messages);
  deskSetMessageSink(nullptr, nullptr);
  EXPECT_TRUE(PostMessageW(HWND_BROADCAST, 0x2400, 0, 0));
  EXPECT_TRUE(messages.empty());
}

/// A sink whose call does not return before it may.
struct SlowSink {
  std::atomic<bool> isEntered{false};
  std::atomic<bool> mayReturn{false};
};

void waitInSink(void* context, HWND, UINT, WPARAM, LPARAM) {
  auto& slow = *static_cast<SlowSink*>(context);
  slow.isEntered = true;
  while (!slow.mayReturn)
    Sleep(1);
}

/// Waits 20 ms.
TEST_F(MessageSink, IsNotRemovedDuringItsCall) {
  SlowSink slow;
  deskSetMessageSink(waitInSink, &slow);
  BackgroundCall post([] { return PostMessageW(HWND_BROADCAST, 0x2400, 0, 0); });
  while (!slow.isEntered)
    Sleep(1);
  BackgroundCall takeAway([] {
    deskSetMessageSink(nullptr, nullptr);
    return true;
  });
  Sleep(20);
  EXPECT_FALSE(takeAway.isDone());
  slow.mayReturn = true;
  EXPECT_EQ(takeAway.result(), true);
  EXPECT_EQ(post.result(), TRUE);
}

}  // namespace
