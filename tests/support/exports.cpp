#include "support/exports.h"

#include <ipodctl.h>

#include <algorithm>
#include <iterator>
#include <stdexcept>

namespace exports {
namespace {

constexpr int kMostUnits = 40;
// No list of the built-in library is longer, and no track of it.
constexpr int kMostItems = 1000;
constexpr int kMostMilliseconds = 10000000;
// The play-all tab's.
constexpr int kLowestIndex = -35;

constexpr Known kCount{0, kMostItems};
constexpr Known kFileCount{-1, kMostItems};
constexpr Known kIndex{kLowestIndex, kMostItems - 1};
constexpr Known kTrackIndex{-1, kMostItems - 1};
constexpr Known kPosition{0, kMostMilliseconds};
constexpr Known kIpodName{INT_MIN, INT_MAX, "Demo iPod"};
constexpr Known kSerialNumber{INT_MIN, INT_MAX, "8K821D0ZY5N"};

constexpr Waits kLongestCommand{4, 2};

// ---------------------------------------------------------------- legal effects

bool isUntouched(const std::string& words) { return words == Output::kNothing; }

bool writesNothing(const Effect& effect) {
  return std::all_of(effect.written.begin(), effect.written.end(), isUntouched);
}

bool isAnything(const Effect&) { return true; }  // whatever the iPod says

bool returnsZero(const Effect& effect) { return effect.result == 0; }

bool returnsOne(const Effect& effect) {
  return effect.result == 1;
}  // as the host's isochplay says

bool returnsYesOrNo(const Effect& effect) { return effect.result == 0 || effect.result == 1; }

bool returnsAType(const Effect& effect) {
  return effect.result == -1 || (effect.result >= IPOD_PLAYLISTS && effect.result <= IPOD_TYPE_8);
}

bool writesANumber(const Effect& effect) { return effect.result == 0 && effect.wroteFirst(); }

bool writesAStatus(const Effect& effect) {
  return writesANumber(effect) && effect.number() >= IPOD_STOPPED && effect.number() <= IPOD_PAUSED;
}

bool writesAModeIfAny(const Effect& effect) {
  if (!effect.wroteFirst()) return effect.result == 0;
  return writesANumber(effect) && effect.number() >= IPOD_MODE_OFF &&
         effect.number() <= IPOD_MODE_ALBUMS;
}

bool writesAnIndexIfItReportsOne(const Effect& effect) {
  return returnsYesOrNo(effect) && effect.wroteFirst() == (effect.result == 1);
}

bool leadsToAnIndex(const Effect& effect) {
  return writesAnIndexIfItReportsOne(effect) &&
         (effect.result == 0 || effect.number() >= kLowestIndex);
}

// The second buffer is for what the first one has no room for.
bool writesAName(const Effect& effect) {
  return effect.result == 0 && (isUntouched(effect.written.back()) || effect.isFull);
}

bool writesTextsIfItReportsAny(const Effect& effect) {
  if (effect.result == -1) return writesNothing(effect);
  return effect.result == 0 && effect.wroteFirst() && effect.written.back() == "UnKnown";
}

bool wroteFirst(const Effect& effect) { return effect.wroteFirst(); }

bool wroteTheTitle(const Effect& effect) {
  constexpr std::size_t kTitle = 3;
  return effect.result == 0 && !isUntouched(effect.written[kTitle]);
}

// ---------------------------------------------------------------- calls

template <int (*kExport)()>
Effect plain(unsigned) {
  return Effect(kExport());
}

/// With an argument from kFirst on.
template <int (*kExport)(int), int kFirst, unsigned kValues>
Effect command(unsigned variety) {
  return Effect(kExport(kFirst + static_cast<int>(variety % kValues)));
}

Effect effectOf(int result, std::initializer_list<const Output*> outputs) {
  Effect effect(result);
  for (const Output* output : outputs)
    effect.add(*output);
  return effect;
}

/// Other threads may change the index while the host reads it.
Effect entry(const int* index) {
  Number copy;
  if (index != nullptr) *copy.data() = __atomic_load_n(index, __ATOMIC_RELAXED);
  return effectOf(index != nullptr ? 1 : 0, {&copy});
}

template <const int* (*kExport)()>
Effect move(unsigned) {
  return entry(kExport());
}

Effect open(unsigned variety) {
  constexpr unsigned kTypes = 8;
  const unsigned type = variety / 3 % kTypes;
  return entry(IpodGetFirstItem(variety % 3 == 0 ? 0 : 1, static_cast<int>(type) + IPOD_PLAYLISTS,
                                static_cast<int>(variety / (3 * kTypes) % 2)));
}

Effect askForAudio(unsigned) { return Effect(isIpodAudioPresent(1, 2, 3, 4)); }

Effect setSameIpod(unsigned variety) {
  IpodSetSameIpod(static_cast<int>(variety % 2));
  return {};
}

template <int (*kExport)(int*)>
Effect number(unsigned) {
  Number written;
  return effectOf(kExport(written.data()), {&written});
}

template <int (*kExport)(unsigned short*, int)>
Effect deviceText(unsigned) {
  Text text(kMostUnits);
  return effectOf(kExport(text.data(), kMostUnits), {&text});
}

template <int (*kExport)(int, unsigned short*, unsigned short*, int)>
Effect entryName(unsigned variety) {
  const unsigned units = 1 + variety % kMostUnits;
  Text first(units);
  Text second(units);
  const int result = kExport(0, first.data(), second.data(), static_cast<int>(units));
  return effectOf(result, {&first, &second});
}

Effect trackInfo(unsigned) {
  Number index;
  Text artist(kMostUnits), album(kMostUnits), title(kMostUnits), genre(kMostUnits);
  Text fifth(kMostUnits);
  const int result = IpodGetTrackInfo(index.data(), artist.data(), album.data(), title.data(),
                                      genre.data(), fifth.data(), kMostUnits);
  return effectOf(result, {&index, &artist, &album, &title, &genre, &fifth});
}

// ---------------------------------------------------------------- with the built-in library

/// A zero byte may follow the text.
bool isKnownText(const std::string& words, const std::string& text) {
  return isUntouched(words) || words == text || words == text + "<0>";
}

bool isKnown(const Effect& effect, const Known& known) {
  if (known.text != nullptr) return isKnownText(effect.written.front(), known.text);
  if (!effect.written.empty() && !effect.wroteFirst()) return true;
  const bool isRange = known.lowest != INT_MIN || known.highest != INT_MAX;
  if (!isRange) return true;
  const int number = effect.written.empty() ? effect.result : effect.number();
  return number >= known.lowest && number <= known.highest;
}

}  // namespace

void Effect::add(const Output& output) {
  if (written.empty()) isFull = output.isFull();
  written.push_back(output.words());
  isIntact = isIntact && output.isIntact();
}

const std::vector<Export>& allExports() {
#define EXPORT(name, ...) {#name, __VA_ARGS__},
  static const std::vector<Export> all{
#include "support/exports.inc"
  };
#undef EXPORT
  return all;
}

const Export& exportCalled(const std::string& name) {
  const auto& all = allExports();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Export& each) { return each.name == name; });
  if (found == all.end()) throw std::invalid_argument("no export is called " + name);
  return *found;
}

