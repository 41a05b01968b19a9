// A reader that has just been started, whatever the order of the threads.
#include <gtest/gtest.h>

#include "link/usb_transport.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

using std::chrono::milliseconds;

constexpr uint64_t kOrders = 30;
constexpr uint32_t kRate = 48000;

/// The message that the iPod has sent before the reader was started.
std::unique_ptr<LingoMessage> firstMessage(VirtualSession& session, UsbTransport& link) {
  if (!link.open("IPD1:")) return nullptr;
  session.ipod.announceSampleRate(session.world.now(), kRate);
  if (!link.startReadData()) return nullptr;
  return link.getMessage(0, 1);
}

TEST(StartedReader, MissesNothingThatIsThereAlready) {
  for (uint64_t seed = 1; seed <= kOrders; ++seed) {
    VirtualSession session(seed);
    EXPECT_EQ(session.run([&] {
      UsbTransport link;
      for (int start = 0; start < 2; ++start) {
        const Time before = session.world.now();
        const std::unique_ptr<LingoMessage> message = firstMessage(session, link);
        ASSERT_NE(message, nullptr) << seed;
        EXPECT_EQ(message->getLingo(), kDigitalAudioLingo) << seed;
        EXPECT_LE(session.world.now() - before, milliseconds(101)) << seed;
        link.close();
      }
    }),
              "")
        << seed;
  }
}

}  // namespace
}  // namespace virtual_session
