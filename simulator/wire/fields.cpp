#include "wire/fields.h"

#include <algorithm>
#include <cstdio>

#include "wire/command_names.h"
#include "wire/hex_text.h"
#include "wire/payload.h"
#include "wire/printable.h"

namespace simulator {

namespace {

constexpr size_t kShownBytes = 24;
constexpr size_t kButtonBytes = 4;

class FieldReader {
 public:
  explicit FieldReader(ByteView data) : left(data) {}

  /// Reads the fields of a row once. Returns whether all were there.
  bool readRow(const CommandLayout& row) {
    for (const FieldLayout& layout : row.fields) {
      if (layout.name == nullptr) return true;
      if (layout.isOptional && left.empty()) return true;
      if (!read(layout)) return false;
    }
    return true;
  }

  ByteView left;
  std::vector<Field> fields;

 private:
  bool read(const FieldLayout& layout) {
    if (left.size() < std::max<size_t>(layout.width, isText(layout) ? 1 : 0)) return false;
    const ByteView taken = layout.width == 0 ? left : left.prefix(layout.width);
    Field field{&layout, 0, Bytes(taken.begin(), taken.end())};
    for (const uint8_t byte : taken.prefix(layout.width))
      field.number = field.number << 8 | byte;
    left = left.from(taken.size());
    fields.push_back(std::move(field));
    return true;
  }

  static bool isText(const FieldLayout& layout) { return layout.kind == FieldKind::kText; }
};

std::string hexNumber(uint32_t number, size_t width) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%0*X", static_cast<int>(2 * width), number);
  return text;
}

std::string bitsText(uint32_t number, const NamedValue* names) {
  std::string text;
  for (uint32_t bit = 0; bit < 32; ++bit) {
    if ((number >> bit & 1) == 0) continue;
    const char* name = nameOf(names, bit);
    text += text.empty() ? "" : "+";
    text += name != nullptr ? name : "bit-" + std::to_string(bit);
  }
  return text.empty() ? "none" : text;
}

uint32_t buttonsOf(ByteView bytes) {
  uint32_t number = 0;
  for (size_t i = 0; i < std::min(bytes.size(), kButtonBytes); ++i)
    number |= uint32_t{bytes[i]} << (8 * i);
  return number;
}

std::string choiceText(const Field& field) {
  const char* name = nameOf(field.layout->values, field.number);
  return name != nullptr ? name : "unknown(" + std::to_string(field.number) + ")";
}

std::string indexText(const Field& field) {
  const char* name = nameOf(field.layout->values, field.number);
  return name != nullptr ? name : std::to_string(field.number);
}

std::string commandText(const Field& field, const Message& message) {
  const auto command = static_cast<uint16_t>(field.number);
  const std::string name = commandName({message.lingo, command, {}});
  return name == kUnknownCommand ? hexNumber(command, field.layout->width) : name;
}

std::string wireText(const Field& field) {
  const std::string text = textOf(field);
  const std::string shown = simulator::quoted(text);
  if (text.size() == field.bytes.size()) return shown + " (no final 00)";
  const size_t beyond = field.bytes.size() - text.size() - 1;
  return beyond == 0 ? shown : shown + " (" + std::to_string(beyond) + " more bytes)";
}

}  // namespace

Fields fieldsOf(const Message& message) {
  Fields decoded;
  FieldReader reader(message.data);
  if (const CommandLayout* row = layoutOf(message)) {
    bool isWhole = reader.readRow(*row);
    while (row->repeats && isWhole && !reader.left.empty())
      isWhole = reader.readRow(*row);
    decoded.isCut = !isWhole;
  }
  decoded.all = std::move(reader.fields);
  decoded.rest.assign(reader.left.begin(), reader.left.end());
  return decoded;
}

std::string textOf(const Field& field) {
  const auto end = std::find(field.bytes.begin(), field.bytes.end(), uint8_t{0});
  return {field.bytes.begin(), end};
}

std::string valueText(const Field& field, const Message& message) {
  switch (field.layout->kind) {
    case FieldKind::kNumber:
      return std::to_string(field.number);
    case FieldKind::kHex:
      return hexNumber(field.number, field.layout->width);
    case FieldKind::kChoice:
    case FieldKind::kStatus:
    case FieldKind::kLingo:
      return choiceText(field);
    case FieldKind::kIndex:
      return indexText(field);
    case FieldKind::kBits:
      return bitsText(field.number, field.layout->values);
    case FieldKind::kButtons:
      return bitsText(buttonsOf(field.bytes), field.layout->values);
    case FieldKind::kCommand:
      return commandText(field, message);
    case FieldKind::kText:
      return wireText(field);
    case FieldKind::kBytes:
      return hexText(field.bytes, kShownBytes);
  }
  return {};
}

std::string fieldsText(const Message& message) {
  const Fields decoded = fieldsOf(message);
  std::string text;
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : " ") + part; };
  for (const Field& field : decoded.all)
    add(field.layout->name + ("=" + valueText(field, message)));
  if (decoded.isCut) add("(too short)");
  const char* const name = layoutOf(message) == nullptr ? "data=" : "more=";
  if (!decoded.rest.empty()) add(name + hexText(decoded.rest, kShownBytes));
  return text;
}

}  // namespace simulator
