// A hostile accessory at the simulated iPod's cable.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "device/simulated_ipod.h"
#include "support/require.h"
#include "support/script.h"
#include "support/simulated_faults.h"
#include "support/small_library.h"

namespace {

using simulator::Bytes;
using simulator::FrameDecoder;
using simulator::FrameKind;
using simulator::milliseconds;
using simulator::SimulatedIpod;
using simulator::Time;

/// An accessory that follows a script.
class Accessory {
 public:
  explicit Accessory(const std::string& preset) : ipod(simulator::personality(preset), music()) {
    plug(FrameKind::kUsb);
  }

  void follow(Script script) {
    while (auto step = script.step()) {
      doStep(*step);
      take();
    }
  }

  /// Removes all faults and checks that the iPod answers the next accessory.
  void endWell() {
    ipod.faults().clear();
    now += milliseconds(100000);  // late messages have been sent
    ipod.advance(now);
    ipod.takeOutput(now);
    isFaulty = false;
    ipod.hangUp(now);
    plug(FrameKind::kUsb);
    ipod.receive(now, Bytes{0x55, 0x03, 0x00, 0x0F, 0x00, 0xEE});
    const std::vector<Bytes> answers = ipod.takeOutput(now);
    const Bytes expected{0x55, 0x05, 0x00, 0x10, 0x00, 0x01, 0x09, 0xE1};
    require(answers == std::vector<Bytes>{expected}, "the next accessory is not answered");
  }

 private:
  /// Returns the music of every input. It never changes.
  static std::shared_ptr<const simulator::Catalogue> music() {
    static const auto same =
        std::make_shared<const simulator::Catalogue>(simulator::smallLibrary());
    return same;
  }

  enum Operation { kSay, kSayRaw, kHangUp, kUnplug, kPlug, kWait, kPress, kRate, kFault, kCount };

  void doStep(Script::Step& step) {
    Script& arguments = step.arguments;
    switch (step.operation % kCount) {
      case kSay:
        return ipod.receive(now, encodeFrame(kind, arguments.rest()));
      case kSayRaw:
        return ipod.receive(now, arguments.rest());
      case kHangUp:
        return ipod.hangUp(now);
      case kUnplug:
        return ipod.unplug(now);
      case kPlug:
        return plug(arguments.byte() % 2 == 0 ? FrameKind::kUsb : FrameKind::kSerial);
      case kWait:
        return wait(milliseconds(arguments.word()));
      case kPress:
        return press(arguments.byte());
      case kRate:
        return ipod.announceSampleRate(now, arguments.number());
      default:
        isFaulty = true;
        return ipod.faults().add(faultFrom(arguments));
    }
  }

  void plug(FrameKind wanted) {
    kind = wanted;
    ipod.plugIn(now, kind);
  }

  void press(uint8_t button) {
    constexpr void (SimulatedIpod::*kButtons[])(Time) = {
        &SimulatedIpod::pressPlay, &SimulatedIpod::pressPause, &SimulatedIpod::pressNext,
        &SimulatedIpod::pressPrevious};
    (ipod.*kButtons[button % 4])(now);
  }

  /// Lets the time pass, and advances the iPod at each of its events.
  void wait(Time span) {
    constexpr int kMostWakes = 2000;
    const Time end = now + span;
    for (int wakes = 0; wakes < kMostWakes; ++wakes) {
      const std::optional<Time> wake = ipod.nextWake();
      if (!wake || *wake > end) break;
      now = std::max(now, *wake);
      take();
      const std::optional<Time> next = ipod.nextWake();
      require(!next || *next > now, "an iPod whose events do not end");
    }
    now = end;
  }

  /// Takes the iPod's output. Without a fault it consists of correct frames.
  void take() {
    const std::vector<Bytes> writes = ipod.takeOutput(now);
    if (isFaulty) return;
    FrameDecoder decoder(kind);
    for (const Bytes& write : writes)
      decoder.push(now, write, [](simulator::ByteView) {});
    const FrameDecoder::Counters& counters = decoder.counters();
    const size_t said = ipod.counters().messagesSent;
    require(counters.packets == said - taken && counters.badChecksums == 0 &&
                counters.skippedBytes == 0,
            "output that is not a frame");
    taken = said;
  }

  Time now{0};
  FrameKind kind = FrameKind::kUsb;
  bool isFaulty = false;
  size_t taken = 0;  ///< messages of the iPod
  SimulatedIpod ipod;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Script script(data, size);
  const auto& presets = simulator::personalityNames();
  Accessory accessory(presets[script.byte() % presets.size()]);
  accessory.follow(script);
  accessory.endWell();
  return 0;
}
