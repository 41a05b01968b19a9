/*
 * A platform without real time: threads run one at a time and are switched at calls of the
 * platform, as a seed decides; a wait costs no time, because the clock jumps to its end when nobody
 * can run. The same seed and the same code give the same run, call by call.
 *
 *     VirtualWorld world(seed);
 *     world.addDevice("IPD1:", ipod);
 *     const std::string failure = world.run([] { IpodConnect(); ... IpodDisconnect(); });
 *
 * A program is linked to this in place of coredll and isochplay. Handles belong to the process, as
 * the library's own live longer than a world. Outside of run(), a wait that would have to wait
 * fails at once. One thread of the system does everything: thread_local objects are shared by all
 * threads of a world.
 */
#ifndef VIRTUAL_WORLD_H
#define VIRTUAL_WORLD_H

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

  // The device must outlive the run. Case does not matter; a name that begins with COM is a serial
  // port's.
  void addDevice(const std::string& name, VirtualDevice& device);

  // Adds a thread of the host, before the run or in it.
  void spawn(std::function<void()> host);

  // Runs `host` and every thread that comes of it. Once. Returns empty, or why the threads that are
  // left could not end; those are given up where they stand.
  std::string run(std::function<void()> host);

  Time now() const { return scheduler.now(); }

  // What the platform was asked and answered, in order.
  const std::vector<std::string>& trace() const { return calls; }

  // Called on every thread before each of its calls and lines of the trace: what has changed since
  // the one before is that thread's doing. May add lines itself.
  void watch(std::function<void()> onLook) { watcher = std::move(onLook); }

  // For the platform's functions. The world that runs; null outside of run().
  static VirtualWorld* current();
  Scheduler& threads() { return scheduler; }
  const Scheduler& threads() const { return scheduler; }
  VirtualDevice* findDevice(const std::string& name) const;
  void setOpen(const VirtualDevice& device, bool isOpenNow);
  bool isOpen(const VirtualDevice& device) const { return openDevices.count(&device) > 0; }
  void look();
  void note(const std::string& call);
  std::uint64_t id() const { return worldId; }
  unsigned nextNumber(const std::string& kind) { return ++numbers[kind]; }
  // Called when the world ends, for threads that have not.
  void atEnd(std::function<void()> call) { endings.push_back(std::move(call)); }

 private:
  const std::uint64_t worldId;
  Scheduler scheduler;
  std::map<std::string, VirtualDevice*> devices;
  std::set<const VirtualDevice*> openDevices;
  std::map<std::string, unsigned> numbers;
  std::vector<std::string> calls;
  std::vector<std::function<void()>> endings;
  std::function<void()> watcher;
};

}  // namespace virtual_platform

#endif
