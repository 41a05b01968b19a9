#include "iaptrace/shown_personality.h"

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
      const unsigned width = data.u16();
      shown.imageLimits = std::to_string(width) + "x" + std::to_string(data.u16());
      break;
    }
    default:
      break;
  }
}

bool isLingoOfSimulator(uint8_t lingo) { return lingo < 32; }

/// A lingo whose version is refused is not spoken.
void showRefusedLingo(const Asked& asked, ShownPersonality& shown) {
  const Message& request = asked.message();
  const bool isRefused = request.is(Lingo::kGeneral, simulator::kRequestLingoProtocolVersion) &&
                         asked.status() == static_cast<uint8_t>(simulator::Status::kBadParameter) &&
                         request.data.size() == 1 && isLingoOfSimulator(request.data[0]);
  if (isRefused) shown.lingoes[request.data[0]] = std::nullopt;
}

/// Returns the text with U+FFFD for what is not UTF-8: JSON has no other bytes.
std::string dumped(const ordered_json& value) {
  constexpr int kIndent = 2;
  return value.dump(kIndent, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

template <typename Value>
void put(ordered_json& object, const char* key, const std::optional<Value>& value) {
  if (value) object[key] = *value;
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
  put(file, "name", shown.name);
  put(file, "softwareVersion", shown.softwareVersion);
  put(file, "serialNumber", shown.serialNumber);
  put(file, "modelId", shown.modelId);
  put(file, "modelNumber", shown.modelNumber);
  for (const auto& [lingo, version] : shown.lingoes) {
    char id[3];
    std::snprintf(id, sizeof id, "%02X", lingo & 0x1Fu);
    file["lingoes"][id] = version ? ordered_json(*version) : ordered_json(nullptr);
  }
  put(file, "imageLimits", shown.imageLimits);
  put(file, "extraAccessoryInfo", shown.extraAccessoryInfo);
  for (const auto& [name, value] : shown.settings) {
    std::visit([&, &key = name](const auto& one) { file["settings"][key] = one; }, value);
  }
  return dumped(file);
}

}  // namespace iaptrace
