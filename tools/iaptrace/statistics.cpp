#include "iaptrace/statistics.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace iaptrace {
namespace {

using simulator::Lingo;

enum class Outcome { kSuccess, kSilence, kRefusal };

Outcome outcomeOf(const Conversation& items, const Exchange& exchange) {
  if (!exchange.isAnswered()) return Outcome::kSilence;
  const auto status = statusOf(items[exchange.replies.back()].message);
  if (!status || *status == 0) return Outcome::kSuccess;
  const bool isPending = *status == static_cast<uint8_t>(simulator::Status::kPending);
  return isPending ? Outcome::kSilence : Outcome::kRefusal;
}

std::vector<CommandStatistics> commandsOf(const Conversation& items, const Exchanges& exchanges) {
  std::map<std::tuple<Sender, uint8_t, uint16_t>, CommandStatistics> found;
  for (const Exchange& exchange : exchanges.all) {
    const Item& request = items[exchange.request];
    CommandStatistics& row =
        found[{request.sender, request.message.lingo, request.message.command}];
    row.sender = request.sender;
    row.lingo = request.message.lingo;
    row.command = request.message.command;
    ++row.count;
    const Outcome outcome = outcomeOf(items, exchange);
    row.unanswered += outcome == Outcome::kSilence ? 1 : 0;
    row.refused += outcome == Outcome::kRefusal ? 1 : 0;
    if (outcome == Outcome::kSilence) continue;
    row.latencies.push_back(
        std::max(trace::Time(0), items[exchange.replies.back()].at - request.at));
  }
  std::vector<CommandStatistics> all;
  for (auto& [key, row] : found) {
    std::sort(row.latencies.begin(), row.latencies.end());
    all.push_back(std::move(row));
  }
  return all;
}

/// Returns whether the message acknowledges a command with success.
bool confirms(const Message& message, Lingo lingo, uint16_t command) {
  const bool isWide = lingo == Lingo::kExtendedInterface;
  const size_t last = isWide ? 2 : 1;
  const uint16_t extended = simulator::kExtendedAck;
  const uint16_t id = isWide ? extended : uint16_t{simulator::kAck};
  return message.is(lingo, id) && statusOf(message) == 0 && message.data.size() > last &&
         message.data[last] == command;
}

/// Returns the stage that a message completes; null when it completes none.
const char* stageOf(const Item& item) {
  const Message& message = item.message;
  if (item.sender == Sender::kHost) {
    if (message.is(Lingo::kGeneral, simulator::kRetAccessoryInfo)) return "accessory-info";
    const bool isRates = message.is(Lingo::kDigitalAudio, simulator::kRetAccSampleRateCaps);
    return isRates ? "sample-rates" : nullptr;
  }
  if (confirms(message, Lingo::kGeneral, simulator::kIdentifyDeviceLingoes)) return "identify";
  if (message.is(Lingo::kGeneral, simulator::kReturnLingoProtocolVersion)) return "versions";
  const bool isLogo = confirms(message, Lingo::kExtendedInterface, simulator::kSetDisplayImage);
  if (isLogo) return "logo";
  const bool isMode = confirms(message, Lingo::kGeneral, simulator::kEnterRemoteUiMode);
  return isMode ? "connected" : nullptr;
}

/// Adds the first time of a stage. The versions and the logo take several messages: the last one
/// before the connection is complete is theirs.
void addMilestone(const Item& item, ConnectionStatistics& connection) {
  const char* stage = item.isMessage() && !connection.isConnected ? stageOf(item) : nullptr;
  if (stage == nullptr) return;
  auto& all = connection.milestones;
  const auto same = std::find_if(all.begin(), all.end(),
                                 [&](const Milestone& one) { return one.stage == stage; });
  const std::string name = stage;
  const bool isLong = name == "versions" || name == "logo" || name == "accessory-info";
  if (same != all.end() && !isLong) return;
  if (same != all.end()) all.erase(same);
  all.push_back({name, item.at, item.line});
  connection.isConnected = name == "connected";
}

std::vector<ConnectionStatistics> connectionsOf(const Conversation& items) {
  std::vector<ConnectionStatistics> all;
  for (const Item& item : items) {
    const bool isOpen =
        item.kind == Item::Kind::kEvent && item.event->kind == trace::Record::Kind::kOpened;
    if (isOpen || (all.empty() && item.kind != Item::Kind::kEvent)) {
      all.push_back({item.begun, item.line, {}, false});
    }
    if (!all.empty()) addMilestone(item, all.back());
  }
  return all;
}

void count(const Item& item, DirectionStatistics& direction) {
  direction.bytes += item.bytes.size() + (item.hasSync ? 1 : 0);
  if (item.isMessage()) {
    ++direction.messages;
  } else if (item.kind == Item::Kind::kNoise) {
    direction.noise += item.bytes.size();
  } else {
    ++direction.damaged;
  }
}

}  // namespace

Statistics statisticsOf(const Conversation& items, const Exchanges& exchanges) {
  Statistics statistics;
  if (!items.empty()) statistics.duration = items.back().at;
  for (const Item& item : items) {
    if (item.isFrom(Sender::kHost)) count(item, statistics.fromHost);
    if (item.isFrom(Sender::kIpod)) count(item, statistics.fromIpod);
  }
  statistics.commands = commandsOf(items, exchanges);
  statistics.connections = connectionsOf(items);
  statistics.unsolicited = exchanges.unsolicited.size();
  statistics.unexpected = exchanges.unexpected.size();
  return statistics;
}

}  // namespace iaptrace
