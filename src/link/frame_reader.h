#pragma once

#include <cstdint>

#include "lingo/frame_format.h"

namespace ipodctl {

/// The largest number of raw received bytes that a link holds: room for every frame and much noise.
constexpr uint32_t kReceiveCapacity = 200000;

/// How a frame begins on a link.
enum class FrameKind {
  kWithSyncByte,     ///< serial: FF 55
  kWithoutSyncByte,  ///< USB: 55
};

/// What the received bytes hold next.
enum class FrameOutcome {
  kNeedsMore,    ///< no whole frame yet
  kFrame,        ///< a good frame; its payload is copied
  kBadChecksum,  ///< a frame that fails its check; it is dropped
  kTooLarge,     ///< a good frame whose payload does not fit the destination; it is dropped
};

/// Cuts frames out of received bytes. It owns the bytes and the place of the scan in them, and
/// knows no device and no thread.
///
/// The owner calls beginFrame, then next. While next needs more, the owner reads bytes into
/// freeArea, reports them with add, and calls next again.
class FrameReader {
 public:
  explicit FrameReader(FrameKind frameKind) : kind(frameKind) {}

  /// Drops all received bytes.
  void clear() { rxCount = 0; }

  /// Returns where the next received bytes belong. There is room for freeSize() of them, at
  /// least 1.
  uint8_t* freeArea() { return rxArea + rxCount; }
  uint32_t freeSize() const { return kReceiveCapacity - rxCount; }

  /// Appends `count` bytes, at most freeSize(), that were written to freeArea().
  void add(uint32_t count) { rxCount += count; }

  /// Starts the scan for a frame at the first received byte.
  void beginFrame() { scan = Scan{}; }

  /// Continues the scan. Copies the payload of a good frame to `dest` and sets `length`; both stay
  /// as they are with every other outcome.
  FrameOutcome next(uint8_t* dest, uint32_t capacity, uint32_t& length);

 private:
  struct Scan {
    uint32_t index = 0;
    bool syncSeen = false;  ///< the byte before `index` is a sync byte
  };

  struct Frame {
    uint32_t start;    ///< index of the start byte
    uint32_t payload;  ///< index of the lingo byte
    uint32_t length;   ///< of the payload
  };

  bool findSyncAndStartByte();
  bool findStartByte();
  bool locateFrame(uint32_t start, Frame& frame) const;
  FrameOutcome takeFrame(const Frame& frame, uint8_t* dest, uint32_t capacity, uint32_t& length);
  void makeRoom();
  void dropReceived(uint32_t count);

  const FrameKind kind;
  Scan scan;
  uint32_t rxCount = 0;                   ///< valid bytes in rxArea
  uint8_t rxArea[kReceiveCapacity] = {};  ///< beyond rxCount: stale bytes of earlier frames
};

}  // namespace ipodctl
