#pragma once

#include <cstdint>
#include <vector>

#include "database/catalogue.h"
#include "random.h"

namespace simulator {

/// How the playing list is mixed, with the numbers on the wire.
enum class Shuffle : uint8_t { kOff = 0, kTracks = 1, kAlbums = 2 };

/// The tracks that play, in the order in which they play, and which of them is current. Keeps the
/// order of the selection, so that shuffling can be undone.
class PlayingList {
 public:
  /// Sets these tracks; `first` becomes the current one. With kTracks it gets index 0; with kAlbums
  /// its album is the first one.
  void assign(std::vector<uint32_t> selected, size_t first, Shuffle shuffle,
              const Catalogue& catalogue, Random& random);
  /// Mixes again, or undoes the mixing. The current track remains the current track.
  void arrange(Shuffle shuffle, const Catalogue& catalogue, Random& random);

  uint32_t size() const { return static_cast<uint32_t>(tracks.size()); }
  bool empty() const { return tracks.empty(); }
  /// Returns a track. The index must be below size().
  uint32_t trackAt(uint32_t index) const { return tracks[order[index]]; }
  uint32_t currentIndex() const { return current; }
  uint32_t currentTrack() const { return trackAt(current); }
  void moveTo(uint32_t index) { current = index; }

 private:
  void mixTracks(uint32_t first, Random& random);
  void mixAlbums(uint32_t first, const Catalogue& catalogue, Random& random);

  std::vector<uint32_t> tracks;  ///< as selected
  std::vector<uint32_t> order;   ///< by playing index: the place in `tracks`
  uint32_t current = 0;          ///< playing index
};

}  // namespace simulator
