#include "link/frame_reader.h"

#include <cstring>

#include "link/frame_checksum.h"

namespace ipodctl {

FrameOutcome FrameReader::next(uint8_t* dest, uint32_t capacity, uint32_t& length) {
  if (rxCount == 0) return FrameOutcome::kNeedsMore;
  const bool found = kind == FrameKind::kWithSyncByte ? findSyncAndStartByte() : findStartByte();
  if (!found) {
    rxCount = 0;  // all of it is noise
    return FrameOutcome::kNeedsMore;
  }
  Frame frame{};
  if (locateFrame(scan.index, frame)) return takeFrame(frame, dest, capacity, length);
  makeRoom();
  return FrameOutcome::kNeedsMore;
}

/// Finds a start byte directly after a sync byte. The byte after a lone sync byte is tested again,
/// because it may be a sync byte itself.
///
/// If the sync byte was the last byte received, rxArea[index] is stale. A stale start byte counts
/// as found, and locateFrame waits for the real one.
///
/// If there is no start byte, the index stays at the end of the bytes. That many bytes of the next
/// data are skipped.
bool FrameReader::findSyncAndStartByte() {
  while (scan.index < rxCount) {
    if (!scan.syncSeen && rxArea[scan.index] == kSyncByte) {
      scan.syncSeen = true;
      ++scan.index;
    }
    if (!scan.syncSeen) {
      ++scan.index;
      continue;
    }
    if (scan.index < kReceiveCapacity && rxArea[scan.index] == kStartByte) return true;
    scan.syncSeen = false;
  }
  return false;
}

/// Finds the first start byte. Everything before it, sync bytes included, is noise.
bool FrameReader::findStartByte() {
  while (scan.index < rxCount) {
    if (rxArea[scan.index] == kStartByte) return true;
    ++scan.index;
  }
  scan.index = 0;
  return false;
}

/// Reads the length after the start byte. Returns false until the whole frame has arrived,
/// including its checksum.
bool FrameReader::locateFrame(uint32_t start, Frame& frame) const {
  const uint32_t lengthField = start + kStartSize;
  if (rxCount < lengthField + kShortLengthSize) return false;
  frame = {start, lengthField + kShortLengthSize, rxArea[lengthField]};
  if (frame.length == kLongFormMarker) {
    if (rxCount < lengthField + kLongLengthSize) return false;
    const uint8_t* longLength = rxArea + lengthField + 1;
    frame = {start, lengthField + kLongLengthSize,
             static_cast<uint32_t>(longLength[0]) << 8 | longLength[1]};
  }
  return rxCount >= frame.payload + frame.length + kChecksumSize;
}

/// Checks a whole frame, copies its payload and drops it from the received bytes. The check and the
/// drop both assume a one-byte length. Of a frame in the long form the last two bytes are therefore
/// not checked and stay in the area as noise, and the frame fails unless its other bytes happen to
/// sum to 0.
FrameOutcome FrameReader::takeFrame(const Frame& frame, uint8_t* dest, uint32_t capacity,
                                    uint32_t& length) {
  const uint32_t checked = kShortLengthSize + frame.length + kChecksumSize;
  FrameOutcome outcome = FrameOutcome::kFrame;
  if (!endsWithChecksum(rxArea + frame.start + kStartSize, static_cast<int>(checked))) {
    outcome = FrameOutcome::kBadChecksum;
  } else if (frame.length > capacity) {
    outcome = FrameOutcome::kTooLarge;
  } else {
    std::memcpy(dest, rxArea + frame.payload, frame.length);
    length = frame.length;
  }
  dropReceived(frame.start + kStartSize + checked);
  return outcome;
}

/// Drops the noise before an incomplete frame if it fills the area. There is noise then, because
/// the area is larger than every frame.
void FrameReader::makeRoom() {
  if (rxCount < kReceiveCapacity) return;
  dropReceived(scan.index);
  scan.index = 0;
}

/// Drops the first `count` received bytes; the rest move to the front.
void FrameReader::dropReceived(uint32_t count) {
  rxCount -= count;
  std::memmove(rxArea, rxArea + count, rxCount);
}

}  // namespace ipodctl
