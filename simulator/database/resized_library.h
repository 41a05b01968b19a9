#pragma once

#include "music/music_library.h"

namespace simulator {

/// Returns the library cut to its first `count` tracks, or extended to `count` tracks with numbered
/// copies. Playlists lose the tracks that are cut off. An empty library stays empty.
MusicLibrary resizedLibrary(MusicLibrary library, size_t count);

}  // namespace simulator
