// An open device: a terminal, and a signal that ends every call that waits for it.
#pragma once

#include <windows.h>

#include <atomic>
#include <mutex>
#include <shared_mutex>

#include "clock.h"
#include "descriptor.h"
#include "kernel_object.h"

namespace coredll {

/// When a read or a write is complete.
struct TransferPlan {
  DWORD enough;        ///< bytes; 0: as many as can be moved at once
  TimeLimit total;     ///< from the start of the transfer
  TimeLimit interval;  ///< from each byte to the next
};

/// Results are error codes of windows.h.
class Device : public KernelObject {
 public:
  static constexpr unsigned kKinds = kStreamDeviceKind | kSerialPortKind;

  /// `terminal` is non-blocking, `wakeSignal` an eventfd.
  Device(ObjectKind ownKind, Descriptor terminal, Descriptor wakeSignal);

  /// `read` and `written` start at 0 and count the bytes.
  DWORD read(BYTE* buffer, DWORD count, DWORD& read);
  DWORD write(const BYTE* bytes, DWORD count, DWORD& written);
  DWORD flush();

  /// Returns when no call is in the device any more and the terminal is closed.
  void close() override;

 protected:
  virtual TransferPlan planRead(DWORD count) = 0;
  virtual TransferPlan planWrite(DWORD count) = 0;

  /// Runs `call` with the terminal's descriptor, which stays open until it returns.
  template <typename Call>
  DWORD whileOpen(Call call) {
    const std::shared_lock use(inUse);
    return isClosing ? ERROR_OPERATION_ABORTED : call(tty.get());
  }

 private:
  enum class Readiness { kReady, kGone, kTimedOut, kClosed };

  Readiness waitFor(short events, const Deadline& deadline) const;

  template <typename MoveSome>
  DWORD transfer(const TransferPlan& plan, short event, MoveSome moveSome, DWORD& moved);

  Descriptor tty;
  Descriptor wake;  ///< readable from close() on
  std::atomic<bool> isClosing{false};
  std::shared_mutex
      inUse;  ///< shared by the calls in the device, exclusive while the terminal is closed
  std::mutex writeTurn;
};

}  // namespace coredll
