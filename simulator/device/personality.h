#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "player/player.h"
#include "screen/display_image.h"
#include "simulated_time.h"
#include "wire/frame_decoder.h"

namespace simulator {

struct Version {
  uint8_t major = 0;
  uint8_t minor = 0;
};

/// How the iPod lets the accessory end its identification.
enum class IdentificationEnd {
  kVersionChain,  ///< it just answers the accessory's version requests
  kRemoteUiMode,  ///< it enters the extended mode by itself and says so unasked
};

/// What a command is answered with that the iPod does not know.
enum class UnknownCommand { kUnknownId, kFailed, kSilence };

/// What an Extended Interface command is answered with outside the extended mode.
enum class OutsideExtendedMode { kBadParameter, kSilence };

/// What a request for a track's text is answered with whose index is not in the playing list.
enum class BadTrackIndex { kBadParameter, kFailed };

/// How the list of all tracks is sorted when the accessory asks for no order.
enum class TrackOrder { kByArtist, kByName };

/// What plays when the accessory selects a single track.
enum class TrackSelection {
  kWithItsList,  ///< that track, within the list that it was selected from
  kAlone,        ///< that track alone, and it alone is what PlayCurrentSelection then plays
};

/// What makes one model of iPod different from another. The defaults are those of the "classic"
/// preset; every combination is allowed.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order in which it is read
struct Personality {
  std::string preset = "classic";

  // What it says about itself
  std::string name;  ///< empty: the music library's name
  std::array<uint8_t, 3> softwareVersion{1, 1, 2};
  std::string serialNumber = "8K821D0ZY5N";
  uint32_t modelId = 0x000B0011;
  std::string modelNumber = "MB147";
  /// The lingoes that it speaks, by id. An accessory that announces another one is refused.
  std::map<uint8_t, Version> lingoes{
      {0x00, {1, 9}}, {0x02, {1, 2}}, {0x03, {1, 5}}, {0x04, {1, 14}}, {0x0A, {1, 2}}};

  // Identification
  /// So many IdentifyDeviceLingoes after plugging get no answer at all.
  unsigned silentIdentifications = 0;
  /// Whether it ignores everything that comes before the IdentifyDeviceLingoes that it accepts.
  bool silentBeforeIdentification = false;
  /// Whether it refuses another IdentifyDeviceLingoes after that one.
  bool refusesSecondIdentification = false;
  IdentificationEnd identificationEnd = IdentificationEnd::kVersionChain;
  /// From the moment when GetAccessoryInfo is due until it is sent. 0: at once, and the
  /// identification waits for the answers. Else it goes on meanwhile, and can end before.
  Time accessoryInfoDelay{0};
  /// How long GetAccessoryInfo of type 0 waits before it is asked once more, or given up.
  Time accessoryInfoPatience = seconds(5);
  bool repeatsAccessoryInfo = true;
  /// Asked in any case, after those that the accessory offers.
  std::vector<uint8_t> extraAccessoryInfo;
  /// Whether RetAccessoryInfo is acknowledged.
  bool acknowledgesAccessoryInfo = false;
  /// Without: it takes 32000, 44100 and 48000 Hz for granted.
  bool asksSampleRates = true;
  /// From the accessory's rates to the first TrackNewAudioAttributes.
  Time audioAttributesDelay{0};
  /// Whether no notification is sent until the accessory has acknowledged the audio attributes.
  bool audioAckOpensNotifications = false;

  // Frames
  /// A longer pause inside a packet makes it give the packet up.
  Time packetGap = kUsualPacketGap;
  LengthForm lengthForm = LengthForm::kAsNeeded;

  // Answers
  UnknownCommand unknownCommand = UnknownCommand::kUnknownId;
  OutsideExtendedMode outsideExtendedMode = OutsideExtendedMode::kBadParameter;
  /// Whether the image commands, too, work in the extended mode only.
  bool displayNeedsExtendedMode = false;
  /// Entering and leaving the extended mode: 0, at once; else acknowledged as pending first, and
  /// done so much later.
  Time modeChangePending{0};
  /// Whether both acknowledgements of a mode change are sent at once, in one write.
  bool modeChangeTogether = false;
  /// As modeChangePending, for PlayCurrentSelection.
  Time playPending{0};
  /// From PlayCurrentSelection, or the end of its pending time, until the sound starts. Its
  /// acknowledgement is held back until then.
  Time soundDelay{0};
  /// From a request to its answer.
  Time answerDelay{0};
  /// On top of it, for acknowledgements.
  Time acknowledgementDelay{0};

  // Database
  /// Whether a category must have been counted since the last reset before one of its records can
  /// be selected.
  bool countBeforeSelect = true;
  /// Whether an index of -1 undoes the selection of a playlist, as it does in other categories.
  bool deselectsPlaylists = true;
  TrackSelection trackSelection = TrackSelection::kWithItsList;
  TrackOrder trackOrder = TrackOrder::kByArtist;

  // Playing and its notifications
  PlayerHabits player;
  BadTrackIndex badTrackIndex = BadTrackIndex::kBadParameter;
  /// Whether GetIndexedPlayingTrackInfo returns the genre; else it is acknowledged as refused.
  bool tellsGenre = true;
  Time positionInterval = milliseconds(500);
  /// Each position notification comes up to so much late.
  Time notificationJitter{0};

  // Screen
  uint16_t screenWidth = 320;
  uint16_t screenHeight = 240;
  DisplayHabits display;

  /// The version of a lingo; null when it does not speak it.
  const Version* versionOf(uint8_t lingo) const;
  /// Whether it knows the play and pause codes of PlayControl.
  bool knowsPlayAndPause() const;
};

/// The names of the presets, the default one first.
const std::vector<std::string>& personalityNames();
/// A preset and what makes it different, in one line.
std::string personalityMeaning(const std::string& preset);
/// Throws std::invalid_argument with a text for a person when there is no such preset.
Personality personality(const std::string& preset);

}  // namespace simulator
