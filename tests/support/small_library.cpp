#include "small_library.h"

namespace simulator {

MusicLibrary smallLibrary() {
  const MediaKind music = MediaKind::kMusic;
  MusicLibrary library;
  library.name = "Pod";
  library.tracks = {
      {"Echo", "Carl", "Hive", "Jazz", "Cole", music, 1, 2, 0, 6000, 44100},
      {"Charlie", "Anna", "Second", "Pop", "Dorn", music, 1, 1, 2003, 30000, 48000},
      {"Able", "Anna", "First", "Rock", "Cole", music, 1, 1, 2001, 10000, 44100},
      {"The Delta", "The Bees", "Hive", "Rock", "", music, 1, 1, 1999, 5000, 32000},
      {"Baker", "Anna", "First", "Rock", "Cole", music, 1, 2, 2001, 20000, 44100},
      {"Chapter One", "Reader", "Long Book", "Books", "", MediaKind::kAudiobook, 1, 1, 2000, 60000,
       44100},
      {"Episode", "Caster", "Daily", "News", "", MediaKind::kPodcast, 1, 1, 2010, 90000, 44100},
  };
  library.playlists = {{"Mix", {0, 2, 6}}, {"Empty", {}}};
  return library;
}

}  // namespace simulator
