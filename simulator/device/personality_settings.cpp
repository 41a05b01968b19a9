#include "device/personality_settings.h"

#include <algorithm>
#include <functional>
#include <stdexcept>

namespace simulator {

namespace {

using Assign = std::function<void(Personality&, uint32_t)>;

/// A switch. Its value is a number, or one of some words, each of which means its index in the
/// list.
struct Setting {
  const char* name;
  std::vector<std::string> words;  ///< empty: a number
  uint32_t least;                  ///< of a number, as `most`
  uint32_t most;
  const char* meaning;
  Assign assign;
};

constexpr uint32_t kMostMs = 3600000;
constexpr uint32_t kLeastIntervalMs = 10;
constexpr uint32_t kMostAttempts = 1000;
constexpr uint32_t kMostSpeed = 100;

const std::vector<std::string>& noOrYes() {
  static const std::vector<std::string> words = {"no", "yes"};
  return words;
}

Setting flag(const char* name, const char* meaning, bool Personality::*field) {
  return {name, noOrYes(), 0,
          0,    meaning,   [field](Personality& p, uint32_t value) { p.*field = value != 0; }};
}

Setting span(const char* name, const char* meaning, Time Personality::*field, uint32_t least = 0) {
  return {name,    {},
          least,   kMostMs,
          meaning, [field](Personality& p, uint32_t value) { p.*field = milliseconds(value); }};
}

template <typename Choice>
Setting choice(const char* name, std::vector<std::string> words, const char* meaning,
               Choice Personality::*field) {
  return {
      name,    std::move(words),
      0,       0,
      meaning, [field](Personality& p, uint32_t value) { p.*field = static_cast<Choice>(value); }};
}

std::vector<Setting> identificationSettings() {
  return {
      {"silent-identifications",
       {},
       0,
       kMostAttempts,
       "announcements that get no answer at first",
       [](Personality& p, uint32_t value) { p.silentIdentifications = value; }},
      flag("silent-before-identification", "ignores all before the announcement",
           &Personality::silentBeforeIdentification),
      flag("refuses-second-identification", "refuses a second announcement",
           &Personality::refusesSecondIdentification),
      choice("identification-end", {"chain", "mode"}, "how identification ends",
             &Personality::identificationEnd),
      span("accessory-info-delay", "ms until it asks about the accessory",
           &Personality::accessoryInfoDelay),
      span("accessory-info-patience", "ms that it waits for the answer",
           &Personality::accessoryInfoPatience),
      flag("repeats-accessory-info", "asks once more when it got no answer",
           &Personality::repeatsAccessoryInfo),
      flag("acknowledges-accessory-info", "acknowledges RetAccessoryInfo",
           &Personality::acknowledgesAccessoryInfo),
      flag("asks-sample-rates", "asks for the accessory's sample rates",
           &Personality::asksSampleRates),
      span("audio-attributes-delay", "ms until TrackNewAudioAttributes follows",
           &Personality::audioAttributesDelay),
      flag("audio-ack-opens-notifications", "notifies only after its acknowledgement",
           &Personality::audioAckOpensNotifications),
  };
}

std::vector<Setting> answerSettings() {
  return {
      span("packet-gap", "ms of pause that end a packet", &Personality::packetGap),
      choice("length-form", {"short", "long"}, "of the frames that it sends",
             &Personality::lengthForm),
      choice("unknown-command", {"unknown-id", "failed", "silence"}, "answer to the unknown",
             &Personality::unknownCommand),
      choice("outside-extended-mode", {"bad-parameter", "silence"}, "answer outside that mode",
             &Personality::outsideExtendedMode),
      flag("display-needs-extended-mode", "refuses images outside the extended mode",
           &Personality::displayNeedsExtendedMode),
      span("mode-change-pending", "ms that a change of the mode is pending",
           &Personality::modeChangePending),
      flag("mode-change-together", "sends both acknowledgements in one write",
           &Personality::modeChangeTogether),
      span("play-pending", "ms that PlayCurrentSelection pends", &Personality::playPending),
      span("sound-delay", "ms until it plays, then acknowledges", &Personality::soundDelay),
      span("answer-delay", "ms before every answer", &Personality::answerDelay),
      span("acknowledgement-delay", "ms more before an acknowledgement",
           &Personality::acknowledgementDelay),
      flag("count-before-select", "selects only what was counted before",
           &Personality::countBeforeSelect),
      flag("deselects-playlists", "undoes their selection by an index of -1",
           &Personality::deselectsPlaylists),
      choice("track-selection", {"list", "alone"}, "what plays when a track is selected",
             &Personality::trackSelection),
      choice("track-order", {"artist", "name"}, "of the list of all tracks",
             &Personality::trackOrder),
  };
}

std::vector<Setting> playbackSettings() {
  return {
      {"previous-restarts-after",
       {},
       0,
       kMostMs,
       "ms until previous restarts; 0: never",
       [](Personality& p, uint32_t value) {
         p.player.previousRestartsAfter = milliseconds(value);
       }},
      {"seek-speed",
       {},
       1,
       kMostSpeed,
       "how many times faster winding is",
       [](Personality& p, uint32_t value) { p.player.seekSpeed = static_cast<int>(value); }},
      choice("bad-track-index", {"bad-parameter", "failed"}, "answer to it, for a track's texts",
             &Personality::badTrackIndex),
      flag("tells-genre", "returns the genre of a track", &Personality::tellsGenre),
      span("position-interval", "ms between position notifications", &Personality::positionInterval,
           kLeastIntervalMs),
      span("notification-jitter", "ms by which they can be late", &Personality::notificationJitter),
      {"image-interval",
       {},
       0,
       kMostMs,
       "ms in which it shows no second image",
       [](Personality& p, uint32_t value) { p.display.imageInterval = milliseconds(value); }},
      {"colour", noOrYes(), 0, 0, "a colour screen",
       [](Personality& p, uint32_t value) { p.display.colour = value != 0; }},
  };
}

const std::vector<Setting>& settings() {
  static const std::vector<Setting> all = [] {
    std::vector<Setting> rows = identificationSettings();
    for (const auto& more : {answerSettings(), playbackSettings()}) {
      rows.insert(rows.end(), more.begin(), more.end());
    }
    return rows;
  }();
  return all;
}

/// Returns the possible values, such as "no|yes" or "0...100".
std::string valuesOf(const Setting& setting) {
  if (setting.words.empty()) {
    return std::to_string(setting.least) + "..." + std::to_string(setting.most);
  }
  std::string all;
  for (const std::string& word : setting.words)
    all += (all.empty() ? "" : "|") + word;
  return all;
}

[[noreturn]] void refuseSetting(const std::string& text, const std::string& why) {
  throw std::invalid_argument("setting '" + text + "': " + why);
}

const Setting& find(const std::string& name, const std::string& text) {
  const auto found = std::find_if(settings().begin(), settings().end(),
                                  [&](const Setting& each) { return name == each.name; });
  if (found == settings().end()) refuseSetting(text, "there is no switch '" + name + "'");
  return *found;
}

uint32_t parseNumber(const Setting& setting, const std::string& value, const std::string& text) {
  constexpr size_t kMostDigits = 9;
  const bool digits = !value.empty() && value.size() <= kMostDigits &&
                      std::all_of(value.begin(), value.end(),
                                  [](char letter) { return letter >= '0' && letter <= '9'; });
  const uint32_t number = digits ? static_cast<uint32_t>(std::stoul(value)) : 0;
  if (!digits || number < setting.least || number > setting.most) {
    refuseSetting(text, "write a number, " + valuesOf(setting));
  }
  return number;
}

uint32_t parseWord(const Setting& setting, const std::string& value, const std::string& text) {
  const auto word = std::find(setting.words.begin(), setting.words.end(), value);
  if (word == setting.words.end()) refuseSetting(text, "write one of " + valuesOf(setting));
  return static_cast<uint32_t>(word - setting.words.begin());
}

}  // namespace

void applySetting(Personality& personality, const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) refuseSetting(text, "write it as NAME=VALUE");
  const Setting& setting = find(text.substr(0, equals), text);
  const std::string value = text.substr(equals + 1);
  setting.assign(personality, setting.words.empty() ? parseNumber(setting, value, text)
                                                    : parseWord(setting, value, text));
}

std::string settingsHelp() {
  constexpr size_t kColumn = 39;
  std::string help;
  for (const Setting& setting : settings()) {
    const bool isTime = setting.words.empty() && setting.most == kMostMs;
    std::string usage =
        std::string("  ") + setting.name + "=" + (isTime ? "MS" : valuesOf(setting));
    if (usage.size() >= kColumn) usage += "\n" + std::string(kColumn, ' ');
    usage.resize(std::max(kColumn, usage.size()), ' ');
    help += usage + setting.meaning + "\n";
  }
  return help;
}

}  // namespace simulator
