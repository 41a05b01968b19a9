#pragma once

#include <optional>

#include "audio/playing.h"
#include "audio/sample_source.h"

namespace simulator {

/// Receives the packets, in order.
class PacketSink {
 public:
  virtual ~PacketSink() = default;
  virtual void packet(uint32_t rate, const Frame* frames, size_t count) = 0;
  /// Packets that should be here were not made.
  virtual void missed(uint64_t packets) = 0;
};

/// Makes packets of a millisecond out of what plays, each when its time is over. The packet at the
/// end of a stretch is shorter. It has no thread and no clock.
class PacketClock {
 public:
  /// A user that is later than this misses packets.
  static constexpr std::chrono::seconds kLatest{2};

  explicit PacketClock(PacketSink& receiver) : sink(receiver) {}

  /// Continues with what plays from `playing.at` on, or from the end of the last packet on if that
  /// is later.
  void follow(const Playing& playing);
  /// Ends at once.
  void stop();
  void advance(Moment now);
  /// Returns when the next packet is due, if ever.
  std::optional<Moment> next() const;

 private:
  void begin(const Playing& playing);
  void skipUntil(Moment now);
  void finish(Moment end);
  uint64_t framesUntil(Moment moment) const;
  Moment endOf(uint64_t packet) const;
  void send(uint64_t untilFrame);

  PacketSink& sink;
  Playing current;
  std::unique_ptr<SampleSource> source;  ///< while something is heard
  uint64_t packets = 0;                  ///< of this stretch, sent or missed
  uint64_t frames = 0;
};

}  // namespace simulator
