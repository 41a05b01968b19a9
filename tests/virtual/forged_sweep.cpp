#include "virtual/forged_sweep.h"

#include <utility>

#include "support/replay.h"

namespace virtual_session {
namespace {

using virtual_platform::ComingFrame;

// After another message in its place, the library waits for the acknowledgement another second.
constexpr std::chrono::seconds kAnotherReply(1);

std::vector<Bytes> framesOfASession(const Script& script) {
  std::vector<Bytes> frames;
  VirtualSession session(1, script);
  session.cable.rewrite([&frames](std::size_t, const Bytes& frame) {
    frames.push_back(frame);
    return atOnce({frame});
  });
  session.run([&] { session.play(); });
  return frames;
}

/// The library keeps memory for messages that it has received instead of an answer.
void warmUpWithUnasked(const Script& script, std::size_t place) {
  const Bytes position{0x04, 0x00, 0x27, 0x04, 0x00, 0x00, 0x03, 0xE8};
  const Forge stream = streamOf(position, 3000, std::chrono::milliseconds(20));
  VirtualSession session(1, script);
  session.cable.rewrite([&](std::size_t at, const Bytes& frame) {
    return at == place ? stream(ForgedFrame(frame)) : atOnce({frame});
  });
  session.run([&] { session.play(); });
}

}  // namespace

Forgery replaced(std::string name, std::function<Bytes(const ForgedFrame&)> other) {
  return {std::move(name),
          [other = std::move(other)](const ForgedFrame& frame) { return atOnce({other(frame)}); }};
}

Forge delayedBy(std::chrono::milliseconds wait) {
  return [wait](const ForgedFrame& frame) {
    return std::vector<ComingFrame>{{wait, frame.itself()}};
  };
}

Forge streamOf(const Bytes& payload, std::size_t count, std::chrono::milliseconds interval) {
  return [=](const ForgedFrame& frame) {
    std::vector<ComingFrame> coming = atOnce({frame.itself()});
    for (std::size_t i = 1; i <= count; ++i)
      coming.push_back({i * interval, frame.with(payload)});
    return coming;
  };
}

ForgedSweep::ForgedSweep() : script(scriptCalled(GetParam())), frames(framesOfASession(script)) {
  warmUpWithUnasked(script, frames.size() / 2);
}

void ForgedSweep::forgeEach(const std::vector<Forgery>& forgeries) {
  ASSERT_GT(frames.size(), 10u);
  for (std::size_t number = 0; number < frames.size(); ++number) {
    for (const Forgery& each : forgeries)
      forge(number, each);
  }
}

void ForgedSweep::forge(std::size_t number, const Forgery& forgery) {
  tryPoint(forgedCase(number, forgery));
}

Case ForgedSweep::forgedCase(std::size_t number, const Forgery& forgery) const {
  const auto rewriter = [=](std::size_t at, const Bytes& frame) {
    if (at == number) return forgery.forge(ForgedFrame(frame));
    const bool isLater = at > number && forgery.after;
    return isLater ? forgery.after(ForgedFrame(frame)) : atOnce({frame});
  };
  Case made{script, "answer:" + std::to_string(number) + ":" + forgery.name, number + 1,
            [=](VirtualSession& session) { session.cable.rewrite(rewriter); },
            [](VirtualSession& session) { return session.cable.hasRewritten(); }};
  made.stall = kAnotherReply;
  return made;
}

void ForgedSweep::expectStrikes(double share) const {
  if (isReplay()) return;
  EXPECT_GE(strikes, cases * share);
}

}  // namespace virtual_session
