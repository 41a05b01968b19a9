#pragma once

#include "music/music_library.h"

namespace simulator {

/// Returns the library of an iPod without other music: invented artists, albums, audiobooks,
/// podcasts and playlists, the same at every call. docs/music-library.md describes it.
MusicLibrary builtInLibrary();

}  // namespace simulator
