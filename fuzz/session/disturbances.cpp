#include "session/disturbances.h"

#include <iterator>

#include "support/counted_heap.h"
#include "support/simulated_faults.h"
#include "virtual/failures.h"
#include "wire/frame.h"

namespace {

using simulator::SimulatedIpod;
using std::chrono::milliseconds;
using virtual_platform::ByteFault;
using virtual_platform::Direction;
using virtual_platform::failuresOf;
using virtual_platform::Loss;
using virtual_platform::Time;

constexpr const char* kFailing[] = {"CreateSemaphoreW", "CreateThread", "CreateFileW",
                                    "ReadFile",         "WriteFile",    "FlushFileBuffers",
                                    "allocation"};

Loss lossFrom(Script& script) { return static_cast<Loss>(script.byte() % 5); }
Direction directionFrom(Script& script) { return static_cast<Direction>(script.byte() % 2); }

void pull(Scene& scene, Script& script) { scene.cable.unplug(scene.now(), lossFrom(script)); }

void plug(Scene& scene, Script&) { scene.cable.plug(scene.now()); }

void pullLater(Scene& scene, Script& script) {
  const Direction direction = directionFrom(script);
  const Loss loss = lossFrom(script);
  const size_t passed = scene.cable.passed(direction);
  scene.cable.unplugAfter(direction, passed + script.word(), loss);
}

void pullAt(Scene& scene, Script& script) {
  const Loss loss = lossFrom(script);
  scene.cable.unplugAt(scene.now() + milliseconds(script.word()), loss);
}

void stopReading(Scene& scene, Script& script) {
  const Loss loss = lossFrom(script);
  const size_t passed = scene.cable.passed(Direction::kToIpod);
  const size_t taken = passed + script.byte();
  scene.cable.stopReading(taken, milliseconds(script.word()), loss);
}

void spoil(Scene& scene, Script& script) {
  const Direction direction = directionFrom(script);
  const auto kind = static_cast<ByteFault::Kind>(script.byte() % 4);
  const size_t place = script.word();
  scene.cable.spoil(direction, {kind, place, script.byte()});
}

/// Changes a byte of one of the next frames and corrects its checksum.
void changeFrame(Scene& scene, Script& script) {
  const size_t wanted = script.byte();
  const size_t place = script.byte();
  const uint8_t bits = script.byte();
  scene.cable.rewrite([=, &scene](size_t number, const simulator::Bytes& frame) {
    simulator::Bytes changed = frame;
    constexpr size_t kBeforePayload = 2;  // start byte and length; a checksum follows the payload
    if (number == wanted && frame.size() > kBeforePayload + 1) {
      simulator::Bytes payload(frame.begin() + kBeforePayload, frame.end() - 1);
      payload[place % payload.size()] ^= bits;
      scene.hostile.limitCount(payload);
      changed.resize(kBeforePayload);
      changed.insert(changed.end(), payload.begin(), payload.end());
      changed.push_back(simulator::frameChecksum(simulator::ByteView(changed).from(1)));
    }
    return std::vector<virtual_platform::ComingFrame>{{Time(0), changed}};
  });
}

void swapFrame(Scene& scene, Script& script) { scene.cable.swapFrame(script.byte()); }

void deliver(Scene& scene, Script& script) {
  virtual_platform::Delivery delivery;
  delivery.longestRead = script.byte() + size_t{1};
  delivery.gathering = milliseconds(script.byte());
  delivery.pauseAt = script.word();
  delivery.pause = milliseconds(script.word());
  scene.cable.deliver(delivery);
}

void say(Scene& scene, Script& script) { scene.hostile.say(script.rest()); }
void sayRaw(Scene& scene, Script& script) { scene.hostile.sayRaw(script.rest()); }

void answerPayload(Scene& scene, Script& script) {
  scene.hostile.answer({HostileCable::AnswerKind::kPayload, script.rest()});
}

void answerReply(Scene& scene, Script& script) {
  scene.hostile.answer({HostileCable::AnswerKind::kNextCommand, script.rest()});
}

void acknowledge(Scene& scene, Script& script) {
  scene.hostile.answer({HostileCable::AnswerKind::kAcknowledgement, script.rest()});
}

void wait(Scene&, Script& script) { Sleep(script.word()); }

void press(Scene& scene, Script& script) {
  constexpr void (SimulatedIpod::*kButtons[])(Time) = {
      &SimulatedIpod::pressPlay, &SimulatedIpod::pressPause, &SimulatedIpod::pressNext,
      &SimulatedIpod::pressPrevious};
  (scene.ipod.*kButtons[script.byte() % std::size(kButtons)])(scene.now());
}

void announceRate(Scene& scene, Script& script) {
  scene.ipod.announceSampleRate(scene.now(), script.number());
}

void addFault(Scene& scene, Script& script) { scene.ipod.faults().add(faultFrom(script)); }

void failCalls(Scene&, Script& script) {
  const char* const what = kFailing[script.byte() % std::size(kFailing)];
  const size_t allowed = script.byte();
  failuresOf(what).arm({allowed, script.byte() % 2 != 0});
}

void mendPlatform(Scene& scene, Script&) {
  virtual_platform::disarmAllFailures();
  scene.ipod.faults().clear();
}

using Disturbance = void (*)(Scene&, Script&);

constexpr Disturbance kAll[kDisturbances] = {
    pull,     plug,          pullLater,    spoil,       swapFrame,   deliver,    say,
    sayRaw,   answerPayload, answerReply,  acknowledge, wait,        press,      announceRate,
    addFault, failCalls,     mendPlatform, pullAt,      stopReading, changeFrame};

}  // namespace

void disturb(uint8_t number, Script arguments, Scene& scene) { kAll[number](scene, arguments); }

void mend(Scene& scene) {
  virtual_platform::disarmAllFailures();
  scene.ipod.faults().clear();
  scene.hostile.leave();
  scene.cable.plug(scene.now());
}

void prepareFailures() {
  for (const char* const what : kFailing)
    failuresOf(what);
  session::setRefusal([] {
    static virtual_platform::Failures& allocations = failuresOf("allocation");
    return allocations.strikesNext();
  });
}
