#include "wire/command_names.h"

#include "wire/command_layout.h"

namespace simulator {

const char* commandName(const Message& message) {
  for (const CommandLayout& row : commandLayouts()) {
    if (message.is(row.lingo, row.command)) return row.name;
  }
  return kUnknownCommand;
}

}  // namespace simulator
