#include "support/export_calls.h"

#include <ipodctl.h>

#include <algorithm>
#include <string>

#include "support/guarded.h"

namespace race {
namespace {

using session::GuardedInt;
using session::GuardedUnits;

constexpr char kIpodName[] = "Demo iPod";
constexpr char kSerialNumber[] = "8K821D0ZY5N";
constexpr int kMostUnits = 40;
// No list of the built-in library is longer, and no track of it.
constexpr int kMostItems = 1000;
constexpr int kMostMilliseconds = 10000000;
// The play-all tab's.
constexpr int kLowestIndex = -35;

Outcome result(int result, bool promised) { return {result, 0, promised}; }

// ---------------------------------------------------------------- without outputs

template <int (*kExport)()>
Outcome alwaysZero(unsigned) {
  const int returned = kExport();
  return result(returned, returned == 0);
}

template <int (*kExport)()>
Outcome yesOrNo(unsigned) {
  const int returned = kExport();
  return result(returned, returned == 0 || returned == 1);
}

/// With an argument from kFirst on.
template <int (*kExport)(int), int kFirst, unsigned kCount>
Outcome command(unsigned variety) {
  const int returned = kExport(kFirst + static_cast<int>(variety % kCount));
  return result(returned, returned == 0);
}

/// Other threads may change the index while the host reads it.
Outcome entry(const int* index) {
  if (index == nullptr) return {};
  const int now = __atomic_load_n(index, __ATOMIC_RELAXED);
  return {1, now, now >= kLowestIndex && now < kMostItems};
}

template <const int* (*kExport)()>
Outcome move(unsigned) {
  return entry(kExport());
}

Outcome open(unsigned variety) {
  constexpr unsigned kTypes = 8;
  const unsigned type = variety / 3 % kTypes;
  return entry(IpodGetFirstItem(variety % 3 == 0 ? 0 : 1, static_cast<int>(type) + IPOD_PLAYLISTS,
                                static_cast<int>(variety / (3 * kTypes) % 2)));
}

Outcome askForAudio(unsigned) {
  const int present = isIpodAudioPresent(1, 2, 3, 4);
  return result(present, present == 1);
}

Outcome setSameIpod(unsigned variety) {
  IpodSetSameIpod(static_cast<int>(variety % 2));
  return {};
}

Outcome currentType(unsigned) {
  const int type = IpodGetType();
  return result(type, type == -1 || (type >= IPOD_PLAYLISTS && type <= IPOD_TYPE_8));
}

Outcome countPlaylists(unsigned) {
  const int count = IpodGetNumberOfPlaylist();
  return result(count, count >= 0 && count <= kMostItems);
}

// ---------------------------------------------------------------- numbers

enum class Writes { kAlways, kSometimes };

template <int (*kExport)(int*), int kLowest, int kHighest, Writes kWrites>
Outcome number(unsigned) {
  GuardedInt guarded;
  const int returned = kExport(guarded.value());
  const int value = *guarded.value();
  const bool isIn = value >= kLowest && value <= kHighest;
  const bool mayBe = isIn || (kWrites == Writes::kSometimes && guarded.isUntouched());
  return {returned, value, returned == 0 && guarded.isGuarded() && mayBe, isIn};
}

Outcome trackIndex(unsigned) {
  GuardedInt index;
  const int returned = IpodGetTrackIndex(index.value());
  const int value = *index.value();
  const bool isIn = value >= -1 && value < kMostItems;
  const bool answered = returned == 1;
  return {returned, value, answered ? index.isGuarded() && isIn : index.isUntouched(), answered};
}

// ---------------------------------------------------------------- texts

/// A zero byte may follow the text.
bool isTextOrNothing(GuardedUnits& text, const std::string& whole) {
  return text.isUntouchedBut(0) || (text.isUntouchedBut(whole.size() + 1) &&
                                    std::equal(whole.begin(), whole.end(), text.units()));
}

Outcome deviceText(int (*read)(unsigned short*, int), const std::string& whole) {
  GuardedUnits text;
  const int returned = read(text.units(), kMostUnits);
  return {returned, 0, returned == 0 && isTextOrNothing(text, whole), !text.isUntouchedBut(0)};
}

Outcome ipodName(unsigned) { return deviceText(IpodGetName, kIpodName); }

Outcome serialNumber(unsigned) { return deviceText(IpodGetSerialNumber, kSerialNumber); }

template <int (*kExport)(int, unsigned short*, unsigned short*, int)>
Outcome entryName(unsigned variety) {
  const int units = 1 + static_cast<int>(variety % kMostUnits);
  const auto size = static_cast<size_t>(units);
  GuardedUnits first;
  GuardedUnits second;
  const int returned = kExport(0, first.units(), second.units(), units);
  return result(returned,
                returned == 0 && first.isUntouchedBut(size) && second.isUntouchedBut(size));
}

Outcome trackInfo(unsigned) {
  GuardedInt index;
  GuardedUnits texts[5];
  const int returned =
      IpodGetTrackInfo(index.value(), texts[0].units(), texts[1].units(), texts[2].units(),
                       texts[3].units(), texts[4].units(), kMostUnits);
  const size_t most = returned == 0 ? kMostUnits : 0;
  const bool inside = std::all_of(std::begin(texts), std::end(texts),
                                  [most](const auto& text) { return text.isUntouchedBut(most); });
  const int value = *index.value();
  const bool isIn = index.isGuarded() && value >= -1 && value < kMostItems;
  const bool known = returned == 0 ? isIn : returned == -1 && index.isUntouched();
  const bool answered = returned == 0 && !texts[2].isUntouchedBut(0);
  return {returned, value, known && inside, answered};
}

}  // namespace

// Without an answer each request costs a second. IpodConnect identifies itself three times, waits
// for the reader before and asks three times more; IpodDisconnect waits for the reader. The longest
// commands ask six times; the group commands ask for more names so long as the iPod answers.
const std::vector<ExportCall>& exportCalls() {
  constexpr Writes kAlways = Writes::kAlways;
  constexpr Writes kSometimes = Writes::kSometimes;
  static const std::vector<ExportCall> calls{
      {"IpodConnect", 8, yesOrNo<IpodConnect>},
      {"IpodDisconnect", 2, alwaysZero<IpodDisconnect>},
      {"IpodIsConnect", 0, yesOrNo<IpodIsConnect>},
      {"isIpodAudioPresent", 0, askForAudio},
      {"IpodSetSameIpod", 0, setSameIpod},
      {"IpodValidateUpDownTree", 0, alwaysZero<IpodValidateUpDownTree>},
      {"IpodCommand", 6, command<IpodCommand, IPOD_TOGGLE_PLAY_PAUSE, 14>},
      {"IpodSongPlay", 6, command<IpodSongPlay, -1, 9>},
      {"IpodSongGetNumElem", 1, number<IpodSongGetNumElem, 0, kMostItems, kAlways>},
      {"IpodGetTrackIndex", 1, trackIndex},
      {"IpodSetShuffleMode", 1, command<IpodSetShuffleMode, IPOD_MODE_OFF, 3>},
      {"IpodGetShuffleMode", 1, number<IpodGetShuffleMode, 1, 3, kSometimes>},
      {"IpodSetRepeatMode", 1, command<IpodSetRepeatMode, IPOD_MODE_OFF, 3>},
      {"IpodGetRepeatMode", 1, number<IpodGetRepeatMode, 1, 3, kSometimes>},
      {"IpodGetCurrentPlayStatus", 1,
       number<IpodGetCurrentPlayStatus, IPOD_STOPPED, IPOD_PAUSED, kAlways>},
      {"IpodGetCurrentTrackPosition", 1,
       number<IpodGetCurrentTrackPosition, 0, kMostMilliseconds, kAlways>},
      {"IpodGetFirstItem", 3, open},
      {"IpodGetNextItem", 0, move<IpodGetNextItem>},
      {"IpodGetPrevItem", 0, move<IpodGetPrevItem>},
      {"IpodGetParentItem", 2, move<IpodGetParentItem>},
      {"IpodCurItemIsEmpty", 3, yesOrNo<IpodCurItemIsEmpty>},
      {"IpodIsPlayAll", 0, yesOrNo<IpodIsPlayAll>},
      {"IpodIsTrack", 0, yesOrNo<IpodIsTrack>},
      {"IpodGetType", 0, currentType},
      {"IpodIsTabActive", 0, yesOrNo<IpodIsTabActive>},
      {"IpodIsTabVisualizationActive", 0, yesOrNo<IpodIsTabVisualizationActive>},
      {"IpodDisableTabVisualizationActive", 0, alwaysZero<IpodDisableTabVisualizationActive>},
      {"IpodEnableTabVisualizationActive", 0, alwaysZero<IpodEnableTabVisualizationActive>},
      {"IpodGetMediaFileCount", 1, number<IpodGetMediaFileCount, -1, kMostItems, kAlways>},
      {"IpodGetNumberOfPlaylist", 1, countPlaylists},
      {"IpodGetItemName", 2, entryName<IpodGetItemName>},
      {"IpodGetParentUpDownName", 4, entryName<IpodGetParentUpDownName>},
      {"IpodGetTrackInfo", 5, trackInfo},
      {"IpodGetName", 1, ipodName},
      {"IpodGetSerialNumber", 1, serialNumber}};
  return calls;
}

MadeCall makeCall(const ExportCall& call, unsigned variety, const std::function<Duration()>& now) {
  MadeCall made;
  made.call = &call;
  const Duration start = now();
  made.outcome = call.make(variety);
  made.took = now() - start;
  return made;
}

std::string describe(const MadeCall& made) {
  using std::chrono::milliseconds;
  const auto took = std::chrono::duration_cast<milliseconds>(made.took).count();
  return std::string(made.call->name) + " returned " + std::to_string(made.outcome.result) +
         ", wrote " + std::to_string(made.outcome.written) + ", after " + std::to_string(took) +
         " ms";
}

}  // namespace race
