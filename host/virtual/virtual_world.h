/*
 * The deterministic platform. Threads run one at a time and are switched at calls of the platform,
 * as a seed decides. A wait takes no real time, because the clock jumps to its end when no thread
 * can run. The same seed and the same code give the same run, call by call.
 *
 *     VirtualWorld world(seed);
 *     world.addDevice("IPD1:", ipod);
 *     const std::string failure = world.run([] { IpodConnect(); ... IpodDisconnect(); });
 *
 * A program links to this instead of coredll and isochplay. Handles belong to the process, because
 * those of the library outlive a world. Outside of run(), a wait that would have to wait fails at
 * once. One thread of the system runs everything: all threads of a world share thread_local
 * objects.
 */
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "scheduler.h"
#include "virtual_device.h"
#include "virtual_time.h"

namespace virtual_platform {

class VirtualWorld {
 public:
  explicit VirtualWorld(std::uint64_t seed);
  ~VirtualWorld();
  VirtualWorld(const VirtualWorld&) = delete;
  VirtualWorld& operator=(const VirtualWorld&) = delete;

  /// The device must outlive the run. Case does not matter; a name that begins with COM is a serial
  /// port's.
  void addDevice(const std::string& name, VirtualDevice& device);

  /// Adds a thread of the host, before the run or in it.
  void spawn(std::function<void()> host);

  /// Runs `host` and every thread that it makes. May be called once. Returns an empty text, or why
  /// the remaining threads could not end; those are abandoned where they are.
  std::string run(std::function<void()> host);

  Time now() const { return scheduler.now(); }

  /// Keeps no trace. The texts of a trace take most of the time of a call of the platform.
  void keepNoTrace() { isTraced = false; }
  bool keepsTrace() const { return isTraced; }
  /// The calls of the platform and their results, in order.
  const std::vector<std::string>& trace() const { return calls; }

  /// Sets a function that is called on every thread before each of its calls and lines of the
  /// trace. That thread made the changes since the previous call. The function may add lines.
  void watch(std::function<void()> onLook) { watcher = std::move(onLook); }

  /// Returns the running world, for the platform's functions; null outside of run().
  static VirtualWorld* current() { return running; }
  Scheduler& threads() { return scheduler; }
  const Scheduler& threads() const { return scheduler; }
  VirtualDevice* findDevice(const std::string& name) const;
  void setOpen(const VirtualDevice& device, bool isOpenNow);
  bool isOpen(const VirtualDevice& device) const { return openDevices.count(&device) > 0; }
  void look() {
    if (watcher) watcher();
  }
  void note(const std::string& call);
  void write(const std::string& call);
  std::uint64_t id() const { return worldId; }
  unsigned nextNumber(const std::string& kind) { return ++numbers[kind]; }
  /// Adds a call for the end of the world, for threads that have not ended.
  void atEnd(std::function<void()> call) { endings.push_back(std::move(call)); }

 private:
  static inline VirtualWorld* running = nullptr;

  const std::uint64_t worldId;
  Scheduler scheduler;
  std::map<std::string, VirtualDevice*> devices;
  std::set<const VirtualDevice*> openDevices;
  std::map<std::string, unsigned> numbers;
  std::vector<std::string> calls;
  bool isTraced = true;
  std::vector<std::function<void()>> endings;
  std::function<void()> watcher;
};

}  // namespace virtual_platform
