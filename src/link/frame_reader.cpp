#include "link/frame_reader.h"

#include <cstring>

#include "link/frame_checksum.h"

namespace ipodctl {
namespace {

struct Frame {
  uint32_t payload = 0;  ///< the lingo byte's distance from the start byte
  uint32_t length = 0;   ///< of the payload

  uint32_t size() const { return payload + length + kChecksumSize; }
};

/// Reads the length after the start byte. Returns false until it has arrived.
bool readLength(const uint8_t* start, uint32_t arrived, Frame& frame) {
  if (arrived < kStartSize + kShortLengthSize) return false;
  frame = {kStartSize + kShortLengthSize, start[kStartSize]};
  if (frame.length != kLongFormMarker) return true;
  if (arrived < kStartSize + kLongLengthSize) return false;
  const uint8_t* longLength = start + kStartSize + 1;
  frame = {kStartSize + kLongLengthSize, static_cast<uint32_t>(longLength[0]) << 8 | longLength[1]};
  return true;
}

/// Returns the number of bytes after the start byte that are checked and then dropped. It reckons
/// with a length of one byte. Of a frame in the long form the last two bytes are therefore not
/// checked and stay in the area as noise, and the frame fails unless its other bytes happen to sum
/// to 0.
uint32_t checkedSize(const Frame& frame) { return kShortLengthSize + frame.length + kChecksumSize; }

/// Checks a whole frame and copies its payload.
FrameOutcome copyPayload(const uint8_t* start, const Frame& frame, uint8_t* dest,
                         uint32_t capacity) {
  const auto checked = static_cast<int>(checkedSize(frame));
  if (!endsWithChecksum(start + kStartSize, checked)) return FrameOutcome::kBadChecksum;
  if (frame.length > capacity) return FrameOutcome::kTooLarge;
  std::memcpy(dest, start + frame.payload, frame.length);
  return FrameOutcome::kFrame;
}

}  // namespace

void FrameReader::clear() {
  received = rxArea;
  rxCount = 0;
}

/// Finds a start byte directly after a sync byte. The byte after a lone sync byte is tested again,
/// because it may be a sync byte itself.
///
/// If the sync byte was the last byte received, received[index] is stale. A stale start byte counts
/// as found, and readLength waits for the real one.
///
/// If there is no start byte, the index stays at the end of the bytes. That many bytes of the next
/// data are skipped.
inline bool FrameReader::findSyncAndStartByte() {
  while (scan.index < rxCount) {
    if (!scan.syncSeen && received[scan.index] == kSyncByte) {
      scan.syncSeen = true;
      ++scan.index;
    }
    if (!scan.syncSeen) {
      ++scan.index;
      continue;
    }
    if (scan.index < kReceiveCapacity && received[scan.index] == kStartByte) return true;
    scan.syncSeen = false;
  }
  return false;
}

/// Finds the first start byte. Everything before it, sync bytes included, is noise.
inline bool FrameReader::findStartByte() {
  while (scan.index < rxCount) {
    if (received[scan.index] == kStartByte) return true;
    ++scan.index;
  }
  scan.index = 0;
  return false;
}

inline bool FrameReader::findStart() {
  return kind == FrameKind::kWithSyncByte ? findSyncAndStartByte() : findStartByte();
}

FrameOutcome FrameReader::search(uint8_t* dest, uint32_t capacity, uint32_t& length) {
  if (findStart()) return takeFrame(dest, capacity, length);
  clear();  // all of it is noise
  return FrameOutcome::kNeedsMore;
}

/// Takes the frame that begins at the index, if it has arrived as a whole.
FrameOutcome FrameReader::takeFrame(uint8_t* dest, uint32_t capacity, uint32_t& length) {
  const uint8_t* start = received + scan.index;
  const uint32_t arrived = rxCount - scan.index;
  Frame frame;
  if (!readLength(start, arrived, frame)) return waitFor(0);
  if (arrived < frame.size()) return waitFor(scan.index + frame.size());
  const FrameOutcome outcome = copyPayload(start, frame, dest, capacity);
  if (outcome == FrameOutcome::kFrame) length = frame.length;
  dropReceived(scan.index + kStartSize + checkedSize(frame));
  return outcome;
}

/// Waits until `count` bytes have arrived, or until the area is full. A full area has noise before
/// the frame, because it is larger than every frame; the noise is dropped.
FrameOutcome FrameReader::waitFor(uint32_t count) {
  scan.enough = count < kReceiveCapacity ? count : kReceiveCapacity;
  if (rxCount == kReceiveCapacity) {
    dropReceived(scan.index);
    scan.index = 0;
    scan.enough = 0;
  }
  return FrameOutcome::kNeedsMore;
}

/// Drops the first `count` received bytes. The rest stay where they are until the next read: to
/// move them for each frame would cost the square of a large read. The search for a sync byte
/// reads the stale byte after the received ones, though, and that byte depends on each move.
void FrameReader::dropReceived(uint32_t count) {
  received += count;
  rxCount -= count;
  if (kind == FrameKind::kWithSyncByte) moveToFront();
}

void FrameReader::moveToFront() {
  std::memmove(rxArea, received, rxCount);
  received = rxArea;
}

}  // namespace ipodctl
