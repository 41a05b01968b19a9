#include "iaptrace/asked.h"

#include "wire/lingo.h"

namespace iaptrace {
namespace {

using simulator::Lingo;
using trace::Record;

/// Follows whether the iPod is in the extended mode.
class ExtendedMode {
 public:
  bool isOn() const { return on; }

  void follow(const Item& item) {
    if (item.kind == Item::Kind::kEvent && item.event->kind != Record::Kind::kAudio) on = false;
    if (!item.isMessage() || item.message.lingo != static_cast<uint8_t>(Lingo::kGeneral)) return;
    const Bytes& data = item.message.data;
    if (item.isFrom(Sender::kHost)) {
      if (item.message.command == simulator::kExitRemoteUiMode) on = false;
    } else if (item.message.command == simulator::kReturnRemoteUiMode && !data.empty()) {
      on = data[0] != 0;
    } else if (item.message.command == simulator::kAck && data.size() > 1 && data[0] == 0) {
      if (data[1] == simulator::kEnterRemoteUiMode) on = true;
      if (data[1] == simulator::kIdentifyDeviceLingoes) on = false;
    }
  }

 private:
  bool on = false;
};

/// Returns for each item whether the iPod sends a message later in the same connection.
std::vector<bool> speaksLater(const Conversation& items) {
  std::vector<bool> later(items.size());
  bool speaks = false;
  for (size_t i = items.size(); i-- > 0;) {
    const Item& item = items[i];
    later[i] = speaks;
    const bool isBorder =
        item.kind == Item::Kind::kEvent && item.event->kind != Record::Kind::kAudio;
    speaks = !isBorder && (speaks || (item.isMessage() && item.isFrom(Sender::kIpod)));
  }
  return later;
}

}  // namespace

std::optional<uint8_t> Asked::status() const {
  return replies.empty() ? std::nullopt : statusOf(replies.back()->message);
}

const Message* Asked::reply() const {
  return replies.empty() || status() ? nullptr : &replies.front()->message;
}

std::vector<Asked> askedIn(const Conversation& items) {
  const Exchanges exchanges = exchangesOf(items);
  const std::vector<bool> later = speaksLater(items);
  ExtendedMode mode;
  size_t followed = 0;
  std::vector<Asked> all;
  for (const Exchange& exchange : exchanges.all) {
    for (; followed <= exchange.request; ++followed)
      if (followed < exchange.request) mode.follow(items[followed]);
    Asked asked;
    asked.index = exchange.request;
    asked.request = &items[exchange.request];
    asked.inExtendedMode = mode.isOn();
    mode.follow(items[exchange.request]);
    for (const size_t reply : exchange.replies)
      asked.replies.push_back(&items[reply]);
    asked.isIgnored = asked.replies.empty() && later[exchange.request];
    if (asked.request->isFrom(Sender::kHost)) all.push_back(std::move(asked));
  }
  return all;
}

}  // namespace iaptrace
