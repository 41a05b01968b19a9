#include "virtual/reference_library.h"

#include "support/bitmap_file.h"

namespace virtual_session {
namespace {

using simulator::MediaKind;
using simulator::Track;

constexpr int kArtists = 37;
constexpr uint32_t kTrackMilliseconds = 600000;
constexpr uint32_t kOtherRate = 48000;

/// "A01"
std::string numbered(char letter, int number) {
  const std::string digits = std::to_string(number);
  return letter + std::string(2 - digits.size(), '0') + digits;
}

Track trackOf(int artist, int number) {
  Track track;
  track.title = numbered('T', number);
  track.artist = numbered('A', artist);
  track.album = artist == 1 ? "B1" : "B2";
  track.genre = artist == 1 ? "G1" : "G2";
  track.composer = "C1";
  track.lengthMs = kTrackMilliseconds;
  return track;
}

Track spoken(MediaKind kind, const std::string& album) {
  Track track = trackOf(1, 1);
  track.kind = kind;
  track.album = album;
  return track;
}

}  // namespace

simulator::Personality referenceModel() {
  simulator::Personality model;
  model.serialNumber = "S1";
  model.display.limits = {4, 4};
  return model;
}

simulator::MusicLibrary referenceLibrary() {
  simulator::MusicLibrary library;
  library.name = "Pod";
  library.tracks = {trackOf(1, 1)};
  for (int artist = 1; artist <= kArtists; ++artist)
    library.tracks.push_back(trackOf(artist, artist + 1));
  library.tracks[2].sampleRate = kOtherRate;
  library.tracks.push_back(spoken(MediaKind::kAudiobook, "D1"));
  library.tracks.push_back(spoken(MediaKind::kPodcast, "E1"));
  library.playlists = {{"M1", {0, 1}}, {"M2", {2}}, {"M3", {}}, {"M4", {3}}};
  return library;
}

std::string referenceLogo() { return session::bitmapFile(4, 2, 24, "blue, green and red, twelve"); }

}  // namespace virtual_session
