#include "device/personality.h"

#include <algorithm>
#include <stdexcept>

#include "wire/lingo.h"

namespace simulator {

namespace {

constexpr Version kFirstWithPlayAndPause{1, 13};
constexpr uint8_t kExtended = static_cast<uint8_t>(Lingo::kExtendedInterface);

struct Preset {
  const char* name;
  const char* meaning;
  void (*change)(Personality&);
};

void makeNano(Personality& nano) {
  nano.lingoes[kExtended] = {1, 13};
  nano.softwareVersion = {1, 0, 3};
  nano.modelId = 0x000C0006;
  nano.modelNumber = "MA980";
  nano.modeChangePending = milliseconds(300);
  nano.unknownCommand = UnknownCommand::kFailed;
  nano.screenWidth = 176;
  nano.screenHeight = 132;
  nano.display.limits = {166, 76};
}

void makeVideo(Personality& video) {
  video.lingoes[kExtended] = {1, 12};
  video.softwareVersion = {1, 3, 0};
  video.modelId = 0x000B0005;
  video.modelNumber = "MA448";
  video.identificationEnd = IdentificationEnd::kRemoteUiMode;
  video.asksSampleRates = false;
  video.unknownCommand = UnknownCommand::kSilence;
  video.display.limits = {310, 168};
  video.player.previousRestartsAfter = Time(0);
}

void makeMini(Personality& mini) {
  mini.lingoes[kExtended] = {1, 2};
  mini.softwareVersion = {1, 4, 1};
  mini.modelId = 0x00040003;
  mini.modelNumber = "M9800";
  mini.identificationEnd = IdentificationEnd::kRemoteUiMode;
  mini.asksSampleRates = false;
  mini.outsideExtendedMode = OutsideExtendedMode::kSilence;
  mini.unknownCommand = UnknownCommand::kFailed;
  mini.screenWidth = 138;
  mini.screenHeight = 110;
  mini.display.limits = {120, 65};
  mini.display.colour = false;
}

void makeTouch(Personality& touch) {
  touch.lingoes[kExtended] = {2, 0};
  touch.softwareVersion = {2, 2, 1};
  touch.modelId = 0x00100002;
  touch.modelNumber = "MB528";
  touch.acknowledgementDelay = milliseconds(40);
  touch.playPending = milliseconds(500);
  touch.acknowledgesAccessoryInfo = true;
  touch.extraAccessoryInfo = {static_cast<uint8_t>(AccessoryInfoType::kMinimumFirmware)};
  touch.display.limits = {0, 0};
}

void makeStrict(Personality& strict) {
  strict.refusesSecondIdentification = true;
  strict.displayNeedsExtendedMode = true;
  strict.audioAckOpensNotifications = true;
  strict.trackSelection = TrackSelection::kAlone;
  strict.outsideExtendedMode = OutsideExtendedMode::kSilence;
  strict.unknownCommand = UnknownCommand::kSilence;
  strict.notificationJitter = milliseconds(60);
  strict.display.imageInterval = seconds(15);
  strict.badTrackIndex = BadTrackIndex::kFailed;
  strict.tellsGenre = false;
  strict.deselectsPlaylists = false;
}

void makeHasty(Personality& hasty) {
  hasty.lingoes[kExtended] = {1, 12};
  hasty.softwareVersion = {1, 2, 1};
  hasty.modelId = 0x000B0010;
  hasty.modelNumber = "MA446";
  hasty.modeChangeTogether = true;
  hasty.accessoryInfoDelay = milliseconds(100);
  hasty.accessoryInfoPatience = milliseconds(500);
  hasty.repeatsAccessoryInfo = false;
  hasty.soundDelay = milliseconds(200);
}

constexpr Preset kPresets[] = {
    {"classic", "large colour screen, Extended Interface 1.14, answers at once",
     [](Personality&) {}},
    {"nano", "small colour screen, 1.13, mode changes pend for 300 ms", makeNano},
    {"video", "1.12 without play and pause codes, ends identification by its mode", makeVideo},
    {"mini", "grey screen, 1.02, silent outside the extended mode", makeMini},
    {"touch", "2.00, shows no image, slow to acknowledge", makeTouch},
    {"strict", "as classic, but refuses all that a model may refuse", makeStrict},
    {"hasty", "1.12, acknowledges a mode twice at once, asks and plays late", makeHasty},
};

const Preset& findPreset(const std::string& name) {
  const auto found = std::find_if(std::begin(kPresets), std::end(kPresets),
                                  [&](const Preset& each) { return name == each.name; });
  if (found == std::end(kPresets)) {
    std::string known;
    for (const Preset& preset : kPresets)
      known += std::string(" ") + preset.name;
    throw std::invalid_argument("there is no personality '" + name + "'; choose one of" + known);
  }
  return *found;
}

}  // namespace

const Version* Personality::versionOf(uint8_t lingo) const {
  const auto version = lingoes.find(lingo);
  return version == lingoes.end() ? nullptr : &version->second;
}

bool Personality::knowsPlayAndPause() const {
  const Version* const known = versionOf(kExtended);
  if (known == nullptr) return false;
  return known->major > kFirstWithPlayAndPause.major ||
         (known->major == kFirstWithPlayAndPause.major &&
          known->minor >= kFirstWithPlayAndPause.minor);
}

const std::vector<std::string>& personalityNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> all;
    for (const Preset& preset : kPresets)
      all.push_back(preset.name);
    return all;
  }();
  return names;
}

std::string personalityMeaning(const std::string& preset) { return findPreset(preset).meaning; }

Personality personality(const std::string& preset) {
  Personality made;
  made.preset = preset;
  findPreset(preset).change(made);
  return made;
}

}  // namespace simulator
