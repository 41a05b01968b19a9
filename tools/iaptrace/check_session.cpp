#include "iaptrace/check_session.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "wire/payload.h"

namespace iaptrace::checking {

using simulator::Lingo;
using simulator::PayloadReader;
using Kind = trace::Record::Kind;

bool isGeneral(const Message& message, uint16_t command) {
  return message.is(Lingo::kGeneral, command);
}

bool isExtended(const Message& message, uint16_t command) {
  return message.is(Lingo::kExtendedInterface, command);
}

bool isAudio(const Message& message, uint16_t command) {
  return message.is(Lingo::kDigitalAudio, command);
}

bool isImageMessage(const Message& message) {
  return isExtended(message, simulator::kSetDisplayImage) ||
         isExtended(message, simulator::kGetMonoDisplayImageLimits) ||
         isExtended(message, simulator::kGetColorDisplayImageLimits);
}

bool needsTheMode(const Message& message) {
  return message.lingo == static_cast<uint8_t>(Lingo::kExtendedInterface) &&
         !isImageMessage(message);
}

std::optional<uint8_t> resultOf(const Session& session, const Exchange& exchange) {
  constexpr auto kPending = static_cast<uint8_t>(simulator::Status::kPending);
  for (const size_t reply : exchange.replies) {
    const std::optional<uint8_t> status = statusOf(session.items[reply].message);
    if (!status) return uint8_t{0};
    if (*status != kPending) return status;
  }
  return std::nullopt;
}

namespace {

/// Identify, its predecessor, is not answered.
bool isAnnouncement(const Message& message) {
  return isGeneral(message, simulator::kIdentifyDeviceLingoes);
}

/// A message that only answers the iPod. A host can send it while it waits for an answer.
bool onlyAnswersTheIpod(const Message& message) {
  return isGeneral(message, simulator::kRetAccessoryInfo) || isGeneral(message, simulator::kAck) ||
         isAudio(message, simulator::kRetAccSampleRateCaps) || isAudio(message, simulator::kAccAck);
}

/// Fills an attempt from the messages that belong to it.
class AttemptReader {
 public:
  AttemptReader(const Session& ofSession, Attempt& toFill) : session(ofSession), attempt(toFill) {}

  void read() {
    for (size_t i = attempt.announcement + 1; i < attempt.end; ++i) {
      if (session.isIpodMessage(i)) takeIpods(i, session.items[i].message);
      if (session.isHostMessage(i)) takeHosts(i, session.items[i].message);
    }
  }

 private:
  static void note(std::optional<size_t>& place, size_t index) {
    if (!place) place = index;
  }

  void takeIpods(size_t index, const Message& message) {
    constexpr uint16_t kGetDevAuthenticationInfo = 0x14;
    if (isGeneral(message, simulator::kAck)) takeAcknowledgement(index, message);
    if (isGeneral(message, simulator::kGetAccessoryInfo)) note(attempt.asksInfo, index);
    if (isGeneral(message, kGetDevAuthenticationInfo)) note(attempt.asksForKeys, index);
    if (isAudio(message, simulator::kGetAccSampleRateCaps)) note(attempt.asksRates, index);
    if (isGeneral(message, simulator::kReturnLingoProtocolVersion)) takeVersion(index, message);
  }

  void takeAcknowledgement(size_t index, const Message& message) {
    if (message.data.size() < 2) return;
    const uint8_t status = message.data[0];
    const uint8_t command = message.data[1];
    constexpr auto kPending = static_cast<uint8_t>(simulator::Status::kPending);
    if (command == simulator::kEnterRemoteUiMode && status == 0) note(attempt.identified, index);
    if (command != simulator::kIdentifyDeviceLingoes || status == kPending) return;
    if (status == 0) return note(attempt.accepted, index);
    if (!attempt.refused) attempt.refusal = status;
    note(attempt.refused, index);
  }

  void takeVersion(size_t index, const Message& message) {
    note(attempt.version, index);
    const auto last =
        static_cast<uint8_t>(attempt.announcesAudio() ? Lingo::kDigitalAudio : Lingo::kGeneral);
    if (!message.data.empty() && message.data[0] == last) note(attempt.identified, index);
  }

