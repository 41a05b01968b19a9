#pragma once

#include <memory>

#include "device/simulated_ipod.h"
#include "session/hostile_cable.h"
#include "support/small_library.h"
#include "virtual/virtual_ipod.h"
#include "virtual/virtual_world.h"

/// A virtual world with a simulated iPod and a hostile cable.
struct Scene {
  explicit Scene(uint64_t seed) : world(seed) {
    world.addDevice("IPD1:", hostile);
    world.keepNoTrace();
    ipod.keepNoHistory();
  }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  virtual_platform::Time now() const { return world.now(); }

  /// Returns the music of every scene. It never changes.
  static std::shared_ptr<const simulator::Catalogue> music() {
    static const auto same =
        std::make_shared<const simulator::Catalogue>(simulator::smallLibrary());
    return same;
  }

  simulator::SimulatedIpod ipod{simulator::Personality{}, music()};
  virtual_platform::VirtualIpod cable{ipod, simulator::FrameKind::kUsb};
  HostileCable hostile{cable};
  virtual_platform::VirtualWorld world;
};
