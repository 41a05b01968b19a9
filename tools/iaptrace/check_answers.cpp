// Answers that the host takes for those of other requests, and lists that lack records.

#include <algorithm>

#include "iaptrace/check_rules.h"
#include "wire/payload.h"

namespace iaptrace::checking {
namespace {

/// The requests of a host for whose answer it waits, in their order.
std::vector<const Exchange*> awaitedRequests(const Session& session) {
  std::vector<const Exchange*> requests;
  bool isIdentified = session.attempts.empty();
  for (const Exchange& exchange : session.exchanges.all) {
    const Item& request = session.items[exchange.request];
    if (request.sender != Sender::kHost) continue;
    isIdentified |= isGeneral(request.message, simulator::kEnterRemoteUiMode);
    const bool isLast = isGeneral(request.message, simulator::kExitRemoteUiMode);
    if (isIdentified && !isLast) requests.push_back(&exchange);
  }
  return requests;
}

/// What happened between a request and the next one.
class Turn {
 public:
  Turn(const Session& inSession, const Exchange& request, const Exchange& after)
      : session(inSession), own(request), next(after) {}

  /// Returns the first message of the iPod that does not answer the request, when the request's
  /// answer arrived only after the next one was sent.
  std::optional<size_t> foreignAnswer() const {
    if (!own.isAnswered() || own.replies.front() < next.request) return std::nullopt;
    for (size_t i = own.request + 1; i < next.request; ++i) {
      if (session.isIpodMessage(i)) return i;
    }
    return std::nullopt;
  }

  bool timedOut() const {
    return session.items[next.request].begun - session.items[own.request].at >= kGaveUp;
  }

  bool isAnsweredBy(size_t item) const { return own.isAnswered() && own.replies.front() == item; }

 private:
  const Session& session;
  const Exchange& own;
  const Exchange& next;
};

/// Finds requests in a row whose answers arrive one request too late. A host that sends several
/// requests before it reads looks alike, but nothing sets it off: neither a message that answers
/// something else, nor an answer later than the host waits.
class ShiftFinder {
 public:
  explicit ShiftFinder(const Session& toSearch)
      : session(toSearch), requests(awaitedRequests(toSearch)) {}

  /// Returns the lines of the longest such row of each shift.
  std::vector<size_t> lines() {
    for (size_t k = 0; k + 1 < requests.size(); ++k)
      take(k);
    close();
    return std::move(found);
  }

 private:
  Turn turn(size_t k) const { return {session, *requests[k], *requests[k + 1]}; }

  bool startsAShift(size_t k, size_t foreign) const {
    if (k == 0) return true;
    return turn(k - 1).timedOut() || !turn(k - 1).isAnsweredBy(foreign);
  }

  void take(size_t k) {
    const std::optional<size_t> foreign = turn(k).foreignAnswer();
    const bool goesOn = foreign && (!row.empty() || startsAShift(k, *foreign));
    if (!goesOn) return close();
    row.push_back(session.items[requests[k]->request].firstLine);
    row.push_back(session.items[*foreign].line);
  }

  void close() {
    constexpr size_t kLinesOfTwo = 4;
    if (row.size() >= kLinesOfTwo) found.insert(found.end(), row.begin(), row.end());
    row.clear();
  }

  const Session& session;
  std::vector<const Exchange*> requests;
  std::vector<size_t> row;
  std::vector<size_t> found;
};

struct Listing {
  uint8_t category = 0;
  uint32_t start = 0;
  uint32_t wanted = 0;
  uint32_t received = 0;
  size_t last = 0;  ///< the item of the last record, or of the request
  std::optional<uint8_t> refusal;
};

bool isListing(const Session& session, const Exchange& exchange) {
  return isExtended(session.items[exchange.request].message,
                    simulator::kRetrieveCategorizedDatabaseRecords);
}

Listing listingOf(const Session& session, const Exchange& exchange) {
  simulator::PayloadReader reader(session.items[exchange.request].message.data);
  Listing listing;
  listing.category = reader.u8();
  listing.start = reader.u32();
  listing.wanted = reader.u32();
  listing.last = exchange.request;
  const size_t next = session.nextRequest(exchange.request);
  for (const size_t reply : exchange.replies) {
    if (reply >= next) break;
    const Message& message = session.items[reply].message;
    const bool isRecord = isExtended(message, simulator::kReturnCategorizedDatabaseRecord);
    if (statusOf(message).value_or(0) != 0) listing.refusal = statusOf(message);
    if (isRecord) ++listing.received;
    listing.last = reply;
  }
  return listing;
}

/// Requests to which the host took records of an earlier list for the answer.
class SurplusFinder {
 public:
  explicit SurplusFinder(const Session& toSearch)
      : session(toSearch), requests(awaitedRequests(toSearch)) {}

