#include "virtual/reference_library.h"

#include <iterator>

namespace virtual_session {
namespace {

constexpr const char* kResults[] = {"connect 1",
                                    "isIdentified 1",
                                    "EnterExtendedMode 1",
                                    "GetIpodName 1 Pod",
                                    "RequestIpodName 1 Pod",
                                    "RequestSerialNumber 1 S1<0>",
                                    "RequestModelNumber 1 11",
                                    "RequestSoftwareVersion 1 1",
                                    "RequestLingoProtocolVersion 1 14",
                                    "GetMonoImageLimits 1 4x4",
                                    "GetColorImageLimits 1 4x4",
                                    "ResetDbSelection 1",
                                    "GetDbRecordCount 1 37",
                                    "RetrieveDbRecords 1 A01A02A03A04A05",
                                    "SelectSortDbRecord 1",
                                    "GetDbRecordCount 1 2",
                                    "SelectDbRecord 1",
                                    "PlayCurrentSelection 1",
                                    "GetNumPlayingTracks 1 2",
                                    "SetCurrentPlayingTrack 1",
                                    "GetCurrentTrackIndex 1 1",
                                    "PlayControl 1",
                                    "GetPlayStatus 1 2",
                                    "GetTrackTitle 1 T01",
                                    "GetTrackArtist 1 A01",
                                    "GetTrackAlbum 1 B1",
                                    "GetIndexedTrackInfo 1 <5>G1",
                                    "SetShuffle 1",
                                    "SetRepeat 1",
                                    "SetShuffle 1",
                                    "GetShuffle 1 1",
                                    "SetRepeat 1",
                                    "GetRepeat 1 2",
                                    "getSampleRate 1 48000",
                                    "waitAudioAttributes 0 -",
                                    "ReleaseButtons 1",
                                    "ExitExtendedMode 1",
                                    "reenterExtendedMode 0",
                                    "CloseIpod 1",
                                    "isIdentified 0"};

}  // namespace

std::vector<std::string> serialResults() { return {std::begin(kResults), std::end(kResults)}; }

}  // namespace virtual_session