Waits waitsOfCommand(int code, int tracks) {
  switch (code) {
    case IPOD_NEXT_TRACK:  // the status, the index and the count come first
      return {3, 1};
    case IPOD_PREVIOUS_TRACK:  // these, and the index again and a correction afterwards
    case IPOD_PREVIOUS_TRACK_NO_RESTART:
      return kLongestCommand;
    case IPOD_PLAY:  // the newer code, the status and the toggle
    case IPOD_PAUSE:
      return {1, 2};
    case IPOD_NEXT_GROUP:  // the playing index, the group's name, the count, the names, and to play
    case IPOD_PREVIOUS_GROUP:
      return {3 + tracks, 1};
    default:
      return {0, 1};
  }
}

bool MadeCall::isPromised() const {
  return effect.isIntact && exported->isLegal(effect) && isKnown(effect, exported->known);
}

MadeCall makeCall(const Export& exported, unsigned variety, const std::function<Duration()>& now) {
  MadeCall made;
  made.exported = &exported;
  const Duration start = now();
  made.effect = exported.make(variety);
  made.took = now() - start;
  return made;
}

std::string describe(const MadeCall& made) {
  using std::chrono::milliseconds;
  std::string text =
      std::string(made.exported->name) + " returned " + std::to_string(made.effect.result);
  for (const std::string& words : made.effect.written)
    text += ", wrote " + words;
  if (!made.effect.isIntact) text += ", also where it may not";
  const auto took = std::chrono::duration_cast<milliseconds>(made.took).count();
  return text + ", after " + std::to_string(took) + " ms";
}

}  // namespace exports
