#pragma once

#include "music/music_library.h"

namespace simulator {

/// The library of an iPod that was given no music: invented artists, albums, audiobooks, podcasts
/// and playlists, the same at every call. docs/music-library.md says where to find what in it.
MusicLibrary builtInLibrary();

}  // namespace simulator
