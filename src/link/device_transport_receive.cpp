// The receiving half of DeviceTransport: frames are cut out of the byte stream.

#include <cstring>

#include "base/debug_print.h"
#include "link/device_transport.h"

namespace ipodctl {

int DeviceTransport::readFrame(uint8_t* dest, int capacity, uint8_t*& payloadOut) {
  payloadOut = nullptr;
  if (capacity < 1 || dest == nullptr) return -1;
  FrameScan scan;
  while (mayRead()) {
    if (rxCount == 0) {
      if (!readMore()) return -1;
      continue;
    }
    if (!findStart(scan)) {
      rxCount = 0;
      continue;
    }
    Frame frame{};
    if (locateFrame(scan.index, frame)) return takeFrame(frame, dest, capacity, payloadOut);
    if (rxCount == kReceiveCapacity) {
      // Only noise before the frame can have filled the area: it is larger than every frame.
      dropReceived(scan.index);
      scan.index = 0;
    }
    if (!readMore()) return -1;
  }
  return -1;
}

bool DeviceTransport::mayRead() const { return readDataActive && isOpen(); }

/// Appends what the device delivers to the received bytes; false when the device has failed. A
/// device that reports more bytes than it was asked for has failed, too.
bool DeviceTransport::readMore() {
  const uint32_t room = kReceiveCapacity - rxCount;
  const int received = readDevice(deviceHandle.load(), rxArea + rxCount, room);
  if (received < 0 || static_cast<uint32_t>(received) > room) return false;
  rxCount += static_cast<uint32_t>(received);
  return true;
}

/// Reads the length behind the start byte; false while the frame is not there to its checksum.
bool DeviceTransport::locateFrame(uint32_t start, Frame& frame) const {
  const uint32_t lengthField = start + kStartSize;
  if (rxCount < lengthField + kShortLengthSize) return false;
  frame = {start, lengthField + kShortLengthSize, rxArea[lengthField]};
  if (frame.length == kLongFormMarker) {
    if (rxCount < lengthField + kLongLengthSize) return false;
    uint16_t longLength = 0;
    LingoMessage::getUint16(rxArea + lengthField + 1, longLength);
    frame = {start, lengthField + kLongLengthSize, longLength};
  }
  return rxCount >= frame.payload + frame.length + kChecksumSize;
}

/// Checks a frame that is there as a whole, copies its payload and drops it from the received
/// bytes. The checksum test and the drop both reckon with a one-byte length: of a frame in the long
/// form the last two bytes are not looked at and stay behind as noise, so that it fails the test
/// unless the bytes before happen to add up.
int DeviceTransport::takeFrame(const Frame& frame, uint8_t* dest, int capacity,
                               uint8_t*& payloadOut) {
  const uint32_t checked = kShortLengthSize + frame.length + kChecksumSize;
  const bool good = checkChecksum(rxArea + frame.start + kStartSize, static_cast<int>(checked));
  const bool fits = frame.length <= static_cast<uint32_t>(capacity);
  if (!good) debugPrint("checksum Error\n");
  if (good && fits) {
    std::memcpy(dest, rxArea + frame.payload, frame.length);
    payloadOut = dest;
  }
  dropReceived(frame.start + kStartSize + checked);
  return payloadOut != nullptr ? static_cast<int>(frame.length) : 0;
}

/// Drops the first `count` received bytes; the rest move to the front.
void DeviceTransport::dropReceived(uint32_t count) {
  rxCount -= count;
  std::memmove(rxArea, rxArea + count, rxCount);
}

}  // namespace ipodctl
