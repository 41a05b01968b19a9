#include "iaptrace/annotation.h"

#include <algorithm>

namespace iaptrace {
namespace {

constexpr auto kOk = static_cast<uint8_t>(simulator::Status::kOk);
constexpr auto kPending = static_cast<uint8_t>(simulator::Status::kPending);

bool isRefusal(const Item& item) {
  if (!item.isMessage()) return false;
  const auto status = statusOf(item.message);
  return status && *status != kOk && *status != kPending;
}

bool isPending(const Item& item) { return statusOf(item.message) == kPending; }

/// Marks the answers that arrive when the same end has already asked something else.
void markTurns(const Conversation& items, std::vector<Annotation>& notes) {
  std::optional<size_t> latest[2];
  for (size_t i = 0; i < items.size(); ++i) {
    const Item& item = items[i];
    if (!item.isMessage()) continue;
    const auto& asked = latest[item.sender == Sender::kHost ? 1 : 0];
    if (notes[i].request && asked) notes[i].isOutOfTurn = *notes[i].request < *asked;
    const bool asks = !notes[i].request && expectsAnswer(item.sender, item.message);
    if (asks) latest[item.sender == Sender::kHost ? 0 : 1] = i;
  }
}

}  // namespace

std::vector<Annotation> annotate(const Conversation& items, const Exchanges& exchanges) {
  std::vector<Annotation> notes(items.size());
  for (const Exchange& exchange : exchanges.all) {
    const bool hasAnswer = exchange.isAnswered() && !isPending(items[exchange.replies.back()]);
    notes[exchange.request].isUnanswered = !hasAnswer;
    for (const size_t reply : exchange.replies) {
      notes[reply].request = exchange.request;
      notes[reply].latency = std::max(trace::Time(0), items[reply].at - items[exchange.request].at);
    }
  }
  for (const size_t each : exchanges.unsolicited)
    notes[each].isUnsolicited = true;
  for (const size_t each : exchanges.unexpected)
    notes[each].isUnexpected = true;
  for (size_t i = 0; i < items.size(); ++i)
    notes[i].isRefusal = isRefusal(items[i]);
  markTurns(items, notes);
  return notes;
}

}  // namespace iaptrace
