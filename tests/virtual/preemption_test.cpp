// A thread is preempted at each possible place until no other thread can run. Nothing is lost, and
// no call waits longer.
#include <gtest/gtest.h>
#include <ipodctl.h>

#include <atomic>
#include <functional>
#include <tuple>

#include "controller/ipod_controller.h"
#include "link/usb_transport.h"
#include "support/host_folder.h"
#include "support/small_library.h"
#include "virtual/virtual_session.h"

using namespace ipodctl;

namespace virtual_session::preemption {
namespace {

using std::chrono::milliseconds;
using virtual_platform::Owner;
using virtual_platform::VirtualIpod;

constexpr uint64_t kSeed = 1;

std::string faultOfTimes(const Calls& calls) {
  for (const Call& call : calls) {
    if (call.took > longestWithAQuickIpod(call)) return call.name + " waits";
  }
  return "";
}

std::string playShort(VirtualSession& session) {
  const Calls calls = session.play();
  return resultsOf(calls) == shortScript().results ? faultOfTimes(calls) : "another result";
}

/// The iPod reports unsolicited positions just before each command.
std::string commandBesidePositions(VirtualSession& session) {
  constexpr int kCommands = 5;
  Host host(session.world);
  IpodConnect();
  IpodGetFirstItem(0, IPOD_TRACKS, 0);
  IpodSongPlay(0);
  for (int i = 0; i < kCommands; ++i) {
    session.ipod.tellPosition(session.world.now());
    session.ipod.tellPosition(session.world.now());
    host.command(IPOD_TOGGLE_PLAY_PAUSE);
  }
  IpodDisconnect();
  return faultOfTimes(host.calls());
}

/// Records arrive one right after the other.
std::string listRecords(VirtualSession& session) {
  constexpr Category kArtists = Category::kArtists;
  constexpr uint32_t kCount = 3;
  IpodController controller(kUsbLink);
  if (!controller.connect("IPD1:", nullptr) || !controller.EnterExtendedMode() ||
      !controller.ResetDbSelection()) {
    return "no connection";
  }
  RecordList records;
  const Time start = session.world.now();
  if (!controller.RetrieveDbRecords(kArtists, 0, kCount, records)) return "no records";
  if (records.size() != kCount) return "fewer records";
  return session.world.now() - start <= milliseconds(1) ? "" : "waits for records";
}

/// What the iPod has sent before the reader was started.
std::string takeTheFirstMessage(VirtualSession& session) {
  constexpr uint32_t kRate = 48000;
  UsbTransport link;
  if (!link.open("IPD1:")) return "no link";
  session.ipod.announceSampleRate(session.world.now(), kRate);
  if (!link.startReadData()) return "no reader";
  const Time start = session.world.now();
  if (link.getMessage(0, 1) == nullptr) return "no message";
  return session.world.now() - start <= milliseconds(1) ? "" : "waits for the message";
}

/// The reader of one link fails and closes all links while another link is destroyed.
std::string destroyBesideAFailureAfter(VirtualSession& session, Time delay) {
  simulator::SimulatedIpod otherIpod({}, simulator::smallLibrary());
  VirtualIpod otherCable(otherIpod, simulator::FrameKind::kUsb);
  session.world.addDevice("IPD2:", otherCable);
  UsbTransport failing;
  auto destroyed = std::make_unique<UsbTransport>();
  if (!failing.open("IPD1:") || !failing.startReadData()) return "no link";
  if (!destroyed->open("IPD2:") || !destroyed->startReadData()) return "no other link";
  session.cable.unplugAt(session.world.now() + delay, virtual_platform::Loss::kGone);
  destroyed.reset();
  return failing.awaitReader() ? "" : "waits for the reader";
}

std::string destroyBesideAFailure(VirtualSession& session) {
  return destroyBesideAFailureAfter(session, Time{0});
}

/// One thread takes a message while another one empties the queue; later one waits for the next.
std::string takeBesideAFlush(VirtualSession& session, unsigned pauses) {
  constexpr uint32_t kRate = 48000;
  constexpr DWORD kLateMessageMilliseconds = 10;
  UsbTransport link;
  if (!link.open("IPD1:") || !link.startReadData()) return "no link";
  std::atomic<int> running{2};
  session.world.spawn([&] {
    link.getMessage(0, 1);
    --running;
  });
  session.ipod.announceSampleRate(session.world.now(), kRate);
  session.world.spawn([&] {
    for (unsigned i = 0; i < pauses; ++i)
      Sleep(0);
    link.flushMessages();
    --running;
  });
  for (unsigned i = 0; i < pauses; ++i)
    Sleep(0);
  session.ipod.announceSampleRate(session.world.now(), kRate);
  while (running > 0)
    Sleep(1);
  Sleep(kLateMessageMilliseconds);
  link.flushMessages();
  const Time start = session.world.now();
  if (link.getMessage(0, 1) != nullptr) return "a message after a flush";
  return session.world.now() - start >= milliseconds(1000) ? "" : "a signal without a message";
}

struct Work {
  const char* name;
  std::string (*act)(VirtualSession& session);
};

void PrintTo(const Work& work, std::ostream* stream) { *stream << work.name; }

constexpr Work kWorks[] = {{"session", playShort},
                           {"commands", commandBesidePositions},
                           {"listing", listRecords},
                           {"start", takeTheFirstMessage},
                           {"destruction", destroyBesideAFailure}};

class InAFolder {
 protected:
  InAFolder() { warmUp(); }

