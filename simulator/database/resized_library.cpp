#include "database/resized_library.h"

#include <algorithm>

namespace simulator {

namespace {

void appendNumber(std::string& name, size_t number) {
  if (!name.empty()) name += " (" + std::to_string(number) + ")";
}

Track copyOf(const Track& track, size_t number) {
  Track copy = track;
  appendNumber(copy.title, number);
  appendNumber(copy.artist, number);
  appendNumber(copy.album, number);
  return copy;
}

/// Copies have the sound of what they are copies of.
void resizeFiles(std::vector<std::string>& files, size_t count) {
  const size_t original = files.size();
  files.resize(std::min(original, count));
  for (size_t i = original; original > 0 && i < count; ++i)
    files.push_back(files[i % original]);
}

}  // namespace

MusicLibrary resizedLibrary(MusicLibrary library, size_t count) {
  std::vector<Track>& tracks = library.tracks;
  const size_t original = tracks.size();
  tracks.resize(std::min(original, count));
  for (size_t i = original; original > 0 && i < count; ++i) {
    tracks.push_back(copyOf(tracks[i % original], i / original + 1));
  }
  resizeFiles(library.files, count);
  for (Playlist& playlist : library.playlists) {
    auto& listed = playlist.tracks;
    listed.erase(std::remove_if(listed.begin(), listed.end(),
                                [&](uint32_t track) { return track >= tracks.size(); }),
                 listed.end());
  }
  return library;
}

}  // namespace simulator
