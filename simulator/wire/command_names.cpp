#include "wire/command_names.h"

namespace simulator {

namespace {

struct NameRow {
  Lingo lingo;
  uint16_t command;
  const char* name;
};

constexpr NameRow kNames[] = {
    {Lingo::kGeneral, kIdentify, "Identify"},
    {Lingo::kGeneral, kAck, "iPodAck"},
    {Lingo::kGeneral, kRequestRemoteUiMode, "RequestRemoteUIMode"},
    {Lingo::kGeneral, kReturnRemoteUiMode, "ReturnRemoteUIMode"},
    {Lingo::kGeneral, kEnterRemoteUiMode, "EnterRemoteUIMode"},
    {Lingo::kGeneral, kExitRemoteUiMode, "ExitRemoteUIMode"},
    {Lingo::kGeneral, kRequestIpodName, "RequestiPodName"},
    {Lingo::kGeneral, kReturnIpodName, "ReturniPodName"},
    {Lingo::kGeneral, kRequestIpodSoftwareVersion, "RequestiPodSoftwareVersion"},
    {Lingo::kGeneral, kReturnIpodSoftwareVersion, "ReturniPodSoftwareVersion"},
    {Lingo::kGeneral, kRequestIpodSerialNum, "RequestiPodSerialNum"},
    {Lingo::kGeneral, kReturnIpodSerialNum, "ReturniPodSerialNum"},
    {Lingo::kGeneral, kRequestIpodModelNum, "RequestiPodModelNum"},
    {Lingo::kGeneral, kReturnIpodModelNum, "ReturniPodModelNum"},
    {Lingo::kGeneral, kRequestLingoProtocolVersion, "RequestLingoProtocolVersion"},
    {Lingo::kGeneral, kReturnLingoProtocolVersion, "ReturnLingoProtocolVersion"},
    {Lingo::kGeneral, kIdentifyDeviceLingoes, "IdentifyDeviceLingoes"},
    {Lingo::kGeneral, kNotifyIpodStateChange, "NotifyiPodStateChange"},
    {Lingo::kGeneral, kGetAccessoryInfo, "GetAccessoryInfo"},
    {Lingo::kGeneral, kRetAccessoryInfo, "RetAccessoryInfo"},
    {Lingo::kSimpleRemote, kContextButtonStatus, "ContextButtonStatus"},
    {Lingo::kSimpleRemote, kAudioButtonStatus, "AudioButtonStatus"},
    {Lingo::kExtendedInterface, kExtendedAck, "iPodAck"},
    {Lingo::kExtendedInterface, kGetIndexedPlayingTrackInfo, "GetIndexedPlayingTrackInfo"},
    {Lingo::kExtendedInterface, kReturnIndexedPlayingTrackInfo, "ReturnIndexedPlayingTrackInfo"},
    {Lingo::kExtendedInterface, kExtendedRequestProtocolVersion, "RequestProtocolVersion"},
    {Lingo::kExtendedInterface, kExtendedReturnProtocolVersion, "ReturnProtocolVersion"},
    {Lingo::kExtendedInterface, kExtendedRequestIpodName, "RequestiPodName"},
    {Lingo::kExtendedInterface, kExtendedReturnIpodName, "ReturniPodName"},
    {Lingo::kExtendedInterface, kResetDbSelection, "ResetDbSelection"},
    {Lingo::kExtendedInterface, kSelectDbRecord, "SelectDbRecord"},
    {Lingo::kExtendedInterface, kGetNumberCategorizedDbRecords, "GetNumberCategorizedDbRecords"},
    {Lingo::kExtendedInterface, kReturnNumberCategorizedDbRecords,
     "ReturnNumberCategorizedDbRecords"},
    {Lingo::kExtendedInterface, kRetrieveCategorizedDatabaseRecords,
     "RetrieveCategorizedDatabaseRecords"},
    {Lingo::kExtendedInterface, kReturnCategorizedDatabaseRecord,
     "ReturnCategorizedDatabaseRecord"},
    {Lingo::kExtendedInterface, kGetPlayStatus, "GetPlayStatus"},
    {Lingo::kExtendedInterface, kReturnPlayStatus, "ReturnPlayStatus"},
    {Lingo::kExtendedInterface, kGetCurrentPlayingTrackIndex, "GetCurrentPlayingTrackIndex"},
    {Lingo::kExtendedInterface, kReturnCurrentPlayingTrackIndex, "ReturnCurrentPlayingTrackIndex"},
    {Lingo::kExtendedInterface, kGetIndexedPlayingTrackTitle, "GetIndexedPlayingTrackTitle"},
    {Lingo::kExtendedInterface, kReturnIndexedPlayingTrackTitle, "ReturnIndexedPlayingTrackTitle"},
    {Lingo::kExtendedInterface, kGetIndexedPlayingTrackArtistName,
     "GetIndexedPlayingTrackArtistName"},
    {Lingo::kExtendedInterface, kReturnIndexedPlayingTrackArtistName,
     "ReturnIndexedPlayingTrackArtistName"},
    {Lingo::kExtendedInterface, kGetIndexedPlayingTrackAlbumName,
     "GetIndexedPlayingTrackAlbumName"},
    {Lingo::kExtendedInterface, kReturnIndexedPlayingTrackAlbumName,
     "ReturnIndexedPlayingTrackAlbumName"},
    {Lingo::kExtendedInterface, kSetPlayStatusChangeNotification,
     "SetPlayStatusChangeNotification"},
    {Lingo::kExtendedInterface, kPlayStatusChangeNotification, "PlayStatusChangeNotification"},
    {Lingo::kExtendedInterface, kPlayCurrentSelection, "PlayCurrentSelection"},
    {Lingo::kExtendedInterface, kPlayControl, "PlayControl"},
    {Lingo::kExtendedInterface, kGetShuffle, "GetShuffle"},
    {Lingo::kExtendedInterface, kReturnShuffle, "ReturnShuffle"},
    {Lingo::kExtendedInterface, kSetShuffle, "SetShuffle"},
    {Lingo::kExtendedInterface, kGetRepeat, "GetRepeat"},
    {Lingo::kExtendedInterface, kReturnRepeat, "ReturnRepeat"},
    {Lingo::kExtendedInterface, kSetRepeat, "SetRepeat"},
    {Lingo::kExtendedInterface, kSetDisplayImage, "SetDisplayImage"},
    {Lingo::kExtendedInterface, kGetMonoDisplayImageLimits, "GetMonoDisplayImageLimits"},
    {Lingo::kExtendedInterface, kReturnMonoDisplayImageLimits, "ReturnMonoDisplayImageLimits"},
    {Lingo::kExtendedInterface, kGetNumPlayingTracks, "GetNumPlayingTracks"},
    {Lingo::kExtendedInterface, kReturnNumPlayingTracks, "ReturnNumPlayingTracks"},
    {Lingo::kExtendedInterface, kSetCurrentPlayingTrack, "SetCurrentPlayingTrack"},
    {Lingo::kExtendedInterface, kSelectSortDbRecord, "SelectSortDbRecord"},
    {Lingo::kExtendedInterface, kGetColorDisplayImageLimits, "GetColorDisplayImageLimits"},
    {Lingo::kExtendedInterface, kReturnColorDisplayImageLimits, "ReturnColorDisplayImageLimits"},
    {Lingo::kDigitalAudio, kAccAck, "AccAck"},
    {Lingo::kDigitalAudio, kGetAccSampleRateCaps, "GetAccSampleRateCaps"},
    {Lingo::kDigitalAudio, kRetAccSampleRateCaps, "RetAccSampleRateCaps"},
    {Lingo::kDigitalAudio, kTrackNewAudioAttributes, "TrackNewAudioAttributes"},
};

}  // namespace

const char* commandName(const Message& message) {
  for (const NameRow& row : kNames) {
    if (message.is(row.lingo, row.command)) return row.name;
  }
  return kUnknownCommand;
}

}  // namespace simulator
