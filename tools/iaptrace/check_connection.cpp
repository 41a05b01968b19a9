// Connections that do not succeed.

#include <algorithm>

#include "iaptrace/check_rules.h"

namespace iaptrace::checking {
namespace {

using simulator::Status;

constexpr size_t kMostAttempts = 3;
constexpr trace::Time kThreeAttempts = std::chrono::milliseconds(1000);
constexpr trace::Time kLongQuiet = std::chrono::milliseconds(3000);

/// Returns the attempts at the end of a session that did not succeed. A host that needs a third
/// attempt has given up when it succeeds, unless it goes on.
std::vector<Attempt> unsuccessfulAttempts(const Session& session) {
  std::vector<Attempt> failed;
  for (const Attempt& attempt : session.attempts) {
    const bool inTime = attempt.identified && failed.size() + 1 < kMostAttempts;
    failed.push_back(attempt);
    if (attempt.wentOn || inTime) failed.clear();
  }
  return failed;
}

/// Returns the time until which the host surely waited.
trace::Time endOfWait(const Session& session) {
  return session.failure ? session.items[*session.failure].at : session.ended;
}

trace::Time lastActivity(const Session& session) {
  trace::Time last{0};
  for (const Item& item : session.items) {
    if (item.kind != Item::Kind::kEvent) last = std::max(last, item.at);
  }
  return last;
}

bool surelyGaveUp(const Session& session, const std::vector<Attempt>& failed) {
  if (failed.empty()) return false;
  const trace::Time first = session.items[failed.front().announcement].at;
  const trace::Time last = session.items[failed.back().announcement].at;
  if (failed.size() >= kMostAttempts && last - first >= kThreeAttempts) return true;
  const trace::Time quiet = endOfWait(session) - lastActivity(session);
  const bool isClosed = session.isClosed && !session.failure;
  return quiet >= kLongQuiet || (quiet >= kGaveUp && (isClosed || failed.size() > 1));
}

bool hasAudioMessage(const Case& trace, const std::string& device) {
  return trace.audioDevices.count(device) > 0;
}

/// Whether the status says that the iPod does not know a lingo of the announcement. Every iPod that
/// a host can control knows the other two.
bool refusesTheAudioLingo(const Case& trace, const Session& session, const Attempt& attempt) {
  return attempt.refused && attempt.refusal == static_cast<uint8_t>(Status::kFailed) &&
         attempt.announcesAudio() && !hasAudioMessage(trace, session.device);
}

/// Whether the iPod still answered after the attempt.
bool isAliveAfter(const Session& session, const Attempt& attempt) {
  const std::optional<size_t> last = session.lastIpodMessage;
  return last && *last > attempt.end;
}

/// Whether the iPod accepted the announcement and the answers about the host, asked for nothing of
/// the audio lingo, and still answered a second later.
bool doesNotAskForRates(const Case& trace, const Session& session, const Attempt& attempt) {
  return attempt.accepted && attempt.answersInfo && attempt.announcesAudio() && !attempt.asksMode &&
         isAliveAfter(session, attempt) && !hasAudioMessage(trace, session.device);
}

/// Whether the iPod refused to return the version of the audio lingo.
std::optional<size_t> refusedAudioVersion(const Session& session) {
  constexpr auto kAudio = static_cast<uint8_t>(simulator::Lingo::kDigitalAudio);
  for (const Exchange& exchange : session.exchanges.all) {
    const Message& request = session.items[exchange.request].message;
    const bool asksForAudio = isGeneral(request, simulator::kRequestLingoProtocolVersion) &&
                              !request.data.empty() && request.data[0] == kAudio;
    if (asksForAudio && resultOf(session, exchange).value_or(0) != 0) return exchange.request;
  }
  return std::nullopt;
}

/// Returns the lines that show that the iPod has no digital audio.
std::vector<size_t> linesWithoutAudio(const Case& trace, const Session& session) {
  std::vector<size_t> lines;
  for (const Attempt& attempt : failedAttempts(session)) {
    const bool isRefused = refusesTheAudioLingo(trace, session, attempt);
    const bool isIgnored = doesNotAskForRates(trace, session, attempt);
    if (!isRefused && !isIgnored) continue;
    lines.push_back(session.items[attempt.announcement].firstLine);
    lines.push_back(session.items[isRefused ? *attempt.refused : *attempt.answersInfo].firstLine);
  }
  const std::optional<size_t> version = refusedAudioVersion(session);
  if (version && !failedAttempts(session).empty()) {
    lines.push_back(session.items[*version].firstLine);
  }
  return lines;
}

Stage stageOf(const Attempt& attempt) {
  if (attempt.identified) return Stage::kIdentify;
  if (attempt.asksMode) return Stage::kMode;
  if (attempt.version || attempt.answersRates) return Stage::kVersions;
  if (attempt.asksRates) return Stage::kSampleRates;
  if (attempt.asksInfo && !attempt.answersInfo) return Stage::kAccessoryInfo;
  const bool isAudio = attempt.announcesAudio();
  if (attempt.asksInfo) return isAudio ? Stage::kSampleRates : Stage::kVersions;
  if (attempt.accepted) return isAudio ? Stage::kAccessoryInfo : Stage::kVersions;
  return Stage::kIdentify;
}

Stage furthestStage(const std::vector<Attempt>& failed) {
  Stage furthest = Stage::kIdentify;
  for (const Attempt& attempt : failed)
    furthest = std::max(furthest, stageOf(attempt));
  return furthest;
}

std::vector<size_t> linesOfAttempts(const Session& session, const std::vector<Attempt>& failed) {
  std::vector<size_t> lines;
  lines.reserve(failed.size() + 1);
  for (const Attempt& attempt : failed)
    lines.push_back(session.items[attempt.announcement].firstLine);
  const std::optional<size_t> last = session.lastIpodMessage;
  if (last) lines.push_back(session.items[*last].line);
  return lines;
}

bool isRefusal(const Case& trace, const Session& session, const Attempt& attempt) {
  return attempt.asksForKeys || (attempt.refused && !refusesTheAudioLingo(trace, session, attempt));
}

std::string detailOf(const Attempt& attempt) {
  if (attempt.asksForKeys) return "The iPod demands authentication.";
  return "The iPod refused with status " + std::to_string(attempt.refusal) + ".";
}

/// Whether the attempts failed in a way that a rule with another cause finds.
bool isExplained(const Case& trace, const Session& session, const std::vector<Attempt>& failed) {
  const bool areRefused = std::all_of(failed.begin(), failed.end(), [&](const Attempt& attempt) {
    return isRefusal(trace, session, attempt);
  });
  return areRefused || !linesWithoutAudio(trace, session).empty();
}

/// Whether the end of the link explains that the connection went no further.
bool isLinkLost(const Session& session) {
  return session.failure.has_value() || fatalFrame(session).has_value();
}

std::optional<size_t> lastModeRequest(const Session& session) {
  for (size_t i = session.items.size(); i-- > 0;) {
    if (!session.isHostMessage(i)) continue;
    if (isGeneral(session.items[i].message, simulator::kEnterRemoteUiMode)) return i;
  }
  return std::nullopt;
}

const Exchange* exchangeOf(const Session& session, size_t request) {
  for (const Exchange& exchange : session.exchanges.all) {
    if (exchange.request == request) return &exchange;
  }
  return nullptr;
}

/// The stage of a host that was identified but did not get the iPod into the mode.
void findStoppedMode(const Session& session, Diagnosis& diagnosis) {
  const std::optional<size_t> request = lastModeRequest(session);
  if (session.connected || !request) return;
  const Exchange* exchange = exchangeOf(session, *request);
  if (exchange == nullptr) return;
  const Item& item = session.items[*request];
  if (resultOf(session, *exchange).has_value()) {
    const Item& reply = session.items[exchange->replies.back()];
    diagnosis.add("stopped-at-mode", {item.firstLine, reply.line}, "The iPod refused the mode.");
    return;
  }
  const std::optional<size_t> silent = fellSilentAt(session);
  if (!exchange->isAnswered() && (silent || session.waitAfter(*request) >= kGaveUp)) {
    const bool isLogo = silent && isImageMessage(session.items[*silent].message);
    const size_t line = isLogo ? session.items[*silent].firstLine : item.firstLine;
    diagnosis.add(isLogo ? "stopped-at-logo" : "stopped-at-mode", {line, item.firstLine});
  }
}

/// A host that still sends the packets of a logo that the iPod does not answer any more.
bool findStoppedLogo(const Session& session, Diagnosis& diagnosis) {
  const std::optional<size_t> silent = fellSilentAt(session);
  const bool isLogo = silent && isImageMessage(session.items[*silent].message) &&
                      !session.connected && !lastModeRequest(session);
  if (isLogo) diagnosis.add("stopped-at-logo", {session.items[*silent].firstLine});
  return isLogo;
}

}  // namespace

std::vector<Attempt> failedAttempts(const Session& session) {
  const std::vector<Attempt> failed = unsuccessfulAttempts(session);
  return surelyGaveUp(session, failed) ? failed : std::vector<Attempt>();
}

void findRefusedIdentification(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    for (const Attempt& attempt : failedAttempts(session)) {
      if (!isRefusal(trace, session, attempt)) continue;
      const size_t answer = attempt.asksForKeys ? *attempt.asksForKeys : *attempt.refused;
      diagnosis.add("identification-refused",
                    {session.items[attempt.announcement].firstLine, session.items[answer].line},
                    detailOf(attempt));
    }
  }
}

void findNoDigitalAudio(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    const std::vector<size_t> lines = linesWithoutAudio(trace, session);
    if (!lines.empty()) diagnosis.add("no-digital-audio", lines);
  }
}

void findStoppedConnection(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    if (isLinkLost(session) || !session.lastIpodMessage.has_value()) continue;
    const std::vector<Attempt> failed = failedAttempts(session);
    if (failed.empty()) {
      if (!findStoppedLogo(session, diagnosis)) findStoppedMode(session, diagnosis);
    } else if (!isExplained(trace, session, failed)) {
      const Stage stage = furthestStage(failed);
      diagnosis.add(std::string("stopped-at-") + nameOf(stage), linesOfAttempts(session, failed),
                    std::string("What did not happen: ") + meaningOf(stage) + ".");
    }
  }
}

}  // namespace iaptrace::checking