  void takeHosts(size_t index, const Message& message) {
    if (isGeneral(message, simulator::kRetAccessoryInfo)) note(attempt.answersInfo, index);
    if (isAudio(message, simulator::kRetAccSampleRateCaps)) note(attempt.answersRates, index);
    const bool usesTheMode = (attempt.lingoes >> 4 & 1) != 0;
    const bool isNextStep =
        isGeneral(message, simulator::kEnterRemoteUiMode) || isImageMessage(message);
    if (isGeneral(message, simulator::kEnterRemoteUiMode)) note(attempt.asksMode, index);
    if (attempt.identified && !onlyAnswersTheIpod(message) && (isNextStep || !usesTheMode)) {
      attempt.wentOn = true;
    }
  }

  const Session& session;
  Attempt& attempt;
};

void findAttempts(Session& session) {
  for (size_t i = 0; i < session.items.size(); ++i) {
    if (!session.isHostMessage(i) || !isAnnouncement(session.items[i].message)) continue;
    if (!session.attempts.empty()) session.attempts.back().end = i;
    Attempt attempt;
    attempt.announcement = i;
    attempt.end = session.items.size();
    attempt.lingoes = PayloadReader(session.items[i].message.data).u32();
    session.attempts.push_back(attempt);
  }
  for (Attempt& attempt : session.attempts)
    AttemptReader(session, attempt).read();
}

void findLastMessages(Session& session) {
  for (size_t i = 0; i < session.items.size(); ++i) {
    if (session.isHostMessage(i)) session.lastHostMessage = i;
    if (session.isIpodMessage(i)) session.lastIpodMessage = i;
    if (session.items[i].isFrom(Sender::kIpod)) session.lastIpodLine = session.items[i].firstLine;
  }
}

/// Whether an answered exchange shows that the iPod is in the Extended Interface mode.
bool showsTheMode(const Session& session, const Exchange& exchange) {
  const Item& request = session.items[exchange.request];
  if (request.sender != Sender::kHost || resultOf(session, exchange) != uint8_t{0}) return false;
  return isGeneral(request.message, simulator::kEnterRemoteUiMode) || needsTheMode(request.message);
}

Attempt* attemptBefore(Session& session, size_t item) {
  const auto isAfter = [](size_t index, const Attempt& attempt) {
    return index < attempt.announcement;
  };
  const auto next =
      std::upper_bound(session.attempts.begin(), session.attempts.end(), item, isAfter);
  return next == session.attempts.begin() ? nullptr : &*std::prev(next);
}

/// Whether the answer to a request shows that the host is identified.
bool showsASuccess(const Session& session, const Exchange& exchange) {
  const Item& request = session.items[exchange.request];
  const bool isOther = request.message.lingo != static_cast<uint8_t>(Lingo::kGeneral) &&
                       !isImageMessage(request.message);
  return request.sender == Sender::kHost && isOther && resultOf(session, exchange) == uint8_t{0};
}

void findConnection(Session& session) {
  for (const Exchange& exchange : session.exchanges.all) {
    if (showsASuccess(session, exchange)) {
      if (Attempt* attempt = attemptBefore(session, exchange.request)) attempt->wentOn = true;
    }
    if (!showsTheMode(session, exchange)) continue;
    const size_t answer = exchange.replies.back();
    session.connected = std::min(session.connected.value_or(answer), answer);
  }
}

/// Whether the failure is how a read ends that waits while the host closes the device.
bool endsByTheHost(const Session& session, size_t failure) {
  constexpr uint32_t kInvalidHandle = 6;
  constexpr uint32_t kOperationAborted = 995;
  const uint32_t code = session.items[failure].event->code;
  if (code == kInvalidHandle || code == kOperationAborted) return true;
  for (size_t i = failure; i-- > 0;) {
    if (!session.isHostMessage(i)) continue;
    return isGeneral(session.items[i].message, simulator::kExitRemoteUiMode) &&
           session.items[failure].at - session.items[i].at < kGaveUp && session.isClosed;
  }
  return false;
}

void findFailure(Session& session) {
  for (size_t i = 0; i < session.items.size() && !session.failure; ++i) {
    const Item& item = session.items[i];
    if (item.kind != Item::Kind::kEvent) continue;
    const bool isFailure =
        item.event->kind == Kind::kReadFailed || item.event->kind == Kind::kWriteFailed;
    if (isFailure && !endsByTheHost(session, i)) session.failure = i;
  }
}

/// The unanswered request that the message answers, when it is recorded just after the message.
std::optional<size_t> requestRecordedAfter(const Conversation& items, size_t answer,
                                           const std::set<size_t>& unanswered) {
  constexpr trace::Time kAtOnce = std::chrono::milliseconds(5);
  constexpr size_t kLookedAt = 4;
  for (size_t i = answer + 1; i < items.size() && i <= answer + kLookedAt; ++i) {
    if (items[i].at - items[answer].at > kAtOnce) break;
    if (unanswered.count(i) > 0 && answers(items[answer].message, items[i].message)) return i;
  }
  return std::nullopt;
}

/// Puts answers after their requests. A recorder that notes a write when it is over can note the
/// answer first.
void putAnswersAfterRequests(Session& session) {
  std::set<size_t> unanswered;
  for (const Exchange& exchange : session.exchanges.all) {
    const bool isHosts = session.items[exchange.request].sender == Sender::kHost;
    if (isHosts && !exchange.isAnswered()) unanswered.insert(exchange.request);
  }
  bool isChanged = false;
  const std::vector<size_t>& early = session.exchanges.unexpected;
  for (auto answer = early.rbegin(); answer != early.rend(); ++answer) {
    const auto request = requestRecordedAfter(session.items, *answer, unanswered);
    if (!request) continue;
    const auto first = session.items.begin() + static_cast<ptrdiff_t>(*answer);
    std::rotate(first, first + 1, session.items.begin() + static_cast<ptrdiff_t>(*request) + 1);
    unanswered.erase(*request);
    isChanged = true;
  }
  if (isChanged) session.exchanges = exchangesOf(session.items);
}

/// Cuts a device's conversation into sessions.
class SessionCutter {
 public:
  SessionCutter(const std::string& ofDevice, Case& toFill) : device(ofDevice), found(toFill) {
    current.device = device;
  }

