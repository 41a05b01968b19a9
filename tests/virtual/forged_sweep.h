#pragma once

#include <functional>
#include <string>
#include <vector>

#include "virtual/forged_frame.h"
#include "virtual/sweep.h"

/// Sweeps in which other frames replace those of the iPod.
namespace virtual_session {

using Forge = std::function<std::vector<virtual_platform::ComingFrame>(const ForgedFrame&)>;

/// What replaces a frame.
struct Forgery {
  std::string name;
  Forge forge;
  Forge after = nullptr;  ///< replaces every later frame; null: they are unchanged
};

/// Returns one other frame in its place.
Forgery replaced(std::string name, std::function<Bytes(const ForgedFrame&)> other);

Forge delayedBy(std::chrono::milliseconds wait);

/// Returns the frame, followed by the same message so often.
Forge streamOf(const Bytes& payload, std::size_t count, std::chrono::milliseconds interval);

/// A sweep of the script that is its parameter.
class ForgedSweep : public Sweep, public testing::WithParamInterface<const char*> {
 protected:
  ForgedSweep();

  /// Replaces each frame of a session by each forgery.
  void forgeEach(const std::vector<Forgery>& forgeries);
  void forge(std::size_t number, const Forgery& forgery);
  Case forgedCase(std::size_t number, const Forgery& forgery) const;
  /// Expects that more than this share of the cases has struck, unless only one case is run.
  void expectStrikes(double share) const;

  const Script& script;
  const std::vector<Bytes> frames;  ///< from the iPod, of an undisturbed session
};

}  // namespace virtual_session
