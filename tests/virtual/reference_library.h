#pragma once

#include <string>
#include <vector>

#include "device/personality.h"
#include "music/music_library.h"

namespace virtual_session {

/// Its screen has few pixels.
simulator::Personality referenceModel();

/// 37 artists in two albums. The first artist has two tracks, the others one each. The artists and
/// the tracks of the second album are so many that they are in tabs. One audiobook, one podcast and
/// four playlists.
simulator::MusicLibrary referenceLibrary();

/// As large as the screen is wide, with a white row above it.
std::string referenceLogo();

/// The results of the reference session and of the session on a serial line.
std::vector<std::string> referenceResults();
std::vector<std::string> serialResults();

}  // namespace virtual_session
