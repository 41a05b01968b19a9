#include "player/playing_list.h"

#include <algorithm>
#include <numeric>

namespace simulator {

void PlayingList::assign(std::vector<uint32_t> selected, size_t first, Shuffle shuffle,
                         const Catalogue& catalogue, Random& random) {
  tracks = std::move(selected);
  order.resize(tracks.size());
  std::iota(order.begin(), order.end(), 0);
  current = static_cast<uint32_t>(first);
  if (shuffle != Shuffle::kOff) arrange(shuffle, catalogue, random);
}

void PlayingList::arrange(Shuffle shuffle, const Catalogue& catalogue, Random& random) {
  if (tracks.empty()) return;
  const uint32_t playing = order[current];
  std::iota(order.begin(), order.end(), 0);
  if (shuffle == Shuffle::kTracks) mixTracks(playing, random);
  if (shuffle == Shuffle::kAlbums) mixAlbums(playing, catalogue, random);
  current = static_cast<uint32_t>(std::find(order.begin(), order.end(), playing) - order.begin());
}

void PlayingList::mixTracks(uint32_t first, Random& random) {
  random.shuffle(order);
  std::iter_swap(order.begin(), std::find(order.begin(), order.end(), first));
}

void PlayingList::mixAlbums(uint32_t first, const Catalogue& catalogue, Random& random) {
  const NameTable& albums = catalogue.table(Category::kAlbum);
  const size_t noAlbum = albums.names.size();
  const auto albumOf = [&](uint32_t place) {
    return std::min<size_t>(albums.ofTrack[tracks[place]], noAlbum);
  };
  std::vector<uint32_t> rank(noAlbum + 1);
  std::iota(rank.begin(), rank.end(), 1);
  random.shuffle(rank);
  rank[albumOf(first)] = 0;
  std::stable_sort(order.begin(), order.end(),
                   [&](uint32_t a, uint32_t b) { return rank[albumOf(a)] < rank[albumOf(b)]; });
}

}  // namespace simulator
