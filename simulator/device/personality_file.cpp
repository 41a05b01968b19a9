#include "device/personality_file.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "device/personality_settings.h"
#include "music/file_content.h"
#include "wire/printable.h"

namespace simulator {
namespace {

using nlohmann::json;

constexpr size_t kLargestPersonality = size_t{64} * 1024;  // bytes
constexpr int kLevels = 4;
constexpr size_t kLongestText = 255;
constexpr uint8_t kLastInfoType = 31;
constexpr unsigned kMostSide = 0xFFF;

[[noreturn]] void refuseKey(const std::string& key, const std::string& why) {
  throw std::invalid_argument("\"" + key + "\" " + why);
}

std::string textOf(const std::string& key, const json& value) {
  if (!value.is_string()) refuseKey(key, "must be a text");
  auto text = value.get<std::string>();
  const bool fits = text.size() <= kLongestText && text.find('\0') == std::string::npos;
  if (!fits) refuseKey(key, "must be a text of at most 255 bytes without U+0000");
  return text;
}

uint32_t numberOf(const std::string& key, const json& value, uint32_t most) {
  if (!value.is_number_unsigned() || value.get<uint64_t>() > most) {
    refuseKey(key, "must be a whole number from 0 to " + std::to_string(most));
  }
  return value.get<uint32_t>();
}

const json& objectOf(const std::string& key, const json& value) {
  if (!value.is_object()) refuseKey(key, "must be an object");
  return value;
}

/// Reads numbers with a letter between them, like "1.1.2" or "320x240".
template <size_t kCount>
std::array<uint16_t, kCount> numbersOf(const std::string& key, const json& value, char between,
                                       unsigned most, const char* example) {
  const std::string text = textOf(key, value);
  std::array<uint16_t, kCount> numbers{};
  size_t at = 0;
  for (size_t i = 0; i < kCount; ++i) {
    size_t digits = 0;
    unsigned number = 0;
    for (; at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) != 0; ++at) {
      number = std::min(number * 10 + static_cast<unsigned>(text[at] - '0'), most + 1);
      ++digits;
    }
    const bool isLast = i + 1 == kCount;
    const bool isFollowed = isLast ? at == text.size() : at < text.size() && text[at] == between;
    if (digits == 0 || number > most || !isFollowed) {
      refuseKey(key, std::string("must be a text like ") + example);
    }
    numbers[i] = static_cast<uint16_t>(number);
    ++at;
  }
  return numbers;
}

void readSoftwareVersion(Personality& made, const std::string& key, const json& value) {
  const auto parts = numbersOf<3>(key, value, '.', 0xFF, "1.1.2");
  std::transform(parts.begin(), parts.end(), made.softwareVersion.begin(),
                 [](uint16_t part) { return static_cast<uint8_t>(part); });
}

void readLimits(Personality& made, const std::string& key, const json& value) {
  const auto sides = numbersOf<2>(key, value, 'x', kMostSide, "320x240");
  made.display.limits = {sides[0], sides[1]};
  made.screenWidth = std::max(made.screenWidth, sides[0]);
  made.screenHeight = std::max(made.screenHeight, sides[1]);
}

uint8_t lingoOf(const std::string& id) {
  unsigned lingo = 0;
  char more = 0;
  const bool isHex = id.size() == 2 && std::isxdigit(static_cast<unsigned char>(id[0])) != 0 &&
                     std::isxdigit(static_cast<unsigned char>(id[1])) != 0;
  if (!isHex || std::sscanf(id.c_str(), "%2x%c", &lingo, &more) != 1 || lingo > 0x1F) {
    refuseKey(id, "must be a lingo from 00 to 1F, like 0A");
  }
  return static_cast<uint8_t>(lingo);
}

/// Reads {"04": "1.14", "0A": null}; null is a lingo that the iPod does not speak.
void readLingoes(Personality& made, const std::string& key, const json& value) {
  for (const auto& [id, version] : objectOf(key, value).items()) {
    const uint8_t lingo = lingoOf(id);
    if (version.is_null()) {
      made.lingoes.erase(lingo);
      continue;
    }
    const auto parts = numbersOf<2>(id, version, '.', 0xFF, "1.14");
    made.lingoes[lingo] = {static_cast<uint8_t>(parts[0]), static_cast<uint8_t>(parts[1])};
  }
}

void readExtraInfo(Personality& made, const std::string& key, const json& value) {
  if (!value.is_array() || value.size() > kLastInfoType) refuseKey(key, "must be a short list");
  made.extraAccessoryInfo.clear();
  for (const json& type : value)
    made.extraAccessoryInfo.push_back(static_cast<uint8_t>(numberOf(key, type, kLastInfoType)));
}

/// Reads the switches of --set. Their values are words or numbers.
void readSettings(Personality& made, const std::string& key, const json& value) {
  for (const auto& [name, setting] : objectOf(key, value).items()) {
    const bool isWord = setting.is_string();
    if (!isWord && !setting.is_number_unsigned()) refuseKey(name, "must be a word or a number");
    if (name.find('=') != std::string::npos) refuseKey(name, "is not a switch");
    applySetting(
        made,
        name + "=" + (isWord ? textOf(name, setting) : std::to_string(setting.get<uint64_t>())));
  }
}

struct Entry {
  const char* key;
  void (*read)(Personality& made, const std::string& key, const json& value);
};

constexpr Entry kEntries[] = {
    {"name", [](Personality& made, const std::string& key,
                const json& value) { made.name = textOf(key, value); }},
    {"softwareVersion", &readSoftwareVersion},
    {"serialNumber", [](Personality& made, const std::string& key,
                        const json& value) { made.serialNumber = textOf(key, value); }},
    {"modelId",
     [](Personality& made, const std::string& key, const json& value) {
       made.modelId = numberOf(key, value, std::numeric_limits<uint32_t>::max());
     }},
    {"modelNumber", [](Personality& made, const std::string& key,
                       const json& value) { made.modelNumber = textOf(key, value); }},
    {"lingoes", &readLingoes},
    {"imageLimits", &readLimits},
    {"extraAccessoryInfo", &readExtraInfo},
    {"settings", &readSettings},
};

/// Parses JSON. Deep nesting, which could exhaust the stack, is refused.
json parseJson(std::string_view text) {
  const auto isShallow = [](int depth, json::parse_event_t, json&) {
    if (depth > kLevels) throw std::invalid_argument("it is nested too deeply");
    return true;
  };
  try {
    return json::parse(text.begin(), text.end(), isShallow);
  } catch (const json::exception& error) {
    throw std::invalid_argument(std::string("it is not JSON: ") + error.what());
  }
}

}  // namespace

