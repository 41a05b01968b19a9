#include "link/replaceable_ipod.h"

#include "database/resized_library.h"

namespace simulator {

namespace {

std::shared_ptr<const Catalogue> catalogueOf(const MusicLibrary& source,
                                             std::optional<size_t> tracks) {
  return std::make_shared<const Catalogue>(tracks ? resizedLibrary(source, *tracks) : source);
}

bool isPulled(const PtyIpod& pty) {
  return pty.inspect([](const SimulatedIpod&, PtyIpod::Cable cable) { return !cable.isPlugged; });
}

}  // namespace

ReplaceableIpod::ReplaceableIpod(Personality model, MusicLibrary music,
                                 std::optional<size_t> tracks, uint32_t randomSeed)
    : source(std::move(music)),
      seed(randomSeed),
      catalogue(catalogueOf(source, tracks)),
      current(std::make_unique<SimulatedIpod>(std::move(model), catalogue, seed)) {}

bool ReplaceableIpod::changeModel(PtyIpod& pty, const Personality& model) {
  return isPulled(pty) && replace(pty, std::make_unique<SimulatedIpod>(model, catalogue, seed));
}

bool ReplaceableIpod::changeTracks(PtyIpod& pty, size_t tracks) {
  if (!isPulled(pty)) return false;
  auto resized = catalogueOf(source, tracks);
  if (!replace(pty, std::make_unique<SimulatedIpod>(current->personality(), resized, seed))) {
    return false;
  }
  catalogue = std::move(resized);
  return true;
}

bool ReplaceableIpod::replace(PtyIpod& pty, std::unique_ptr<SimulatedIpod> other) {
  pty.inspect([&](const SimulatedIpod& old, PtyIpod::Cable) {
    for (const Fault& fault : old.faults().added())
      other->faults().add(fault);
    other->faults().strikeAtRandom(old.faults().atRandom());
  });
  if (prepare) prepare(*other);
  if (!pty.replace(*other)) return false;
  current = std::move(other);
  return true;
}

}  // namespace simulator
