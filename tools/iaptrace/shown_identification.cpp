// What a trace shows of the way in which the iPod identifies an accessory.

#include <algorithm>

#include "iaptrace/shown_personality.h"
#include "wire/lingo.h"
#include "wire/payload.h"

namespace iaptrace {
namespace {

using simulator::AccessoryInfoType;
using simulator::Lingo;
using simulator::PayloadReader;
using trace::Record;

constexpr uint8_t kCapabilities = static_cast<uint8_t>(AccessoryInfoType::kCapabilities);

/// One connection, from the opening to the end of the device.
class IdentificationFinder {
 public:
  IdentificationFinder(const Conversation& conversation, const std::vector<Asked>& all,
                       ShownPersonality& found)
      : items(conversation), asked(all), shown(found), delay(answerDelay(all)) {}

  void find() {
    for (size_t i = 0; i < items.size(); ++i) {
      const Item& item = items[i];
      const bool isBorder =
          item.kind == Item::Kind::kEvent && item.event->kind != Record::Kind::kAudio;
      if (isBorder) endConnection();
      for (; next < asked.size() && asked[next].index < i; ++next) {
      }
      if (!item.isMessage()) continue;
      if (item.isFrom(Sender::kIpod)) {
        takeFromIpod(item);
      } else {
        takeFromHost(i, item);
      }
    }
    endConnection();
  }

 private:
  struct Connection {
    unsigned ignored = 0;  ///< announcements before the first answer
    bool isAnswered = false;
    bool isAccepted = false;
    bool isIgnoredBefore = false;  ///< another request before the announcement
    std::optional<trace::Time> announcedAt;
    std::optional<trace::Time> ratesAt;
    /// Of the last question for the capabilities that is not answered yet.
    std::optional<trace::Time> askedAt;
    bool wasAsked = false;
    bool wasRateAsked = false;
    bool wasRateTold = false;
    bool hasModeRequest = false;
    uint32_t offered = 0;
    bool isOffered = false;
    std::vector<uint8_t> extra;
  };

  void takeFromHost(size_t index, const Item& item) {
    const Message& message = item.message;
    const bool isAsked = next < asked.size() && asked[next].index == index;
    if (message.is(Lingo::kGeneral, simulator::kRequestRemoteUiMode)) now.hasModeRequest = true;
    if (isAsked && message.is(Lingo::kGeneral, simulator::kIdentifyDeviceLingoes)) {
      takeAnnouncement(asked[next]);
    } else if (isAsked && !now.isAccepted) {
      takeEarlyRequest(asked[next]);
    } else if (message.is(Lingo::kGeneral, simulator::kRetAccessoryInfo)) {
      takeAccessoryInfo(message);
    } else if (message.is(Lingo::kDigitalAudio, simulator::kRetAccSampleRateCaps)) {
      now.ratesAt = item.at;
    }
  }

  void takeAnnouncement(const Asked& announcement) {
    const auto status = announcement.status();
    if (!status) {
      if (!now.isAnswered) ++now.ignored;
      return;
    }
    if (now.isAccepted) shown.set("refuses-second-identification", *status != 0);
    if (!now.isAnswered) shown.settings["silent-identifications"] = now.ignored;
    now.isAnswered = true;
    if (*status != 0) return;
    if (now.isIgnoredBefore) shown.set("silent-before-identification", true);
    endIdentification();
    now = Connection();
    now.isAnswered = true;
    now.isAccepted = true;
    now.announcedAt = announcement.request->at;
  }

  void takeEarlyRequest(const Asked& request) {
    if (request.replies.empty()) {
      now.isIgnoredBefore = now.isIgnoredBefore || request.isIgnored;
    } else {
      shown.set("silent-before-identification", false);
    }
  }

  void takeAccessoryInfo(const Message& answer) {
    PayloadReader data(answer.data);
    const uint8_t type = data.u8();
    if (type == kCapabilities) {
      now.offered = data.u32();
      now.isOffered = data.ok();
      now.askedAt.reset();
    }
    if (!wasInfoAcknowledged) shown.set("acknowledges-accessory-info", false);
  }

