#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "link/pty_ipod.h"

namespace simulator {

/// The iPod at the cable. While the cable is pulled, another model or the same one with other music
/// can take its place. The new one has played nothing, and has the faults of the old one.
///
/// It is not safe for use by two threads at once.
class ReplaceableIpod {
 public:
  /// With `tracks` the music is cut or copied to this number.
  ReplaceableIpod(Personality model, MusicLibrary music, std::optional<size_t> tracks,
                  uint32_t randomSeed);

  SimulatedIpod& ipod() { return *current; }
  /// Sets a function that is called with each new iPod before it is used.
  void setPreparation(std::function<void(SimulatedIpod&)> preparation) {
    prepare = std::move(preparation);
  }

  /// These return false and do nothing while the cable is plugged in. `pty` is what runs the iPod.
  bool changeModel(PtyIpod& pty, const Personality& model);
  bool changeTracks(PtyIpod& pty, size_t tracks);

 private:
  bool replace(PtyIpod& pty, std::unique_ptr<SimulatedIpod> other);

  const MusicLibrary source;
  const uint32_t seed;
  std::shared_ptr<const Catalogue> catalogue;
  std::unique_ptr<SimulatedIpod> current;
  std::function<void(SimulatedIpod&)> prepare;
};

}  // namespace simulator
