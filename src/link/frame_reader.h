#pragma once

#include <cstdint>
#include <cstring>

#include "lingo/frame_format.h"
#include "link/frame_checksum.h"

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
  void clear();

  /// Returns where the next received bytes belong. There is room for freeSize() of them, at
  /// least 1.
  uint8_t* freeArea() {
    if (received != rxArea) moveToFront();
    return rxArea + rxCount;
  }
  uint32_t freeSize() const { return kReceiveCapacity - rxCount; }

  /// Appends `count` bytes, at most freeSize(), that were written to freeArea().
  void add(uint32_t count) { rxCount += count; }

  /// Starts the scan for a frame at the first received byte.
  void beginFrame() { scan = Scan{}; }

  /// Continues the scan. Copies the payload of a good frame to `dest` and sets `length`; both stay
  /// as they are with every other outcome.
  FrameOutcome next(uint8_t* dest, uint32_t capacity, uint32_t& length) {
    if (rxCount < scan.enough) return FrameOutcome::kNeedsMore;
    return startsWithShortFrame() ? nextShortFrame(dest, capacity, length)
                                  : search(dest, capacity, length);
  }

 private:
  struct Scan {
    uint32_t index = 0;
    bool syncSeen = false;  ///< the byte before `index` is a sync byte
    uint32_t enough = 0;    ///< fewer received bytes are not yet worth a look
  };

  bool startsWithShortFrame() const;
  FrameOutcome nextShortFrame(uint8_t* dest, uint32_t capacity, uint32_t& length);
  FrameOutcome search(uint8_t* dest, uint32_t capacity, uint32_t& length);
  FrameOutcome takeFrame(uint8_t* dest, uint32_t capacity, uint32_t& length);
  bool findStart();
  bool findSyncAndStartByte();
  bool findStartByte();
  FrameOutcome waitFor(uint32_t count);
  void dropReceived(uint32_t count);
  void moveToFront();

  const FrameKind kind;
  Scan scan;
  uint8_t* received = rxArea;             ///< the first valid byte in rxArea
  uint32_t rxCount = 0;                   ///< the number of valid bytes
  uint8_t rxArea[kReceiveCapacity] = {};  ///< beyond the valid bytes: stale ones of earlier frames
};

/// True for nearly all frames of a link without sync bytes. search would find such a frame, too,
/// with a third more instructions.
inline bool FrameReader::startsWithShortFrame() const {
  return kind == FrameKind::kWithoutSyncByte && rxCount >= kStartSize + kShortLengthSize &&
         received[0] == kStartByte && received[kStartSize] != kLongFormMarker;
}

/// Does what search does, for bytes that start with a short frame.
inline FrameOutcome FrameReader::nextShortFrame(uint8_t* dest, uint32_t capacity,
                                                uint32_t& length) {
  constexpr uint32_t kHeaderSize = kStartSize + kShortLengthSize;
  const uint32_t payloadSize = received[kStartSize];
  const uint32_t frameSize = kHeaderSize + payloadSize + kChecksumSize;
  if (frameSize > rxCount) return FrameOutcome::kNeedsMore;
  const auto checked = static_cast<int>(frameSize - kStartSize);
  if (payloadSize > capacity || frameChecksum(received + kStartSize, checked) != 0) {
    return search(dest, capacity, length);
  }
  std::memcpy(dest, received + kHeaderSize, payloadSize);
  length = payloadSize;
  received += frameSize;
  rxCount -= frameSize;
  return FrameOutcome::kFrame;
}

}  // namespace ipodctl
