#include "iaptrace/decode_output.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "iaptrace/time_text.h"
#include "wire/command_names.h"
#include "wire/fields.h"

namespace iaptrace {
namespace {

using Json = nlohmann::ordered_json;
using simulator::FieldKind;

const char* colourOf(Weight weight) {
  switch (weight) {
    case Weight::kFault:
      return "\033[31m";
    case Weight::kUnasked:
      return "\033[33m";
    case Weight::kEvent:
      return "\033[36m";
    case Weight::kUsual:
      break;
  }
  return "";
}

std::string timeText(trace::Time at) {
  char text[32];
  std::snprintf(text, sizeof text, "%4lld.%06lld", static_cast<long long>(at.count() / 1000000),
                static_cast<long long>(at.count() % 1000000));
  return text;
}

const char* directionOf(const Item& item) {
  if (item.kind == Item::Kind::kEvent) return "#";
  return item.sender == Sender::kHost ? ">" : "<";
}

std::string textOf(const DecodedLine& line) {
  const char* const flag = line.weight == Weight::kFault ? " ! " : "   ";
  std::string text = timeText(line.at) + flag + directionOf(*line.item) + " " + line.what;
  if (line.latency) text += "  (" + millisecondsText(*line.latency) + ")";
  for (const std::string& mark : line.marks)
    text += "  [" + mark + "]";
  return text;
}

std::string hexOf(ByteView bytes) {
  std::string text;
  char digits[4];
  for (const uint8_t byte : bytes) {
    std::snprintf(digits, sizeof digits, text.empty() ? "%02X" : " %02X", byte);
    text += digits;
  }
  return text;
}

Json valueOf(const simulator::Field& field, const Message& message) {
  switch (field.layout->kind) {
    case FieldKind::kNumber:
    case FieldKind::kHex:
      return field.number;
    case FieldKind::kText:
      return simulator::textOf(field);
    case FieldKind::kBytes:
      return hexOf(field.bytes);
    default:
      return valueText(field, message);
  }
}

/// The fields by name. A field that is there several times has an array.
Json jsonFieldsOf(const Message& message) {
  Json object = Json::object();
  const bool repeats =
      simulator::layoutOf(message) != nullptr && simulator::layoutOf(message)->repeats;
  for (const simulator::Field& field : simulator::fieldsOf(message).all) {
    const Json value = valueOf(field, message);
    if (repeats) {
      object[field.layout->name].push_back(value);
    } else {
      object[field.layout->name] = value;
    }
  }
  return object;
}

const char* kindOf(const DecodedLine& line) {
  switch (line.item->kind) {
    case Item::Kind::kMessage:
      return line.folded > 0 ? "logo" : "message";
    case Item::Kind::kMalformed:
      return "malformed";
    case Item::Kind::kBadChecksum:
      return "bad-checksum";
    case Item::Kind::kUnfinished:
      return "unfinished";
    case Item::Kind::kNoise:
      return "noise";
    case Item::Kind::kEvent:
      break;
  }
  return "event";
}

void addMessage(const Message& message, Json& object) {
  const char* const lingo = simulator::lingoName(message.lingo);
  object["lingo"] = lingo != nullptr ? Json(lingo) : Json(message.lingo);
  object["id"] = message.command;
  object["command"] = simulator::commandName(message);
  object["fields"] = jsonFieldsOf(message);
}

Json jsonOf(const DecodedLine& line) {
  Json object;
  object["time"] = static_cast<double>(line.at.count()) / 1e6;
  object["line"] = line.line;
  object["kind"] = kindOf(line);
  object["direction"] = directionOf(*line.item);
  if (line.message) addMessage(*line.message, object);
  if (line.latency) object["latency_ms"] = static_cast<double>(line.latency->count()) / 1000;
  object["marks"] = line.marks;
  if (line.folded > 0) object["packets"] = line.folded;
  object["text"] = line.what;
  if (line.item->kind != Item::Kind::kEvent && line.folded == 0) {
    object["sync"] = line.item->hasSync;
    object["long"] = line.item->isLong;
    object["bytes"] = hexOf(line.item->bytes);
  }
  return object;
}

/// Only ASCII: what could confuse a terminal is escaped. Bytes that are not UTF-8 become U+FFFD.
std::string dumped(const Json& value) {
  return value.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace

void printText(const std::vector<DecodedLine>& lines, bool inColour, std::ostream& out) {
  for (const DecodedLine& line : lines) {
    const std::string colour = inColour ? colourOf(line.weight) : "";
    out << colour << textOf(line) << (colour.empty() ? "\n" : "\033[0m\n");
  }
}

void printJson(const std::string& device, const std::vector<DecodedLine>& lines,
               std::ostream& out) {
  out << "{\"device\":" << dumped(device) << ",\"messages\":[";
  const char* separator = "\n";
  for (const DecodedLine& line : lines) {
    out << separator << dumped(jsonOf(line));
    separator = ",\n";
  }
  out << "\n]}\n";
}

}  // namespace iaptrace