  void cut(Conversation items) {
    for (Item& item : items) {
      // A read that is under way while the host closes the device can be recorded after the close.
      isAfterClose = isAfterClose && item.isFrom(Sender::kIpod);
      if (isAfterClose) continue;
      const bool isEvent = item.kind == Item::Kind::kEvent;
      if (isEvent && item.event->kind == Kind::kOpenFailed) {
        found.failedOpenings.push_back({device, item.line, item.event->code});
      } else if (isEvent && item.event->kind == Kind::kOpened) {
        finish(item.at, true);
        found.lastOpenings[device] = item.line;
        current.items.push_back(std::move(item));
      } else if (isEvent && item.event->kind == Kind::kClosed) {
        finish(item.at, true);
        isAfterClose = true;
      } else {
        current.items.push_back(std::move(item));
      }
    }
    finish(found.lastTime, false);
  }

 private:
  bool hasData() const {
    return std::any_of(current.items.begin(), current.items.end(),
                       [](const Item& item) { return item.kind != Item::Kind::kEvent; });
  }

  bool isOpened() const {
    return std::any_of(current.items.begin(), current.items.end(), [](const Item& item) {
      return item.kind == Item::Kind::kEvent && item.event->kind == Kind::kOpened;
    });
  }

  void finish(trace::Time at, bool isClosed) {
    if (hasData() || isOpened()) {
      current.ended = at;
      current.isClosed = isClosed;
      current.exchanges = exchangesOf(current.items);
      putAnswersAfterRequests(current);
      findLastMessages(current);
      findAttempts(current);
      findConnection(current);
      findFailure(current);
      found.sessions.push_back(std::move(current));
    }
    current = Session();
    current.device = device;
  }

