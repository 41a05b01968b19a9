#pragma once

#include <string>

/// The library's requests to the iPod, as the payloads that tests script and expect. A request with
/// arguments is the name and the bytes that follow: kSelectDbRecord + " 05 00 00 00 09".
namespace requests {

// ---------------------------------------------------------------- General lingo

inline const std::string kEnterRemoteUiMode = "00 05";
inline const std::string kExitRemoteUiMode = "00 06";
inline const std::string kRequestIpodName = "00 07";
inline const std::string kRequestSerialNumber = "00 0B";
inline const std::string kRequestGeneralVersion = "00 0F 00";
inline const std::string kRequestExtendedInterfaceVersion = "00 0F 04";
inline const std::string kRequestDigitalAudioVersion = "00 0F 0A";
inline const std::string kIdentifyDeviceLingoes = "00 13";

// ---------------------------------------------------------------- Extended Interface lingo

/// Of the playing list: the information type, the track's index, the chapter's.
inline const std::string kGetTrackInfo = "04 00 0C";
inline const std::string kResetDbSelection = "04 00 16";
/// The category, the record's index.
inline const std::string kSelectDbRecord = "04 00 17";
/// The category.
inline const std::string kCountRecords = "04 00 18";
inline const std::string kCountPlaylists = "04 00 18 01";
inline const std::string kCountArtists = "04 00 18 02";
inline const std::string kCountAlbums = "04 00 18 03";
inline const std::string kCountGenres = "04 00 18 04";
inline const std::string kCountTracks = "04 00 18 05";
inline const std::string kCountCategory6 = "04 00 18 06";
inline const std::string kCountCategory7 = "04 00 18 07";
inline const std::string kCountCategory8 = "04 00 18 08";
/// The category, the first record's index, how many.
inline const std::string kRetrieveRecords = "04 00 1A";
inline const std::string kGetPlayStatus = "04 00 1C";
inline const std::string kGetCurrentTrackIndex = "04 00 1E";
/// The track's index.
inline const std::string kGetTrackTitle = "04 00 20";
inline const std::string kGetTrackArtist = "04 00 22";
inline const std::string kGetTrackAlbum = "04 00 24";
inline const std::string kPlayCurrentSelection = "04 00 28";
inline const std::string kPlayControl = "04 00 29";
inline const std::string kTogglePlayPause = "04 00 29 01";
inline const std::string kNextTrack = "04 00 29 03";
inline const std::string kPreviousTrack = "04 00 29 04";
inline const std::string kPlay = "04 00 29 0A";
inline const std::string kPause = "04 00 29 0B";
inline const std::string kGetShuffle = "04 00 2C";
inline const std::string kSetShuffle = "04 00 2E";
inline const std::string kGetRepeat = "04 00 2F";
inline const std::string kSetRepeat = "04 00 31";
inline const std::string kSetDisplayImage = "04 00 32";
/// The category, the record's index, the sort order.
inline const std::string kSelectSortDbRecord = "04 00 38";
inline const std::string kGetColorDisplayImageLimits = "04 00 39";

// ---------------------------------------------------------------- Digital Audio lingo

inline const std::string kAcknowledgeAudioAttributes = "0A 00 00 04";

}  // namespace requests
