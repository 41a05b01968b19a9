#pragma once

#include <cstdint>

namespace simulator {

/// The groups of commands that the simulated iPod knows.
enum class Lingo : uint8_t {
  kGeneral = 0x00,
  kSimpleRemote = 0x02,
  kExtendedInterface = 0x04,
  kDigitalAudio = 0x0A,
};

/// The result in an acknowledgement.
enum class Status : uint8_t {
  kOk = 0,
  kUnknownCategory = 1,
  kFailed = 2,
  kOutOfResources = 3,
  kBadParameter = 4,
  kUnknownId = 5,
  kPending = 6,
  kNotAuthenticated = 7,
};

enum GeneralCommand : uint16_t {
  kIdentify = 0x01,
  kAck = 0x02,
  kRequestRemoteUiMode = 0x03,
  kReturnRemoteUiMode = 0x04,
  kEnterRemoteUiMode = 0x05,
  kExitRemoteUiMode = 0x06,
  kRequestIpodName = 0x07,
  kReturnIpodName = 0x08,
  kRequestIpodSoftwareVersion = 0x09,
  kReturnIpodSoftwareVersion = 0x0A,
  kRequestIpodSerialNum = 0x0B,
  kReturnIpodSerialNum = 0x0C,
  kRequestIpodModelNum = 0x0D,
  kReturnIpodModelNum = 0x0E,
  kRequestLingoProtocolVersion = 0x0F,
  kReturnLingoProtocolVersion = 0x10,
  kIdentifyDeviceLingoes = 0x13,
  kNotifyIpodStateChange = 0x23,
  kGetAccessoryInfo = 0x27,
  kRetAccessoryInfo = 0x28,
};

enum SimpleRemoteCommand : uint16_t {
  kContextButtonStatus = 0x00,
  kAudioButtonStatus = 0x04,
};

enum ExtendedInterfaceCommand : uint16_t {
  kExtendedAck = 0x0001,
  kGetIndexedPlayingTrackInfo = 0x000C,
  kReturnIndexedPlayingTrackInfo = 0x000D,
  kExtendedRequestProtocolVersion = 0x0012,
  kExtendedReturnProtocolVersion = 0x0013,
  kExtendedRequestIpodName = 0x0014,
  kExtendedReturnIpodName = 0x0015,
  kResetDbSelection = 0x0016,
  kSelectDbRecord = 0x0017,
  kGetNumberCategorizedDbRecords = 0x0018,
  kReturnNumberCategorizedDbRecords = 0x0019,
  kRetrieveCategorizedDatabaseRecords = 0x001A,
  kReturnCategorizedDatabaseRecord = 0x001B,
  kGetPlayStatus = 0x001C,
  kReturnPlayStatus = 0x001D,
  kGetCurrentPlayingTrackIndex = 0x001E,
  kReturnCurrentPlayingTrackIndex = 0x001F,
  kGetIndexedPlayingTrackTitle = 0x0020,
  kReturnIndexedPlayingTrackTitle = 0x0021,
  kGetIndexedPlayingTrackArtistName = 0x0022,
  kReturnIndexedPlayingTrackArtistName = 0x0023,
  kGetIndexedPlayingTrackAlbumName = 0x0024,
  kReturnIndexedPlayingTrackAlbumName = 0x0025,
  kSetPlayStatusChangeNotification = 0x0026,
  kPlayStatusChangeNotification = 0x0027,
  kPlayCurrentSelection = 0x0028,
  kPlayControl = 0x0029,
  kGetShuffle = 0x002C,
  kReturnShuffle = 0x002D,
  kSetShuffle = 0x002E,
  kGetRepeat = 0x002F,
  kReturnRepeat = 0x0030,
  kSetRepeat = 0x0031,
  kSetDisplayImage = 0x0032,
  kGetMonoDisplayImageLimits = 0x0033,
  kReturnMonoDisplayImageLimits = 0x0034,
  kGetNumPlayingTracks = 0x0035,
  kReturnNumPlayingTracks = 0x0036,
  kSetCurrentPlayingTrack = 0x0037,
  kSelectSortDbRecord = 0x0038,
  kGetColorDisplayImageLimits = 0x0039,
  kReturnColorDisplayImageLimits = 0x003A,
};

enum DigitalAudioCommand : uint16_t {
  kAccAck = 0x00,
  kGetAccSampleRateCaps = 0x02,
  kRetAccSampleRateCaps = 0x03,
  kTrackNewAudioAttributes = 0x04,
};

/// The changes that PlayStatusChangeNotification reports.
enum class PlayStatusChange : uint8_t { kStopped = 0x00, kTrackIndex = 0x01, kPosition = 0x04 };

/// The codes of PlayControl.
enum class PlayControlCode : uint8_t {
  kTogglePlayPause = 1,
  kStop = 2,
  kNextTrack = 3,
  kPreviousTrack = 4,
  kStartFastForward = 5,
  kStartRewind = 6,
  kEndSeek = 7,
  kNextChapter = 8,
  kPreviousChapter = 9,
  kPlay = 10,
  kPause = 11,
};

/// The information types of GetIndexedPlayingTrackInfo.
enum class TrackInfoType : uint8_t {
  kCapabilities = 0,
  kPodcastName = 1,
  kReleaseDate = 2,
  kGenre = 5,
  kComposer = 6,
};

/// The information types of GetAccessoryInfo. Bit n of the capabilities offers type n.
enum class AccessoryInfoType : uint8_t {
  kCapabilities = 0,
  kMinimumFirmware = 2,
  kMinimumLingoVersion = 3,
};

/// In a request for records: all up to the end. As an index: none.
constexpr uint32_t kAllRecords = 0xFFFFFFFF;
constexpr uint32_t kNoIndex = 0xFFFFFFFF;

}  // namespace simulator
