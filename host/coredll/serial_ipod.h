// The stream driver of an iPod on a serial line.
#pragma once

#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "stream_device.h"
#include "sync_bytes.h"

namespace coredll {

/// The program reads and writes frames without a sync byte; on the line each has one.
class SerialIpod final : public StreamDevice {
 public:
  SerialIpod(std::string openedName, WireDescriptor line, Descriptor wakeSignal)
      : StreamDevice(std::move(openedName), std::move(line), std::move(wakeSignal)) {}

  DWORD read(BYTE* buffer, DWORD count, DWORD& read) override;
  DWORD write(const BYTE* bytes, DWORD count, DWORD& written) override;

 private:
  DWORD receive();
  DWORD take(BYTE* buffer, DWORD count);

  std::mutex readTurn;
  SyncBytesRemoved removed;    ///< guarded by readTurn
  std::vector<BYTE> received;  ///< guarded by readTurn, like the number of bytes that were taken
  std::size_t taken = 0;
  std::mutex addTurn;
  SyncBytesAdded added;  ///< guarded by addTurn
};

}  // namespace coredll
