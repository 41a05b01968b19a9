// What a trace shows of the iPod's answers: how late they are, and what it refuses.

#include <algorithm>
#include <limits>

#include "iaptrace/shown_personality.h"
#include "wire/command_names.h"
#include "wire/frame.h"
#include "wire/lingo.h"
#include "wire/payload.h"

namespace iaptrace {
namespace {

using simulator::Lingo;
using simulator::Status;

/// What a busy machine can need for an answer.
constexpr trace::Time kBusy = std::chrono::milliseconds(20);
/// A delay of every answer is known from the fastest of them.
constexpr trace::Time kLeastDelay = std::chrono::milliseconds(3);
/// The time that an iPod states when it sends both acknowledgements at once.
constexpr uint32_t kStatedTogether = 300;

constexpr trace::Time kUnknownTime = std::chrono::hours(1000);

bool isStatus(std::optional<uint8_t> status, Status wanted) {
  return status == static_cast<uint8_t>(wanted);
}

bool isModeChange(const Message& message) {
  return message.is(Lingo::kGeneral, simulator::kEnterRemoteUiMode) ||
         message.is(Lingo::kGeneral, simulator::kExitRemoteUiMode);
}

bool isPlay(const Message& message) {
  return message.is(Lingo::kExtendedInterface, simulator::kPlayCurrentSelection);
}

bool isOfDisplay(uint16_t command) {
  return command == simulator::kSetDisplayImage ||
         command == simulator::kGetMonoDisplayImageLimits ||
         command == simulator::kGetColorDisplayImageLimits;
}

/// Returns the time that a pending acknowledgement states, in ms.
std::optional<uint32_t> statedWait(const Asked& asked) {
  if (asked.replies.size() < 2) return std::nullopt;
  const Message& first = asked.replies.front()->message;
  if (!isStatus(statusOf(first), Status::kPending)) return std::nullopt;
  simulator::PayloadReader data(first.data);
  data.u8();
  if (first.lingo == static_cast<uint8_t>(Lingo::kExtendedInterface)) {
    data.u16();
  } else {
    data.u8();
  }
  const uint32_t ms = data.u32();
  return data.ok() ? std::optional(ms) : std::nullopt;
}

class AnswerFinder {
 public:
  AnswerFinder(const std::vector<Asked>& all, ShownPersonality& found)
      : asked(all), shown(found), delay(answerDelay(all)) {}

  void find() {
    findDelays();
    for (const Asked& each : asked) {
      takeUnknown(each);
      takeOutside(each);
      takeDisplay(each);
      takeModeChange(each);
      takePlay(each);
    }
    if (soundDelay != kUnknownTime)
      shown.settings["sound-delay"] = delayMs(soundDelay, trace::Time(0));
  }

 private:
  void findDelays() {
    trace::Time fastest = kUnknownTime;
    for (const Asked& each : asked) {
      const bool isPlain = each.replies.size() == 1 && each.status() && !isPlay(each.message()) &&
                           !isModeChange(each.message());
      if (isPlain) fastest = std::min(fastest, each.latency());
    }
    if (hasReplies()) setDelay("answer-delay", delay);
    if (fastest == kUnknownTime || !hasReplies()) return;
    acknowledgementDelay = std::max(fastest - delay, trace::Time(0));
    setDelay("acknowledgement-delay", acknowledgementDelay);
  }

  bool hasReplies() const {
    return std::any_of(asked.begin(), asked.end(),
                       [](const Asked& each) { return each.reply() != nullptr; });
  }

  void setDelay(const char* name, trace::Time span) {
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(span).count();
    shown.settings[name] = span < kLeastDelay ? 0u : static_cast<uint32_t>(ms);
  }

  void takeUnknown(const Asked& each) {
    const Message& request = each.message();
    const bool isExtended = request.lingo == static_cast<uint8_t>(Lingo::kExtendedInterface);
    const bool isReachable = request.lingo == 0 || (isExtended && each.inExtendedMode);
    const bool isUnknown = std::string(commandName(request)) == simulator::kUnknownCommand;
    if (!isReachable || !isUnknown) return;
    if (isStatus(each.status(), Status::kUnknownId)) {
      shown.settings["unknown-command"] = "unknown-id";
    } else if (isStatus(each.status(), Status::kFailed)) {
      shown.settings["unknown-command"] = "failed";
    } else if (each.isIgnored) {
      shown.settings["unknown-command"] = "silence";
    }
  }

