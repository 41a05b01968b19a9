#include "iaptrace/exchange.h"

#include <algorithm>

#include "wire/lingo.h"
#include "wire/payload.h"

namespace iaptrace {
namespace {

using simulator::Lingo;
using simulator::Status;

struct Row {
  Sender asks;
  Lingo lingo;
  uint16_t request;
  uint16_t reply;
};

constexpr uint16_t kOnlyAcknowledged = 0xFFFF;

/// What is not answered with its id + 1 or an acknowledgement of the same lingo by the iPod.
constexpr Row kRows[] = {
    {Sender::kHost, Lingo::kGeneral, simulator::kIdentifyDeviceLingoes, kOnlyAcknowledged},
    {Sender::kHost, Lingo::kGeneral, simulator::kEnterRemoteUiMode, kOnlyAcknowledged},
    {Sender::kHost, Lingo::kGeneral, simulator::kExitRemoteUiMode, kOnlyAcknowledged},
    {Sender::kIpod, Lingo::kGeneral, simulator::kGetAccessoryInfo, simulator::kRetAccessoryInfo},
    {Sender::kIpod, Lingo::kDigitalAudio, simulator::kGetAccSampleRateCaps,
     simulator::kRetAccSampleRateCaps},
    {Sender::kIpod, Lingo::kDigitalAudio, simulator::kTrackNewAudioAttributes, simulator::kAccAck},
};

/// The host's messages that no iPod must answer.
constexpr Row kUnanswered[] = {
    {Sender::kHost, Lingo::kGeneral, simulator::kIdentify, 0},
    {Sender::kHost, Lingo::kGeneral, simulator::kAck, 0},
    {Sender::kHost, Lingo::kGeneral, simulator::kRetAccessoryInfo, 0},
    {Sender::kHost, Lingo::kDigitalAudio, simulator::kAccAck, 0},
    {Sender::kHost, Lingo::kDigitalAudio, simulator::kRetAccSampleRateCaps, 0},
};

/// Messages that an iPod sends unasked.
constexpr Row kNotifications[] = {
    {Sender::kIpod, Lingo::kGeneral, simulator::kNotifyIpodStateChange, 0},
    {Sender::kIpod, Lingo::kExtendedInterface, simulator::kPlayStatusChangeNotification, 0},
};

template <size_t kCount>
const Row* find(const Row (&rows)[kCount], Sender sender, const Message& message) {
  const auto row = std::find_if(rows, rows + kCount, [&](const Row& one) {
    return one.asks == sender && message.is(one.lingo, one.request);
  });
  return row == rows + kCount ? nullptr : row;
}

bool isAcknowledgement(const Message& message) {
  return message.is(Lingo::kGeneral, simulator::kAck) ||
         message.is(Lingo::kExtendedInterface, simulator::kExtendedAck) ||
         message.is(Lingo::kDigitalAudio, simulator::kAccAck);
}

bool acknowledges(const Message& reply, const Message& request) {
  if (!isAcknowledgement(reply) || reply.lingo != request.lingo) return false;
  simulator::PayloadReader reader(reply.data);
  reader.u8();
  const bool isWide = simulator::commandWidth(reply.lingo) == 2;
  const uint16_t command = isWide ? reader.u16() : reader.u8();
  return reader.ok() && command == request.command;
}

/// The iPod's requests and what answers them.
uint16_t replyOf(const Message& request) {
  for (const Sender sender : {Sender::kHost, Sender::kIpod}) {
    if (const Row* row = find(kRows, sender, request)) return row->reply;
  }
  return static_cast<uint16_t>(request.command + 1);
}

bool isPending(const Message& reply) {
  return statusOf(reply) == static_cast<uint8_t>(Status::kPending);
}

bool isRecord(const Message& message) {
  return message.is(Lingo::kExtendedInterface, simulator::kReturnCategorizedDatabaseRecord);
}

/// Whether more can follow the last reply.
bool isOpen(const Conversation& items, const Exchange& exchange) {
  if (!exchange.isAnswered()) return true;
  const Message& last = items[exchange.replies.back()].message;
  return isPending(last) || isRecord(last);
}

class Pairing {
 public:
  explicit Pairing(const Conversation& conversation) : items(conversation) {}

  Exchanges pair() {
    for (size_t i = 0; i < items.size(); ++i) {
      if (endsTheConnection(items[i])) firstOpen = found.all.size();
      if (items[i].isMessage()) take(i);
    }
    return std::move(found);
  }

 private:
  void take(size_t index) {
    const Item& item = items[index];
    if (Exchange* open = openFor(item)) {
      open->replies.push_back(index);
    } else if (expectsAnswer(item.sender, item.message)) {
      found.all.push_back({index, {}});
    } else if (find(kNotifications, item.sender, item.message) != nullptr) {
      found.unsolicited.push_back(index);
    } else if (item.sender == Sender::kIpod) {
      found.unexpected.push_back(index);
    }
  }

  /// The latest exchange that the message can answer, among the last ones.
  Exchange* openFor(const Item& item) {
    constexpr ptrdiff_t kLookedAt = 64;
    const auto count = std::min(kLookedAt, static_cast<ptrdiff_t>(found.all.size() - firstOpen));
    for (auto one = found.all.rbegin(); one != found.all.rbegin() + count; ++one) {
      const Item& request = items[one->request];
      const bool fits = request.sender != item.sender && answers(item.message, request.message);
      if (fits && isOpen(items, *one)) return &*one;
    }
    return nullptr;
  }

  /// What was asked before the device was closed or opened again is not answered any more.
  static bool endsTheConnection(const Item& item) {
    return item.kind == Item::Kind::kEvent && (item.event->kind == trace::Record::Kind::kOpened ||
                                               item.event->kind == trace::Record::Kind::kClosed);
  }

  const Conversation& items;
  Exchanges found;
  size_t firstOpen = 0;  ///< the first exchange of this connection
};

}  // namespace

bool expectsAnswer(Sender sender, const Message& request) {
  if (sender == Sender::kIpod) return find(kRows, sender, request) != nullptr;
  const bool isButton = request.lingo == static_cast<uint8_t>(Lingo::kSimpleRemote);
  return !isButton && find(kUnanswered, sender, request) == nullptr;
}

bool answers(const Message& reply, const Message& request) {
  if (acknowledges(reply, request)) return true;
  const uint16_t command = replyOf(request);
  const bool hasReply = command != kOnlyAcknowledged && !isAcknowledgement(request);
  return hasReply && reply.lingo == request.lingo && reply.command == command &&
         !isAcknowledgement(reply);
}

std::optional<uint8_t> statusOf(const Message& message) {
  if (!isAcknowledgement(message) || message.data.empty()) return std::nullopt;
  return message.data.front();
}

Exchanges exchangesOf(const Conversation& items) { return Pairing(items).pair(); }

}  // namespace iaptrace
