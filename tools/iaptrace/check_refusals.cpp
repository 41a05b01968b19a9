// Requests that an iPod refuses although it can do what they ask for.

#include "iaptrace/check_rules.h"
#include "wire/payload.h"

namespace iaptrace::checking {
namespace {

using simulator::PayloadReader;

/// Whether every iPod does this, whatever it plays and has.
bool alwaysSucceeds(const Message& request) {
  return isExtended(request, simulator::kResetDbSelection) ||
         isExtended(request, simulator::kGetPlayStatus) ||
         isExtended(request, simulator::kGetCurrentPlayingTrackIndex) ||
         isExtended(request, simulator::kGetShuffle) || isExtended(request, simulator::kGetRepeat);
}

/// Whether the request counts a category that every iPod has.
bool countsACategory(const Message& request) {
  constexpr uint8_t kComposers = 6;  // audiobooks and podcasts follow, which early models lack
  if (!isExtended(request, simulator::kGetNumberCategorizedDbRecords)) return false;
  const uint8_t category = PayloadReader(request.data).u8();
  return category >= 1 && category <= kComposers;
}

/// Whether the request plays or selects a record that the iPod has counted.
bool namesACountedRecord(const Session& session, size_t index) {
  constexpr uint8_t kTracks = 5;
  const Message& request = session.items[index].message;
  PayloadReader reader(request.data);
  const bool plays = isExtended(request, simulator::kPlayCurrentSelection);
  if (!plays && !isExtended(request, simulator::kSelectDbRecord) &&
      !isExtended(request, simulator::kSelectSortDbRecord)) {
    return false;
  }
  const uint8_t category = plays ? kTracks : reader.u8();
  const uint32_t record = reader.u32();
  const auto count = countedBefore(session, index, category);
  return reader.ok() && count && record < *count;
}

bool hasNoReason(const Session& session, size_t request) {
  const Message& message = session.items[request].message;
  return alwaysSucceeds(message) || countsACategory(message) ||
         namesACountedRecord(session, request);
}

bool changesTheSelection(const Message& request) {
  return isExtended(request, simulator::kResetDbSelection) ||
         isExtended(request, simulator::kSelectDbRecord) ||
         isExtended(request, simulator::kSelectSortDbRecord);
}

void findStrangeRefusalsIn(const Session& session, Diagnosis& diagnosis) {
  const PendingTimes pending(session);
  const ModeChanges changes(session);
  for (const Exchange& exchange : session.exchanges.all) {
    const size_t request = exchange.request;
    if (!session.isHostMessage(request) || request < *session.connected) continue;
    const uint8_t status = resultOf(session, exchange).value_or(0);
    if (status == 0 || pending.contain(request) || changes.haveLeftBefore(request)) continue;
    if (!hasNoReason(session, request)) continue;
    diagnosis.add(
        "unknown", {session.items[request].firstLine, session.items[exchange.replies.back()].line},
        "The iPod refused a request with status " + std::to_string(status) + " without a reason.");
  }
}

}  // namespace

std::optional<uint32_t> countedBefore(const Session& session, size_t request, uint8_t category) {
  constexpr size_t kLookedAt = 400;
  const size_t end = request < kLookedAt ? 0 : request - kLookedAt;
  for (size_t i = request; i-- > end;) {
    const Message& message = session.items[i].message;
    if (session.isHostMessage(i) && changesTheSelection(message)) return std::nullopt;
    const bool isCount = session.isHostMessage(i) &&
                         isExtended(message, simulator::kGetNumberCategorizedDbRecords) &&
                         PayloadReader(message.data).u8() == category;
    if (!isCount) continue;
    for (size_t reply = i + 1; reply < request; ++reply) {
      if (!session.isIpodMessage(reply)) continue;
      const Message& answer = session.items[reply].message;
      if (isExtended(answer, simulator::kReturnNumberCategorizedDbRecords)) {
        return PayloadReader(answer.data).u32();
      }
    }
    return std::nullopt;
  }
  return std::nullopt;
}

void findStrangeRefusals(const Case& trace, Diagnosis& diagnosis) {
  for (const Session& session : trace.sessions) {
    if (session.connected) findStrangeRefusalsIn(session, diagnosis);
  }
}

}  // namespace iaptrace::checking
