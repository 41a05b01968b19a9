#include "support/output.h"

#include <cstdio>

namespace exports {

std::string wordsOf(unsigned short unit) {
  constexpr unsigned kFirst = 0x20;
  constexpr unsigned kLast = 0x7E;
  if (unit >= kFirst && unit <= kLast) return {static_cast<char>(unit)};
  char code[8];
  std::snprintf(code, sizeof code, "<%X>", static_cast<unsigned>(unit));
  return code;
}

std::string Text::words() const {
  if (written() == 0) return kNothing;
  std::string text;
  std::for_each(start(), start() + written(), [&](unsigned short unit) { text += wordsOf(unit); });
  return text;
}

}  // namespace exports
