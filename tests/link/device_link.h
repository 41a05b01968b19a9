#pragma once

#include <desk.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <future>
#include <initializer_list>
#include <memory>
#include <string>

#include "link/link_kinds.h"
#include "link/refused_closes.h"
#include "support/background_call.h"
#include "support/pty_pair.h"

namespace ipodctl {

/// Calls `condition` until it returns true. Returns false when it does not in time.
template <class Condition>
bool eventually(const Condition& condition) {
  for (const host_test::Patience patience; !patience.isOver(); host_test::Patience::pause())
    if (condition()) return true;
  return false;
}

/// Returns whether the thread with this folder below /proc sleeps in one of these system calls.
inline bool sleepsIn(const std::filesystem::path& thread, std::initializer_list<long> calls) {
  std::string current;
  std::ifstream(thread / "syscall") >> current;
  return std::any_of(calls.begin(), calls.end(),
                     [&](long call) { return current == std::to_string(call); });
}

/// Returns whether a reader waits for bytes.
inline bool isAReaderBlocked() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return std::any_of(begin(threads), end(threads), [](const auto& thread) {
    return sleepsIn(thread.path(), host_test::kPollCalls);
  });
}

/// Runs a call that may hang on its own thread. Returns false when it does not return in time.
template <class Call>
bool returnsInTime(Call call) {
  host_test::BackgroundCall background([call]() mutable {
    call();
    return true;
  });
  return background.result().has_value();
}

/// A transport and a pseudo terminal as its device. The test holds the iPod's end.
class DeviceLink {
 public:
  explicit DeviceLink(const LinkKind& linkKind)
      : kind(linkKind), transport(linkKind.create()), devices(kind.deviceName, wire) {}

  bool start() { return transport->open(kind.deviceName) && transport->startReadData(); }

  /// Returns `frame` as it is on this kind of link.
  Bytes onWire(const Bytes& frame) const { return kind.sync + frame; }

  bool send(const Bytes& frame) { return wire.send(onWire(frame)); }

  /// Returns the command of the next message, or -1 when none arrives.
  int takenCommand() {
    const auto message =
        transport->getMessage(0, static_cast<uint32_t>(host_test::kPatience.count()));
    return message ? message->getCommand() : -1;
  }

  const LinkKind& kind;
  host_test::PtyPair wire;
  std::unique_ptr<Transport> transport;

 private:
  host_test::DeviceMapping devices;
};

/// A handler that blocks its reader until it is released.
class StuckHandler {
 public:
  static void handle(void* object, std::unique_ptr<LingoMessage>) {
    auto& self = *static_cast<StuckHandler*>(object);
    self.entered.set_value();
    self.released.get_future().wait_for(host_test::kPatience);
  }

  /// Waits until the reader is in the handler. Returns false when it does not get there in time.
  bool isEntered() {
    return entered.get_future().wait_for(host_test::kPatience) == std::future_status::ready;
  }

  void release() { released.set_value(); }

 private:
  std::promise<void> entered;
  std::promise<void> released;
};

/// Checks in its destructor that no handle was closed twice, none is left, and no thread still
/// runs.
class HandleBalance {
 public:
  HandleBalance() : handles(deskOpenHandles()), refused(refusedCloses()) {}
  HandleBalance(const HandleBalance&) = delete;
  HandleBalance& operator=(const HandleBalance&) = delete;
  ~HandleBalance() {
    EXPECT_EQ(deskOpenHandles(), handles);
    EXPECT_EQ(deskRunningThreads(), 0u);
    EXPECT_EQ(refusedCloses(), refused);
  }

 private:
  unsigned handles;
  int refused;
};

// General commands 1 to 3, and the first with a wrong checksum.
inline const Bytes kFrame1 = {0x55, 0x02, 0x00, 0x01, 0xFD};
inline const Bytes kFrame2 = {0x55, 0x03, 0x00, 0x02, 0x07, 0xF4};
inline const Bytes kFrame3 = {0x55, 0x02, 0x00, 0x03, 0xFB};
inline const Bytes kBadFrame = {0x55, 0x02, 0x00, 0x01, 0xFE};

}  // namespace ipodctl
