#include "ipodctl/doctor_steps.h"

#include "iaptrace/check_session.h"

namespace tool {
namespace {

using iaptrace::checking::Attempt;
using iaptrace::checking::Session;

using Place = std::optional<size_t>;  ///< an index of the session's items

/// Returns the first of the attempts' places.
Place firstOf(const Session& session, Place Attempt::*place) {
  for (const Attempt& attempt : session.attempts) {
    if (attempt.*place) return attempt.*place;
  }
  return std::nullopt;
}

/// Returns the end of the first exchange in which the iPod answered this request with success.
Place answerTo(const Session& session, simulator::Lingo lingo, uint16_t command) {
  for (const iaptrace::Exchange& exchange : session.exchanges.all) {
    const iaptrace::Item& request = session.items[exchange.request];
    const bool isIt =
        request.sender == iaptrace::Sender::kHost && request.message.is(lingo, command);
    if (isIt && iaptrace::checking::resultOf(session, exchange) == uint8_t{0})
      return exchange.replies.back();
  }
  return std::nullopt;
}

Place answerToGeneral(const Session& session, uint16_t command) {
  return answerTo(session, simulator::Lingo::kGeneral, command);
}

Place answerToExtended(const Session& session, uint16_t command) {
  return answerTo(session, simulator::Lingo::kExtendedInterface, command);
}

struct Row {
  const char* what;
  bool isOptional;
  Place (*find)(const Session&);
};

constexpr Row kRows[] = {
    {"the iPod accepts the announcement", true,
     [](const Session& session) { return firstOf(session, &Attempt::accepted); }},
    {"it asks about the head unit", true,
     [](const Session& session) { return firstOf(session, &Attempt::answersInfo); }},
    {"it asks for the sample rates", true,
     [](const Session& session) { return firstOf(session, &Attempt::answersRates); }},
    {"it is identified", false,
     [](const Session& session) { return firstOf(session, &Attempt::identified); }},
    {"it enters the Extended Interface mode", false,
     [](const Session& session) { return session.connected; }},
    {"it returns its name", false,
     [](const Session& session) { return answerToGeneral(session, simulator::kRequestIpodName); }},
    {"it returns its serial number", false,
     [](const Session& session) {
       return answerToGeneral(session, simulator::kRequestIpodSerialNum);
     }},
    {"it counts its artists", false,
     [](const Session& session) {
       return answerToExtended(session, simulator::kGetNumberCategorizedDbRecords);
     }},
    {"it says what plays", false,
     [](const Session& session) { return answerToExtended(session, simulator::kGetPlayStatus); }},
};

/// Returns when the device was opened, before the session's items.
trace::Time openedAt(const trace::Trace& records) {
  trace::Time opened{0};
  for (const trace::Record& record : records) {
    if (record.kind == trace::Record::Kind::kOpened) opened = record.at;
  }
  return opened;
}

}  // namespace

std::vector<Step> stepsOf(const trace::Trace& records) {
  const iaptrace::checking::Case found = iaptrace::checking::caseOf(records, {});
  const bool isOpen = !found.sessions.empty();
  std::vector<Step> steps = {{"the device opens", std::nullopt, false}};
  if (isOpen) steps.front().done = trace::Time(0);
  for (const Row& row : kRows) {
    const Place place = isOpen ? row.find(found.sessions.back()) : std::nullopt;
    Step step = {row.what, std::nullopt, row.isOptional};
    if (place) step.done = found.sessions.back().items[*place].at - openedAt(records);
    steps.push_back(step);
  }
  return steps;
}

}  // namespace tool
