#include "link/device_transport.h"

#include <cstring>

#include "base/debug_print.h"
#include "base/os_primitives.h"
#include "link/frame_checksum.h"

namespace ipodctl {
namespace {

/// A sender waits for the previous one as long as a command waits for its reply.
constexpr uint32_t kSenderWaitSeconds = 1;

}  // namespace

DeviceTransport::DeviceTransport(FrameKind frameKind) : kind(frameKind), frames(frameKind) {
  readerLocks.add(handleGuard);
  DeviceTransport::prepare();
}

bool DeviceTransport::prepare() {
  return handleGuard.ensure() && txGuard.ensure() && Transport::prepare();
}

bool DeviceTransport::open(const char* name) {
  close();
  // Await the reader first: while it ends, it can hold a lock that prepare() waits for.
  if (!awaitReader() || !prepare()) return false;
  const char* text = name != nullptr ? name : "";
  if (!deviceName.assign(text, static_cast<uint32_t>(std::strlen(text)))) return false;
  HANDLE opened = nullptr;
  if (openDevice(opened, deviceName.text()) != 0) return false;
  frames.clear();  // part of a frame from a lost link does not belong to the new stream
  // The failed reader of another link can close this one: not between its look and its change.
  const SemaphoreHold hold(handleGuard);
  deviceHandle = opened;
  return true;
}

bool DeviceTransport::close() {
  HANDLE opened = nullptr;
  {
    const SemaphoreHold hold(handleGuard);
    opened = deviceHandle.get();
    deviceHandle = nullptr;
  }
  if (opened != nullptr) {
    CloseHandle(opened);
    debugPrint("%s", closedText());
  }
  stopReadData();
  return true;
}

bool DeviceTransport::isOpen() const { return deviceHandle.get() != nullptr; }

inline bool DeviceTransport::mayRead() const {
  return readDataActive && deviceHandle.get() != nullptr;
}

int DeviceTransport::readFrame(uint8_t* dest, int capacity, uint8_t*& payloadOut) {
  payloadOut = nullptr;
  if (capacity < 1 || dest == nullptr) return -1;
  frames.beginFrame();
  while (mayRead()) {
    uint32_t length = 0;
    switch (frames.next(dest, static_cast<uint32_t>(capacity), length)) {
      case FrameOutcome::kNeedsMore:
        if (!readMore()) return -1;
        break;
      case FrameOutcome::kFrame:
        payloadOut = dest;
        return static_cast<int>(length);
      case FrameOutcome::kBadChecksum:
        debugPrint("checksum Error\n");
        return 0;
      case FrameOutcome::kTooLarge:
        return 0;
    }
  }
  return -1;
}

/// Appends what the device delivers to the received bytes. Returns false when the device has
/// failed; a device that reports more bytes than it was asked for has failed, too.
bool DeviceTransport::readMore() {
  const uint32_t room = frames.freeSize();
  const int received = readDevice(deviceHandle.get(), frames.freeArea(), room);
  if (received < 0 || static_cast<uint32_t>(received) > room) return false;
  frames.add(static_cast<uint32_t>(received));
  return true;
}

bool DeviceTransport::sendSyncByte() {
  if (!txGuard.take(0, kSenderWaitSeconds)) return false;
  const bool sent = writeData(&kSyncByte, kSyncSize);
  txGuard.give();
  return sent;
}

bool DeviceTransport::sendMessage(const LingoMessage& message) {
  if (!txGuard.take(0, kSenderWaitSeconds)) return false;
  const bool sent = writeData(txFrame, frameMessage(message));
  txGuard.give();
  return sent;
}

bool DeviceTransport::writeData(const uint8_t* bytes, uint32_t count) {
  if (isDebugging()) debugPrint("%s", writingText());
  return deviceWrite(deviceHandle.get(), bytes, count) == static_cast<int>(count);
}

/// Builds the frame in txFrame. Returns its size, or 0 when the message does not encode.
uint32_t DeviceTransport::frameMessage(const LingoMessage& message) {
  const uint32_t syncSize = kind == FrameKind::kWithSyncByte ? kSyncSize : 0;
  txFrame[0] = kSyncByte;
  uint8_t* body = txFrame + syncSize;
  const uint16_t bodySize = message.encode(body, kBodyCapacity);
  if (bodySize == 0) return 0;
  const uint8_t checksum = frameChecksum(body + kStartSize, bodySize - 1);
  body[bodySize] = checksum;
  if (isDebugging()) debugPrint("\n======>Checksum = 0x%x\n", checksum);
  return syncSize + bodySize + kChecksumSize;
}

HANDLE openDeviceFile(const char* name) {
  const auto length = static_cast<uint32_t>(std::strlen(name));
  TextString<WCHAR> wideName;
  if (!wideName.resize(length)) return INVALID_HANDLE_VALUE;
  for (uint32_t i = 0; i < length; ++i)
    wideName[i] = static_cast<uint8_t>(name[i]);
  return CreateFileW(wideName.text(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                     nullptr);
}

}  // namespace ipodctl
