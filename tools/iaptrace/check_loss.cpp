// An iPod that answered and is lost, and what no rule explains.

#include <algorithm>

#include "iaptrace/check_rules.h"
#include "wire/command_names.h"

namespace iaptrace::checking {
namespace {

/// Whether the host waits for the answer and goes on when it has one.
bool isAwaited(const Session& session, const Exchange& exchange) {
  const Item& request = session.items[exchange.request];
  const bool isOther = isGeneral(request.message, simulator::kIdentifyDeviceLingoes) ||
                       isGeneral(request.message, simulator::kExitRemoteUiMode);
  return request.sender == Sender::kHost && !isOther;
}

/// Whether the last message of the iPod reports that it goes to sleep.
bool goesToSleep(const Session& session, size_t last) {
  constexpr uint8_t kLastSleepState = 3;
  const Message& message = session.items[last].message;
  return isGeneral(message, simulator::kNotifyIpodStateChange) && !message.data.empty() &&
         message.data[0] >= 1 && message.data[0] <= kLastSleepState;
}

bool isUnanswered(const Session& session, const Exchange& exchange) {
  return isAwaited(session, exchange) && !exchange.isAnswered() &&
         session.waitAfter(exchange.request) >= kGaveUp;
}

std::vector<size_t> unansweredAfter(const Session& session, size_t item) {
  std::vector<size_t> requests;
  for (const Exchange& exchange : session.exchanges.all) {
    if (exchange.request > item && isUnanswered(session, exchange)) {
      requests.push_back(exchange.request);
    }
  }
  return requests;
}

void addLoss(const Session& session, size_t at, const std::vector<size_t>& lines,
             const std::string& detail, Diagnosis& diagnosis) {
  diagnosis.add(std::string("lost-after-") + nameOf(session.reachedBefore(at)), lines, detail);
}

bool endsWithExit(const Session& session) {
  for (size_t i = session.items.size(); i-- > 0;) {
    if (!session.isHostMessage(i)) continue;
    return isGeneral(session.items[i].message, simulator::kExitRemoteUiMode);
  }
  return false;
}

/// Whether the library closed the link at once because of a frame that it takes for damaged: its
/// data is short, but its length has the long form.
bool isRejectedLongForm(const Session& session, size_t frame) {
  constexpr trace::Time kAtOnce = std::chrono::milliseconds(300);
  const Item& item = session.items[frame];
  return item.isMessage() && item.isLong && session.isClosed && !endsWithExit(session) &&
         item.bytes.size() <= UINT8_MAX && session.ended - item.at < kAtOnce;
}

bool wasSilentBeforeTheFailure(const Session& session) {
  return isSilent(session) || isGarbled(session);
}

void findFailedDevice(const Session& session, Diagnosis& diagnosis) {
  if (!session.failure || wasSilentBeforeTheFailure(session)) return;
  const Item& item = session.items[*session.failure];
  std::vector<size_t> lines{item.line};
  const std::optional<size_t> last = session.lastIpodMessage;
  if (last) lines.push_back(session.items[*last].line);
  addLoss(session, *session.failure, lines,
          "The device failed with code " + std::to_string(item.event->code) + ".", diagnosis);
}

void findSilencedIpod(const Session& session, Diagnosis& diagnosis) {
  const std::optional<size_t> silent = fellSilentAt(session);
  if (!silent || !session.connected || session.failure || fatalFrame(session)) return;
  const size_t last = *session.lastIpodMessage;
  std::vector<size_t> lines{session.items[last].line};
  for (const size_t request : unansweredAfter(session, last))
    lines.push_back(session.items[request].firstLine);
  addLoss(session, *silent, lines,
          goesToSleep(session, last) ? "The iPod reported that it goes to sleep."
                                     : "The iPod answered nothing any more.",
          diagnosis);
}

/// Whether the iPod may leave the request unanswered, or another rule looks at it.
bool mayBeUnanswered(const Session& session, const Exchange& exchange,
                     const PendingTimes& pending) {
  const Message& request = session.items[exchange.request].message;
  const bool isUnknown = std::string(simulator::commandName(request)) == simulator::kUnknownCommand;
  const bool isEarly = !session.connected || exchange.request < *session.connected;
  return isUnknown || isEarly || isImageMessage(request) ||
         isGeneral(request, simulator::kEnterRemoteUiMode) || pending.contain(exchange.request);
}

/// Whether the list rule has found the request.
bool isShortListing(const Session& session, const Exchange& exchange) {
  const std::optional<size_t> last = session.lastIpodMessage;
  return isExtended(session.items[exchange.request].message,
                    simulator::kRetrieveCategorizedDatabaseRecords) &&
         last && *last > exchange.request;
}

/// Whether the host received an answer that no request of it can have, instead of the answer.
bool isWronglyAnswered(const Session& session, const Exchange& exchange) {
  if (!isAwaited(session, exchange) || exchange.isAnswered()) return false;
  const size_t next = session.nextRequest(exchange.request);
  const bool isOver = next < session.items.size() || session.isClosed;
  const std::vector<size_t>& others = session.exchanges.unexpected;
  const auto other = std::upper_bound(others.begin(), others.end(), exchange.request);
  return isOver && other != others.end() && *other < next;
}

/// Whether the iPod acknowledged a request as pending, and had not done it when the host sent the
/// next one, or at the end.
bool staysPending(const Session& session, const Exchange& exchange) {
  constexpr auto kPending = static_cast<uint8_t>(simulator::Status::kPending);
  return isAwaited(session, exchange) && exchange.isAnswered() &&
         statusOf(session.items[exchange.replies.back()].message) == kPending &&
         session.waitAfter(exchange.request) >= kGaveUp;
}

/// Returns what is wrong with the answer to a request, or null when nothing is.
const char* wrongAnswer(const Session& session, const Exchange& exchange) {
  if (isUnanswered(session, exchange)) {
    if (isShortListing(session, exchange)) return nullptr;
    return "The iPod did not answer a request, although it was there.";
  }
  if (isWronglyAnswered(session, exchange)) {
    return "The iPod sent something else in place of an answer.";
  }
  if (!staysPending(session, exchange)) return nullptr;
  return "The iPod acknowledged a request as pending, and never as done.";
}

void findUnansweredRequests(const Session& session, Diagnosis& diagnosis) {
  if (fellSilentAt(session) || session.failure || fatalFrame(session)) return;
  const PendingTimes pending(session);
  const ModeChanges changes(session);
  for (const Exchange& exchange : session.exchanges.all) {
    const char* const wrong = wrongAnswer(session, exchange);
    if (wrong == nullptr || mayBeUnanswered(session, exchange, pending) ||
        changes.haveLeftBefore(exchange.request)) {
      continue;
    }
    std::vector<size_t> lines{session.items[exchange.request].firstLine};
    const size_t next = session.nextRequest(exchange.request);
    for (size_t i = exchange.request + 1; i < next; ++i) {
      if (session.isIpodMessage(i)) lines.push_back(session.items[i].line);
    }
    diagnosis.add("unknown", lines, wrong);
  }
}

/// A connection that failed without a message of the iPod, and without a cause.
void findUnexplainedConnection(const Session& session, Diagnosis& diagnosis) {
  const bool isExplained = session.lastIpodMessage.has_value() || isSilent(session) ||
                           isGarbled(session) || session.failure || fatalFrame(session);
  const std::vector<Attempt> failed = failedAttempts(session);
  if (isExplained || failed.empty()) return;
  std::vector<size_t> lines;
  for (const Item& item : session.items) {
    if (item.kind != Item::Kind::kEvent) lines.push_back(item.firstLine);
  }
  diagnosis.add("unknown", lines, "No connection was made, and too little was received.");
}

}  // namespace

std::optional<size_t> fellSilentAt(const Session& session) {
  const std::optional<size_t> last = session.lastIpodMessage;
  if (!last) return std::nullopt;
  const std::vector<size_t> requests = unansweredAfter(session, *last);
  const size_t least = goesToSleep(session, *last) ? 1 : 2;
  return requests.size() < least ? std::nullopt : std::optional(requests.front());
}

void findLoss(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    findFailedDevice(session, diagnosis);
    findSilencedIpod(session, diagnosis);
    const std::optional<size_t> frame = fatalFrame(session);
    if (!frame || !isRejectedLongForm(session, *frame)) continue;
    addLoss(session, *frame, {session.items[*frame].line},
            "The iPod sent a short message in a frame of the long form, which the library rejects.",
            diagnosis);
  }
}

void findUnexplained(const Case& trace, Diagnosis& diagnosis) {
  findUnknownOpening(trace, diagnosis);
  findStrangeRefusals(trace, diagnosis);
  for (const Session& session : trace.sessions) {
    findUnansweredRequests(session, diagnosis);
    findUnexplainedConnection(session, diagnosis);
  }
}

}  // namespace iaptrace::checking