  const session::HostFolder folder;
};

class Preemption : public InAFolder, public testing::TestWithParam<std::tuple<Work, bool>> {};

class LinkDestruction : public InAFolder, public testing::Test {};

using MessagesOfTwoThreads = LinkDestruction;

std::string nameOfTest(const testing::TestParamInfo<Preemption::ParamType>& info) {
  const bool isReader = std::get<1>(info.param);
  return std::string(std::get<0>(info.param).name) + (isReader ? "_of_the_reader" : "_of_the_host");
}

INSTANTIATE_TEST_SUITE_P(All, Preemption,
                         testing::Combine(testing::ValuesIn(kWorks), testing::Bool()), nameOfTest);

TEST_P(Preemption, CostsNothing) {
  const auto [work, isReader] = GetParam();
  const Owner owner = isReader ? Owner::kLibrary : Owner::kHost;
  bool cameToPass = true;
  unsigned place = 0;
  for (; cameToPass; ++place) {
    VirtualSession session(kSeed + place);
    session.world.threads().preemptAfter(owner, place);
    std::string fault;
    ASSERT_EQ(session.run([&, act = work.act] { fault = act(session); }), "") << place;
    ASSERT_EQ(fault, "") << place;
    cameToPass = !session.world.threads().isToPreempt(owner);
  }
  EXPECT_GT(place, 20u);
}

TEST_F(LinkDestruction, IsNotDisturbedWheneverAnotherLinkFails) {
  constexpr int kDelays = 60;  // microseconds, which is longer than the destruction
  constexpr int kOrders = 30;
  for (int delay = 0; delay < kDelays; ++delay) {
    for (unsigned order = 0; order < kOrders; ++order) {
      VirtualSession session(kSeed + order);
      std::string fault;
      const auto destroy = [&] {
        fault = destroyBesideAFailureAfter(session, std::chrono::microseconds(delay));
      };
      ASSERT_EQ(session.run(destroy), "") << delay << " " << order;
      ASSERT_EQ(fault, "") << delay << " " << order;
    }
  }
}

TEST_F(MessagesOfTwoThreads, LeaveNoSignalWithoutAMessage) {
  constexpr unsigned kOrders = 3000;
  constexpr unsigned kMostPauses = 16;
  for (unsigned order = 0; order < kOrders; ++order) {
    VirtualSession session(kSeed + order);
    std::string fault;
    ASSERT_EQ(session.run([&] { fault = takeBesideAFlush(session, order % kMostPauses); }), "")
        << order;
    ASSERT_EQ(fault, "") << order;
  }
}

}  // namespace
}  // namespace virtual_session::preemption
