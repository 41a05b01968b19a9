#pragma once

#include <windows.h>

#include <cstdint>

#include "base/semaphore.h"
#include "base/shared_value.h"
#include "base/text_string.h"
#include "link/frame_reader.h"
#include "link/transport.h"

namespace ipodctl {

/// A transport over a device that CreateFileW opens: what the serial and the USB kind share. A kind
/// defines how its device opens and reads, and how a frame begins.
class DeviceTransport : public Transport {
 public:
  bool open(const char* deviceName) final;
  bool close() final;
  int readFrame(uint8_t* dest, int capacity, uint8_t*& payloadOut) final;
  bool isOpen() const final;
  bool sendSyncByte() final;
  bool sendMessage(const LingoMessage& message) final;
  bool writeData(const uint8_t* bytes, uint32_t count) final;

 protected:
  explicit DeviceTransport(FrameKind frameKind);
  ~DeviceTransport() override = default;

  bool prepare() final;

  /// Returns 0 and sets the handle, or returns -1.
  virtual int openDevice(HANDLE& handleOut, const char* name) = 0;

  /// Returns the number of bytes read; negative when the device has failed.
  virtual int readDevice(HANDLE device, uint8_t* buffer, uint32_t maximum) = 0;

  // What is logged while the debug flag is set.
  virtual const char* closedText() const = 0;
  virtual const char* writingText() const = 0;

 private:
  uint32_t frameMessage(const LingoMessage& message) IPODCTL_REQUIRES(txGuard);

  bool mayRead() const;
  bool readMore();

  const FrameKind kind;
  TextString<char> deviceName;
  SharedValue<HANDLE> deviceHandle{nullptr};  ///< null while closed
  Semaphore txGuard;                          ///< also held while the frame is written
  Semaphore handleGuard;                      ///< held to close a handle exactly once

  /// The outgoing frame: sync byte, body, checksum.
  uint8_t txFrame[kSyncSize + kLargestBody + kChecksumSize] IPODCTL_GUARDED_BY(txGuard) = {};

  FrameReader frames;  ///< reader thread only, and open before there is one
};

/// Opens a device by its 8-bit name for reading and writing, unshared. Returns INVALID_HANDLE_VALUE
/// when that fails.
HANDLE openDeviceFile(const char* name);

}  // namespace ipodctl
