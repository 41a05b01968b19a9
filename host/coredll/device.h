// An open device: a terminal or a socket, and a signal that ends every call that waits for it.
#pragma once

#include <windows.h>

#include <atomic>
#include <mutex>
#include <string>

#include "clock.h"
#include "descriptor.h"
#include "futex.h"
#include "kernel_object.h"

namespace coredll {

/// When a read or a write is complete.
struct TransferPlan {
  DWORD enough;        ///< bytes; 0: as many as can be moved at once
  TimeLimit total;     ///< from the start of the transfer
  TimeLimit interval;  ///< from each byte to the next
};

/// A terminal or a socket, non-blocking.
struct WireDescriptor {
  Descriptor descriptor;
  bool isSocket;
};

/// Results are error codes of windows.h.
class Device : public KernelObject {
 public:
  static constexpr unsigned kKinds = kStreamDeviceKind | kSerialPortKind;

  /// `openedName` is the one that the program opened, `wakeSignal` an eventfd.
  Device(ObjectKind ownKind, std::string openedName, WireDescriptor wireEnd, Descriptor wakeSignal);

  /// `read` and `written` start at 0 and count the bytes.
  virtual DWORD read(BYTE* buffer, DWORD count, DWORD& read);
  virtual DWORD write(const BYTE* bytes, DWORD count, DWORD& written);
  DWORD flush();

  /// Returns when no call is in the device any more and the terminal is closed.
  void close() override;

 protected:
  virtual TransferPlan planRead(DWORD count) = 0;
  virtual TransferPlan planWrite(DWORD count) = 0;

  /// Runs `call` with the wire's descriptor, which stays open until it returns.
  template <typename Call>
  DWORD whileOpen(Call call) {
    const Inside inside(callsInside);
    return isClosing() ? ERROR_OPERATION_ABORTED : call(wire.get());
  }

 private:
  enum class Readiness { kReady, kGone, kTimedOut, kClosed };

  /// Added to the number of calls when the device is closed.
  static constexpr LONG kClosing = 0x40000000;

  /// Counts a call that is in the device. The last one that leaves wakes close().
  class Inside {
   public:
    explicit Inside(std::atomic<LONG>& number) : calls(number) { ++calls; }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;
    ~Inside() {
      if (--calls == kClosing) wake(calls, 1);
    }

   private:
    std::atomic<LONG>& calls;
  };

  bool isClosing() const { return callsInside >= kClosing; }

  Readiness waitFor(short events, const Deadline& deadline) const;

  template <typename MoveSome>
  DWORD transfer(const TransferPlan& plan, short event, MoveSome moveSome, DWORD& moved);

  DWORD drain();

  const std::string name;
  Descriptor wire;
  const bool isSocket;
  Descriptor wakeEvent;             ///< readable from close() on
  const bool hasQueue;              ///< the system queues what is written
  std::atomic<bool> isGone{false};  ///< a read or a write has found that the other side has closed
  std::atomic<LONG> callsInside{0};
  std::mutex writeTurn;
};

}  // namespace coredll
