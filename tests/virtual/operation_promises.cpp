// How long each operation of the controller may take, and that it writes only when it succeeds.
#include <algorithm>

#include "virtual/promises.h"
#include "virtual/waits.h"

namespace virtual_session {
namespace {

bool returnsYesOrNo(const Effect& effect) { return effect.result == 0 || effect.result == 1; }

bool writesOnSuccess(const Effect& effect) {
  return returnsYesOrNo(effect) && effect.wroteFirst() == (effect.result == 1);
}

bool succeeds(const Effect& effect) { return effect.result == 1; }

}  // namespace

const Promises& operationPromises() {
  static const Promises all{{"connect", connecting(0), returnsYesOrNo},
                            {"CloseIpod", kClosing + kSteps, succeeds},
                            {"isIdentified", kAtOnce, returnsYesOrNo},
                            {"getSampleRate", kAtOnce, writesOnSuccess},
                            {"waitAudioAttributes", requests(3), writesOnSuccess},
                            {"reenterExtendedMode", requests(10), returnsYesOrNo},
                            {"EnterExtendedMode", requests(1), returnsYesOrNo},
                            {"ExitExtendedMode", kAtOnce, returnsYesOrNo},
                            {"GetIpodName", requests(1), writesOnSuccess},
                            {"RequestIpodName", requests(1), writesOnSuccess},
                            {"RequestSoftwareVersion", requests(1), writesOnSuccess},
                            {"RequestSerialNumber", requests(1), writesOnSuccess},
                            {"RequestModelNumber", requests(1), writesOnSuccess},
                            {"RequestLingoProtocolVersion", requests(1), writesOnSuccess},
                            {"ResetDbSelection", requests(1), returnsYesOrNo},
                            {"GetDbRecordCount", requests(1), writesOnSuccess},
                            // Records that arrived before a time-out stay.
                            {"RetrieveDbRecords", requests(kRecordsAtOnce), returnsYesOrNo},
                            {"SelectDbRecord", requests(0, 1), returnsYesOrNo},
                            {"SelectSortDbRecord", requests(0, 1), returnsYesOrNo},
                            {"PlayCurrentSelection", requests(0, 1), returnsYesOrNo},
                            {"PlayControl", requests(0, 1), returnsYesOrNo},
                            {"GetPlayStatus", requests(1), writesOnSuccess},
                            {"GetCurrentTrackIndex", requests(1), writesOnSuccess},
                            {"GetNumPlayingTracks", requests(1), writesOnSuccess},
                            {"SetCurrentPlayingTrack", requests(0, 1), returnsYesOrNo},
                            {"GetTrackTitle", requests(1), writesOnSuccess},
                            {"GetTrackArtist", requests(1), writesOnSuccess},
                            {"GetTrackAlbum", requests(1), writesOnSuccess},
                            {"GetIndexedTrackInfo", requests(1), writesOnSuccess},
                            {"GetShuffle", requests(1), writesOnSuccess},
                            {"SetShuffle", requests(0, 1), returnsYesOrNo},
                            {"GetRepeat", requests(1), writesOnSuccess},
                            {"SetRepeat", requests(0, 1), returnsYesOrNo},
                            {"GetMonoImageLimits", requests(1), writesOnSuccess},
                            {"GetColorImageLimits", requests(1), writesOnSuccess},
                            {"ReleaseButtons", kAtOnce, returnsYesOrNo}};
  return all;
}

}  // namespace virtual_session
