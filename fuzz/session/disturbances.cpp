#include "session/disturbances.h"

#include <iterator>

#include "session/counted_heap.h"
#include "support/simulated_faults.h"
#include "virtual/failures.h"

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

struct Scene {
  virtual_session::VirtualSession& session;
  HostileCable& cable;

  Time now() const { return session.world.now(); }
};

Loss lossFrom(Script& script) { return static_cast<Loss>(script.byte() % 5); }
Direction directionFrom(Script& script) { return static_cast<Direction>(script.byte() % 2); }

void pull(Scene& scene, Script& script) {
  scene.session.cable.unplug(scene.now(), lossFrom(script));
}

void plug(Scene& scene, Script&) { scene.session.cable.plug(scene.now()); }

void pullLater(Scene& scene, Script& script) {
  const Direction direction = directionFrom(script);
  const Loss loss = lossFrom(script);
  const size_t passed = scene.session.cable.passed(direction);
  scene.session.cable.unplugAfter(direction, passed + script.word(), loss);
}

void spoil(Scene& scene, Script& script) {
  const Direction direction = directionFrom(script);
  const auto kind = static_cast<ByteFault::Kind>(script.byte() % 4);
  const size_t place = script.word();
  scene.session.cable.spoil(direction, {kind, place, script.byte()});
}

void swapFrame(Scene& scene, Script& script) { scene.session.cable.swapFrame(script.byte()); }

void deliver(Scene& scene, Script& script) {
  virtual_platform::Delivery delivery;
  delivery.longestRead = script.byte() + size_t{1};
  delivery.gathering = milliseconds(script.byte());
  delivery.pauseAt = script.word();
  delivery.pause = milliseconds(script.word());
  scene.session.cable.deliver(delivery);
}

void say(Scene& scene, Script& script) { scene.cable.say(script.rest()); }
void sayRaw(Scene& scene, Script& script) { scene.cable.sayRaw(script.rest()); }

void answerPayload(Scene& scene, Script& script) {
  scene.cable.answer({HostileCable::AnswerKind::kPayload, script.rest()});
}

void answerReply(Scene& scene, Script& script) {
  scene.cable.answer({HostileCable::AnswerKind::kNextCommand, script.rest()});
}

void acknowledge(Scene& scene, Script& script) {
  scene.cable.answer({HostileCable::AnswerKind::kAcknowledgement, script.rest()});
}

void wait(Scene&, Script& script) { Sleep(script.word()); }

void press(Scene& scene, Script& script) {
  constexpr void (SimulatedIpod::*kButtons[])(Time) = {
      &SimulatedIpod::pressPlay, &SimulatedIpod::pressPause, &SimulatedIpod::pressNext,
      &SimulatedIpod::pressPrevious};
  (scene.session.ipod.*kButtons[script.byte() % std::size(kButtons)])(scene.now());
}

void announceRate(Scene& scene, Script& script) {
  scene.session.ipod.announceSampleRate(scene.now(), script.number());
}

void addFault(Scene& scene, Script& script) { scene.session.ipod.faults().add(faultFrom(script)); }

void failCalls(Scene&, Script& script) {
  const char* const what = kFailing[script.byte() % std::size(kFailing)];
  const size_t allowed = script.byte();
  failuresOf(what).arm({allowed, script.byte() % 2 != 0});
}

void mendPlatform(Scene& scene, Script&) {
  virtual_platform::disarmAllFailures();
  scene.session.ipod.faults().clear();
}

using Disturbance = void (*)(Scene&, Script&);

constexpr Disturbance kAll[kDisturbances] = {
    pull,  plug,         pullLater,     spoil,       swapFrame,   deliver,
    say,   sayRaw,       answerPayload, answerReply, acknowledge, wait,
    press, announceRate, addFault,      failCalls,   mendPlatform};

}  // namespace

void disturb(uint8_t number, Script arguments, virtual_session::VirtualSession& session,
             HostileCable& cable) {
  Scene scene{session, cable};
  kAll[number](scene, arguments);
}

void prepareFailures() {
  for (const char* const what : kFailing)
    failuresOf(what);
  session::setRefusal([] {
    static virtual_platform::Failures& allocations = failuresOf("allocation");
    return allocations.strikesNext();
  });
}
