#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

#include "base/text_string.h"
#include "link/transport.h"

namespace ipodctl {

/// Where readFrame stands in the received bytes.
struct FrameScan {
  uint32_t index = 0;
  bool syncSeen = false;  ///< serial: the byte before `index` is a sync byte
};

/// A transport over a device that CreateFileW opens: what the serial and the USB kind do alike. The
/// kinds say how the device opens and reads, and how a frame begins.
class DeviceTransport : public Transport {
 public:
  bool open(const char* deviceName) final;
  bool close() final;
  int readFrame(uint8_t* dest, int capacity, uint8_t*& payloadOut) final;
  bool isOpen() const final;
  bool sendSyncByte() final;
  bool sendMessage(const LingoMessage& message) final;
  bool writeData(const uint8_t* bytes, uint32_t count) final;
  void freeGuards() final;

 protected:
  DeviceTransport();
  ~DeviceTransport() override;

  bool prepare() final;

  /// 0 and a handle, or -1.
  virtual int openDevice(HANDLE& handleOut, const char* name) = 0;

  /// Bytes read, negative when the device has failed.
  virtual int readDevice(HANDLE device, uint8_t* buffer, uint32_t maximum) = 0;

  /// Moves the scan to the next start byte; false when there is none, and all bytes are then noise.
  virtual bool findStart(FrameScan& scan) = 0;

  /// The number of sync bytes before a frame's body, 0 or 1.
  virtual uint32_t syncSize() const = 0;

  // What the console is told while the debug flag is set.
  virtual const char* closedText() const = 0;
  virtual const char* writingText() const = 0;

 private:
  struct Frame {
    uint32_t start;    ///< index of the start byte
    uint32_t payload;  ///< index of the lingo byte
    uint32_t length;   ///< of the payload
  };

  uint32_t frameMessage(const LingoMessage& message);

  bool mayRead() const;
  bool readMore();
  bool locateFrame(uint32_t start, Frame& frame) const;
  int takeFrame(const Frame& frame, uint8_t* dest, int capacity, uint8_t*& payloadOut);
  void dropReceived(uint32_t count);

  TextString<char> deviceName;
  std::atomic<HANDLE> deviceHandle{nullptr};  ///< null while closed
  HANDLE handleGuard = nullptr;               ///< held to close a handle exactly once
  HANDLE txGuard = nullptr;                   ///< guards txFrame and the order of writes
};

/// Opens a device by its 8-bit name for reading and writing, unshared. INVALID_HANDLE_VALUE when
/// that fails.
HANDLE openDeviceFile(const char* name);

}  // namespace ipodctl