  void takeFromIpod(const Item& item) {
    const Message& message = item.message;
    if (message.is(Lingo::kGeneral, simulator::kGetAccessoryInfo)) return takeQuestion(item);
    if (message.is(Lingo::kDigitalAudio, simulator::kGetAccSampleRateCaps)) {
      endPatience(item);
      now.wasRateAsked = true;
      return shown.set("asks-sample-rates", true);
    }
    if (message.is(Lingo::kDigitalAudio, simulator::kTrackNewAudioAttributes))
      return takeRate(item);
    const bool isInfoAck = message.is(Lingo::kGeneral, simulator::kAck) &&
                           message.data.size() > 1 &&
                           message.data[1] == simulator::kRetAccessoryInfo;
    if (isInfoAck) {
      wasInfoAcknowledged = true;
      shown.set("acknowledges-accessory-info", true);
    }
    takeMode(message);
  }

  void takeMode(const Message& message) {
    if (message.is(Lingo::kGeneral, simulator::kReturnRemoteUiMode) && now.isAccepted &&
        !now.hasModeRequest) {
      shown.settings["identification-end"] = "mode";
    }
    const bool endsChain = message.is(Lingo::kGeneral, simulator::kReturnLingoProtocolVersion) &&
                           !message.data.empty() &&
                           message.data[0] == static_cast<uint8_t>(Lingo::kDigitalAudio);
    if (endsChain) shown.settings.emplace("identification-end", "chain");
  }

  void takeQuestion(const Item& question) {
    PayloadReader data(question.message.data);
    const uint8_t type = data.u8();
    if (!data.ok()) return;
    if (type == kCapabilities) {
      takeFirstQuestion(question);
    } else {
      endPatience(question);
      takeExtra(type);
      if (type == static_cast<uint8_t>(AccessoryInfoType::kMinimumFirmware)) takeFirmware(data);
    }
  }

  void takeExtra(uint8_t type) {
    constexpr uint8_t kMostTypes = 31;
    const bool isExtra = type <= kMostTypes && (now.offered >> type & 1) == 0;
    const bool isNew = std::find(now.extra.begin(), now.extra.end(), type) == now.extra.end();
    if (now.isOffered && isExtra && isNew) now.extra.push_back(type);
  }

  void takeFirstQuestion(const Item& question) {
    if (now.askedAt) {
      shown.set("repeats-accessory-info", true);
      setPatience(question.at - *now.askedAt);
    } else if (now.announcedAt && !now.wasAsked) {
      shown.settings["accessory-info-delay"] = delayMs(question.at - *now.announcedAt, delay);
    }
    wasRepeated = now.askedAt.has_value();
    now.wasAsked = true;
    now.askedAt = question.at;
  }

  /// The iPod goes on, without an answer about the capabilities.
  void endPatience(const Item& item) {
    const auto delayed = shown.settings.find("accessory-info-delay");
    const bool goesOnAnyway = delayed != shown.settings.end() &&
                              delayed->second != std::variant<uint32_t, std::string>(0u);
    if (!now.askedAt || goesOnAnyway) return;
    if (!wasRepeated) shown.set("repeats-accessory-info", false);
    setPatience(item.at - *now.askedAt);
    now.askedAt.reset();
  }

  void setPatience(trace::Time waited) {
    shown.settings["accessory-info-patience"] = delayMs(waited, trace::Time(0));
  }

  void takeFirmware(PayloadReader& data) {
    const uint32_t model = data.u32();
    const unsigned major = data.u8();
    const unsigned minor = data.u8();
    const unsigned revision = data.u8();
    if (!data.ok()) return;
    shown.modelId = model;
    shown.softwareVersion =
        std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(revision);
  }

  void takeRate(const Item& item) {
    if (now.wasRateTold || !now.isAccepted) return;
    endPatience(item);
    now.wasRateTold = true;
    if (!now.wasRateAsked) shown.set("asks-sample-rates", false);
    if (now.ratesAt) {
      shown.settings["audio-attributes-delay"] = delayMs(item.at - *now.ratesAt, delay);
    }
  }

  void endConnection() {
    const bool wasNeverAnswered = now.ignored > 0 && !now.isAnswered;
    if (wasNeverAnswered) shown.settings.emplace("silent-identifications", now.ignored);
    endIdentification();
    now = Connection();
  }

  void endIdentification() {
    if (now.isOffered && now.wasRateTold) shown.extraAccessoryInfo = now.extra;
  }

  const Conversation& items;
  const std::vector<Asked>& asked;
  ShownPersonality& shown;
  const trace::Time delay;
  size_t next = 0;
  Connection now;
  bool wasInfoAcknowledged = false;
  bool wasRepeated = false;
};

}  // namespace

void showIdentification(const Conversation& items, const std::vector<Asked>& asked,
                        ShownPersonality& shown) {
  IdentificationFinder(items, asked, shown).find();
}

}  // namespace iaptrace
