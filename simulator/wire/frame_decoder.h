#pragma once

#include <functional>

#include "simulated_time.h"
#include "wire/frame.h"

namespace simulator {

/// An iPod drops a packet with a longer pause in it.
constexpr Time kUsualPacketGap = milliseconds(25);

/// Splits the bytes of the accessory into payloads, as an iPod does. It skips what is not a packet,
/// drops a packet with a wrong checksum without an answer, and drops an incomplete packet when the
/// next byte arrives later than the gap allows.
class FrameDecoder {
 public:
  struct Counters {
    size_t packets = 0;
    size_t badChecksums = 0;
    size_t skippedBytes = 0;  ///< outside any packet
    size_t abandoned = 0;     ///< packets dropped because of a gap
  };

  /// The reason why bytes are not a packet.
  enum class Waste {
    kNoise,        ///< outside any packet
    kBadChecksum,  ///< a whole packet
    kUnfinished,   ///< an incomplete packet that was dropped
  };
  /// Receives the bytes as they arrived; they are valid during the call.
  using WasteHook = std::function<void(Waste, ByteView bytes)>;

  explicit FrameDecoder(FrameKind frames, Time longestGap = kUsualPacketGap)
      : kind(frames), gap(longestGap) {}

  /// Decodes bytes that arrived at `now`, and calls `onPayload` with each correct payload. The
  /// payload is valid during that call.
  void push(Time now, ByteView bytes, const std::function<void(ByteView payload)>& onPayload);
  /// Sets a function that is called with what is not a packet, in the order of the bytes. Noise is
  /// reported as far as it arrived together.
  void setWasteHook(WasteHook hook) { onWaste = std::move(hook); }
  /// Forgets a packet that has begun.
  void reset();
  const Counters& counters() const { return tally; }

 private:
  enum class State { kHunt, kSynced, kLength, kLengthHigh, kLengthLow, kPayload, kChecksum };

  void giveUpAfterGap(Time now);
  void giveUp();
  void clear();
  void hunt(uint8_t byte);
  void afterSync(uint8_t byte);
  void beginPacket();
  void takeLength(uint8_t byte);
  void beginPayload();
  void takePayload(uint8_t byte);
  void takeChecksum(uint8_t byte, const std::function<void(ByteView)>& onPayload);
  static void reuse(Bytes& old, Bytes& next);
  void skip(uint8_t byte);
  void reportNoise();
  void report(Waste waste, ByteView bytes) const;
  void take(uint8_t byte, const std::function<void(ByteView)>& onPayload);

  FrameKind kind;
  Time gap;
  State state = State::kHunt;
  size_t length = 0;
  unsigned sum = 0;
  Bytes payload;
  Bytes packet;  ///< as it arrived so far, a sync byte included
  Bytes noise;
  WasteHook onWaste;
  Time lastByte{0};
  Counters tally;
};

}  // namespace simulator