bool isPersonalityFile(const std::string& text) {
  return std::filesystem::path(text).extension() == ".json";
}

Personality parsePersonality(std::string_view text) {
  const json root = parseJson(text);
  if (!root.is_object()) throw std::invalid_argument("it must be an object");
  Personality made = personality(personalityNames().front());
  made.preset = "file";
  for (const auto& [key, value] : root.items()) {
    const auto* entry = std::find_if(std::begin(kEntries), std::end(kEntries),
                                     [&name = key](const Entry& each) { return name == each.key; });
    if (entry == std::end(kEntries)) refuseKey(key, "is not a key of such a file");
    entry->read(made, key, value);
  }
  return made;
}

Personality readPersonality(const std::filesystem::path& file) {
  try {
    return parsePersonality(readFileContent(file, kLargestPersonality));
  } catch (const std::exception& error) {
    throw std::invalid_argument(printable(file.string() + ": " + error.what()) +
                                "; see ipodsim --help-personalities");
  }
}

const char* personalityFileHelp() {
  return "--personality FILE.json\n\n"
         "  A model in a file, as iaptrace personality makes it from a trace. Any key can\n"
         "  be left out; then it is as in the model classic. Example:\n\n"
         "  {\n"
         "    \"name\": \"Zoe's iPod\",\n"
         "    \"softwareVersion\": \"1.1.2\",\n"
         "    \"serialNumber\": \"8K821D0ZY5N\",\n"
         "    \"modelId\": 720913,\n"
         "    \"modelNumber\": \"MB147\",\n"
         "    \"lingoes\": {\"04\": \"1.14\", \"0A\": null},\n"
         "    \"imageLimits\": \"320x240\",\n"
         "    \"extraAccessoryInfo\": [2],\n"
         "    \"settings\": {\"mode-change-pending\": 300, \"colour\": \"no\"}\n"
         "  }\n\n"
         "  A lingo whose version is null is not spoken. The settings are those of --set,\n"
         "  which can change them again.\n";
}

}  // namespace simulator
