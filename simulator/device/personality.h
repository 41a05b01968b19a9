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
  kVersionChain,  ///< it only answers the accessory's version requests
  kRemoteUiMode,  ///< it enters the extended mode and reports that without a request
};

/// The answer to an unknown command.
enum class UnknownCommand { kUnknownId, kFailed, kSilence };

/// The answer to an Extended Interface command outside the extended mode.
enum class OutsideExtendedMode { kBadParameter, kSilence };

/// The answer to a request for the text of a track whose index is not in the playing list.
enum class BadTrackIndex { kBadParameter, kFailed };

/// The order of the list of all tracks when the accessory requests none.
enum class TrackOrder { kByArtist, kByName };

/// What plays when the accessory selects a single track.
enum class TrackSelection {
  kWithItsList,  ///< that track, within the list that it was selected from
  kAlone,        ///< only that track, which is also all that PlayCurrentSelection then plays
};

/// The differences between models of the iPod. The defaults are those of the "classic" preset;
/// every combination is allowed.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): in the order in which it is read
struct Personality {
  std::string preset = "classic";

  // Its name and versions
  std::string name;  ///< empty: the music library's name
  std::array<uint8_t, 3> softwareVersion{1, 1, 2};
  std::string serialNumber = "8K821D0ZY5N";
  uint32_t modelId = 0x000B0011;
  std::string modelNumber = "MB147";
  /// The lingoes that it speaks, by id. It refuses an accessory that announces another one.
  std::map<uint8_t, Version> lingoes{
      {0x00, {1, 9}}, {0x02, {1, 2}}, {0x03, {1, 5}}, {0x04, {1, 14}}, {0x0A, {1, 2}}};

  // Identification
  /// The number of IdentifyDeviceLingoes after plugging that it does not answer.
  unsigned silentIdentifications = 0;
  /// Whether it ignores everything before the IdentifyDeviceLingoes that it accepts.
  bool silentBeforeIdentification = false;
  /// Whether it refuses another IdentifyDeviceLingoes after that one.
  bool refusesSecondIdentification = false;
  IdentificationEnd identificationEnd = IdentificationEnd::kVersionChain;
  /// The delay of GetAccessoryInfo. 0: it is sent at once, and the identification waits for the
  /// answers. Otherwise the identification continues meanwhile, and can end before it.
  Time accessoryInfoDelay{0};
  /// How long it waits for the answer to GetAccessoryInfo of type 0 before it asks again or
  /// continues.
  Time accessoryInfoPatience = seconds(5);
  bool repeatsAccessoryInfo = true;
  /// The types that it always requests, after those that the accessory offers.
  std::vector<uint8_t> extraAccessoryInfo;
  /// Whether RetAccessoryInfo is acknowledged.
  bool acknowledgesAccessoryInfo = false;
  /// Whether it asks for the sample rates. If not, it assumes 32000, 44100 and 48000 Hz.
  bool asksSampleRates = true;
  /// The time from the accessory's rates to the first TrackNewAudioAttributes.
  Time audioAttributesDelay{0};
  /// Whether no notification is sent until the accessory has acknowledged the audio attributes.
  bool audioAckOpensNotifications = false;

  // Frames
  /// It drops a packet with a longer pause in it.
  Time packetGap = kUsualPacketGap;
  LengthForm lengthForm = LengthForm::kAsNeeded;

  // Answers
  UnknownCommand unknownCommand = UnknownCommand::kUnknownId;
  OutsideExtendedMode outsideExtendedMode = OutsideExtendedMode::kBadParameter;
  /// Whether also the image commands work only in the extended mode.
  bool displayNeedsExtendedMode = false;
  /// The delay of entering and leaving the extended mode. 0: at once. Otherwise the command is
  /// first acknowledged as pending.
  Time modeChangePending{0};
  /// Whether both acknowledgements of a mode change are sent at once, in one write.
  bool modeChangeTogether = false;
  /// The same delay for PlayCurrentSelection.
  Time playPending{0};
  /// The time from PlayCurrentSelection, or the end of its pending time, to the start of the sound.
  /// The acknowledgement is sent then.
  Time soundDelay{0};
  /// The time from a request to its answer.
  Time answerDelay{0};
  /// An additional delay of acknowledgements.
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
  /// The greatest delay of a position notification.
  Time notificationJitter{0};

  // Screen
  uint16_t screenWidth = 320;
  uint16_t screenHeight = 240;
  DisplayHabits display;

  /// Returns the version of a lingo; null when it does not speak it.
  const Version* versionOf(uint8_t lingo) const;
  /// Returns whether it knows the play and pause codes of PlayControl.
  bool knowsPlayAndPause() const;
};

/// Returns the names of the presets, the default one first.
const std::vector<std::string>& personalityNames();
/// Returns a preset and its differences in one line.
std::string personalityMeaning(const std::string& preset);
/// Returns a preset. Throws std::invalid_argument with a message for the user when there is none of
/// this name.
Personality personality(const std::string& preset);

}  // namespace simulator
