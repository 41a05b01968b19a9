#pragma once

#include <functional>
#include <string>
#include <vector>

#include "music/music_library.h"

namespace session {

/// What the lists of an iPod must contain, computed from its music by simple filters and sorts that
/// the simulator does not share.
using Tracks = std::vector<simulator::Track>;
using Names = std::vector<std::string>;
using TextOfTrack = std::string simulator::Track::*;

/// The tracks for which this holds, in the library's order.
Tracks tracksWhere(const simulator::MusicLibrary& library,
                   const std::function<bool(const simulator::Track&)>& holds);
Tracks musicOf(const simulator::MusicLibrary& library);
/// The music with this text.
Tracks musicWith(const simulator::MusicLibrary& library, TextOfTrack text,
                 const std::string& value);
/// The tracks of the user's playlist with this number, in its order.
Tracks playlistTracks(const simulator::MusicLibrary& library, size_t playlist);

/// By artist, album, disc, number on the disc and title.
Tracks byArtist(const Tracks& tracks);
/// By title.
Tracks byTitle(const Tracks& tracks);

/// The texts of the tracks, one each.
Names textsOf(const Tracks& tracks, TextOfTrack text);
/// The texts that the tracks have, each once, sorted by name.
Names namesOf(const Tracks& tracks, TextOfTrack text);

/// A UTF-8 text as it reaches the host, one byte for each 16-bit unit: Latin-1, with a space for
/// each character that Latin-1 does not have; empty when there is one beyond 16 bits.
std::string hostText(const std::string& text);
Names hostTexts(const Names& texts);

}  // namespace session
