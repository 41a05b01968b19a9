// The data of a message, field by field.
#pragma once

#include <string>
#include <vector>

#include "wire/command_layout.h"

namespace simulator {

struct Field {
  const FieldLayout* layout = nullptr;
  uint32_t number = 0;  ///< of a field with a width
  Bytes bytes;          ///< as they are on the wire
};

struct Fields {
  std::vector<Field> all;
  bool isCut = false;  ///< the data ends before a field that the command has
  Bytes rest;          ///< what follows the last field; of an unknown command all data
};

/// Decodes the data of a message. Nothing is refused: isCut and rest show what does not fit.
Fields fieldsOf(const Message& message);

/// Returns the text without the 00 that ends it, and without what follows that.
std::string textOf(const Field& field);

/// Returns a value as people read it: 7, "Juno", artists, none. A text from the wire is quoted.
std::string valueText(const Field& field, const Message& message);

/// Returns all fields as "category=artists record=7", and what does not fit the command.
std::string fieldsText(const Message& message);

}  // namespace simulator
