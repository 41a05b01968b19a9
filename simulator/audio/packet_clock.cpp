#include "audio/packet_clock.h"

#include <vector>

#include "audio/track_sound.h"

namespace simulator {
namespace {

constexpr milliseconds kPacket{1};

}  // namespace

void PacketClock::follow(const Playing& playing) {
  advance(playing.at);
  if (playing.continues(current)) return;
  finish(playing.at);
  const Moment sent = current.at + packets * kPacket;
  begin(source && sent > playing.at ? playing.from(sent) : playing);
}

void PacketClock::stop() { begin(Playing{}); }

void PacketClock::begin(const Playing& playing) {
  current = playing;
  packets = 0;
  frames = 0;
  source.reset();
  if (!current.isHeard) return;
  source = openSound(current);
  source->seek(current.position);
}

void PacketClock::advance(Moment now) {
  if (!source) return;
  if (endOf(packets) + kLatest < now) skipUntil(now);
  for (; endOf(packets) <= now; ++packets)
    send(framesUntil(endOf(packets)));
}

std::optional<Moment> PacketClock::next() const {
  return source ? std::optional(endOf(packets)) : std::nullopt;
}

/// Leaves out the packets that are too late.
void PacketClock::skipUntil(Moment now) {
  const auto due = static_cast<uint64_t>((now - current.at) / kPacket);
  sink.missed(due - packets);
  packets = due;
  frames = framesUntil(current.at + due * kPacket);
  source->seek(current.position + due * kPacket);
}

/// Sends what remains of a millisecond. The end may be before the beginning: a change can be
/// noticed before the accessory begins to listen, and be reported afterwards.
void PacketClock::finish(Moment end) {
  if (source && end > current.at && framesUntil(end) > frames) send(framesUntil(end));
}

uint64_t PacketClock::framesUntil(Moment moment) const {
  return frameAt(moment - current.at, current.streamRate);
}

Moment PacketClock::endOf(uint64_t packet) const { return current.at + (packet + 1) * kPacket; }

void PacketClock::send(uint64_t untilFrame) {
  std::vector<Frame> samples(untilFrame - frames);
  source->read(samples.data(), samples.size());
  frames = untilFrame;
  sink.packet(current.streamRate, samples.data(), samples.size());
}

}  // namespace simulator
