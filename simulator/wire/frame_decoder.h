#pragma once

#include <functional>

#include "simulated_time.h"
#include "wire/frame.h"

namespace simulator {

/// A pause longer than this inside a packet makes an iPod give the packet up.
constexpr Time kUsualPacketGap = milliseconds(25);

/// Cuts the bytes of the accessory into payloads, as an iPod does: what is no packet is skipped, a
/// packet with a wrong checksum is dropped whole and in silence, and a packet that stops halfway is
/// given up when the next byte comes later than the gap allows.
class FrameDecoder {
 public:
  struct Counters {
    size_t packets = 0;
    size_t badChecksums = 0;
    size_t skippedBytes = 0;  ///< outside any packet
    size_t abandoned = 0;     ///< packets given up because of a gap
  };

  /// Why bytes are no packet.
  enum class Waste {
    kNoise,        ///< outside any packet
    kBadChecksum,  ///< a whole packet
    kUnfinished,   ///< a packet that was given up
  };
  /// The bytes as they arrived, valid during the call.
  using WasteHook = std::function<void(Waste, ByteView bytes)>;

  explicit FrameDecoder(FrameKind frames, Time longestGap = kUsualPacketGap)
      : kind(frames), gap(longestGap) {}

  /// Takes bytes that arrived at `now` and gives each good payload to `onPayload`; the payload is
  /// valid during that call.
  void push(Time now, ByteView bytes, const std::function<void(ByteView payload)>& onPayload);
  /// Called in the order of the bytes with what is no packet. Noise is reported as far as it
  /// arrived together.
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
