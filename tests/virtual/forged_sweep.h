#pragma once

#include <functional>
#include <string>
#include <vector>

#include "virtual/forged_frame.h"
#include "virtual/sweep.h"

/// Sweeps in which other frames come in the place of the iPod's.
namespace virtual_session {

using Forge = std::function<std::vector<virtual_platform::ComingFrame>(const ForgedFrame&)>;

/// What comes in the place of a frame.
struct Forgery {
  std::string name;
  Forge forge;
  Forge after = nullptr;  ///< in the place of every later one; null: they come as they are
};

/// Another frame in its place.
Forgery replaced(std::string name, std::function<Bytes(const ForgedFrame&)> other);

Forge delayedBy(std::chrono::milliseconds wait);

/// Behind the frame the same message so often.
Forge streamOf(const Bytes& payload, std::size_t count, std::chrono::milliseconds interval);

/// Of the script that is its parameter.
class ForgedSweep : public Sweep, public testing::WithParamInterface<const char*> {
 protected:
  ForgedSweep();

  /// Puts each forgery in the place of each frame of a session.
  void forgeEach(const std::vector<Forgery>& forgeries);
  void forge(std::size_t number, const Forgery& forgery);
  Case forgedCase(std::size_t number, const Forgery& forgery) const;
  /// Unless one case is run alone: more than this share of the cases has struck.
  void expectStrikes(double share) const;

  const Script& script;
  const std::vector<Bytes> frames;  ///< from the iPod, of an undisturbed session
};

}  // namespace virtual_session
