#include "iaptrace/shown_personality.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "wire/lingo.h"
#include "wire/payload.h"

namespace iaptrace {
namespace {

using nlohmann::ordered_json;
using simulator::Lingo;
using simulator::PayloadReader;

std::string versionText(unsigned major, unsigned minor) {
  return std::to_string(major) + "." + std::to_string(minor);
}

/// Returns the text up to the 00 that ends it.
std::string textIn(ByteView bytes) {
  const std::string all(bytes.begin(), bytes.end());
  return all.substr(0, all.find('\0'));
}

bool isLingo(uint8_t number) { return number < 32; }

void showGeneral(const Asked& asked, const Message& reply, ShownPersonality& shown) {
  PayloadReader data(reply.data);
  switch (reply.command) {
    case simulator::kReturnIpodName:
      shown.name = textIn(reply.data);
      break;
    case simulator::kReturnIpodSoftwareVersion:
      if (reply.data.size() >= 3) {
        const Bytes& part = reply.data;
        shown.softwareVersion = versionText(part[0], part[1]) + "." + std::to_string(part[2]);
      }
      break;
    case simulator::kReturnIpodSerialNum:
      shown.serialNumber = textIn(reply.data);
      break;
    case simulator::kReturnIpodModelNum:
      shown.modelId = data.u32();
      shown.modelNumber = textIn(data.rest());
      break;
    case simulator::kReturnLingoProtocolVersion: {
      const uint8_t lingo = data.u8();
      const unsigned major = data.u8();
      if (asked.message().data == Bytes{lingo})
        shown.lingoes[lingo] = versionText(major, data.u8());
      break;
    }
    default:
      break;
  }
}

void showExtended(const Message& reply, ShownPersonality& shown) {
  PayloadReader data(reply.data);
  switch (reply.command) {
    case simulator::kExtendedReturnIpodName:
      shown.name = textIn(reply.data);
      break;
    case simulator::kReturnMonoDisplayImageLimits:
    case simulator::kReturnColorDisplayImageLimits: {
      constexpr unsigned kMostSide = 0xFFF;
      const unsigned width = data.u16();
      const unsigned height = data.u16();
      if (width > kMostSide || height > kMostSide) break;
      shown.imageLimits = std::to_string(width) + "x" + std::to_string(height);
      break;
    }
    default:
      break;
  }
}

/// A lingo whose version is refused is not spoken.
void showRefusedLingo(const Asked& asked, ShownPersonality& shown) {
  const Message& request = asked.message();
  const bool isRefused = request.is(Lingo::kGeneral, simulator::kRequestLingoProtocolVersion) &&
                         asked.status() == static_cast<uint8_t>(simulator::Status::kBadParameter) &&
                         request.data.size() == 1 && isLingo(request.data[0]);
  if (isRefused) shown.lingoes[request.data[0]] = std::nullopt;
}

/// Returns the text with U+FFFD for what is not UTF-8: JSON has no other bytes.
std::string dumped(const ordered_json& value, int indent = -1) {
  return value.dump(indent, ' ', false, ordered_json::error_handler_t::replace);
}

/// Returns the text as it is in JSON; nothing when ipodsim takes no text of that length.
std::optional<std::string> usableText(const std::optional<std::string>& text) {
  constexpr size_t kLongestText = 255;
  if (!text) return text;
  const auto written = ordered_json::parse(dumped(*text)).get<std::string>();
  return written.size() <= kLongestText ? std::optional(written) : std::nullopt;
}

template <typename Value>
void put(ordered_json& object, const char* key, const std::optional<Value>& value) {
  if (value) object[key] = *value;
}

void putLingoes(ordered_json& file, const ShownPersonality& shown) {
  for (const auto& [lingo, version] : shown.lingoes) {
    char id[3];
    std::snprintf(id, sizeof id, "%02X", lingo & 0x1Fu);
    file["lingoes"][id] = version ? ordered_json(*version) : ordered_json(nullptr);
  }
}

/// Writes the switches. An iPod can state longer times than ipodsim waits.
void putSettings(ordered_json& file, const ShownPersonality& shown) {
  constexpr uint32_t kMost = 3600000;
  constexpr uint32_t kMostAnnouncements = 1000;
  for (const auto& [name, value] : shown.settings) {
    const uint32_t most = name == "silent-identifications" ? kMostAnnouncements : kMost;
    const auto* number = std::get_if<uint32_t>(&value);
    ordered_json& setting = file["settings"][name];
    if (number != nullptr) {
      setting = std::min(*number, most);
    } else {
      setting = std::get<std::string>(value);
    }
  }
}

}  // namespace

void showDescriptions(const std::vector<Asked>& asked, ShownPersonality& shown) {
  for (const Asked& each : asked) {
    showRefusedLingo(each, shown);
    const Message* reply = each.reply();
    if (reply == nullptr) continue;
    if (reply->lingo == static_cast<uint8_t>(Lingo::kGeneral)) showGeneral(each, *reply, shown);
    if (reply->lingo == static_cast<uint8_t>(Lingo::kExtendedInterface)) {
      showExtended(*reply, shown);
    }
  }
}

ShownPersonality shownPersonality(const Conversation& items) {
  ShownPersonality shown;
  const std::vector<Asked> asked = askedIn(items);
  showIdentification(items, asked, shown);
  showDescriptions(asked, shown);
  showAnswers(items, asked, shown);
  showDatabase(asked, shown);
  showPlayback(items, asked, shown);
  return shown;
}

std::string personalityJson(const ShownPersonality& shown) {
  ordered_json file = ordered_json::object();
  put(file, "name", usableText(shown.name));
  put(file, "softwareVersion", shown.softwareVersion);
  put(file, "serialNumber", usableText(shown.serialNumber));
  put(file, "modelId", shown.modelId);
  put(file, "modelNumber", usableText(shown.modelNumber));
  putLingoes(file, shown);
  put(file, "imageLimits", shown.imageLimits);
  put(file, "extraAccessoryInfo", shown.extraAccessoryInfo);
  putSettings(file, shown);
  constexpr int kIndent = 2;
  return dumped(file, kIndent) + "\n";
}

}  // namespace iaptrace
