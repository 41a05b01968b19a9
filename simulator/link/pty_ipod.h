#pragma once

#include <condition_variable>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "device/simulated_ipod.h"
#include "link/ipod_link.h"
#include "link/port.h"
#include "link/wire_observer.h"

namespace simulator {

/// Runs a simulated iPod in real time at the end of a pseudo-terminal, or at another port.
///
///     SimulatedIpod ipod{personality("classic"), library};
///     PtyIpod pty{ipod, FrameKind::kUsb, "/tmp/ipod"};
///     pty.start();
///
/// From start() on, a separate thread runs the iPod. Other threads use the iPod only through
/// access(). When the accessory closes the slave, the iPod forgets it and waits for the next one.
/// Pulling the cable closes the master, so that the accessory's read fails. The functions may be
/// called from any thread, but not by hooks of the iPod: those run while it is locked.
class PtyIpod {
 public:
  /// The iPod must outlive this. With a `linkPath`, a symbolic link of this name leads to the slave
  /// while the cable is plugged, and no other process gets that name from start() to stop().
  PtyIpod(SimulatedIpod& device, FrameKind frames, std::filesystem::path linkPath = {});
  /// The same at another port than a pseudo-terminal.
  PtyIpod(SimulatedIpod& device, FrameKind frames, PortMaker maker,
          std::filesystem::path linkPath = {});
  /// Stops the thread, and removes the link.
  ~PtyIpod();
  PtyIpod(const PtyIpod&) = delete;
  PtyIpod& operator=(const PtyIpod&) = delete;

  /// Reports to `watching` what crosses the wire. It must outlive this. Call it before start().
  void observe(WireObserver& watching) { observer = &watching; }

  /// Plugs the iPod in and starts its thread. Throws std::system_error or PortError when there is
  /// no port, LinkError when there can be no link.
  void start();
  void stop();

  /// Pulls the cable, and returns when it is pulled. Does nothing when it is already pulled.
  void unplug();
  /// Plugs the cable in again, at a new pseudo-terminal under the same link. Does nothing when it
  /// is plugged in. Throws like start().
  void plug();

  /// Replaces the iPod by another one, which must outlive this, while the cable is pulled. Returns
  /// false and does nothing when it is plugged in. The old iPod is not used any more.
  bool replace(SimulatedIpod& other);

  /// Returns the path of the iPod for the accessory: the link, or the port when there is no link.
  /// Empty when the cable is pulled and there is no link.
  std::string slavePath() const;

  /// Calls `look` with the iPod, while its thread waits; returns what `look` returns.
  template <typename Look>
  auto access(Look look) {
    const std::lock_guard<std::mutex> lock(mutex);
    const Rouse rouse{*this};
    return look(*ipod);
  }
  /// Does the same for an action that needs the time, like a press on a button.
  template <typename Act>
  auto act(Act what) {
    return access([&](SimulatedIpod& device) { return what(device, now()); });
  }
  /// The cable, as inspect() sees it.
  struct Cable {
    bool isPlugged = false;
    bool hasAccessory = false;  ///< an accessory has its end open
    Time now{0};                ///< the iPod's time
  };
  /// Calls `look` with the iPod and its cable, and does not wake the thread.
  template <typename Look>
  auto inspect(Look look) const {
    const std::lock_guard<std::mutex> lock(mutex);
    return look(static_cast<const SimulatedIpod&>(*ipod),
                Cable{port != nullptr, isAccessoryThere, now()});
  }
  /// Sets a function that the thread calls when something may have changed. It is called while the
  /// iPod is locked, and must not block.
  void setChangeHook(std::function<void()> hook);
  /// Waits until `condition` is true for the iPod, at most `limit`. Returns false when the time is
  /// over first.
  bool waitUntil(const std::function<bool(const SimulatedIpod&)>& condition, Time limit);

  /// Returns the iPod's time, which starts when this is constructed.
  Time now() const;

 private:
  /// Wakes the thread when it is destroyed.
  struct Rouse {
    PtyIpod& pty;
    ~Rouse() { pty.wake(); }
  };

  void run();
  void serve();
  void noticeAccessory();
  void changeAccessory();
  void observeOpen();
  void observeClose();
  void receive();
  void receive(const Bytes& bytes);
  size_t write(ByteView bytes);
  void send();
  void flush();
  void pullWhenDue();
  int waitLimitMs() const;
  void wake();
  void openPort();
  void closePort();

  const FrameKind kind;
  const PortMaker makePort;
  const std::chrono::steady_clock::time_point begin;
  WireObserver* observer = nullptr;
  FileDescriptor waker;  ///< an event counter that ends the thread's poll

  mutable std::mutex mutex;  ///< guards everything below, and the iPod
  SimulatedIpod* ipod;       ///< never null
  std::condition_variable changed;
  std::function<void()> onChange;
  IpodLink link;               ///< claimed while the thread runs
  std::unique_ptr<Port> port;  ///< while the cable is plugged
  bool isAccessoryThere = false;
  bool isOpenObserved = false;  ///< the observer knows of the accessory
  Bytes unwritten;
  std::optional<Time> pullAt;  ///< the iPod is unplugged: when its port is to be closed
  bool isRunning = false;
  bool isStopping = false;
  std::thread thread;
};

}  // namespace simulator
