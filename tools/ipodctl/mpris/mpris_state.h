#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace tool {

/// What the bus is shown of a state document.
struct MprisState {
  std::string status = "Stopped";  ///< "Playing", "Paused"
  bool hasTrack = false;
  int index = 0;
  std::string title;
  std::string artist;
  std::string album;
  std::string genre;
  int64_t position = 0;  ///< in microseconds
  bool shuffle = false;
  std::string loop = "None";  ///< "Track", "Playlist"

  /// Whether two states differ in more than the position, which is never announced.
  bool differs(const MprisState& other) const;
  bool hasOtherTrack(const MprisState& other) const;
};

/// Without a ready iPod nothing plays.
MprisState mprisState(const nlohmann::json& state);

}  // namespace tool
