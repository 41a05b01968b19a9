#include "serial_ipod.h"

#include <algorithm>

namespace coredll {

DWORD SerialIpod::read(BYTE* buffer, DWORD count, DWORD& read) {
  const std::lock_guard turn(readTurn);
  while (taken == received.size()) {
    received.clear();
    taken = 0;
    if (const DWORD error = receive()) return error;
  }
  read = take(buffer, count);
  return ERROR_SUCCESS;
}

/// Waits for bytes of the line. All of them may be a sync byte.
DWORD SerialIpod::receive() {
  constexpr DWORD kMost = 4096;
  BYTE some[kMost];
  DWORD count = 0;
  const DWORD error = StreamDevice::read(some, kMost, count);
  if (error == ERROR_GEN_FAILURE && removed.appendKept(received)) return ERROR_SUCCESS;
  removed.append(some, count, received);
  return error;
}

DWORD SerialIpod::take(BYTE* buffer, DWORD count) {
  const std::size_t some = std::min<std::size_t>(count, received.size() - taken);
  std::copy_n(received.begin() + static_cast<std::ptrdiff_t>(taken), some, buffer);
  taken += some;
  return static_cast<DWORD>(some);
}

DWORD SerialIpod::write(const BYTE* bytes, DWORD count, DWORD& written) {
  const std::lock_guard turn(addTurn);
  const std::vector<BYTE> line = added.with(bytes, count);
  DWORD onLine = 0;
  const DWORD error = StreamDevice::write(line.data(), static_cast<DWORD>(line.size()), onLine);
  // After a failure the sync bytes among the written ones are not known any more: at most as many
  // bytes of the program were written as on the line.
  written = std::min(error == ERROR_SUCCESS ? count : onLine, count);
  return error;
}

}  // namespace coredll
