// A change of the mode that is acknowledged as pending first.

#include <algorithm>
#include <iterator>

#include "iaptrace/check_rules.h"

namespace iaptrace::checking {
namespace {

constexpr trace::Time kLongestPending = std::chrono::milliseconds(3000);

/// The time in which a change of the mode is pending: between two items.
struct PendingMode {
  size_t request;
  size_t pending;
  size_t done;  ///< the final acknowledgement; the number of items when there is none
  size_t end;   ///< the same, or the next request of a mode
};

bool isPendingAcknowledgement(const Message& message) {
  return statusOf(message) == static_cast<uint8_t>(simulator::Status::kPending);
}

std::vector<PendingMode> pendingModesOf(const Session& session) {
  std::vector<PendingMode> modes;
  for (const Exchange& exchange : session.exchanges.all) {
    if (!isGeneral(session.items[exchange.request].message, simulator::kEnterRemoteUiMode))
      continue;
    if (!exchange.isAnswered()) continue;
    const size_t first = exchange.replies.front();
    if (!isPendingAcknowledgement(session.items[first].message)) continue;
    const size_t last = exchange.replies.back();
    const bool isDone = !isPendingAcknowledgement(session.items[last].message);
    if (!modes.empty()) modes.back().end = std::min(modes.back().end, exchange.request);
    const size_t done = isDone ? last : session.items.size();
    modes.push_back({exchange.request, first, done, done});
  }
  return modes;
}

/// Whether the request got no answer that is of use, because it was sent while the mode changed.
bool isSpoilt(const Session& session, const Exchange& exchange, const PendingMode& mode) {
  const Item& request = session.items[exchange.request];
  const bool isInside = exchange.request > mode.pending && exchange.request < mode.end;
  if (!isInside || !needsTheMode(request.message)) return false;
  if (!exchange.isAnswered()) return session.waitAfter(exchange.request) >= kGaveUp;
  const bool isRefused = resultOf(session, exchange).value_or(0) != 0;
  // The host takes the acknowledgement of the mode for the answer.
  return isRefused || exchange.replies.front() > mode.done;
}

/// Returns the lines of the requests that were spoilt.
std::vector<size_t> spoiltRequests(const Session& session, const PendingMode& mode) {
  std::vector<size_t> lines;
  const Exchanges& exchanges = session.exchanges;
  const auto isBefore = [](const Exchange& exchange, size_t item) {
    return exchange.request < item;
  };
  auto each = std::lower_bound(exchanges.all.begin(), exchanges.all.end(), mode.pending, isBefore);
  for (; each != exchanges.all.end() && each->request < mode.end; ++each) {
    if (isSpoilt(session, *each, mode)) lines.push_back(session.items[each->request].firstLine);
  }
  return lines;
}

bool neverEnds(const Session& session, const PendingMode& mode) {
  return mode.done == session.items.size() && !session.connected && !session.failure &&
         session.ended - session.items[mode.pending].at >= kLongestPending;
}

void notePendingModes(const Session& session, Diagnosis& diagnosis) {
  for (const PendingMode& mode : pendingModesOf(session)) {
    if (mode.done == session.items.size()) continue;
    diagnosis.addNote("the iPod acknowledged a change of the mode twice, as pending and as done",
                      {session.items[mode.pending].line, session.items[mode.done].line});
  }
}

}  // namespace

PendingTimes::PendingTimes(const Session& session) {
  for (const PendingMode& mode : pendingModesOf(session)) {
    if (mode.pending < mode.end) times.push_back({mode.pending, mode.end});
  }
}

bool PendingTimes::contain(size_t request) const {
  const auto isBefore = [](const Time& time, size_t item) { return time.pending < item; };
  const auto next = std::lower_bound(times.begin(), times.end(), request, isBefore);
  return next != times.begin() && request < std::prev(next)->end;
}

ModeChanges::ModeChanges(const Session& session) {
  for (size_t i = 0; i < session.items.size(); ++i) {
    if (!session.isHostMessage(i)) continue;
    const Message& message = session.items[i].message;
    const bool leaves = isGeneral(message, simulator::kExitRemoteUiMode) ||
                        isGeneral(message, simulator::kIdentifyDeviceLingoes);
    if (leaves || isGeneral(message, simulator::kEnterRemoteUiMode)) changes.push_back({i, leaves});
  }
}

bool ModeChanges::haveLeftBefore(size_t request) const {
  const auto isBefore = [](const Change& change, size_t item) { return change.item < item; };
  const auto next = std::lower_bound(changes.begin(), changes.end(), request, isBefore);
  return next != changes.begin() && std::prev(next)->leaves;
}

void findPendingMode(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    for (const PendingMode& mode : pendingModesOf(session)) {
      std::vector<size_t> lines = spoiltRequests(session, mode);
      if (lines.empty() && !neverEnds(session, mode)) continue;
      lines.push_back(session.items[mode.request].firstLine);
      lines.push_back(session.items[mode.pending].line);
      if (mode.done < session.items.size()) lines.push_back(session.items[mode.done].line);
      diagnosis.add("mode-change-pending", lines);
    }
  }
}

void noteModeAcknowledgedTwice(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    notePendingModes(session, diagnosis);
    for (const size_t other : session.exchanges.unexpected) {
      const Message& message = session.items[other].message;
      const bool isMode = isGeneral(message, simulator::kAck) && message.data.size() >= 2 &&
                          message.data[1] == simulator::kEnterRemoteUiMode;
      if (!isMode) continue;
      diagnosis.addNote("the iPod acknowledged a change of the mode more often than the host asked",
                        {session.items[other].line});
    }
  }
}

}  // namespace iaptrace::checking
