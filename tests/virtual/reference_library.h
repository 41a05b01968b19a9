#pragma once

#include <string>
#include <vector>

#include "device/personality.h"
#include "music/music_library.h"

namespace virtual_session {

/// With a screen of few pixels.
simulator::Personality referenceModel();

/// 37 artists of a track each, but the first one has two, in two albums; so many that artists
/// and the tracks of the second album are in tabs. One audiobook, one podcast, and four playlists.
simulator::MusicLibrary referenceLibrary();

/// As large as the screen is wide, with a white row above it.
std::string referenceLogo();

/// What the reference session and the one on a serial line come to.
std::vector<std::string> referenceResults();
std::vector<std::string> serialResults();

}  // namespace virtual_session
