// The platform's device calls as tests use them.
#ifndef TESTS_HOST_DEVICE_CALLS_H
#define TESTS_HOST_DEVICE_CALLS_H

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <ostream>
#include <utility>

#include "support/pty_pair.h"

namespace host_test {

// Closes its handle.
class OwnedHandle {
 public:
  explicit OwnedHandle(HANDLE owned) : handle(owned) {}
  OwnedHandle(OwnedHandle&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
  OwnedHandle& operator=(OwnedHandle&& other) noexcept {
    std::swap(handle, other.handle);
    return *this;
  }
  ~OwnedHandle() {
    if (isOpen()) CloseHandle(handle);
  }

  bool isOpen() const { return handle != nullptr && handle != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle; }
  BOOL close() { return CloseHandle(std::exchange(handle, nullptr)); }

 private:
  HANDLE handle;
};

inline HANDLE openDevice(LPCWSTR name) {
  return CreateFileW(name, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

// The result of a read or a write.
struct Transfer {
  BOOL result;
  DWORD error;  // of a failure, else 0
  Bytes bytes;  // what was read or written

  friend bool operator==(const Transfer& a, const Transfer& b) {
    return a.result == b.result && a.error == b.error && a.bytes == b.bytes;
  }
  friend void PrintTo(const Transfer& transfer, std::ostream* out) {
    *out << (transfer.result ? "TRUE" : "FALSE") << ", error " << transfer.error << ", "
         << transfer.bytes.size() << " bytes";
    constexpr std::size_t kShown = 16;
    for (std::size_t i = 0; i < std::min(transfer.bytes.size(), kShown); ++i) {
      *out << ' ' << unsigned{transfer.bytes[i]};
    }
  }
};

inline Transfer success(Bytes bytes) { return {TRUE, 0, std::move(bytes)}; }
inline Transfer failure(DWORD error) { return {FALSE, error, {}}; }

inline Transfer readDevice(HANDLE device, DWORD count) {
  Bytes bytes(count);
  DWORD read = MAXDWORD;
  const BOOL result = ReadFile(device, bytes.data(), count, &read, nullptr);
  bytes.resize(read);
  return {result, result ? 0 : GetLastError(), std::move(bytes)};
}

inline Transfer writeDevice(HANDLE device, Bytes bytes) {
  DWORD written = MAXDWORD;
  const BOOL result =
      WriteFile(device, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  bytes.resize(written);
  return {result, result ? 0 : GetLastError(), std::move(bytes)};
}

}  // namespace host_test

#endif
