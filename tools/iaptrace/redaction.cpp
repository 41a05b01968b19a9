#include "iaptrace/redaction.h"

#include <algorithm>
#include <cctype>
#include <vector>

#include "iaptrace/conversation.h"
#include "iaptrace/failure.h"
#include "iaptrace/redacted_text.h"
#include "trace/trace_parser.h"
#include "wire/fields.h"
#include "wire/frame.h"

namespace iaptrace {
namespace {

using simulator::Field;
using simulator::FieldKind;

/// The first letter is the usual one. Another is used when a text with the usual one would look
/// like a frame.
constexpr std::string_view kLetters = "xyzabcdefghijklmnopqrstuvw";

/// Returns whether the text is private. The model is not: it explains much.
bool isPrivate(const Field& field) {
  return field.layout->kind == FieldKind::kText && std::string(field.layout->name) != "model";
}

/// An accessory says its name (1) and serial number (8), too.
bool isAccessoryText(const Message& message) {
  return message.is(simulator::Lingo::kGeneral, simulator::kRetAccessoryInfo) &&
         !message.data.empty() && (message.data[0] == 1 || message.data[0] == 8);
}

/// Where the private text of a message begins in its data; the data's size without one.
size_t privateFrom(const Message& message) {
  if (isAccessoryText(message)) return 1;
  for (const Field& field : simulator::fieldsOf(message).all) {
    if (isPrivate(field)) return message.data.size() - field.bytes.size();
  }
  return message.data.size();
}

size_t headerOf(const Item& item, const Message& message) {
  return (item.isLong ? 4 : 2) + 1 + simulator::commandWidth(message.lingo);
}

void redactMessage(Item& item, char letter) {
  const size_t header = headerOf(item, item.message);
  uint8_t* const data = item.bytes.data() + header;
  const size_t size = item.message.data.size();
  if (simulator::layoutOf(item.message) == nullptr) {
    redactLookalikes(data, size, letter);
  } else {
    const size_t from = privateFrom(item.message);
    redactText(data + from, size - from, letter);
  }
  const ByteView checked = ByteView(item.bytes).prefix(item.bytes.size() - 1).from(1);
  item.bytes.back() = simulator::frameChecksum(checked);
}

/// The length of what a damaged frame contains before its checksum; all bytes if that is missing.
size_t checkedSize(const Item& item) {
  const size_t header = item.isLong ? 4 : 2;
  if (item.kind != Item::Kind::kBadChecksum || item.bytes.size() <= header)
    return item.bytes.size();
  const size_t length = item.isLong ? item.bytes[2] * size_t{256} + item.bytes[3] : item.bytes[1];
  const bool isWhole = header + length + 1 == item.bytes.size();
  return isWhole ? item.bytes.size() - 1 : item.bytes.size();
}

/// Redacts a frame without a correct checksum. Its header can be what is damaged, so that a text
/// can be anywhere.
void redactDamaged(Item& item, char letter) {
  const size_t header = std::min<size_t>(item.isLong ? 4 : 2, item.bytes.size());
  const size_t end = std::max(header, checkedSize(item));
  const uint8_t before = simulator::frameChecksum(ByteView(item.bytes).prefix(end));
  const auto message = simulator::parseMessage(ByteView(item.bytes).prefix(end).from(header));
  const size_t from = message ? headerOf(item, *message) + privateFrom(*message) : end;
  redactLookalikes(item.bytes.data() + from, end - from, letter, 1);
  redactLookalikes(item.bytes.data() + header, end - header, letter);
  const uint8_t after = simulator::frameChecksum(ByteView(item.bytes).prefix(end));
  if (end < item.bytes.size()) {
    item.bytes[end] = static_cast<uint8_t>(item.bytes[end] + after - before);
  }
}

void redactItem(Item& item, char letter) {
  switch (item.kind) {
    case Item::Kind::kMessage:
      return redactMessage(item, letter);
    case Item::Kind::kBadChecksum:
    case Item::Kind::kUnfinished:
      return redactDamaged(item, letter);
    case Item::Kind::kNoise:
      return redactLookalikes(item.bytes.data(), item.bytes.size(), letter);
    case Item::Kind::kMalformed:
    case Item::Kind::kEvent:
      return;
  }
}

/// Goes over the bytes that one end sent on a device, in order.
class SentBytes {
 public:
  SentBytes(trace::Trace& ofRecords, const std::string& ofDevice, Sender sender)
      : records(ofRecords),
        device(ofDevice),
        kind(sender == Sender::kHost ? trace::Record::Kind::kWritten : trace::Record::Kind::kRead) {
  }

