#pragma once

#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "device/simulated_ipod.h"
#include "support/exports.h"
#include "virtual/virtual_ipod.h"
#include "virtual/virtual_world.h"

/// The life of a head unit in simulated time.
namespace virtual_life {

using virtual_platform::Time;

/// One drive, from the hours before it, when the car is parked, to its end. The head unit connects,
/// its user browses and plays, and it asks every second what plays. Tracks end and new sample rates
/// arrive as the time passes. In some drives the cable is pulled at a random moment, in some the
/// car stops for hours with the iPod connected. The seed decides.
class Drive {
 public:
  explicit Drive(std::uint64_t seed);
  Drive(const Drive&) = delete;
  Drive& operator=(const Drive&) = delete;

  /// Returns "", or the first fault. Call it once.
  std::string run();

  Time lasted() const { return world.now(); }
  int calls() const { return callCount; }
  bool wasPulled() const { return pulled; }
  Time longestCall() const { return longest; }
  const std::vector<std::string>& trace() const { return world.trace(); }

 private:
  void live();
  void threatenCable();
  void connect();
  void browse();
  void listen();
  void askWhatPlays();
  void touchSomething();
  void plugAgain();
  void stopForHours();
  void expectASession();

  exports::Effect call(const char* name);
  exports::Effect call(const exports::Export& exported);
  void complain(const std::string& text);
  unsigned below(unsigned limit) { return static_cast<unsigned>(random() % limit); }
  bool chance(unsigned oneOf) { return below(oneOf) == 0; }

  std::mt19937_64 random;
  simulator::SimulatedIpod ipod;
  virtual_platform::VirtualIpod cable;
  virtual_platform::VirtualWorld world;
  std::string fault;
  int callCount = 0;
  int threats = 0;  ///< pulls that are still to come
  bool pulled = false;
  int track = -1;
  Time longest{0};
};

}  // namespace virtual_life