  const std::string& device;
  Case& found;
  Session current;
  bool isAfterClose = false;  ///< and nothing has happened since
};

/// The stage that one message completes.
Stage completedBy(const Item& item) {
  const Message& message = item.message;
  if (item.sender == Sender::kHost) {
    if (isGeneral(message, simulator::kRetAccessoryInfo)) return Stage::kAccessoryInfo;
    if (isAudio(message, simulator::kRetAccSampleRateCaps)) return Stage::kSampleRates;
    return Stage::kOpen;
  }
  const bool isAccepted = isGeneral(message, simulator::kAck) && message.data.size() >= 2 &&
                          message.data[0] == 0 &&
                          message.data[1] == simulator::kIdentifyDeviceLingoes;
  return isAccepted ? Stage::kIdentify : Stage::kOpen;
}

bool isDatabaseRequest(const Message& message) {
  return isExtended(message, message.command) &&
         ((message.command >= simulator::kResetDbSelection &&
           message.command <= simulator::kRetrieveCategorizedDatabaseRecords) ||
          message.command == simulator::kSelectSortDbRecord);
}

bool makesItPlay(const Message& message) {
  return isExtended(message, simulator::kPlayCurrentSelection) ||
         isExtended(message, simulator::kPlayControl) ||
         isExtended(message, simulator::kSetCurrentPlayingTrack);
}

bool saysThatItPlays(const Item& answer) {
  constexpr size_t kSize = 9;
  const Message& message = answer.message;
  return isExtended(message, simulator::kReturnPlayStatus) && message.data.size() == kSize &&
         message.data.back() == 1;
}

/// The stage that the first answer to a request completes.
Stage completedByAnswer(const Session& session, const Exchange& exchange) {
  const Message& request = session.items[exchange.request].message;
  if (makesItPlay(request) || saysThatItPlays(session.items[exchange.replies.front()])) {
    return Stage::kPlay;
  }
  if (isDatabaseRequest(request)) return Stage::kBrowse;
  if (isExtended(request, simulator::kSetDisplayImage)) return Stage::kLogo;
  return showsTheMode(session, exchange) ? Stage::kConnected : Stage::kOpen;
}

/// Notes what the device's iPods have shown that they can.
void noteDevice(const Session& session, Case& found) {
  for (size_t i = 0; i < session.items.size(); ++i) {
    if (!session.isIpodMessage(i)) continue;
    found.answeringDevices.insert(session.device);
    const bool isAudioLingo =
        session.items[i].message.lingo == static_cast<uint8_t>(Lingo::kDigitalAudio);
    if (isAudioLingo) found.audioDevices.insert(session.device);
  }
}

}  // namespace

bool Session::isHostMessage(size_t index) const {
  return items[index].isMessage() && items[index].sender == Sender::kHost;
}

bool Session::isIpodMessage(size_t index) const {
  return items[index].isMessage() && items[index].sender == Sender::kIpod;
}

size_t Session::nextRequest(size_t after) const {
  for (size_t i = after + 1; i < items.size(); ++i) {
    if (isHostMessage(i) && !onlyAnswersTheIpod(items[i].message)) return i;
  }
  return items.size();
}

trace::Time Session::waitAfter(size_t request) const {
  const size_t next = nextRequest(request);
  return (next < items.size() ? items[next].begun : ended) - items[request].at;
}

Stage Session::reachedBefore(size_t index) const {
  Stage stage = Stage::kOpen;
  for (size_t i = 0; i < index && i < items.size(); ++i) {
    if (items[i].isMessage()) stage = std::max(stage, completedBy(items[i]));
  }
  for (const Attempt& attempt : attempts) {
    if (attempt.identified && *attempt.identified < index)
      stage = std::max(stage, Stage::kVersions);
  }
  for (const Exchange& exchange : exchanges.all) {
    const bool isAnswered = exchange.isAnswered() && exchange.replies.front() < index &&
                            items[exchange.request].sender == Sender::kHost &&
                            resultOf(*this, exchange) == uint8_t{0};
    if (isAnswered) stage = std::max(stage, completedByAnswer(*this, exchange));
  }
  return stage;
}

namespace {

/// Adds the sessions of a part of a trace. What was before and after is not known.
void addPart(const trace::Trace& part, Case& found) {
  if (part.empty()) return;
  found.lastTime = part.back().at;
  for (const std::string& device : trace::devicesOf(part))
    SessionCutter(device, found).cut(conversationOf(part, device));
}

/// Adds the sessions between the lines that are missing.
void addParts(const trace::Trace& records, const std::vector<size_t>& gaps, Case& found) {
  trace::Trace part;
  size_t gap = 0;
  for (const trace::Record& record : records) {
    const size_t begin = gap;
    while (gap < gaps.size() && gaps[gap] < record.line)
      ++gap;
    if (gap > begin) {
      addPart(part, found);
      part.clear();
    }
    part.push_back(record);
  }
  addPart(part, found);
}

}  // namespace

Case caseOf(const trace::Trace& records, const std::vector<size_t>& gaps) {
  Case found;
  found.isEmpty = records.empty();
  found.gaps = gaps;
  if (gaps.empty()) {
    addPart(records, found);
  } else {
    addParts(records, gaps, found);
  }
  for (const Session& session : found.sessions)
    noteDevice(session, found);
  return found;
}

}  // namespace iaptrace::checking
