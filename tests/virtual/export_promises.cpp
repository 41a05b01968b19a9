// How long each export may take, and what it may return and write.
#include <ipodctl.h>

#include <algorithm>
#include <string>

#include "virtual/promises.h"
#include "virtual/waits.h"

namespace virtual_session {
namespace {

// Behind the identification come the mode and the version.
constexpr milliseconds kConnecting = connecting(2);

// A step among the tracks: the playing index, the group's name, the count, the name of every track
// and to play.
constexpr milliseconds kGroupStep = requests(3 + kReferenceTracks, 1);

bool isUntouched(const std::string& words) { return words == Output::kNothing; }

bool writesNothing(const Call& call) {
  return std::all_of(call.written.begin(), call.written.end(), isUntouched);
}

bool returnsZero(const Call& call) { return call.result == 0; }

bool returnsYesOrNo(const Call& call) { return call.result == 0 || call.result == 1; }

bool isPresent(const Call& call) { return call.result == 1; }  // as the platform's stand-in says

bool writesANumber(const Call& call) {
  return call.result == 0 && !isUntouched(call.written.front());
}

bool writesAStatus(const Call& call) {
  const std::string& status = call.written.front();
  return call.result == 0 && (status == "0" || status == "1" || status == "2");
}

bool writesAModeIfAny(const Call& call) {
  const std::string& mode = call.written.front();
  return call.result == 0 && (isUntouched(mode) || mode == "1" || mode == "2" || mode == "3");
}

bool writesAnIndexIfItSaysSo(const Call& call) {
  return returnsYesOrNo(call) && isUntouched(call.written.front()) == (call.result == 0);
}

// -35 is the play-all tab's.
bool leadsToAnIndex(const Call& call) {
  constexpr int kLowestIndex = -35;
  if (call.result == 0) return isUntouched(call.written.front());
  return call.result == 1 && std::stoi(call.written.front()) >= kLowestIndex;
}

// The second buffer is for what the first one has no room for.
bool writesAName(const Call& call) {
  const bool isCut = call.written.front().size() >= static_cast<std::size_t>(kNameChars);
  return call.result == 0 && (isUntouched(call.written.back()) || isCut);
}

bool writesTextsIfItSaysSo(const Call& call) {
  if (call.result == -1) return writesNothing(call);
  return call.result == 0 && !isUntouched(call.written.front()) && call.written.back() == "UnKnown";
}

bool isAType(const Call& call) { return call.result >= -1 && call.result <= IPOD_TYPE_8; }

constexpr bool kWaitsForNobody = false;

bool isACount(const Call&) { return true; }  // whatever the iPod says

}  // namespace

const Promises& exportPromises() {
  static const Promises all{
      {"IpodConnect", kConnecting, returnsYesOrNo, kWaitsForNobody},
      {"IpodDisconnect", kClosing + kSteps, returnsZero},
      {"IpodIsConnect", kAtOnce, returnsYesOrNo, kWaitsForNobody},
      {"isIpodAudioPresent", kAtOnce, isPresent, kWaitsForNobody},
      {"IpodSetSameIpod", kAtOnce, returnsZero, kWaitsForNobody},
      {"IpodValidateUpDownTree", kAtOnce, returnsZero},
      // One request; for the next and the previous track the status, the index and the count come
      // first, and the index again and a correction behind it.
      {"IpodCommand(1)", requests(0, 1), returnsZero},
      {"IpodCommand(2)", requests(0, 1), returnsZero},
      {"IpodCommand(3)", requests(3, 1), returnsZero},
      {"IpodCommand(4)", requests(4, 2), returnsZero},
      {"IpodCommand(5)", requests(0, 1), returnsZero},
      {"IpodCommand(6)", requests(0, 1), returnsZero},
      {"IpodCommand(7)", requests(0, 1), returnsZero},
      {"IpodCommand(8)", requests(0, 1), returnsZero},
      {"IpodCommand(9)", requests(0, 1), returnsZero},
      // The newer code, the status and the toggle.
      {"IpodCommand(10)", requests(1, 2), returnsZero},
      {"IpodCommand(11)", requests(1, 2), returnsZero},
      {"IpodCommand(12)", kGroupStep, returnsZero},
      {"IpodCommand(13)", kGroupStep, returnsZero},
      {"IpodCommand(14)", requests(4, 2), returnsZero},
      // In a top list: a count for the track, four to select the whole library, and to play.
      {"IpodSongPlay", requests(3, 3), returnsZero},
      {"IpodSongGetNumElem", requests(1), writesANumber},
      {"IpodGetTrackIndex", requests(1), writesAnIndexIfItSaysSo},
      {"IpodSetShuffleMode", requests(0, 1), returnsZero},
      {"IpodGetShuffleMode", requests(1), writesAModeIfAny},
      {"IpodSetRepeatMode", requests(0, 1), returnsZero},
      {"IpodGetRepeatMode", requests(1), writesAModeIfAny},
      {"IpodGetCurrentPlayStatus", requests(1), writesAStatus},
      {"IpodGetCurrentTrackPosition", requests(1), writesANumber},
      // Two counts and a selection.
      {"IpodGetFirstItem", requests(2, 1), leadsToAnIndex},
      {"IpodGetNextItem", kAtOnce, leadsToAnIndex},
      {"IpodGetPrevItem", kAtOnce, leadsToAnIndex},
      {"IpodGetParentItem", requests(1, 1), leadsToAnIndex},
      // Selects, counts and takes the selection back.
      {"IpodCurItemIsEmpty", requests(1, 2), returnsYesOrNo},
      {"IpodIsPlayAll", kAtOnce, returnsYesOrNo, kWaitsForNobody},
      {"IpodIsTrack", kAtOnce, returnsYesOrNo},
      {"IpodGetType", kAtOnce, isAType},
      {"IpodIsTabActive", kAtOnce, returnsYesOrNo, kWaitsForNobody},
      {"IpodIsTabVisualizationActive", kAtOnce, returnsYesOrNo, kWaitsForNobody},
      {"IpodDisableTabVisualizationActive", kAtOnce, returnsZero, kWaitsForNobody},
      {"IpodEnableTabVisualizationActive", kAtOnce, returnsZero, kWaitsForNobody},
      {"IpodGetMediaFileCount", requests(1), writesANumber},
      {"IpodGetNumberOfPlaylist", requests(1), isACount},
      // A tab's label has two names.
      {"IpodGetItemName", requests(2), writesAName},
      // Selects, counts, asks and selects.
      {"IpodGetParentUpDownName", requests(2, 2), writesAName},
      {"IpodGetTrackInfo", requests(5), writesTextsIfItSaysSo},
      {"IpodGetName", requests(1), returnsZero},
      {"IpodGetSerialNumber", requests(1), returnsZero}};
  return all;
}

}  // namespace virtual_session
