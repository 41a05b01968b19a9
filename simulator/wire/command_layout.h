// What the data of each command contains: one row a command, or one for each form of its data.
#pragma once

#include <optional>

#include "wire/message.h"

namespace simulator {

enum class FieldKind {
  kNumber,
  kHex,      ///< a number that people know in hexadecimal
  kChoice,   ///< one of `values`
  kBits,     ///< `values` has the number of each bit
  kButtons,  ///< bits up to the end, the lowest ones in the first byte
  kIndex,    ///< of a record or a track; FFFFFFFF is none, all or any
  kStatus,   ///< of an acknowledgement
  kCommand,  ///< a command id of the message's lingo
  kLingo,
  kText,   ///< up to the end; an 00 ends it
  kBytes,  ///< up to the end
};

/// A value with a name. The last one of an array has no name.
struct NamedValue {
  uint32_t value;
  const char* name;
};

struct FieldLayout {
  const char* name;
  size_t width;  ///< in bytes; 0: up to the end
  FieldKind kind;
  const NamedValue* values;  ///< of kChoice, kBits and kIndex; null otherwise
  bool isOptional;           ///< the data can end before it
};

constexpr size_t kMostFields = 8;
/// A row for data that begins with any number.
constexpr int kAnyForm = -1;

struct CommandLayout {
  const char* name;
  int form;  ///< the number in the first field that this row is for
  uint16_t command;
  Lingo lingo;
  bool repeats;                     ///< the fields follow each other until the data ends
  FieldLayout fields[kMostFields];  ///< those that follow the last one have no name
};

/// All commands, each at least once. The rows of a command follow each other; the one for
/// any form is the last.
struct CommandLayouts {
  const CommandLayout* first;
  const CommandLayout* last;
  const CommandLayout* begin() const { return first; }
  const CommandLayout* end() const { return last; }
};
CommandLayouts commandLayouts();

/// Returns the row of a message; null when the command is not in the table.
const CommandLayout* layoutOf(const Message& message);

/// Returns the name of a value; null when it has none.
const char* nameOf(const NamedValue* values, uint32_t value);

/// Returns the name of a lingo as "ExtendedInterface"; null when it is not known.
const char* lingoName(uint8_t lingo);

}  // namespace simulator
