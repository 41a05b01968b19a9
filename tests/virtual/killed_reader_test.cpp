// The system kills the reader in the middle of its work, as it kills all threads of a process
// before it detaches the process's libraries. Whatever the reader held, its link and its controller
// can be destroyed.
#include <gtest/gtest.h>

#include <memory>

#include "controller/ipod_controller.h"
#include "link/usb_transport.h"
#include "virtual/virtual_session.h"

using namespace ipodctl;

namespace virtual_session {
namespace {

constexpr uint64_t kOrders = 3;
constexpr DWORD kWorkMilliseconds = 50;
constexpr uint32_t kNewSampleRate = 48000;

int followRate(int32_t) { return 0; }

void ignoreMessage(void*, std::unique_ptr<LingoMessage>) {}

// An owner of a link.
class ControllerOwner {
 public:
  bool start() {
    controller.setResampleCallback(followRate);
    return controller.connect("IPD1:", nullptr);
  }

 private:
  IpodController controller{kUsbLink};
};

class LinkOwner {
 public:
  bool start() {
    return link.addHandler(this, ignoreMessage, DigitalAudioMessage::kTrackNewAudioAttributes,
                           kDigitalAudioLingo) &&
           link.open("IPD1:") && link.startReadData();
  }

 private:
  UsbTransport link;
};

/// The iPod announces a rate for a handler, reports a position, which is queued, and is pulled, so
/// that the reader closes all links.
void letTheReaderWork(VirtualSession& session) {
  session.ipod.announceSampleRate(session.world.now(), kNewSampleRate);
  session.ipod.tellPosition(session.world.now());
  Sleep(kWorkMilliseconds);
  session.cable.unplug(session.world.now(), virtual_platform::Loss::kGone);
  Sleep(kWorkMilliseconds);
}

struct End {
  std::string stuck;
  bool started = false;
  bool wasKilled = false;
};

/// The reader is killed in the call after so many, and the owner is destroyed.
template <class OwnerOfALink>
End endAfter(unsigned calls, uint64_t seed) {
  VirtualSession session(seed);
  End end;
  end.stuck = session.run([&] {
    auto owner = std::make_unique<OwnerOfALink>();
    end.started = owner->start();
    session.world.threads().killAfter(calls);
    letTheReaderWork(session);
    end.wasKilled = !session.world.threads().isToKill();
    owner.reset();
  });
  return end;
}

template <class OwnerOfALink>
void killAtEachCall() {
  for (uint64_t seed = 1; seed <= kOrders; ++seed) {
    bool wasKilled = true;
    unsigned calls = 0;
    for (; wasKilled; ++calls) {
      const End end = endAfter<OwnerOfALink>(calls, seed);
      ASSERT_TRUE(end.started);
      ASSERT_EQ(end.stuck, "") << "call " << calls << ", seed " << seed;
      wasKilled = end.wasKilled;
    }
    EXPECT_GE(calls, 20u);
  }
}

TEST(KilledReader, NeverBlocksTheEndOfAController) { killAtEachCall<ControllerOwner>(); }

TEST(KilledReader, NeverBlocksTheEndOfALink) { killAtEachCall<LinkOwner>(); }

}  // namespace
}  // namespace virtual_session