  void takeOutside(const Asked& each) {
    const Message& request = each.message();
    const bool isOutside = request.lingo == static_cast<uint8_t>(Lingo::kExtendedInterface) &&
                           !each.inExtendedMode && !isOfDisplay(request.command);
    if (!isOutside) return;
    if (isStatus(each.status(), Status::kBadParameter)) {
      shown.settings["outside-extended-mode"] = "bad-parameter";
    } else if (each.isIgnored) {
      shown.settings["outside-extended-mode"] = "silence";
    }
  }

  void takeDisplay(const Asked& each) {
    const Message& request = each.message();
    const bool isExtended = request.lingo == static_cast<uint8_t>(Lingo::kExtendedInterface);
    if (!isExtended || !isOfDisplay(request.command)) return;
    const bool isRefused = isStatus(each.status(), Status::kBadParameter) || each.isIgnored;
    const bool isImage = request.command == simulator::kSetDisplayImage;
    if (!each.inExtendedMode && !(isImage && isRefused) && (isRefused || !each.replies.empty())) {
      shown.set("display-needs-extended-mode", isRefused);
    }
    if (request.command != simulator::kGetColorDisplayImageLimits || isRefused) return;
    if (each.reply() != nullptr) shown.set("colour", true);
    if (isStatus(each.status(), Status::kFailed)) shown.set("colour", false);
  }

  void takeModeChange(const Asked& each) {
    const Message& request = each.message();
    const bool wantsMode = request.is(Lingo::kGeneral, simulator::kEnterRemoteUiMode);
    const bool isChange = isModeChange(request) && wantsMode != each.inExtendedMode;
    if (!isChange || !isStatus(each.status(), Status::kOk)) return;
    const auto stated = statedWait(each);
    const trace::Time between = each.replies.back()->at - each.replies.front()->at;
    const bool isTogether = stated && between<kBusy&& * stated> 2 * delayMs(kBusy, trace::Time(0));
    shown.set("mode-change-together", isTogether);
    const bool isUsual = isTogether && stated == kStatedTogether;
    shown.settings["mode-change-pending"] = isUsual ? 0 : stated.value_or(0);
  }

  void takePlay(const Asked& each) {
    if (!isPlay(each.message()) || !isStatus(each.status(), Status::kOk)) return;
    const auto stated = statedWait(each);
    shown.settings["play-pending"] = stated.value_or(0);
    const trace::Time needed = each.latency(each.replies.size() - 1);
    const trace::Time usual =
        delay + acknowledgementDelay + std::chrono::milliseconds(stated.value_or(0));
    soundDelay = std::min(soundDelay, std::max(needed - usual, trace::Time(0)));
  }

  const std::vector<Asked>& asked;
  ShownPersonality& shown;
  const trace::Time delay;
  trace::Time acknowledgementDelay{0};
  trace::Time soundDelay = kUnknownTime;
};

}  // namespace

trace::Time answerDelay(const std::vector<Asked>& asked) {
  trace::Time fastest = kUnknownTime;
  for (const Asked& each : asked) {
    if (each.reply() != nullptr) fastest = std::min(fastest, each.latency());
  }
  return fastest == kUnknownTime ? trace::Time(0) : fastest;
}

uint32_t delayMs(trace::Time span, trace::Time usual) {
  constexpr trace::Time kMost = std::chrono::hours(1);
  const trace::Time needed = std::min(span - usual, kMost);
  if (needed < kBusy) return 0;
  return static_cast<uint32_t>(
      std::chrono::duration_cast<std::chrono::milliseconds>(needed).count());
}

void showAnswers(const Conversation& items, const std::vector<Asked>& asked,
                 ShownPersonality& shown) {
  AnswerFinder(asked, shown).find();
  bool isLong = false;
  bool hasMessages = false;
  for (const Item& item : items) {
    if (!item.isMessage() || !item.isFrom(Sender::kIpod)) continue;
    constexpr size_t kLongFrame = 4 + simulator::kShortFormLimit + 1;
    hasMessages = true;
    isLong = isLong || (item.isLong && item.bytes.size() <= kLongFrame);
  }
  if (hasMessages) shown.settings["length-form"] = isLong ? "long" : "short";
}

}  // namespace iaptrace