  uint8_t& next() {
    while (!isMine(records.at(record)) || index == records[record].bytes.size()) {
      ++record;
      index = 0;
    }
    return records[record].bytes[index++];
  }

 private:
  bool isMine(const trace::Record& one) const { return one.kind == kind && one.device == device; }

  trace::Trace& records;
  const std::string& device;
  trace::Record::Kind kind;
  size_t record = 0;
  size_t index = 0;
};

/// Writes the bytes of the items over those of the records. The items of one end follow each other
/// without a gap; only a sync byte before a frame does not belong to it.
void writeBack(const Conversation& items, const std::string& device, Sender sender,
               trace::Trace& records) {
  SentBytes sent(records, device, sender);
  for (const Item& item : items) {
    if (!item.isFrom(sender)) continue;
    if (item.hasSync) sent.next();
    for (const uint8_t byte : item.bytes)
      sent.next() = byte;
  }
}

bool isSameShape(const Conversation& before, const Conversation& after) {
  const auto isSame = [](const Item& a, const Item& b) {
    return a.kind == b.kind && a.sender == b.sender && a.line == b.line &&
           a.firstLine == b.firstLine && a.bytes.size() == b.bytes.size() &&
           a.hasSync == b.hasSync && a.isLong == b.isLong && a.message.lingo == b.message.lingo &&
           a.message.command == b.message.command;
  };
  return std::equal(before.begin(), before.end(), after.begin(), after.end(), isSame);
}

/// Redacts one device in the records. Returns false when the messages would not be the same.
bool redactDevice(const std::string& device, char letter, trace::Trace& records) {
  Conversation items = conversationOf(records, device);
  for (Item& item : items)
    redactItem(item, letter);
  writeBack(items, device, Sender::kHost, records);
  writeBack(items, device, Sender::kIpod, records);
  return isSameShape(items, conversationOf(records, device));
}

/// Copies the bytes of one device.
void restore(const trace::Trace& from, const std::string& device, trace::Trace& to) {
  for (size_t i = 0; i < from.size(); ++i) {
    if (from[i].device == device) to[i].bytes = from[i].bytes;
  }
}

trace::Trace redactedRecords(const trace::Trace& records) {
  trace::Trace done = records;
  for (const std::string& device : trace::devicesOf(records)) {
    const auto works = [&](char letter) {
      if (redactDevice(device, letter, done)) return true;
      restore(records, device, done);
      return false;
    };
    if (!std::any_of(kLetters.begin(), kLetters.end(), works)) {
      throw Failure(
          "no replacement of the texts keeps the damaged frames of this trace as they"
          " are. Cut the trace where the damage is, then redact the parts.");
    }
  }
  return done;
}

/// Writes hexadecimal digits over those of a line, in upper or lower case as they are there.
void overwrite(std::string& text, size_t from, const trace::Record& was, const trace::Record& is) {
  const size_t end = std::min(text.find('\n', from), text.size());
  const bool isLower = std::any_of(text.begin() + static_cast<ptrdiff_t>(from),
                                   text.begin() + static_cast<ptrdiff_t>(end),
                                   [](unsigned char one) { return std::islower(one) != 0; });
  const char* const digits = isLower ? "0123456789abcdef" : "0123456789ABCDEF";
  for (size_t i = 0; i < is.bytes.size(); ++i) {
    if (was.bytes[i] == is.bytes[i]) continue;
    text[from + 3 * i] = digits[is.bytes[i] >> 4];
    text[from + 3 * i + 1] = digits[is.bytes[i] & 0x0F];
  }
}

/// Returns where the bytes of a data line begin: after three blanks.
size_t bytesFrom(const std::string& text, size_t lineStart) {
  size_t position = lineStart;
  for (int blanks = 0; blanks < 3; ++blanks)
    position = text.find(' ', position) + 1;
  return position;
}

}  // namespace

std::string redacted(std::string_view traceText) {
  const trace::Trace was = trace::parseTrace(traceText);
  const trace::Trace is = redactedRecords(was);
  std::string text(traceText);
  size_t lineStart = 0;
  size_t line = 1;
  for (size_t i = 0; i < was.size(); ++i) {
    for (; line < was[i].line; ++line)
      lineStart = text.find('\n', lineStart) + 1;
    if (was[i].isData()) overwrite(text, bytesFrom(text, lineStart), was[i], is[i]);
  }
  return text;
}

}  // namespace iaptrace
