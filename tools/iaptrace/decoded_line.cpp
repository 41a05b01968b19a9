#include "iaptrace/decoded_line.h"

#include <algorithm>
#include <cstdio>

#include "iaptrace/logo.h"
#include "wire/command_names.h"
#include "wire/fields.h"
#include "wire/frame.h"
#include "wire/hex_text.h"
#include "wire/printable.h"

namespace iaptrace {
namespace {

constexpr size_t kShownBytes = 24;

std::string hexByte(uint8_t byte) { return simulator::hexText({&byte, 1}, 1); }

std::string lingoText(uint8_t lingo) {
  const char* name = simulator::lingoName(lingo);
  return name != nullptr ? name : "lingo " + hexByte(lingo);
}

std::string messageText(const Message& message) {
  std::string name = simulator::commandName(message);
  if (name == simulator::kUnknownCommand) {
    char id[32];
    std::snprintf(id, sizeof id, "unknown command %0*X",
                  static_cast<int>(2 * simulator::commandWidth(message.lingo)), message.command);
    name = id;
  }
  const std::string fields = simulator::fieldsText(message);
  return lingoText(message.lingo) + " " + name + (fields.empty() ? "" : " " + fields);
}

std::string eventText(const trace::Record& event) {
  using Kind = trace::Record::Kind;
  const std::string code = " " + std::to_string(event.code);
  switch (event.kind) {
    case Kind::kOpened:
      return "open ok";
    case Kind::kOpenFailed:
      return "open failed" + code;
    case Kind::kClosed:
      return "close";
    case Kind::kReadFailed:
      return "read-failed" + code;
    case Kind::kWriteFailed:
      return "write-failed" + code;
    case Kind::kAudio:
      return "audio " + simulator::printable(event.call);
    case Kind::kRead:
    case Kind::kWritten:
      break;
  }
  return {};
}

/// Returns the payload of a frame whose checksum is wrong or that has none; empty without one.
ByteView payloadOf(const Item& item) {
  const ByteView bytes(item.bytes);
  const size_t header = item.isLong ? 4 : 2;
  const ByteView payload = bytes.from(header);
  const size_t length = item.isLong && bytes.size() >= header ? bytes[2] * size_t{256} + bytes[3]
                        : bytes.size() > 1                    ? bytes[1]
                                                              : 0;
  return payload.prefix(length);
}

bool isWholeFrame(const Item& item) {
  const size_t header = item.isLong ? 4 : 2;
  return item.bytes.size() > header && payloadOf(item).size() + header + 1 == item.bytes.size();
}

std::string checksumText(const Item& item) {
  if (!isWholeFrame(item)) return "bad checksum: a frame began inside this one";
  const ByteView checked = ByteView(item.bytes).prefix(item.bytes.size() - 1).from(1);
  return "bad checksum: " + hexByte(item.bytes.back()) + " instead of " +
         hexByte(simulator::frameChecksum(checked));
}

const char* kindText(Item::Kind kind) {
  switch (kind) {
    case Item::Kind::kMalformed:
      return "frame without a command";
    case Item::Kind::kBadChecksum:
      return "damaged frame";
    case Item::Kind::kUnfinished:
      return "unfinished frame";
    case Item::Kind::kNoise:
    case Item::Kind::kMessage:
    case Item::Kind::kEvent:
      break;
  }
  return "bytes outside any frame";
}

class Lines {
 public:
  Lines(const Conversation& conversation, bool foldsLogos)
      : items(conversation),
        exchanges(exchangesOf(conversation)),
        notes(annotate(conversation, exchanges)),
        foldOf(conversation.size()) {
    if (foldsLogos) logos = logosOf(items, exchanges);
    for (size_t i = 0; i < logos.size(); ++i) {
      for (const size_t packet : logos[i].packets)
        foldOf[packet] = i;
      for (const size_t answer : logos[i].answers)
        foldOf[answer] = i;
    }
  }

  std::vector<DecodedLine> all() {
    std::vector<DecodedLine> lines;
    for (size_t i = 0; i < items.size(); ++i) {
      if (!foldOf[i]) {
        lines.push_back(lineOf(i));
      } else if (logos[*foldOf[i]].packets.front() == i) {
        lines.push_back(lineOf(logos[*foldOf[i]]));
      }
    }
    return lines;
  }

 private:
  DecodedLine lineOf(size_t index) const {
    const Item& item = items[index];
    DecodedLine line;
    line.at = item.at;
    line.line = item.line;
    line.item = &item;
    if (item.kind == Item::Kind::kEvent) {
      line.what = eventText(*item.event);
      line.weight = isFailure(*item.event) ? Weight::kFault : Weight::kEvent;
    } else if (item.isMessage()) {
      line.message = item.message;
      line.what = messageText(item.message);
      mark(notes[index], line);
    } else {
      describeDamage(item, line);
    }
    return line;
  }

  static bool isFailure(const trace::Record& event) {
    using Kind = trace::Record::Kind;
    return event.kind == Kind::kOpenFailed || event.kind == Kind::kReadFailed ||
           event.kind == Kind::kWriteFailed;
  }

  void mark(const Annotation& note, DecodedLine& line) const {
    const auto add = [&line](Weight weight, const std::string& text) {
      line.weight = std::max(line.weight, weight);
      line.marks.push_back(text);
    };
    if (note.request) line.latency = note.latency;
    if (note.isUnsolicited) add(Weight::kUnasked, "unsolicited");
    if (note.isUnanswered) add(Weight::kFault, "no answer");
    if (note.isUnexpected) add(Weight::kFault, "answers no open request");
    if (note.isRefusal) add(Weight::kFault, "refused");
    if (note.isOutOfTurn) {
      add(Weight::kFault,
          "answers line " + std::to_string(items[*note.request].line) + ", not the latest request");
    }
    if (line.item->isLong) add(line.weight, "long frame");
  }

  static void describeDamage(const Item& item, DecodedLine& line) {
    line.weight = Weight::kFault;
    line.what = kindText(item.kind);
    line.what += ": " + simulator::hexText(item.bytes, kShownBytes);
    if (item.kind == Item::Kind::kNoise) return line.marks.push_back("noise");
    if (item.kind == Item::Kind::kMalformed) return line.marks.push_back("malformed");
    const bool isBad = item.kind == Item::Kind::kBadChecksum;
    line.marks.push_back(isBad ? checksumText(item) : "unfinished");
    line.message = simulator::parseMessage(payloadOf(item));
    if (line.message) line.marks.push_back("as " + messageText(*line.message));
  }

  DecodedLine lineOf(const Logo& logo) const {
    const Item& first = items[logo.packets.front()];
    DecodedLine line;
    line.at = first.at;
    line.line = first.line;
    line.item = &first;
    line.message = first.message;
    line.what = lingoText(first.message.lingo) + " " + simulator::commandName(first.message) +
                ": " + describe(logo);
    line.folded = logo.packets.size();
    const size_t last =
        std::max(logo.packets.back(), logo.answers.empty() ? size_t{0} : logo.answers.back());
    line.latency = items[last].at - first.at;
    if (logo.acknowledged < logo.packets.size()) {
      line.weight = Weight::kFault;
      line.marks.push_back(logo.refused > 0 ? "refused" : "no answer");
    }
    return line;
  }

  const Conversation& items;
  Exchanges exchanges;
  std::vector<Annotation> notes;
  std::vector<Logo> logos;
  std::vector<std::optional<size_t>> foldOf;
};

}  // namespace

std::vector<DecodedLine> decodedLines(const Conversation& items, bool foldsLogos) {
  return Lines(items, foldsLogos).all();
}

}  // namespace iaptrace