  /// Returns the lines of the records that were too many, and of the requests.
  std::vector<size_t> lines() {
    for (size_t k = 0; k < requests.size(); ++k) {
      const size_t next = k + 1 < requests.size() ? requests[k + 1]->request : endOfItems();
      take(*requests[k], next);
    }
    constexpr size_t kLeastRequests = 2;
    if (spoilt < kLeastRequests) found.clear();
    return std::move(found);
  }

 private:
  size_t endOfItems() const { return session.items.size(); }

  void take(const Exchange& exchange, size_t next) {
    if (isListing(session, exchange)) takeListing(listingOf(session, exchange));
    if (hasSurplus && isPassedOver(exchange, next)) {
      ++spoilt;
      found.push_back(session.items[exchange.request].firstLine);
    }
  }

  void takeListing(const Listing& listing) {
    if (listing.received <= listing.wanted) return;
    hasSurplus = true;
    found.push_back(session.items[listing.last].line);
  }

  /// Whether the host went on without an answer, and without waiting for one.
  bool isPassedOver(const Exchange& exchange, size_t next) const {
    const bool isAnswered = exchange.isAnswered() && exchange.replies.front() < next;
    const bool isOver = next < endOfItems() || session.isClosed;
    return !isAnswered && isOver && session.waitAfter(exchange.request) < kGaveUp;
  }

  const Session& session;
  std::vector<const Exchange*> requests;
  bool hasSurplus = false;
  size_t spoilt = 0;
  std::vector<size_t> found;
};

/// `fatal` is the session's fatal frame.
bool isShort(const Session& session, const Exchange& exchange, const Listing& listing,
             const std::optional<size_t>& fatal) {
  const bool isComplete = listing.refusal || listing.wanted == simulator::kAllRecords ||
                          listing.received >= listing.wanted;
  if (isComplete || session.waitAfter(listing.last) < kGaveUp) return false;
  const std::optional<size_t> last = session.lastIpodMessage;
  const bool isAlive = listing.received > 0 || (last && *last > exchange.request);
  const bool isLost = session.failure && session.nextRequest(exchange.request) > *session.failure;
  return isAlive && !isLost && !(fatal && *fatal > exchange.request);
}

/// Whether the iPod refused records that it had counted.
bool isRefusedThoughCounted(const Session& session, const Exchange& exchange,
                            const Listing& listing) {
  if (!listing.refusal || listing.wanted == 0) return false;
  const auto count = countedBefore(session, exchange.request, listing.category);
  return count && listing.start < *count;
}

std::string detailOfListing(const Listing& listing) {
  const std::string asked = "The host asked for " + std::to_string(listing.wanted) +
                            (listing.wanted == 1 ? " record" : " records");
  if (listing.refusal) {
    return asked + ", and the iPod refused with status " + std::to_string(*listing.refusal) +
           ", although it had counted " + (listing.wanted == 1 ? "it." : "them.");
  }
  return asked + " and received " + std::to_string(listing.received) + ".";
}

}  // namespace

void findShiftedAnswers(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    const std::vector<size_t> lines = ShiftFinder(session).lines();
    if (!lines.empty()) diagnosis.add("answers-shifted", lines);
    const std::vector<size_t> surplus = SurplusFinder(session).lines();
    if (surplus.empty()) continue;
    diagnosis.add("answers-shifted", surplus,
                  "The iPod sent more records than the host asked for.");
  }
}

void findShortList(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    const std::optional<size_t> fatal = fatalFrame(session);
    for (const Exchange& exchange : session.exchanges.all) {
      const Item& request = session.items[exchange.request];
      if (!isListing(session, exchange)) continue;
      const Listing listing = listingOf(session, exchange);
      if (!isShort(session, exchange, listing, fatal) &&
          !isRefusedThoughCounted(session, exchange, listing)) {
        continue;
      }
      diagnosis.add("list-short", {request.firstLine, session.items[listing.last].line},
                    detailOfListing(listing));
    }
  }
}

}  // namespace iaptrace::checking
