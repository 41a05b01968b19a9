#include "music/music_summary.h"

#include <set>

namespace simulator {
namespace {

std::string counted(size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

size_t namesOf(const MusicLibrary& library, std::string Track::*text) {
  std::set<std::string> names;
  for (const Track& track : library.tracks) {
    if (track.kind == MediaKind::kMusic && !(track.*text).empty()) names.insert(track.*text);
  }
  return names.size();
}

std::string describe(const SkippedFiles& skipped) {
  size_t files = 0;
  std::string reasons;
  for (const auto& [reason, count] : skipped) {
    files += count;
    reasons += (reasons.empty() ? "" : ", ") + reason + " (" + std::to_string(count) + ")";
  }
  return counted(files, "file") + " skipped: " + reasons;
}

}  // namespace

std::string summaryOf(const MusicLibrary& library, const SkippedFiles& skipped) {
  const std::string music = "music: " + counted(library.tracks.size(), "track") + ", " +
                            counted(namesOf(library, &Track::artist), "artist") + ", " +
                            counted(namesOf(library, &Track::album), "album") + ", " +
                            counted(library.playlists.size(), "playlist");
  return skipped.empty() ? music : music + "; " + describe(skipped);
}

}  // namespace simulator
