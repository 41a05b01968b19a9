#pragma once

#include "music/music_library.h"

namespace simulator {

/// The library cut to its first `count` tracks, or continued with numbered copies of its tracks up
/// to that many. Playlists lose what is cut off. An empty library stays empty.
MusicLibrary resizedLibrary(MusicLibrary library, size_t count);

}  // namespace simulator
